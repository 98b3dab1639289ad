#pragma once

#include "foundation/TextRange.h"

#include <QtCore/QBasicTimer>
#include <QtCore/QElapsedTimer>
#include <QtCore/QObject>
#include <QtCore/QPoint>

class QDragEnterEvent;
class QDragMoveEvent;
class QDropEvent;
class QMimeData;
class QMouseEvent;

namespace Tessaline {

class TextView;

/// What the mouse does to a text view: carets and selections by character, word and paragraph, scrolling while a
/// selection is dragged over an edge, and dragging text from place to place. Belongs to its view.
class TextViewMouse final : public QObject
{
    Q_OBJECT
public:
    explicit TextViewMouse(TextView &view);

    /// Handles an event of the viewport; false leaves it to the view.
    bool handle(QEvent *event);

protected:
    void timerEvent(QTimerEvent *event) override;

private:
    enum class Granularity { Character, Word, Paragraph };

    void press(QMouseEvent *event);
    void doubleClick(QMouseEvent *event);
    void move(QMouseEvent *event);
    void release(QMouseEvent *event);
    void dragEnter(QDragEnterEvent *event);
    void dragMove(QDragMoveEvent *event);
    void drop(QDropEvent *event);
    bool takes(const QMimeData *transfer) const;
    void startDrag();
    void begin(Granularity granularity, qsizetype position);
    void extendTo(QPoint point);
    TextRange unitAt(qsizetype position) const;
    void offerPrimarySelection() const;
    void pastePrimarySelection(QPoint point);

    TextView &m_view;
    Granularity m_granularity = Granularity::Character;
    TextRange m_origin; // the unit in which the selection began
    bool m_isSelecting = false;
    bool m_mayDrag = false; // pressed inside the selection: a drag or, if released there, a caret
    QPoint m_pressPoint;
    QPoint m_lastPoint;
    QElapsedTimer m_sinceDoubleClick;
    QBasicTimer m_autoScroll;
    bool m_droppedHere = false;
    bool m_isConsumed = false; // the press was the delegate's
};

} // namespace Tessaline
