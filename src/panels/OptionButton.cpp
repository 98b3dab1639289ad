#include "panels/OptionButton.h"

#include "foundation_ui/Fonts.h"
#include "foundation_ui/Label.h"
#include "foundation_ui/Symbols.h"

#include <QtGui/QFontMetricsF>
#include <QtGui/QPainter>

#include <cmath>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

constexpr int kHeight = 28;
constexpr int kSidePadding = 6;
constexpr double kSymbolSize = 13;
constexpr int kTextLeft = 28;

constexpr double kOptionRadius = 6;
constexpr int kOptionPadding = 8;

int lineHeight(const QFont &font)
{
    return static_cast<int>(std::ceil(QFontMetricsF(font).height()));
}

QFont titleFont()
{
    return Fonts::interface(Fonts::kInterfaceSize, QFont::Medium);
}

QFont subtitleFont()
{
    return Fonts::interface(Fonts::kSmallSize);
}

} // namespace

OptionButton::OptionButton(const Theme &theme, const QString &symbol, const QString &text, QWidget *parent)
    : PlainButton(theme, parent), m_symbol(symbol)
{
    setText(text);
    setFont(Fonts::interface(Fonts::kInterfaceSize));
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize OptionButton::sizeHint() const
{
    return {200, kHeight};
}

void OptionButton::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(stateTone());
    painter.drawRoundedRect(QRectF(rect()), cornerRadius(), cornerRadius());
    const QColor color = theme().color(ColorRole::Text);
    Symbols::draw(painter, m_symbol, QRectF(kSidePadding, 0, kSymbolSize, height()), kSymbolSize, color);
    painter.setFont(font());
    painter.setPen(color);
    painter.drawText(rect().adjusted(kTextLeft, 0, 0, 0), Qt::AlignLeft | Qt::AlignVCenter | Qt::TextHideMnemonic,
                     text());
}

ConceptOption::ConceptOption(const Theme &theme, const QString &title, const QString &subtitle, QWidget *parent)
    : PlainButton(theme, parent), m_title(Label::singleLine(title)), m_subtitle(Label::singleLine(subtitle))
{
    setText(QString(m_title).replace(u'&', "&&"_L1)); // no shortcut
    setAccessibleName(m_title);
    setCornerRadius(kOptionRadius);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    setAccessibleDescription(m_subtitle);
}

QSize ConceptOption::sizeHint() const
{
    return {200, 2 * kOptionPadding + lineHeight(titleFont()) + lineHeight(subtitleFont())};
}

void ConceptOption::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(theme().color(ColorRole::BubbleBorder));
    painter.setBrush(theme().color(ColorRole::Control));
    painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), kOptionRadius, kOptionRadius);
    painter.setPen(Qt::NoPen);
    painter.setBrush(stateTone());
    painter.drawRoundedRect(QRectF(rect()), kOptionRadius, kOptionRadius);

    QRect line = rect().adjusted(kOptionPadding, kOptionPadding, -kOptionPadding, 0);
    const auto drawLine = [&](const QFont &font, ColorRole role, const QString &words) {
        line.setHeight(lineHeight(font));
        painter.setFont(font);
        painter.setPen(theme().color(role));
        painter.drawText(line, Qt::AlignLeft | Qt::AlignVCenter,
                         QFontMetricsF(font).elidedText(words, Qt::ElideRight, line.width()));
        line.translate(0, line.height());
    };
    drawLine(titleFont(), ColorRole::Text, m_title);
    drawLine(subtitleFont(), ColorRole::SecondaryText, m_subtitle);
}

} // namespace Tessaline
