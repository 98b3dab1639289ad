#pragma once

#include <QtWidgets/QWidget>

namespace Tessaline {

class Theme;

/// A window without the system's frame: a hairline around it, edges and corners that resize it, and a row at its top
/// that moves it and, by a double click, maximizes it. The window system does the moving and resizing, so its own rules
/// (snapping, other screens) hold.
///
/// The row is made of whatever lies there: a press that no control takes for itself counts.
class FramelessWindow : public QWidget
{
    Q_OBJECT
public:
    static constexpr int kTitleRowHeight = 44;
    static constexpr int kEdge = 5;    // how far from the window's border an edge can be grasped
    static constexpr int kCorner = 14; // and how far along the border a corner reaches

    /// `theme` must outlive the window.
    explicit FramelessWindow(const Theme &theme, QWidget *parent = nullptr);

    /// Which edges a press at `position` grasps; none while the window is maximized.
    Qt::Edges edgesAt(QPoint position) const;

    void toggleMaximized();

Q_SIGNALS:
    void maximizedChanged(bool isMaximized);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void showEvent(QShowEvent *event) override;
    void changeEvent(QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void mouseDoubleClickEvent(QMouseEvent *event) override;

private:
    void showEdgeCursor(Qt::Edges edges);
    bool isInTitleRow(QPoint position) const;
    void updateBorder();

    const Theme &m_theme;
    Qt::Edges m_cursorEdges;    // whose cursor is shown
    bool m_isMoveArmed = false; // a press in the title row waits to become a move
    QPoint m_pressPosition;
};

} // namespace Tessaline
