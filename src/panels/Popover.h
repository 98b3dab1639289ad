#pragma once

#include <QtWidgets/QWidget>

namespace Tessaline {

class Theme;

/// A small window that hangs from a control. It closes at a click beside it and at Esc, and the focus goes back to
/// where it was. It may open while the person types: until something in it has the focus, what is typed goes on to
/// the text where it went before, but for Tab, which goes in, and Esc.
class Popover final : public QWidget
{
    Q_OBJECT
public:
    static constexpr int kWidth = 280; // of the content and its padding
    static constexpr int kPadding = 12;

    /// `theme` must outlive the popover, which `parent` owns. `name` is for assistive technology.
    Popover(const Theme &theme, const QString &name, QWidget *parent);

    /// Takes over the content; the one before is deleted.
    void setContent(QWidget *content);

    /// Shows it under the control, or above where there is no room, within the screen.
    void showAt(const QWidget &anchor);

Q_SIGNALS:
    /// It was closed, by whichever way.
    void closed();

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void keyPressEvent(QKeyEvent *event) override;
    void hideEvent(QHideEvent *event) override;

private:
    const Theme &m_theme;
    QWidget *m_content = nullptr;
};

} // namespace Tessaline
