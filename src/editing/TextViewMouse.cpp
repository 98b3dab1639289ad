#include "editing/TextViewMouse.h"

#include "editing/TextBoundaries.h"
#include "editing/TextView.h"
#include "editing/TextViewDelegate.h"

#include <QtCore/QTimerEvent>
#include <QtGui/QClipboard>
#include <QtGui/QDrag>
#include <QtGui/QGuiApplication>
#include <QtGui/QMouseEvent>
#include <QtGui/QStyleHints>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMenu>

#include <chrono>
#include <utility>

namespace Tessaline {

namespace {

using namespace std::chrono_literals;
constexpr std::chrono::milliseconds kAutoScrollInterval = 25ms; // while a selection is dragged over an edge

} // namespace

TextViewMouse::TextViewMouse(TextView &view) : m_view(view) {}

bool TextViewMouse::handle(QEvent *event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress:
        press(static_cast<QMouseEvent *>(event));
        return true;
    case QEvent::MouseButtonDblClick:
        doubleClick(static_cast<QMouseEvent *>(event));
        return true;
    case QEvent::MouseMove:
        move(static_cast<QMouseEvent *>(event));
        return true;
    case QEvent::MouseButtonRelease:
        release(static_cast<QMouseEvent *>(event));
        return true;
    case QEvent::ContextMenu: {
        const auto *menuEvent = static_cast<QContextMenuEvent *>(event);
        const QPoint place = menuEvent->reason() == QContextMenuEvent::Keyboard
                                 ? m_view.viewport()->mapToGlobal(
                                       m_view.caretRectInViewport(m_view.document().selection().caret).bottomLeft())
                                 : menuEvent->globalPos();
        m_view.makeContextMenu()->exec(place);
        return true;
    }
    case QEvent::DragEnter:
        dragEnter(static_cast<QDragEnterEvent *>(event));
        return true;
    case QEvent::DragMove:
        dragMove(static_cast<QDragMoveEvent *>(event));
        return true;
    case QEvent::DragLeave:
        m_view.setDropCaret(-1);
        return true;
    case QEvent::Drop:
        drop(static_cast<QDropEvent *>(event));
        return true;
    default:
        return false;
    }
}

TextRange TextViewMouse::unitAt(qsizetype position) const
{
    const ChunkedText &text = m_view.document().text();
    switch (m_granularity) {
    case Granularity::Word:
        return TextBoundaries::wordAt(text, position);
    case Granularity::Paragraph:
        return TextBoundaries::paragraphAt(text, position);
    case Granularity::Character:
        break;
    }
    return {position, 0};
}

void TextViewMouse::begin(Granularity granularity, qsizetype position)
{
    m_granularity = granularity;
    m_origin = unitAt(position);
    m_isSelecting = true;
    m_mayDrag = false;
    m_view.document().select({m_origin.location, m_origin.end()});
}

void TextViewMouse::extendTo(QPoint point)
{
    const TextRange unit = unitAt(m_view.positionAt(point));
    // The unit in which the selection began stays selected in whichever direction it grows.
    if (unit.location < m_origin.location)
        m_view.document().select({m_origin.end(), unit.location});
    else
        m_view.document().select({m_origin.location, unit.end()});
}

void TextViewMouse::press(QMouseEvent *event)
{
    const QPoint point = event->position().toPoint();
    const QPoint doubleClickPoint = m_lastPoint;
    m_pressPoint = m_lastPoint = point;
    if (event->button() != Qt::LeftButton)
        return;
    m_isConsumed = m_view.delegate().handleClick(point, event->modifiers());
    if (m_isConsumed)
        return;
    const qsizetype position = m_view.positionAt(point);
    const bool isThirdClick =
        m_sinceDoubleClick.isValid() &&
        m_sinceDoubleClick.elapsed() < QGuiApplication::styleHints()->mouseDoubleClickInterval() &&
        (point - doubleClickPoint).manhattanLength() < QApplication::startDragDistance();
    m_sinceDoubleClick.invalidate();
    const TextRange selection = m_view.document().selection().range();

    if (isThirdClick) {
        begin(Granularity::Paragraph, position);
    } else if (event->modifiers() & Qt::ShiftModifier) {
        m_granularity = Granularity::Character;
        m_origin = {m_view.document().selection().anchor, 0};
        m_isSelecting = true;
        extendTo(point);
    } else if (position > selection.location && position < selection.end()) {
        m_mayDrag = true;
    } else {
        begin(Granularity::Character, position);
    }
}

void TextViewMouse::doubleClick(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    m_lastPoint = event->position().toPoint();
    m_isConsumed = m_view.delegate().handleClick(m_lastPoint, event->modifiers());
    if (m_isConsumed)
        return;
    begin(Granularity::Word, m_view.positionAt(m_lastPoint));
    m_sinceDoubleClick.start();
}

void TextViewMouse::move(QMouseEvent *event)
{
    const QPoint point = event->position().toPoint();
    if (!(event->buttons() & Qt::LeftButton)) {
        m_view.viewport()->setCursor(m_view.delegate().cursorAt(point, event->modifiers()));
        return;
    }
    if (m_mayDrag) {
        if ((point - m_pressPoint).manhattanLength() >= QApplication::startDragDistance())
            startDrag();
        return;
    }
    if (!m_isSelecting)
        return;
    m_lastPoint = point;
    extendTo(point);
    if (m_view.viewport()->rect().contains(point))
        m_autoScroll.stop();
    else if (!m_autoScroll.isActive())
        m_autoScroll.start(static_cast<int>(kAutoScrollInterval.count()), this);
}

void TextViewMouse::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != m_autoScroll.timerId())
        return;
    // The farther outside, the faster.
    const QRect inside = m_view.viewport()->rect();
    const int above = inside.top() - m_lastPoint.y();
    const int below = m_lastPoint.y() - inside.bottom();
    if (above > 0 || below > 0)
        m_view.scrollBy(above > 0 ? -above : below);
    extendTo(m_lastPoint);
}

void TextViewMouse::release(QMouseEvent *event)
{
    m_autoScroll.stop();
    const QPoint point = event->position().toPoint();
    if (event->button() == Qt::MiddleButton) {
        pastePrimarySelection(point);
        return;
    }
    if (event->button() != Qt::LeftButton || std::exchange(m_isConsumed, false))
        return;
    if (m_mayDrag) // pressed and released inside the selection: a plain click after all
        m_view.document().moveCaret(m_view.positionAt(point), EditableText::AnchorMode::MoveAnchor);
    m_mayDrag = false;
    m_isSelecting = false;
    offerPrimarySelection();
}

void TextViewMouse::offerPrimarySelection() const
{
    QClipboard *const clipboard = QGuiApplication::clipboard();
    const EditableText &document = m_view.document();
    if (clipboard->supportsSelection() && !document.selection().isEmpty())
        clipboard->setMimeData(m_view.delegate().makeTransfer(document.selection().range()).release(),
                               QClipboard::Selection);
}

void TextViewMouse::pastePrimarySelection(QPoint point)
{
    const QMimeData *const transfer = QGuiApplication::clipboard()->mimeData(QClipboard::Selection);
    if (!QGuiApplication::clipboard()->supportsSelection() || !transfer)
        return;
    const qsizetype position = m_view.positionAt(point);
    m_view.document().moveCaret(position, EditableText::AnchorMode::MoveAnchor);
    m_view.delegate().insertTransfer(*transfer, {position, 0});
}

void TextViewMouse::startDrag()
{
    m_mayDrag = false;
    m_droppedHere = false;
    EditableText &document = m_view.document();
    auto *const drag = new QDrag(&m_view); // deletes itself
    drag->setMimeData(m_view.delegate().makeTransfer(document.selection().range()).release());
    const QString dragged = document.selectedText();
    const Qt::DropAction action = drag->exec(Qt::CopyAction | Qt::MoveAction, Qt::MoveAction);
    // NOTE: another view of the same document may have taken the text into the very place that it came from.
    if (action == Qt::MoveAction && !m_droppedHere && document.selectedText() == dragged)
        m_view.deleteSelection();
}

/// Files are for the window, which opens them.
bool TextViewMouse::takes(const QMimeData *transfer) const
{
    return transfer && !transfer->hasUrls() && m_view.delegate().canInsert(*transfer);
}

void TextViewMouse::dragEnter(QDragEnterEvent *event)
{
    if (takes(event->mimeData()))
        event->acceptProposedAction();
    else
        event->ignore();
}

void TextViewMouse::dragMove(QDragMoveEvent *event)
{
    if (!takes(event->mimeData())) {
        event->ignore();
        return;
    }
    m_view.setDropCaret(m_view.positionAt(event->position().toPoint()));
    event->acceptProposedAction();
}

void TextViewMouse::drop(QDropEvent *event)
{
    m_view.setDropCaret(-1);
    if (!takes(event->mimeData())) {
        event->ignore();
        return;
    }
    EditableText &document = m_view.document();
    const qsizetype position = m_view.positionAt(event->position().toPoint());
    if (event->source() == &m_view && event->dropAction() == Qt::MoveAction) {
        m_droppedHere = true;
        document.moveSelectionTo(position);
    } else {
        const qsizetype size = document.text().size();
        m_view.delegate().insertTransfer(*event->mimeData(), {position, 0});
        document.select({position, position + document.text().size() - size});
    }
    event->acceptProposedAction();
    m_view.setFocus(Qt::MouseFocusReason);
}

} // namespace Tessaline
