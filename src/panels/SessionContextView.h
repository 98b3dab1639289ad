#pragma once

#include "foundation/FileURL.h"
#include "Services/ContextItem.h"

#include <QtCore/QPointer>
#include <QtCore/QStringList>
#include <QtWidgets/QWidget>

#include <functional>

class QHBoxLayout;
class QMessageBox;
class QVBoxLayout;

namespace Tessaline {

class AddContextButton;
class AddContextPopover;
class ContextCardSheet;
class Popover;
class ScrolledContent;
class SessionContext;
class Theme;

struct SessionContextViewParts {
    SessionContext &context;
    const Theme &theme;
    /// Asks for files to attach, modally; empty if the person gave up.
    std::function<QList<FileURL>()> askForFiles;
    /// What stands at the right end of the title row; taken over. Null for nothing.
    QWidget *trailing = nullptr;
    int titleRowHeight = 44;
};

/// The upper half of the assistant's column: the title row with the add button, the suggested topics, and what is
/// attached. Files can be dropped anywhere on it.
class SessionContextView final : public QWidget
{
    Q_OBJECT
public:
    /// The parts outlive the view.
    explicit SessionContextView(SessionContextViewParts parts, QWidget *parent = nullptr);

protected:
    void dragEnterEvent(QDragEnterEvent *event) override;
    void dropEvent(QDropEvent *event) override;

private:
    QWidget *makeTitleRow(QWidget *trailing, int height);
    QWidget *makeSuggestionsRow();
    QWidget *makePlaceholder();
    void update();
    void updateSuggestions();
    void updateItems();
    void updatePopover();
    void updateSheet();
    void updateDuplicateAlert();

    SessionContext &m_context;
    const Theme &m_theme;
    std::function<QList<FileURL>()> m_askForFiles;
    AddContextButton *m_add;
    QHBoxLayout *m_chips = nullptr; // inside of the row, whose making sets it
    QWidget *m_suggestionsRow;
    QStringList m_shownSuggestions;
    QWidget *m_placeholder;
    ScrolledContent *m_list;
    QVBoxLayout *m_rows = nullptr;
    QList<ContextItem> m_shownItems;
    QPointer<Popover> m_popover;
    QPointer<ContextCardSheet> m_sheet;
    QPointer<QMessageBox> m_alert;
};

} // namespace Tessaline
