#include "foundation_ui/Label.h"

#include <QtGui/QFontMetrics>
#include <QtGui/QPainter>
#include <QtGui/QTextLayout>

#include <algorithm>
#include <cmath>

namespace Tessaline {

namespace {

/// Breaks `text` into lines of at most `width`, at words where it can: a long path has no place for a break. Returns
/// the height of all lines.
double layOutLines(QTextLayout &layout, double width, Qt::Alignment alignment)
{
    QTextOption option(alignment);
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    double height = 0;
    layout.beginLayout();
    for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
        line.setLineWidth(width);
        line.setPosition(QPointF(0, height));
        height += line.height();
    }
    layout.endLayout();
    return height;
}

} // namespace

Label::Label(const Theme &theme, ColorRole role, const QFont &font, const QString &text, QWidget *parent)
    : QLabel(text, parent), m_theme(theme), m_role(role)
{
    setTextFormat(Qt::PlainText);
    setFont(font);
    setFocusPolicy(Qt::NoFocus);
    connect(&theme, &Theme::changed, this, qOverload<>(&QWidget::update));
}

void Label::setElideMode(Qt::TextElideMode mode)
{
    m_elideMode = mode;
    update();
}

void Label::setColorRole(ColorRole role)
{
    m_role = role;
    update();
}

QSize Label::sizeHint() const
{
    if (wordWrap()) {
        const int width = std::min(fontMetrics().horizontalAdvance(text()) + 1, maximumWidth());
        return QSize(width, heightForWidth(width));
    }
    return QSize(fontMetrics().horizontalAdvance(singleLine(text())) + 1, fontMetrics().height())
        .grownBy(contentsMargins());
}

QSize Label::minimumSizeHint() const
{
    if (wordWrap())
        return QSize(0, fontMetrics().height());
    if (m_elideMode == Qt::ElideNone)
        return sizeHint();
    return QSize(fontMetrics().horizontalAdvance(u'…'), fontMetrics().height()).grownBy(contentsMargins());
}

int Label::heightForWidth(int width) const
{
    if (!wordWrap())
        return -1;
    // NOTE: a layout asks for its own width, and then gives the label no more than its maximum.
    width = std::min(width, maximumWidth());
    QTextLayout layout(text(), font());
    return static_cast<int>(std::ceil(layOutLines(layout, width, alignment())));
}

QString Label::singleLine(QString text)
{
    for (QChar &unit : text)
        if (unit == u'\n' || unit == u'\r' || unit == QChar::LineSeparator || unit == QChar::ParagraphSeparator)
            unit = u' ';
    return text;
}

void Label::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setPen(m_theme.color(m_role));
    painter.setFont(font());
    const QRect box = contentsRect();
    if (wordWrap()) {
        QTextLayout layout(text(), font());
        layOutLines(layout, box.width(), alignment());
        layout.draw(&painter, box.topLeft());
        return;
    }
    const QString shown = fontMetrics().elidedText(singleLine(text()), m_elideMode, box.width());
    painter.drawText(box, static_cast<int>(alignment()) | Qt::TextSingleLine, shown);
}

} // namespace Tessaline
