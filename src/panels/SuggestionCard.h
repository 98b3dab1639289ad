#pragma once

#include "foundation_ui/Theme.h"
#include "panels/SuggestionActions.h"

#include <QtWidgets/QWidget>

#include <functional>

class QHBoxLayout;

namespace Tessaline {

/// A proposed edit below an answer: what goes, what comes, and the two buttons, or what was decided.
class SuggestionCard final : public QWidget
{
    Q_OBJECT
public:
    /// `theme` must outlive the card.
    SuggestionCard(const EditSuggestion &suggestion, const Theme &theme, QWidget *parent = nullptr);

    const EditSuggestion &suggestion() const { return m_suggestion; }
    void setState(SuggestionState state);

    int heightForWidth(int width) const override;

Q_SIGNALS:
    void accepted();
    void rejected();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QWidget *makeChangeBox();
    void leaveButtons();

    EditSuggestion m_suggestion;
    const Theme &m_theme;
    SuggestionState m_state = SuggestionState::Pending;
    QWidget *m_buttons;
    QWidget *m_accepted;
    QWidget *m_rejected;
};

} // namespace Tessaline
