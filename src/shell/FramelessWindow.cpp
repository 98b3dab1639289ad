#include "shell/FramelessWindow.h"

#include "foundation_ui/Contrast.h"
#include "foundation_ui/Theme.h"

#include <QtGui/QMouseEvent>
#include <QtGui/QPainter>
#include <QtGui/QWindow>
#include <QtWidgets/QAccessibleWidget>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMenu>

namespace Tessaline {

namespace {

Qt::CursorShape cursorFor(Qt::Edges edges)
{
    if (edges == (Qt::TopEdge | Qt::LeftEdge) || edges == (Qt::BottomEdge | Qt::RightEdge))
        return Qt::SizeFDiagCursor;
    if (edges == (Qt::TopEdge | Qt::RightEdge) || edges == (Qt::BottomEdge | Qt::LeftEdge))
        return Qt::SizeBDiagCursor;
    return edges & (Qt::LeftEdge | Qt::RightEdge) ? Qt::SizeHorCursor : Qt::SizeVerCursor;
}

/// The toolkit tells only its own kinds of window as windows to assistive technology, and popups not at all: here those
/// that hang in the window are its last children. Menus are told by their items.
class FramelessWindowAccessible final : public QAccessibleWidget
{
public:
    explicit FramelessWindowAccessible(QWidget *window) : QAccessibleWidget(window, QAccessible::Window) {}

    int childCount() const override { return QAccessibleWidget::childCount() + static_cast<int>(popups().size()); }

    QAccessibleInterface *child(int index) const override
    {
        const int own = QAccessibleWidget::childCount();
        return index < own ? QAccessibleWidget::child(index)
                           : QAccessible::queryAccessibleInterface(popups().value(index - own));
    }

    int indexOfChild(const QAccessibleInterface *child) const override
    {
        const qsizetype popup = child ? popups().indexOf(child->object()) : -1;
        return popup < 0 ? QAccessibleWidget::indexOfChild(child)
                         : QAccessibleWidget::childCount() + static_cast<int>(popup);
    }

private:
    QObjectList popups() const
    {
        QObjectList found;
        for (QWidget *child : widget()->findChildren<QWidget *>(Qt::FindDirectChildrenOnly))
            if (child->windowType() == Qt::Popup && child->isVisible() && !qobject_cast<QMenu *>(child))
                found.append(child);
        return found;
    }
};

QAccessibleInterface *makeAccessible(const QString &className, QObject *object)
{
    if (className == QLatin1StringView(FramelessWindow::staticMetaObject.className()))
        return new FramelessWindowAccessible(static_cast<QWidget *>(object));
    return nullptr;
}

} // namespace

FramelessWindow::FramelessWindow(const Theme &theme, QWidget *parent)
    : QWidget(parent, Qt::Window | Qt::FramelessWindowHint | Qt::WindowMinMaxButtonsHint | Qt::WindowSystemMenuHint),
      m_theme(theme)
{
    [[maybe_unused]] static const bool kKnown = (QAccessible::installFactory(makeAccessible), true);
    setAttribute(Qt::WA_OpaquePaintEvent);
    connect(&m_theme, &Theme::changed, this, qOverload<>(&QWidget::update));
    updateBorder();
}

Qt::Edges FramelessWindow::edgesAt(QPoint position) const
{
    if (windowState() & (Qt::WindowMaximized | Qt::WindowFullScreen) || !rect().contains(position))
        return {};
    const int left = position.x();
    const int right = width() - 1 - position.x();
    const int top = position.y();
    const int bottom = height() - 1 - position.y();
    if (std::min({left, right, top, bottom}) >= kEdge)
        return {};

    // Near a corner both of its edges are grasped.
    Qt::Edges edges;
    if (left < kCorner)
        edges |= Qt::LeftEdge;
    else if (right < kCorner)
        edges |= Qt::RightEdge;
    if (top < kCorner)
        edges |= Qt::TopEdge;
    else if (bottom < kCorner)
        edges |= Qt::BottomEdge;
    return edges;
}

void FramelessWindow::toggleMaximized()
{
    setWindowState(windowState() ^ Qt::WindowMaximized);
}

/// The edges belong to the columns' widgets, so they are caught where events arrive, before a widget is chosen.
bool FramelessWindow::eventFilter(QObject *watched, QEvent *event)
{
    switch (event->type()) {
    case QEvent::MouseMove: {
        auto *mouse = static_cast<QMouseEvent *>(event);
        if (mouse->buttons() == Qt::NoButton)
            showEdgeCursor(edgesAt(mouse->position().toPoint()));
        break;
    }
    case QEvent::MouseButtonPress: {
        auto *mouse = static_cast<QMouseEvent *>(event);
        const Qt::Edges edges = edgesAt(mouse->position().toPoint());
        if (mouse->button() == Qt::LeftButton && edges && !QApplication::activePopupWidget())
            return windowHandle()->startSystemResize(edges);
        break;
    }
    case QEvent::Leave:
        showEdgeCursor({});
        break;
    default:
        break;
    }
    return QWidget::eventFilter(watched, event);
}

void FramelessWindow::showEdgeCursor(Qt::Edges edges)
{
    if (edges == m_cursorEdges)
        return;
    if (m_cursorEdges)
        QGuiApplication::restoreOverrideCursor();
    m_cursorEdges = edges;
    if (edges)
        QGuiApplication::setOverrideCursor(cursorFor(edges));
}

void FramelessWindow::showEvent(QShowEvent *event)
{
    // The window of the window system exists by now; a filter that is there already is only moved to the front.
    windowHandle()->installEventFilter(this);
    QWidget::showEvent(event);
}

void FramelessWindow::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::WindowStateChange) {
        updateBorder();
        Q_EMIT maximizedChanged(isMaximized());
    }
    QWidget::changeEvent(event);
}

void FramelessWindow::updateBorder()
{
    const int border = windowState() & (Qt::WindowMaximized | Qt::WindowFullScreen) ? 0 : 1;
    setContentsMargins(border, border, border, border);
}

void FramelessWindow::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.fillRect(rect(), composed(m_theme.color(ColorRole::Hairline), m_theme.color(ColorRole::SidebarBackground)));
}

bool FramelessWindow::isInTitleRow(QPoint position) const
{
    return rect().contains(position) && position.y() < contentsMargins().top() + kTitleRowHeight;
}

void FramelessWindow::mousePressEvent(QMouseEvent *event)
{
    m_pressPosition = event->position().toPoint();
    m_isMoveArmed = event->button() == Qt::LeftButton && isInTitleRow(m_pressPosition);
    event->setAccepted(m_isMoveArmed);
}

void FramelessWindow::mouseMoveEvent(QMouseEvent *event)
{
    // The move begins with the first real motion: begun with the press it would swallow the second one of a double
    // click.
    const QPoint motion = event->position().toPoint() - m_pressPosition;
    if (m_isMoveArmed && motion.manhattanLength() >= QApplication::startDragDistance()) {
        m_isMoveArmed = false;
        windowHandle()->startSystemMove();
    }
}

void FramelessWindow::mouseReleaseEvent(QMouseEvent *)
{
    m_isMoveArmed = false;
}

void FramelessWindow::mouseDoubleClickEvent(QMouseEvent *event)
{
    m_isMoveArmed = false;
    if (event->button() == Qt::LeftButton && isInTitleRow(event->position().toPoint()))
        toggleMaximized();
}

} // namespace Tessaline
