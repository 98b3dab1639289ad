#include "MarkdownUI/MarkdownView.h"

#include "foundation_ui/FocusRing.h"
#include "foundation_ui/PlainToolTip.h"
#include "MarkdownUI/MarkdownViewAccessible.h"
#include "MarkdownUI/TextFonts.h"

#include <QtCore/QTimerEvent>
#include <QtGui/QClipboard>
#include <QtGui/QGuiApplication>
#include <QtGui/QHelpEvent>
#include <QtGui/QKeyEvent>
#include <QtGui/QPainter>
#include <QtGui/QPaintEvent>
#include <QtGui/QStyleHints>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMenu>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QToolTip>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

namespace MarkdownUI {

using namespace std::chrono_literals;
using Tessaline::ColorRole;

namespace {

constexpr std::chrono::milliseconds kAutoScrollInterval = 25ms; // while a selection is dragged over an edge
constexpr int kLineStep = 24;                                   // points that a key or a click on the bar scrolls
constexpr int kScreensByStep = 2; // ways shorter than so many screens go block by block and are exact

} // namespace

MarkdownView::MarkdownView(const Tessaline::Theme &theme, QWidget *parent)
    : QAbstractScrollArea(parent), m_theme(theme), m_display(std::make_unique<MarkdownDisplay>()),
      m_interaction(std::make_unique<MarkdownInteraction>(*m_display)), m_top{0, -m_inset}
{
    MarkdownViewAccessible::install();
    new MarkdownViewAnnouncer(*this); // belongs to the view
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setFocusPolicy(Qt::StrongFocus);
    viewport()->setMouseTracking(true);
    viewport()->setAttribute(Qt::WA_OpaquePaintEvent); // every pixel is painted here
    m_openURL = [this](const QUrl &url) { openWithCare(url, this, openOnDesktop); };

    connect(m_display.get(), &MarkdownDisplay::changed, this, &MarkdownView::follow);
    connect(m_interaction.get(), &MarkdownInteraction::changed, viewport(), qOverload<>(&QWidget::update));
    connect(m_interaction.get(), &MarkdownInteraction::showRequested, this, &MarkdownView::ensureVisible);
    connect(m_interaction.get(), &MarkdownInteraction::linkActivated, this, &MarkdownView::open);
    connect(&m_theme, &Tessaline::Theme::changed, this, &MarkdownView::followAppearance);
    followAppearance();
}

MarkdownView::~MarkdownView() = default;

// Content

void MarkdownView::setMarkdown(const QString &markdown)
{
    m_display->setMarkdown(markdown);
}

void MarkdownView::setEnvironment(DisplayEnvironment environment)
{
    m_environment = std::move(environment);
    followAppearance();
}

void MarkdownView::followAppearance()
{
    m_environment.scheme = colorScheme(m_theme.appearance());
    m_display->setEnvironment(m_environment);
    viewport()->update();
}

void MarkdownView::setGroundColor(const QColor &color)
{
    m_ground = color;
    viewport()->update();
}

void MarkdownView::setInset(int inset)
{
    if (m_top.offset < 0 && m_top.leaf == 0)
        m_top.offset = -inset;
    m_inset = inset;
    m_display->setWidth(viewport()->width() - 2 * m_inset);
    follow();
}

/// Whatever has changed, the block at the top stays.
void MarkdownView::follow()
{
    syncScrollBar();
    viewport()->update();
}

void MarkdownView::open(const QUrl &url)
{
    if (m_openURL)
        m_openURL(url);
}

// What is in view

int MarkdownView::top() const
{
    return m_display->yOf(m_top);
}

int MarkdownView::lowestTop()
{
    m_display->prepareEnd(viewport()->height());
    return std::max(-m_inset, m_display->height() + m_inset - viewport()->height());
}

void MarkdownView::setTop(const MarkdownDisplay::Anchor &anchor)
{
    const MarkdownDisplay::Anchor before = m_top;
    m_top = anchor;
    syncScrollBar();
    if (m_top != before)
        viewport()->update();
}

void MarkdownView::scrollBy(int points)
{
    setTop(m_display->moved(m_top, points));
}

void MarkdownView::syncScrollBar()
{
    // 1. What is in view lies inside of the text, which may have become shorter.
    if (m_top.leaf >= std::max<qsizetype>(m_display->leafCount(), 1))
        m_top = m_display->anchorAt(m_display->height());
    m_display->prepare(top(), top() + viewport()->height());
    const int lowest = lowestTop();
    if (top() > lowest)
        m_top = m_display->moved(m_display->anchorAt(m_display->height()), lowest - m_display->height());
    if (top() < -m_inset)
        m_top = {0, -m_inset};

    // 2. The bar shows that.
    m_isSyncing = true;
    verticalScrollBar()->setPageStep(viewport()->height());
    verticalScrollBar()->setSingleStep(kLineStep);
    verticalScrollBar()->setRange(0, lowest + m_inset);
    verticalScrollBar()->setValue(top() + m_inset);
    m_isSyncing = false;
}

void MarkdownView::scrollContentsBy(int, int)
{
    if (m_isSyncing)
        return;
    const int target = verticalScrollBar()->value() - m_inset;
    const int distance = target - top();
    if (std::abs(distance) <= kScreensByStep * viewport()->height())
        setTop(m_display->moved(m_top, distance));
    else
        setTop(target < 0 ? MarkdownDisplay::Anchor{0, target} : m_display->anchorAt(target));
}

void MarkdownView::resizeEvent(QResizeEvent *)
{
    const int before = m_display->width();
    const MarkdownDisplay::Anchor anchor = m_top;
    m_display->setWidth(viewport()->width() - 2 * m_inset);
    if (m_display->width() != before && anchor.offset > 0) {
        // The rows of the block at the top are others now: its beginning stays in view.
        m_top = {anchor.leaf, 0};
    }
    syncScrollBar();
}

QPointF MarkdownView::toDisplay(QPointF viewportPoint) const
{
    return {viewportPoint.x() - m_inset, viewportPoint.y() + top()};
}

QPointF MarkdownView::toViewport(QPointF displayPoint) const
{
    return {displayPoint.x() + m_inset, displayPoint.y() - top()};
}

void MarkdownView::ensureVisible(const QRectF &rect)
{
    const int margin = std::min(kLineStep, viewport()->height() / 4);
    const int above = static_cast<int>(std::floor(rect.top())) - margin - top();
    const int below = static_cast<int>(std::ceil(rect.bottom())) + margin - top() - viewport()->height();
    if (above < 0)
        scrollBy(above);
    else if (below > 0)
        scrollBy(std::min(below, above));
    viewport()->update();
}

// Painting

void MarkdownView::paintEvent(QPaintEvent *event)
{
    QPainter painter(viewport());
    const QColor under = m_ground.isValid() ? m_ground : m_theme.color(ColorRole::EditorBackground);
    const std::optional<DynamicColor> ground = m_environment.textAttributes().backgroundColor;
    painter.fillRect(event->rect(), ground ? colorOf(*ground, m_environment.scheme) : under);
    DisplayPaint paint = m_interaction->paint();
    paint.selectionColor = m_theme.color(ColorRole::TextSelection);
    paint.focusColor = m_theme.color(ColorRole::FocusRing);
    const int height = m_display->height();
    paintDisplay(painter, *m_display, toViewport({}), event->rect(), paint);
    // What is farther away than a screen is laid out again when it comes near.
    m_display->keepOnly(top() - viewport()->height(), top() + 2 * viewport()->height());
    if (m_display->height() != height)
        QMetaObject::invokeMethod(this, &MarkdownView::syncScrollBar, Qt::QueuedConnection);
}

// Mouse

void MarkdownView::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    const bool isThird = m_sinceDoubleClick.isValid() &&
                         m_sinceDoubleClick.elapsed() < QGuiApplication::styleHints()->mouseDoubleClickInterval() &&
                         (event->position() - m_lastPoint).manhattanLength() < QApplication::startDragDistance();
    m_sinceDoubleClick.invalidate();
    m_lastPoint = event->position();
    m_interaction->clearFocus();
    m_interaction->press(toDisplay(m_lastPoint),
                         isThird ? MarkdownInteraction::Click::Triple : MarkdownInteraction::Click::Single,
                         event->modifiers());
}

void MarkdownView::mouseDoubleClickEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
        return;
    m_lastPoint = event->position();
    m_sinceDoubleClick.start();
    m_interaction->press(toDisplay(m_lastPoint), MarkdownInteraction::Click::Double, event->modifiers());
}

void MarkdownView::mouseMoveEvent(QMouseEvent *event)
{
    m_lastPoint = event->position();
    if (!(event->buttons() & Qt::LeftButton)) {
        m_interaction->hover(toDisplay(m_lastPoint));
        viewport()->setCursor(m_interaction->cursor());
        return;
    }
    m_interaction->drag(toDisplay(m_lastPoint));
    if (!m_interaction->isSelecting() || viewport()->rect().contains(event->position().toPoint()))
        m_autoScroll.stop();
    else if (!m_autoScroll.isActive())
        m_autoScroll.start(static_cast<int>(kAutoScrollInterval.count()), this);
}

void MarkdownView::mouseReleaseEvent(QMouseEvent *event)
{
    m_autoScroll.stop();
    if (event->button() == Qt::LeftButton)
        m_interaction->release(toDisplay(event->position()));
}

void MarkdownView::timerEvent(QTimerEvent *event)
{
    if (event->timerId() != m_autoScroll.timerId()) {
        QAbstractScrollArea::timerEvent(event);
        return;
    }
    // The farther outside, the faster.
    const double above = -m_lastPoint.y();
    const double below = m_lastPoint.y() - viewport()->height();
    if (above > 0 || below > 0)
        scrollBy(static_cast<int>(above > 0 ? -above : below));
    m_interaction->drag(toDisplay(m_lastPoint));
}

void MarkdownView::wheelEvent(QWheelEvent *event)
{
    // Shift turns a wheel sideways, as a touch pad does by itself.
    const bool isTurned = event->modifiers() & Qt::ShiftModifier && event->angleDelta().x() == 0;
    const QPoint pixels = event->pixelDelta().isNull() ? event->angleDelta() * kLineStep / 40 : event->pixelDelta();
    const int sideways = isTurned ? pixels.y() : pixels.x();
    if (std::abs(sideways) > std::abs(isTurned ? 0 : pixels.y())) {
        if (m_display->scrollSideways(toDisplay(event->position()), -sideways))
            viewport()->update();
        event->accept();
        return;
    }
    QAbstractScrollArea::wheelEvent(event);
}

bool MarkdownView::viewportEvent(QEvent *event)
{
    if (event->type() == QEvent::Leave) {
        m_interaction->leave();
    } else if (event->type() == QEvent::ToolTip) {
        const auto *const help = static_cast<QHelpEvent *>(event);
        const TargetPlace place = m_display->targetAt(toDisplay(help->pos()));
        if (!place.isValid()) {
            QToolTip::hideText();
            event->ignore();
            return true;
        }
        const BlockTarget target = m_display->target(place);
        const QString text = target.kind == BlockTarget::Kind::Link ? shownTarget(target.url) : target.name;
        QToolTip::showText(help->globalPos(), Tessaline::plainToolTip(text), viewport());
        return true;
    }
    return QAbstractScrollArea::viewportEvent(event);
}

std::unique_ptr<QMenu> MarkdownView::makeContextMenu(const TargetPlace &place)
{
    auto menu = std::make_unique<QMenu>(this);
    const BlockTarget target = place.isValid() ? m_display->target(place) : BlockTarget();
    if (place.isValid() && target.kind == BlockTarget::Kind::Link) {
        menu->addAction(tr("Open Link"), this, [this, place] { m_interaction->activate(place); });
        menu->addAction(tr("Copy Link"), this, [url = target.url] {
            QGuiApplication::clipboard()->setText(url.toString(QUrl::FullyEncoded));
        });
        menu->addSeparator();
    }
    menu->addAction(tr("Copy"), this, &MarkdownView::copy)->setEnabled(m_interaction->hasSelection());
    menu->addAction(tr("Select All"), this, &MarkdownView::selectAll)->setEnabled(m_display->leafCount() > 0);
    return menu;
}

void MarkdownView::contextMenuEvent(QContextMenuEvent *event)
{
    const bool isByKey = event->reason() == QContextMenuEvent::Keyboard;
    const TargetPlace place = isByKey ? m_interaction->focused() : m_display->targetAt(toDisplay(event->pos()));
    makeContextMenu(place)->exec(event->globalPos());
}

// Keyboard

bool MarkdownView::event(QEvent *event)
{
    // Copying and selecting all are the view's own while it has the focus, whatever the window's menus say.
    if (event->type() == QEvent::ShortcutOverride) {
        const auto *const key = static_cast<QKeyEvent *>(event);
        if (key->matches(QKeySequence::Copy) || key->matches(QKeySequence::SelectAll)) {
            event->accept();
            return true;
        }
    }
    return QAbstractScrollArea::event(event);
}

void MarkdownView::keyPressEvent(QKeyEvent *event)
{
    if (m_interaction->handleKey(*event))
        return;
    const int page = std::max(viewport()->height() - kLineStep, kLineStep);
    switch (event->key()) {
    case Qt::Key_Down:
        scrollBy(kLineStep);
        return;
    case Qt::Key_Up:
        scrollBy(-kLineStep);
        return;
    case Qt::Key_PageDown:
    case Qt::Key_Space:
        scrollBy(page);
        return;
    case Qt::Key_PageUp:
        scrollBy(-page);
        return;
    case Qt::Key_Home:
        setTop({0, -m_inset});
        return;
    case Qt::Key_End:
        setTop(m_display->anchorAt(m_display->height()));
        return;
    case Qt::Key_Left:
    case Qt::Key_Right:
        // A block of code whose button has the focus moves sideways.
        if (const TargetPlace place = m_interaction->focused(); place.isValid()) {
            const double step = event->key() == Qt::Key_Right ? kLineStep : -kLineStep;
            if (m_display->scrollSideways(m_display->leafRect(place.leaf).center(), step))
                viewport()->update();
            return;
        }
        break;
    default:
        break;
    }
    QAbstractScrollArea::keyPressEvent(event);
}

void MarkdownView::focusInEvent(QFocusEvent *event)
{
    QAbstractScrollArea::focusInEvent(event);
    if (event->reason() == Qt::TabFocusReason)
        m_interaction->focusNext();
    else if (event->reason() == Qt::BacktabFocusReason)
        m_interaction->focusPrevious();
}

void MarkdownView::focusOutEvent(QFocusEvent *event)
{
    QAbstractScrollArea::focusOutEvent(event);
    // A menu or another window takes the focus for a moment only.
    if (event->reason() != Qt::PopupFocusReason && event->reason() != Qt::ActiveWindowFocusReason)
        m_interaction->clearFocus();
}

bool MarkdownView::focusNextPrevChild(bool next)
{
    if (next ? m_interaction->focusNext() : m_interaction->focusPrevious())
        return true;
    return QAbstractScrollArea::focusNextPrevChild(next);
}

} // namespace MarkdownUI
