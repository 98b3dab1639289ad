#include "foundation_ui/PlainButton.h"

#include "foundation_ui/FocusRing.h"

#include <QtGui/QKeyEvent>
#include <QtWidgets/QAccessibleWidget>

namespace Tessaline {

namespace {

/// Tells a PlainButton to assistive technology. The toolkit's own class for buttons knows neither values nor selection.
class PlainButtonAccessible final : public QAccessibleWidget
{
public:
    explicit PlainButtonAccessible(PlainButton *button) : QAccessibleWidget(button, button->accessibleRole()) {}

    QAccessible::State state() const override
    {
        QAccessible::State state = QAccessibleWidget::state();
        state.pressed = button()->isDown();
        state.checkable = button()->isCheckable();
        state.checked = button()->isChecked();
        if (role() == QAccessible::ListItem) {
            state.selectable = true;
            state.selected = button()->isShownSelected();
        }
        return state;
    }

    QString text(QAccessible::Text kind) const override
    {
        if (kind == QAccessible::Value)
            return button()->accessibleValue();
        if (kind == QAccessible::Name && button()->accessibleName().isEmpty())
            return button()->text();
        return QAccessibleWidget::text(kind);
    }

    QStringList actionNames() const override { return {pressAction(), setFocusAction()}; }

    void doAction(const QString &name) override
    {
        if (!button()->isEnabled())
            return;
        if (name == pressAction())
            button()->click();
        else
            QAccessibleWidget::doAction(name);
    }

private:
    PlainButton *button() const { return static_cast<PlainButton *>(widget()); }
};

QAccessibleInterface *makeAccessible(const QString &className, QObject *object)
{
    if (className == QLatin1StringView(PlainButton::staticMetaObject.className()))
        return new PlainButtonAccessible(static_cast<PlainButton *>(object));
    return nullptr;
}

} // namespace

PlainButton::PlainButton(const Theme &theme, QWidget *parent) : QAbstractButton(parent), m_theme(theme)
{
    [[maybe_unused]] static const bool kKnown = (QAccessible::installFactory(makeAccessible), true);
    setFocusPolicy(Qt::TabFocus);
    setAttribute(Qt::WA_Hover);
    connect(&theme, &Theme::changed, this, qOverload<>(&QWidget::update));
    connect(this, &QAbstractButton::toggled, this, [this] {
        QAccessible::State changed;
        changed.checked = true;
        QAccessibleStateChangeEvent event(this, changed);
        QAccessible::updateAccessibility(&event);
    });
}

PlainButton::~PlainButton()
{
    delete m_ring;
}

void PlainButton::setHelp(const QString &help)
{
    setToolTip(help);
    if (text().isEmpty())
        setAccessibleName(help);
}

QAccessible::Role PlainButton::accessibleRole() const
{
    return isCheckable() ? QAccessible::CheckBox : QAccessible::Button;
}

QColor PlainButton::stateTone() const
{
    if (isEnabled() && isDown())
        return m_theme.color(ColorRole::Pressed);
    return isHovered() ? m_theme.color(ColorRole::Hover) : QColor(Qt::transparent);
}

void PlainButton::setCornerRadius(double radius)
{
    m_cornerRadius = radius;
}

bool PlainButton::event(QEvent *event)
{
    if (event->type() == QEvent::HoverEnter || event->type() == QEvent::HoverLeave)
        update();
    return QAbstractButton::event(event);
}

void PlainButton::focusInEvent(QFocusEvent *event)
{
    QAbstractButton::focusInEvent(event);
    if (!FocusRing::isKeyboardFocus(*event))
        return;
    m_hasKeyboardFocus = true;
    if (!m_drawsOwnRing)
        showRing();
}

void PlainButton::focusOutEvent(QFocusEvent *event)
{
    QAbstractButton::focusOutEvent(event);
    // A menu or another window takes the focus for a moment only.
    if (event->reason() == Qt::PopupFocusReason || event->reason() == Qt::ActiveWindowFocusReason)
        return;
    m_hasKeyboardFocus = false;
    if (m_ring)
        m_ring->setWidget(nullptr);
}

void PlainButton::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        click();
        return;
    }
    QAbstractButton::keyPressEvent(event);
}

void PlainButton::showRing()
{
    if (!m_ring)
        m_ring = new FocusRing(m_theme, m_cornerRadius, this);
    m_ring->setWidget(this);
}

} // namespace Tessaline
