#include "panels/Popover.h"

#include "foundation_ui/Contrast.h"
#include "foundation_ui/Theme.h"

#include <QtCore/QCoreApplication>
#include <QtGui/QKeyEvent>
#include <QtGui/QPainter>
#include <QtGui/QPainterPath>
#include <QtGui/QScreen>
#include <QtWidgets/QAccessibleWidget>
#include <QtWidgets/QVBoxLayout>

#include <algorithm>

namespace Tessaline {

namespace {

constexpr double kRadius = 8;
constexpr int kGap = 4; // between the control and the popover

/// The toolkit takes every window for a child of the program. This one is told by the window that it hangs in.
class PopoverAccessible final : public QAccessibleWidget
{
public:
    explicit PopoverAccessible(QWidget *popover) : QAccessibleWidget(popover, QAccessible::Dialog) {}

    QAccessibleInterface *parent() const override
    {
        return QAccessible::queryAccessibleInterface(widget()->parentWidget());
    }
};

QAccessibleInterface *makeAccessible(const QString &className, QObject *object)
{
    if (className == QLatin1StringView(Popover::staticMetaObject.className()))
        return new PopoverAccessible(static_cast<QWidget *>(object));
    return nullptr;
}

} // namespace

Popover::Popover(const Theme &theme, const QString &name, QWidget *parent)
    : QWidget(parent, Qt::Popup | Qt::FramelessWindowHint | Qt::NoDropShadowWindowHint), m_theme(theme)
{
    [[maybe_unused]] static const bool kKnown = (QAccessible::installFactory(makeAccessible), true);
    setAttribute(Qt::WA_TranslucentBackground);
    setAccessibleName(name);
    setWindowTitle(name);
    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(kPadding, kPadding, kPadding, kPadding);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    connect(&theme, &Theme::changed, this, qOverload<>(&QWidget::update));
}

void Popover::setContent(QWidget *content)
{
    delete m_content;
    m_content = content;
    m_content->setFixedWidth(kWidth - 2 * kPadding);
    layout()->addWidget(m_content);
}

void Popover::showAt(const QWidget &anchor)
{
    adjustSize();
    const QRect control(anchor.mapToGlobal(QPoint(0, 0)), anchor.size());
    const QRect screen = anchor.screen()->availableGeometry();
    QPoint place(control.left(), control.bottom() + 1 + kGap);
    if (place.y() + height() > screen.bottom())
        place.setY(control.top() - kGap - height());
    place.setX(std::clamp(place.x(), screen.left(), std::max(screen.left(), screen.right() + 1 - width())));
    place.setY(std::clamp(place.y(), screen.top(), std::max(screen.top(), screen.bottom() + 1 - height())));
    move(place);
    show();
}

void Popover::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    const QColor ground = m_theme.color(ColorRole::Control);
    const QColor border = composed(m_theme.color(ColorRole::BubbleBorder), ground); // nothing is below the window
    painter.setClipRegion(mask());
    painter.fillRect(rect(), border); // its smooth corners would be mixed with that nothing
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(border);
    painter.setBrush(ground);
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), kRadius, kRadius);
}

void Popover::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    // Where the desktop does not compose windows, their corners would be black.
    QPainterPath outline;
    outline.addRoundedRect(QRectF(rect()), kRadius, kRadius);
    setMask(QRegion(outline.toFillPolygon().toPolygon()));
}

void Popover::keyPressEvent(QKeyEvent *event)
{
    QWidget *typedInto = parentWidget()->window()->focusWidget();
    const bool isTyping = !focusWidget() && typedInto && typedInto->testAttribute(Qt::WA_InputMethodEnabled);
    if (isTyping && !event->matches(QKeySequence::Cancel))
        QCoreApplication::sendEvent(typedInto, event);
    else
        QWidget::keyPressEvent(event);
}

void Popover::hideEvent(QHideEvent *event)
{
    QWidget::hideEvent(event);
    Q_EMIT closed();
}

} // namespace Tessaline
