#pragma once

#include "panels/SelectionTools.h"
#include "panels/SmallButton.h"

#include <QtCore/QObject>
#include <QtCore/QPointer>

#include <array>

class QWidget;

namespace Tessaline {

class AIToolbarButton;
class Popover;
class Theme;

/// The buttons of the tools for a selection, in their order, and the cards that hang from them.
class SelectionToolsView final : public QObject
{
    Q_OBJECT
public:
    /// Both outlive the view. `buttonParent` owns the buttons until a toolbar takes them over.
    SelectionToolsView(SelectionTools &tools, const Theme &theme, QWidget *buttonParent);
    ~SelectionToolsView() override;

    std::array<QWidget *, 3> buttons() const;

private:
    void update();
    void showCard(QWidget *content, const QString &name, const QWidget &anchor);
    QWidget *makeRephraseCard(const ActivePopover::Rephrase &rephrase);
    QWidget *makeSummaryCard(const ActivePopover::Summary &summary);
    QWidget *makeCopyButton(SmallButton::Kind kind, const QString &symbol);

    struct Button {
        SelectionTools::Tool tool;
        AIToolbarButton *button;
    };

    SelectionTools &m_tools;
    const Theme &m_theme;
    std::array<Button, 3> m_buttons;
    ActivePopover::Value m_shown;
    QPointer<Popover> m_popover; // while a card is shown; the window may end first
};

} // namespace Tessaline
