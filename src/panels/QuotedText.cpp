#include "panels/QuotedText.h"

#include "foundation_ui/Contrast.h"
#include "foundation_ui/FocusRing.h"
#include "foundation_ui/Fonts.h"
#include "panels/ShownPart.h"

#include <QtGui/QPainter>
#include <QtGui/QTextBlockFormat>
#include <QtGui/QTextCursor>
#include <QtGui/QTextFrame>

#include <algorithm>
#include <cmath>

namespace Tessaline {

namespace {

constexpr double kRadius = 4;
constexpr int kHighest = 180;             // before it scrolls
constexpr qsizetype kMeasuredHead = 4000; // UTF-16 units; at any width of a card higher than that

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
    m_measured.setDefaultTextOption(document()->defaultTextOption()); // the same places to break lines
    for (QTextDocument *each : {document(), &m_measured})
        each->setDefaultFont(font());
    setQuotedText(text);
    connect(&theme, &Theme::changed, this, &QuotedText::takeColor);
    takeColor();
}

QuotedText::~QuotedText()
{
    delete m_ring;
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
    m_heights.clear();
    updateBar();
    updateGeometry();
}

void QuotedText::setQuotedText(const QString &text)
{
    m_text = text;
    showText();
}

/// Gives both documents the text. What is set on frames and blocks goes with the text before.
void QuotedText::showText()
{
    const QString shown = shownPart(m_text, kMostShown);
    m_heights.clear();
    for (QTextDocument *each : {document(), &m_measured}) {
        const bool isHeadEnough = each == &m_measured && m_height == Height::Bounded;
        each->setPlainText(isHeadEnough ? shown.first(std::min(shown.size(), kMeasuredHead)) : shown);
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
    setTextCursor(QTextCursor(document())); // the text has pushed it to its end
    updateBar();
    updateGeometry();
}

/// There is a bar only where the text is higher than the bound. One that came as it is needed would take room from the
/// lines, which then need it.
void QuotedText::updateBar()
{
    const bool scrolls = m_height == Height::Bounded && textHeight(width()) > kHighest;
    setVerticalScrollBarPolicy(scrolls ? Qt::ScrollBarAsNeeded : Qt::ScrollBarAlwaysOff);
}

void QuotedText::setPadding(int horizontal, int vertical)
{
    m_horizontalPadding = horizontal;
    m_verticalPadding = vertical;
    showText();
}

void QuotedText::setTintOpacity(double opacity)
{
    m_tintOpacity = opacity;
    viewport()->update();
}

void QuotedText::setLineSpacing(double points)
{
    m_lineSpacing = points;
    showText();
}

void QuotedText::setFocusLook(FocusLook look)
{
    m_focusLook = look;
}

void QuotedText::focusInEvent(QFocusEvent *event)
{
    QTextEdit::focusInEvent(event);
    if (m_focusLook != FocusLook::Ring || !FocusRing::isKeyboardFocus(*event))
        return;
    if (!m_ring)
        m_ring = new FocusRing(m_theme, kRadius, this);
    m_ring->setWidget(this);
}

void QuotedText::focusOutEvent(QFocusEvent *event)
{
    QTextEdit::focusOutEvent(event);
    // A menu or another window takes the focus for a moment only.
    if (m_ring && event->reason() != Qt::PopupFocusReason && event->reason() != Qt::ActiveWindowFocusReason)
        m_ring->setWidget(nullptr);
}

void QuotedText::setHeight(Height height)
{
    m_height = height;
    showText();
}

int QuotedText::textHeight(int width) const
{
    const auto known = m_heights.constFind(width);
    if (known != m_heights.cend())
        return *known;
    m_measured.setTextWidth(width);
    const int height = static_cast<int>(std::ceil(m_measured.size().height()));
    m_heights.insert(width, height);
    return height;
}

int QuotedText::heightForWidth(int width) const
{
    const int height = textHeight(width);
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
    updateBar();
    updateGeometry(); // other lines, another height
}

} // namespace Tessaline
