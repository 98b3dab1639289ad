#pragma once

#include <QtWidgets/QScrollArea>

namespace Tessaline {

/// A stretch of widgets that scrolls in one direction, without a frame or a ground of its own. What takes the focus in
/// it is brought into view, wherever the focus comes from.
class ScrolledContent final : public QScrollArea
{
    Q_OBJECT
public:
    enum class Direction { Down, Sideways };

    /// Takes `content` over. Sideways there is no bar, and a wheel scrolls whichever way it turns.
    ScrolledContent(QWidget *content, Direction direction, QWidget *parent = nullptr);

protected:
    void wheelEvent(QWheelEvent *event) override;

private:
    void reveal(QWidget *focus);

    Direction m_direction;
};

} // namespace Tessaline
