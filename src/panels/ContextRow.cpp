#include "panels/ContextRow.h"

#include "foundation_ui/Contrast.h"
#include "foundation_ui/Fonts.h"
#include "foundation_ui/Label.h"
#include "foundation_ui/PlainToolTip.h"
#include "foundation_ui/Symbols.h"

#include <QtGui/QFontMetricsF>
#include <QtGui/QPainter>

#include <algorithm>
#include <cmath>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

constexpr double kRowRadius = 8;
constexpr int kRowPadding = 10;
constexpr int kRowSpacing = 2;
constexpr double kNameSize = 15;
constexpr double kSubtitleSize = 12;
constexpr double kBorderOpacity = 0.15; // of the secondary colour

constexpr double kChipTextSize = 12;
constexpr double kPlusSize = 10;
constexpr double kPlusOutline = 15; // with the air around it
constexpr int kChipSidePadding = 12;
constexpr int kChipVerticalPadding = 6;
constexpr int kChipSpacing = 6;
constexpr int kWidestChipText = 200;

QFont nameFont()
{
    QFont font = Fonts::body(kNameSize);
    font.setBold(true);
    return font;
}

QFont subtitleFont()
{
    QFont font = Fonts::interface(kSubtitleSize);
    font.setItalic(true);
    return font;
}

int lineHeight(const QFont &font)
{
    return static_cast<int>(std::ceil(QFontMetricsF(font).height()));
}

void drawCard(QPainter &painter, const QRect &box, double radius, const Theme &theme, const QColor &tone)
{
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(withOpacity(theme.color(ColorRole::SecondaryText), kBorderOpacity));
    painter.setBrush(theme.color(ColorRole::Control));
    painter.drawRoundedRect(QRectF(box).adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
    painter.setPen(Qt::NoPen);
    painter.setBrush(tone);
    painter.drawRoundedRect(QRectF(box), radius, radius);
}

} // namespace

ContextRow::ContextRow(const Theme &theme, const ContextItem &item, QWidget *parent)
    : PlainButton(theme, parent), m_name(Label::singleLine(item.name)),
      m_subtitle(Label::singleLine(item.subtitle.value_or(QString())))
{
    setCornerRadius(kRowRadius);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setAccessibleName(m_name);
    setAccessibleDescription(m_subtitle);
}

QSize ContextRow::sizeHint() const
{
    const int subtitle = m_subtitle.isEmpty() ? 0 : kRowSpacing + lineHeight(subtitleFont());
    return {200, 2 * kRowPadding + lineHeight(nameFont()) + subtitle};
}

QSize ContextRow::minimumSizeHint() const
{
    return {80, sizeHint().height()};
}

void ContextRow::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    drawCard(painter, rect(), kRowRadius, theme(), stateTone());
    QRect line = rect().adjusted(kRowPadding, kRowPadding, -kRowPadding, 0);
    const auto drawLine = [&](const QFont &font, ColorRole role, const QString &text) {
        line.setHeight(lineHeight(font));
        painter.setFont(font);
        painter.setPen(theme().color(role));
        painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter,
                         QFontMetricsF(font).elidedText(text, Qt::ElideRight, line.width()));
        line.translate(0, line.height() + kRowSpacing);
    };
    drawLine(nameFont(), ColorRole::AccentText, m_name);
    if (!m_subtitle.isEmpty())
        drawLine(subtitleFont(), ColorRole::SecondaryText, m_subtitle);
}

SuggestionChip::SuggestionChip(const Theme &theme, const QString &topic, QWidget *parent)
    : PlainButton(theme, parent), m_topic(Label::singleLine(topic))
{
    setText(QString(m_topic).replace(u'&', "&&"_L1)); // no shortcut
    setAccessibleName(m_topic);
    setFont(Fonts::interface(kChipTextSize));
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setCornerRadius(sizeHint().height() / 2.0);
    setHelp(plainToolTip(m_topic)); // a model may suggest anything
}

QSize SuggestionChip::sizeHint() const
{
    const int text =
        std::min(static_cast<int>(std::ceil(QFontMetricsF(font()).horizontalAdvance(m_topic))), kWidestChipText);
    return {2 * kChipSidePadding + static_cast<int>(kPlusSize) + kChipSpacing + text,
            2 * kChipVerticalPadding + lineHeight(font())};
}

void SuggestionChip::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    drawCard(painter, rect(), height() / 2.0, theme(), stateTone());
    const QColor color = theme().color(ColorRole::Text);
    Symbols::draw(painter, u"plus", QRectF(kChipSidePadding, 0, kPlusSize, height()), kPlusOutline, color);
    const QRect box =
        rect().adjusted(kChipSidePadding + static_cast<int>(kPlusSize) + kChipSpacing, 0, -kChipSidePadding, 0);
    painter.setFont(font());
    painter.setPen(color);
    painter.drawText(box, Qt::AlignLeft | Qt::AlignVCenter,
                     QFontMetricsF(font()).elidedText(m_topic, Qt::ElideRight, box.width() + 1));
}

} // namespace Tessaline
