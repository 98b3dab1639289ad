#pragma once

#include "foundation_ui/PlainButton.h"

class QScrollArea;

namespace Tessaline {

/// Stands over one end of a row that scrolls sideways, for as long as the row goes on beyond it: what is cut fades out
/// under it, and a click brings the next stretch into view. It never takes the focus, since whoever walks through the
/// row by keyboard has it scrolled anyway.
class ScrollEdgeButton final : public PlainButton
{
    Q_OBJECT
public:
    static constexpr int kWidth = 32;
    enum class Edge { Left, Right };

    /// Belongs to `area`, whose size it follows. `ground` is what the row stands on; `help` the tool tip and the name.
    ScrollEdgeButton(const Theme &theme, ColorRole ground, Edge edge, const QString &help, QScrollArea &area);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;
    void paintEvent(QPaintEvent *event) override;

private:
    void follow();
    void scroll();

    ColorRole m_ground;
    Edge m_edge;
    QScrollArea &m_area;
};

} // namespace Tessaline
