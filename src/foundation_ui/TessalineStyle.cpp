#include "foundation_ui/TessalineStyle.h"

#include "foundation_ui/Contrast.h"
#include "foundation_ui/Fonts.h"
#include "foundation_ui/Symbols.h"

#include <QtGui/QIconEngine>
#include <QtGui/QPainter>
#include <QtWidgets/QApplication>
#include <QtWidgets/QMenu>
#include <QtWidgets/QMenuBar>
#include <QtWidgets/QScrollBar>
#include <QtWidgets/QStyleOption>
#include <QtWidgets/QToolTip>

#include <algorithm>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

constexpr double kControlRadius = 6;
constexpr double kItemRadius = 4;
constexpr int kMenuItemHeight = 28;
constexpr int kMenuSeparatorHeight = 9;
constexpr int kMenuItemPadding = 12; // on both sides of an item's text
constexpr int kMenuCheckWidth = 20;  // where some item of the menu can be checked
constexpr int kMenuBarItemPadding = 9;
constexpr int kButtonPadding = 12; // as the program's own buttons have
constexpr int kShortcutGap = 32;   // between the longest title and the keys
constexpr int kScrollHandleWidth = 6;
constexpr double kScrollHandleOpacity = 0.3; // of the secondary text's colour; 0.5 under the pointer
constexpr double kDisabledOpacity = 0.4;
constexpr int kMenuFrame = 10;    // margins and borders on both sides of the items
constexpr double kArrowSize = 10; // of a combo box
constexpr int kComboBoxArrowWidth = 24;

void fillRounded(QPainter *painter, const QRectF &box, double radius, const QColor &fill)
{
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(Qt::NoPen);
    painter->setBrush(fill);
    painter->drawRoundedRect(box, radius, radius);
    painter->restore();
}

void strokeRounded(QPainter *painter, const QRectF &box, double radius, const QColor &color, double width)
{
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setBrush(Qt::NoBrush);
    painter->setPen(QPen(color, width));
    const double inset = width / 2;
    painter->drawRoundedRect(box.adjusted(inset, inset, -inset, -inset), radius - inset, radius - inset);
    painter->restore();
}

/// A symbol as an icon, drawn only when it is shown.
class SymbolEngine final : public QIconEngine
{
public:
    SymbolEngine(QString symbol, const Theme &theme) : m_symbol(std::move(symbol)), m_theme(theme) {}

    void paint(QPainter *painter, const QRect &box, QIcon::Mode, QIcon::State) override
    {
        const int size = std::min(box.width(), box.height());
        Symbols::draw(*painter, m_symbol, QRectF(box), size, m_theme.color(ColorRole::SecondaryText));
    }
    QIconEngine *clone() const override { return new SymbolEngine(*this); }

private:
    QString m_symbol;
    const Theme &m_theme;
};

} // namespace

TessalineStyle::TessalineStyle(const Theme &theme) : QProxyStyle(u"fusion"_s), m_theme(theme) {}

void TessalineStyle::polish(QWidget *widget)
{
    QProxyStyle::polish(widget);
    if (qobject_cast<QScrollBar *>(widget)) {
        widget->setAttribute(Qt::WA_OpaquePaintEvent, false); // the ground of the view shows through
        widget->setAttribute(Qt::WA_Hover);
    }
}

int TessalineStyle::pixelMetric(PixelMetric metric, const QStyleOption *option, const QWidget *widget) const
{
    switch (metric) {
    case PM_ScrollBarExtent:
        return kScrollBarExtent;
    case PM_ScrollBarSliderMin:
        return 32;
    case PM_ScrollView_ScrollBarSpacing:
        return 0;
    case PM_FocusFrameHMargin:
    case PM_FocusFrameVMargin:
        return 3;
    case PM_MenuPanelWidth:
        return 1;
    case PM_MenuHMargin:
    case PM_MenuVMargin:
        return 4;
    case PM_MenuBarPanelWidth:
    case PM_MenuBarVMargin:
    case PM_MenuBarHMargin:
        return 0;
    case PM_MenuBarItemSpacing:
        return 0;
    case PM_SplitterWidth:
        return 1;
    case PM_DefaultFrameWidth:
        return qobject_cast<const QMenu *>(widget) ? 1 : QProxyStyle::pixelMetric(metric, option, widget);
    case PM_ToolTipLabelFrameWidth:
        return 6;
    case PM_ButtonShiftHorizontal:
    case PM_ButtonShiftVertical:
        return 0;
    default:
        return QProxyStyle::pixelMetric(metric, option, widget);
    }
}

int TessalineStyle::styleHint(StyleHint hint, const QStyleOption *option, const QWidget *widget,
                              QStyleHintReturn *returnData) const
{
    switch (hint) {
    case SH_UnderlineShortcut:
        return 0;
    case SH_EtchDisabledText:
    case SH_DitherDisabledText:
    case SH_DialogButtonBox_ButtonsHaveIcons:
        return 0;
    case SH_ItemView_ActivateItemOnSingleClick:
        return 0;
    case SH_ScrollBar_Transient:
        return 0;
    case SH_FocusFrame_AboveWidget:
        return 1;
    case SH_ToolTipLabel_Opacity:
        return 255;
    case SH_MessageBox_CenterButtons:
        return 0;
    case SH_ComboBox_Popup:
        return 1; // a menu over the box
    case SH_Menu_SloppySubMenus:
        return 1;
    default:
        return QProxyStyle::styleHint(hint, option, widget, returnData);
    }
}

QSize TessalineStyle::sizeFromContents(ContentsType type, const QStyleOption *option, const QSize &size,
                                       const QWidget *widget) const
{
    switch (type) {
    case CT_MenuItem: {
        const auto *item = qstyleoption_cast<const QStyleOptionMenuItem *>(option);
        if (!item)
            break;
        if (item->menuItemType == QStyleOptionMenuItem::Separator)
            return QSize(size.width(), kMenuSeparatorHeight);
        // The given size holds the title; the column of keys is as wide as the widest of them.
        const int keys = item->text.contains(u'\t') ? item->reservedShortcutWidth + kShortcutGap : 0;
        const int title = item->fontMetrics.horizontalAdvance(item->text.section(u'\t', 0, 0).remove(u'&'));
        const int check = item->menuHasCheckableItems ? kMenuCheckWidth : 0;
        const int column = std::max(title, size.width() - item->reservedShortcutWidth);
        return QSize(2 * kMenuItemPadding + check + column + keys, kMenuItemHeight);
    }
    case CT_MenuBarItem:
        return QSize(size.width() + 2 * kMenuBarItemPadding, 28);
    case CT_PushButton:
        return QSize(std::max(size.width() + 2 * kButtonPadding, 72), 28);
    case CT_ComboBox: // its menu lies over it, so what fits there has room here
        return QSize(size.width() + 2 * kMenuItemPadding + kMenuCheckWidth + kMenuFrame, 28);
    case CT_LineEdit:
        return QSize(QProxyStyle::sizeFromContents(type, option, size, widget).width(), 28);
    default:
        break;
    }
    return QProxyStyle::sizeFromContents(type, option, size, widget);
}

QRect TessalineStyle::subControlRect(ComplexControl control, const QStyleOptionComplex *option, SubControl subControl,
                                     const QWidget *widget) const
{
    if (control == CC_ComboBox && subControl == SC_ComboBoxEditField)
        return option->rect.adjusted(kMenuItemPadding - 3, 0, -kComboBoxArrowWidth, 0);
    const auto *bar = qstyleoption_cast<const QStyleOptionSlider *>(option);
    if (control != CC_ScrollBar || !bar)
        return QProxyStyle::subControlRect(control, option, subControl, widget);

    // No arrows: the groove is the whole bar, and the slider moves in it.
    const bool isVertical = bar->orientation == Qt::Vertical;
    const int groove = isVertical ? bar->rect.height() : bar->rect.width();
    const qint64 range = qint64(bar->maximum) - bar->minimum;
    int length = groove;
    if (range > 0) {
        length = static_cast<int>(qint64(bar->pageStep) * groove / (range + bar->pageStep));
        length = std::clamp(length, std::min(pixelMetric(PM_ScrollBarSliderMin, bar, widget), groove), groove);
    }
    const int start =
        sliderPositionFromValue(bar->minimum, bar->maximum, bar->sliderPosition, groove - length, bar->upsideDown);
    const auto along = [&](int from, int extent) {
        return isVertical ? QRect(0, from, bar->rect.width(), extent) : QRect(from, 0, extent, bar->rect.height());
    };
    switch (subControl) {
    case SC_ScrollBarSlider:
        return along(start, length);
    case SC_ScrollBarGroove:
        return along(0, groove);
    case SC_ScrollBarSubPage:
        return along(0, start);
    case SC_ScrollBarAddPage:
        return along(start + length, groove - start - length);
    default:
        return QRect();
    }
}

QIcon TessalineStyle::standardIcon(StandardPixmap icon, const QStyleOption *option, const QWidget *widget) const
{
    // NOTE: each menu bar asks for this one when it is made, whether or not it is ever shown, and the toolkit's own
    // loads all plugins for images.
    if (icon == SP_ToolBarHorizontalExtensionButton)
        return QIcon(new SymbolEngine(u"chevron.down"_s, m_theme));
    return QProxyStyle::standardIcon(icon, option, widget);
}

void TessalineStyle::drawPrimitive(PrimitiveElement element, const QStyleOption *option, QPainter *painter,
                                   const QWidget *widget) const
{
    const bool hasFocus = option->state.testFlag(State_HasFocus);
    switch (element) {
    case PE_PanelMenu:
        painter->fillRect(option->rect, m_theme.color(ColorRole::Control));
        return;
    case PE_FrameMenu:
    case PE_PanelTipLabel: {
        if (element == PE_PanelTipLabel)
            painter->fillRect(option->rect, m_theme.color(ColorRole::Control));
        painter->setPen(composed(m_theme.color(ColorRole::BubbleBorder), m_theme.color(ColorRole::Control)));
        painter->drawRect(option->rect.adjusted(0, 0, -1, -1));
        return;
    }
    case PE_PanelLineEdit:
        if (const auto *frame = qstyleoption_cast<const QStyleOptionFrame *>(option); frame && frame->lineWidth == 0)
            return; // a field without a frame lies on a ground that somebody else paints
        fillRounded(painter, QRectF(option->rect), kControlRadius, m_theme.color(ColorRole::Field));
        [[fallthrough]];
    case PE_FrameLineEdit:
        strokeRounded(painter, QRectF(option->rect), kControlRadius,
                      m_theme.color(hasFocus ? ColorRole::FocusRing : ColorRole::BubbleBorder), hasFocus ? 2 : 1);
        return;
    case PE_FrameFocusRect:
        return; // each control shows its focus itself
    case PE_PanelScrollAreaCorner:
        return;
    case PE_PanelMenuBar:
    case PE_PanelStatusBar:
        return;
    default:
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    }
}

void TessalineStyle::drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                                 const QWidget *widget) const
{
    switch (element) {
    case CE_MenuItem:
        drawMenuItem(option, painter);
        return;
    case CE_MenuEmptyArea:
        return;
    case CE_MenuBarItem:
        drawMenuBarItem(option, painter);
        return;
    case CE_MenuBarEmptyArea:
        return;
    case CE_PushButtonBevel:
        drawButtonBevel(option, painter);
        return;
    case CE_PushButtonLabel: {
        const auto *button = qstyleoption_cast<const QStyleOptionButton *>(option);
        if (!button)
            return;
        const bool isDefault = button->features.testFlag(QStyleOptionButton::DefaultButton);
        QColor color = m_theme.color(isDefault ? ColorRole::OnAccent : ColorRole::Text);
        if (!option->state.testFlag(State_Enabled))
            color = withOpacity(color, kDisabledOpacity);
        painter->setPen(color);
        painter->drawText(button->rect, Qt::AlignCenter | Qt::TextHideMnemonic, button->text);
        return;
    }
    case CE_Splitter:
        painter->fillRect(option->rect, m_theme.color(ColorRole::Hairline));
        return;
    default:
        QProxyStyle::drawControl(element, option, painter, widget);
    }
}

void TessalineStyle::drawComplexControl(ComplexControl control, const QStyleOptionComplex *option, QPainter *painter,
                                        const QWidget *widget) const
{
    if (control == CC_ScrollBar)
        drawScrollBar(option, painter);
    else if (control == CC_ComboBox)
        drawComboBox(option, painter);
    else
        QProxyStyle::drawComplexControl(control, option, painter, widget);
}

void TessalineStyle::drawMenuItem(const QStyleOption *option, QPainter *painter) const
{
    const auto *item = qstyleoption_cast<const QStyleOptionMenuItem *>(option);
    if (!item)
        return;
    if (item->menuItemType == QStyleOptionMenuItem::Separator) {
        const int middle = item->rect.center().y();
        painter->fillRect(QRect(item->rect.left() + 8, middle, item->rect.width() - 16, 1),
                          m_theme.color(ColorRole::Hairline));
        return;
    }

    const bool isEnabled = item->state.testFlag(State_Enabled);
    if (isEnabled && item->state.testFlag(State_Selected))
        fillRounded(painter, QRectF(item->rect), kItemRadius, m_theme.color(ColorRole::SelectedRow));

    const auto toned = [&](ColorRole role) {
        const QColor color = m_theme.color(role);
        return isEnabled ? color : withOpacity(color, kDisabledOpacity);
    };
    QRect box = item->rect.adjusted(kMenuItemPadding, 0, -kMenuItemPadding, 0);
    if (item->menuHasCheckableItems) {
        if (item->checked)
            fillRounded(painter, QRectF(box.left(), box.center().y() - 2, 6, 6), 3, m_theme.color(ColorRole::Accent));
        box.setLeft(box.left() + kMenuCheckWidth);
    }
    painter->setFont(item->font);
    painter->setPen(toned(ColorRole::Text));
    constexpr int kFlags = Qt::AlignVCenter | Qt::TextSingleLine | Qt::TextHideMnemonic;
    painter->drawText(box, kFlags | Qt::AlignLeft, item->text.section(u'\t', 0, 0));
    painter->setPen(toned(ColorRole::SecondaryText));
    painter->drawText(box, kFlags | Qt::AlignRight, item->text.section(u'\t', 1));
}

void TessalineStyle::drawMenuBarItem(const QStyleOption *option, QPainter *painter) const
{
    const auto *item = qstyleoption_cast<const QStyleOptionMenuItem *>(option);
    if (!item)
        return;
    const bool isOpen = item->state.testFlag(State_Sunken);
    if (isOpen || item->state.testFlag(State_Selected))
        fillRounded(painter, QRectF(item->rect), kControlRadius,
                    m_theme.color(isOpen ? ColorRole::Pressed : ColorRole::Hover));
    painter->setPen(m_theme.color(ColorRole::Text));
    painter->drawText(item->rect, Qt::AlignCenter | Qt::TextSingleLine | Qt::TextHideMnemonic, item->text);
}

void TessalineStyle::drawScrollBar(const QStyleOptionComplex *option, QPainter *painter) const
{
    const auto *bar = qstyleoption_cast<const QStyleOptionSlider *>(option);
    if (!bar || bar->maximum <= bar->minimum)
        return;
    QRectF handle(subControlRect(CC_ScrollBar, bar, SC_ScrollBarSlider, nullptr));
    handle.translate(bar->rect.topLeft());
    const double inset = (kScrollBarExtent - kScrollHandleWidth) / 2.0;
    handle.adjust(inset, inset, -inset, -inset);
    const bool isAlive = bar->state.testFlag(State_MouseOver) || bar->state.testFlag(State_Sunken);
    fillRounded(painter, handle, kScrollHandleWidth / 2.0,
                withOpacity(m_theme.color(ColorRole::SecondaryText), isAlive ? 0.5 : kScrollHandleOpacity));
}

void TessalineStyle::drawButtonBevel(const QStyleOption *option, QPainter *painter) const
{
    const auto *button = qstyleoption_cast<const QStyleOptionButton *>(option);
    if (!button)
        return;
    const QRectF box(button->rect);
    const bool isEnabled = option->state.testFlag(State_Enabled);
    painter->save();
    if (!isEnabled)
        painter->setOpacity(kDisabledOpacity);
    if (button->features.testFlag(QStyleOptionButton::DefaultButton)) {
        fillRounded(painter, box, kControlRadius, m_theme.color(ColorRole::Accent));
    } else {
        fillRounded(painter, box, kControlRadius, m_theme.color(ColorRole::Control));
        strokeRounded(painter, box, kControlRadius, m_theme.color(ColorRole::BubbleBorder), 1);
    }
    if (isEnabled && option->state.testFlag(State_Sunken))
        fillRounded(painter, box, kControlRadius, m_theme.color(ColorRole::Pressed));
    else if (isEnabled && option->state.testFlag(State_MouseOver))
        fillRounded(painter, box, kControlRadius, m_theme.color(ColorRole::Hover));
    if (option->state.testFlag(State_HasFocus) && option->state.testFlag(State_KeyboardFocusChange))
        strokeRounded(painter, box, kControlRadius, m_theme.color(ColorRole::Text), 2);
    painter->restore();
}

void TessalineStyle::drawComboBox(const QStyleOptionComplex *option, QPainter *painter) const
{
    const QRectF box(option->rect);
    const bool isEnabled = option->state.testFlag(State_Enabled);
    const bool hasFocus = option->state.testFlag(State_HasFocus) && option->state.testFlag(State_KeyboardFocusChange);
    painter->save();
    if (!isEnabled)
        painter->setOpacity(kDisabledOpacity);
    fillRounded(painter, box, kControlRadius, m_theme.color(ColorRole::Control));
    if (isEnabled && option->state.testFlag(State_MouseOver))
        fillRounded(painter, box, kControlRadius, m_theme.color(ColorRole::Hover));
    strokeRounded(painter, box, kControlRadius,
                  m_theme.color(hasFocus ? ColorRole::FocusRing : ColorRole::BubbleBorder), hasFocus ? 2 : 1);
    const QRectF arrow = box.adjusted(box.width() - kComboBoxArrowWidth, 0, 0, 0);
    Symbols::draw(*painter, u"chevron.down", arrow, kArrowSize, m_theme.color(ColorRole::SecondaryText));
    painter->restore();
}

QPalette applicationPalette(Appearance appearance)
{
    const auto role = [appearance](ColorRole colorRole) { return color(colorRole, appearance); };
    const QColor ground = role(ColorRole::RightColumn);
    QPalette palette(role(ColorRole::Text), ground);
    palette.setColor(QPalette::WindowText, role(ColorRole::Text));
    palette.setColor(QPalette::Base, role(ColorRole::Field));
    palette.setColor(QPalette::AlternateBase, ground);
    palette.setColor(QPalette::Text, role(ColorRole::Text));
    palette.setColor(QPalette::ButtonText, role(ColorRole::Text));
    palette.setColor(QPalette::Button, role(ColorRole::Control));
    palette.setColor(QPalette::PlaceholderText, role(ColorRole::TertiaryText));
    palette.setColor(QPalette::ToolTipBase, role(ColorRole::Control));
    palette.setColor(QPalette::ToolTipText, role(ColorRole::Text));
    palette.setColor(QPalette::Highlight, composed(role(ColorRole::TextSelection), role(ColorRole::Field)));
    palette.setColor(QPalette::HighlightedText, role(ColorRole::Text));
    palette.setColor(QPalette::Link, role(ColorRole::Link));
    palette.setColor(QPalette::LinkVisited, role(ColorRole::Link));
    for (const QPalette::ColorRole disabled : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, disabled, withOpacity(role(ColorRole::Text), kDisabledOpacity));
    return palette;
}

void dressApplication(const Theme &theme)
{
    QApplication::setStyle(new TessalineStyle(theme));
    QApplication::setFont(Fonts::interface(Fonts::kInterfaceSize));
    QToolTip::setFont(Fonts::interface(Fonts::kInterfaceSize));
    const auto paint = [&theme] {
        const QPalette palette = applicationPalette(theme.appearance());
        QApplication::setPalette(palette);
        QToolTip::setPalette(palette);
    };
    paint();
    QObject::connect(&theme, &Theme::changed, qApp, paint);
}

} // namespace Tessaline
