#include "panels/QuotedText.h"

#include "foundation_ui/Contrast.h"
#include "foundation_ui/Fonts.h"

#include <QtGui/QPainter>
#include <QtGui/QTextBlockFormat>
#include <QtGui/QTextCursor>
#include <QtGui/QTextFrame>

#include <algorithm>
#include <cmath>

namespace Tessaline {

namespace {

constexpr double kRadius = 4;
constexpr int kHighest = 180; // before it scrolls

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
    for (QTextDocument *each : {document(), &m_measured})
        each->setDefaultFont(font());
    showText(text);
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
    showText(text);
    updateGeometry();
}

/// Gives both documents a text. What is set on frames and blocks goes with the text before.
void QuotedText::showText(const QString &text)
{
    for (QTextDocument *each : {document(), &m_measured}) {
        each->setPlainText(text);
        QTextFrameFormat frame = each->rootFrame()->frameFormat();
        frame.setLeftMargin(m_horizontalPadding);
        frame.setRightMargin(m_horizontalPadding);
        frame.setTopMargin(m_verticalPadding);
        frame.setBottomMargin(m_verticalPadding);
        each->rootFrame()->setFrameFormat(frame);
        if (m_lineSpacing <= 0)
            continue;
        QTextBlockFormat lines;
        lines.setLineHeight(m_lineSpacing, QTextBlockFormat::LineDistanceHeight);
        QTextCursor all(each);
        all.select(QTextCursor::Document);
        all.mergeBlockFormat(lines);
    }
}

void QuotedText::setPadding(int horizontal, int vertical)
{
    m_horizontalPadding = horizontal;
    m_verticalPadding = vertical;
    setQuotedText(toPlainText());
}

void QuotedText::setTintOpacity(double opacity)
{
    m_tintOpacity = opacity;
    viewport()->update();
}

void QuotedText::setLineSpacing(double points)
{
    m_lineSpacing = points;
    setQuotedText(toPlainText());
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
        painter.setBrush(withOpacity(m_theme.color(m_role), m_tintOpacity));
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
