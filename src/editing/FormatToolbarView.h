#pragma once

#include <QtCore/QPointer>
#include <QtWidgets/QScrollArea>

class QHBoxLayout;

namespace Tessaline {

class EventCenter;
class FormatButton;
class Theme;

/// The row of format commands above a Markdown document. It scrolls sideways where it is too narrow, and
/// shows at its ends that it goes on. A click leaves the
/// focus in the editor, which takes a command only while it has it; a press by keyboard first gives the focus back to
/// the editor.
class FormatToolbarView final : public QScrollArea
{
    Q_OBJECT
public:
    /// `theme` and `events` must outlive the toolbar.
    FormatToolbarView(const Theme &theme, EventCenter &events, QWidget *parent = nullptr);

    /// The text view that commands are for, null for none. Not owned.
    void setTarget(QWidget *textView) { m_target = textView; }

    /// Adds a tool behind the format commands, in the last group; the toolbar owns it.
    void addTool(QWidget *tool);

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void wheelEvent(QWheelEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void addButton(FormatButton *button);
    void addDivider();
    void press(const FormatButton &button);

    const Theme &m_theme;
    EventCenter &m_events;
    QWidget *m_row;
    QHBoxLayout *m_layout;
    bool m_hasTools = false;
    QPointer<QWidget> m_target;
};

} // namespace Tessaline
