#pragma once

#include <QtWidgets/QFocusFrame>

class QFocusEvent;

namespace Tessaline {

class Theme;

/// The ring around the control that has the focus, two pixels wide, just outside of it. Only the keyboard makes it
/// appear.
class FocusRing final : public QFocusFrame
{
    Q_OBJECT
public:
    static constexpr double kWidth = 2;

    /// `theme` must outlive the ring. `radius` is that of the control's own corners.
    FocusRing(const Theme &theme, double radius, QWidget *parent);

    /// Draws the ring just inside of `box`, for rows that touch each other.
    static void drawInside(QPainter &painter, const QRectF &box, double radius, const Theme &theme);

    /// Whether the focus came by a key, so that it has to be shown.
    static bool isKeyboardFocus(const QFocusEvent &event);

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const Theme &m_theme;
    double m_radius;
};

} // namespace Tessaline
