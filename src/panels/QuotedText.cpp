#include "panels/QuotedText.h"

#include "foundation_ui/Contrast.h"
#include "foundation_ui/Fonts.h"

#include <QtGui/QPainter>

#include <algorithm>
#include <cmath>

namespace Tessaline {

namespace {

constexpr double kRadius = 4;
constexpr double kPadding = 6;
constexpr int kHighest = 180; // before it scrolls
constexpr double kTintOpacity = 0.08;

} // namespace

QuotedText::QuotedText(const Theme &theme, ColorRole role, Tint tint, const QString &name, const QString &text,
                       QWidget *parent)
    : QTextEdit(parent), m_theme(theme), m_role(role), m_tint(tint)
{
    setReadOnly(true);
    setTabChangesFocus(true);
    setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    setAccessibleName(name);
    setFrameShape(QFrame::NoFrame);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    QSizePolicy policy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    policy.setHeightForWidth(true);
    setSizePolicy(policy);
    setFont(Fonts::interface(Fonts::kSmallSize));
    for (QTextDocument *each : {document(), &m_measured}) {
        each->setDefaultFont(font());
        each->setDocumentMargin(kPadding);
        each->setPlainText(text);
    }
    connect(&theme, &Theme::changed, this, &QuotedText::takeColor);
    takeColor();
}

void QuotedText::takeColor()
{
    QPalette colors = palette();
    colors.setColor(QPalette::Base, Qt::transparent);
    colors.setColor(QPalette::Text, m_theme.color(m_role));
    setPalette(colors);
    viewport()->setAutoFillBackground(false);
}

void QuotedText::setTextFont(const QFont &font)
{
    setFont(font);
    for (QTextDocument *each : {document(), &m_measured})
        each->setDefaultFont(font);
    updateGeometry();
}

void QuotedText::setQuotedText(const QString &text)
{
    for (QTextDocument *each : {document(), &m_measured})
        each->setPlainText(text);
    updateGeometry();
}

void QuotedText::setPadding(double padding)
{
    for (QTextDocument *each : {document(), &m_measured})
        each->setDocumentMargin(padding);
    updateGeometry();
}

void QuotedText::setHeight(Height height)
{
    m_height = height;
    if (height == Height::OfText)
        setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    updateGeometry();
}

int QuotedText::heightForWidth(int width) const
{
    m_measured.setTextWidth(width);
    const int height = static_cast<int>(std::ceil(m_measured.size().height()));
    return m_height == Height::OfText ? height : std::min(height, kHighest);
}

QSize QuotedText::sizeHint() const
{
    constexpr int kWidth = 120;
    return {kWidth, heightForWidth(width())};
}

void QuotedText::paintEvent(QPaintEvent *event)
{
    if (m_tint == Tint::OwnColor) {
        QPainter painter(viewport());
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(withOpacity(m_theme.color(m_role), kTintOpacity));
        painter.drawRoundedRect(QRectF(viewport()->rect()), kRadius, kRadius);
    }
    QTextEdit::paintEvent(event);
}

void QuotedText::resizeEvent(QResizeEvent *event)
{
    QTextEdit::resizeEvent(event);
    updateGeometry(); // other lines, another height
}

} // namespace Tessaline
