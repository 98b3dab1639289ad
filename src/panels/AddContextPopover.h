#pragma once

#include "Services/ConceptCard.h"

#include <QtCore/QList>
#include <QtCore/QString>
#include <QtWidgets/QWidget>

#include <optional>

class QLineEdit;
class QVBoxLayout;

namespace Tessaline {

class SessionContext;
class Theme;

/// What the popover of the add button holds: the field for a topic, what has become of it, and the ways to attach
/// something else.
class AddContextPopover final : public QWidget
{
    Q_OBJECT
public:
    /// Both outlive it.
    AddContextPopover(SessionContext &context, const Theme &theme, QWidget *parent = nullptr);

    void focusField();

Q_SIGNALS:
    /// The person wants to choose files.
    void filesWanted();

private:
    void update();
    QWidget *makeProgressRow();
    QWidget *makeOptions();
    QWidget *makeAddButton();

    SessionContext &m_context;
    const Theme &m_theme;
    QLineEdit *m_field;
    QVBoxLayout *m_state; // holds the one widget for the state
    std::optional<bool> m_isShowingProgress;
    QList<ConceptCard> m_shownOptions;
};

} // namespace Tessaline
