#include "MarkdownUI/LaidOutText.h"

#include <QtGui/QPainter>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace MarkdownUI {

using Tessaline::TextRange;

namespace {

constexpr qsizetype kEndlessWord = 1000; // units
constexpr double kGroundRadius = 3;
constexpr double kGroundMargin = 2; // by which the ground of inline code is wider than its text, on both sides

/// Whether the text has a word so long that looking for its end in each row would take for ever. Signs of scripts that
/// are written without blanks count as words of their own.
bool hasEndlessWord(QStringView text)
{
    constexpr char16_t kFirstIdeographic = 0x2E80;
    constexpr char16_t kLastIdeographic = 0xD7FF;
    qsizetype length = 0;
    for (const QChar sign : text) {
        const bool isIdeographic = sign >= kFirstIdeographic && sign <= kLastIdeographic;
        length = isIdeographic || sign.isSpace() ? 0 : length + 1;
        if (length > kEndlessWord)
            return true;
    }
    return false;
}

} // namespace

QString textForLayout(const StyledText &styled)
{
    QString text = styled.text;
    for (const InlinePicture &picture : styled.pictures)
        text[picture.position] = StyledText::kPlaceOfPicture;
    for (QChar &character : text) {
        switch (character.unicode()) {
        case u'\n':
        case u'\r':
        case QChar::ParagraphSeparator:
            character = QChar::LineSeparator;
            break;
        case QChar::ObjectReplacementCharacter:
        case QChar::Null:
            character = QChar::ReplacementCharacter;
            break;
        default:
            break;
        }
    }
    return text;
}

LaidOutText::LaidOutText(StyledText text)
    : m_styled(std::move(text)), m_layout(std::make_unique<QTextLayout>(textForLayout(m_styled), m_styled.font)),
      m_isRightToLeft(m_styled.text.isRightToLeft())
{
    m_layout->setCacheEnabled(true);
    m_layout->setFormats(m_styled.formats);
}

void LaidOutText::layOut(double width, Alignment alignment)
{
    QTextOption option;
    option.setWrapMode(hasEndlessWord(m_styled.text) ? QTextOption::WrapAnywhere
                                                     : QTextOption::WrapAtWordBoundaryOrAnywhere);
    option.setTextDirection(m_isRightToLeft ? Qt::RightToLeft : Qt::LeftToRight);
    const bool isOnTheRight = (alignment == Alignment::Trailing) != m_isRightToLeft;
    option.setAlignment(alignment == Alignment::Center ? Qt::AlignHCenter
                        : isOnTheRight                 ? Qt::AlignRight | Qt::AlignAbsolute
                                                       : Qt::AlignLeft | Qt::AlignAbsolute);
    m_layout->setTextOption(option);

    double y = 0;
    qsizetype picture = 0;
    m_layout->beginLayout();
    for (QTextLine row = m_layout->createLine(); row.isValid(); row = m_layout->createLine()) {
        row.setLineWidth(std::max(width, 1.0));
        if (row.lineNumber() > 0)
            y += m_styled.lineSpacing;
        // A picture higher than the letters pushes its row down.
        double above = 0;
        const qsizetype end = row.textStart() + row.textLength();
        for (; picture < m_styled.pictures.size() && m_styled.pictures.at(picture).position < end; ++picture)
            above = std::max(above, m_styled.pictures.at(picture).size.height() - row.ascent());
        y += std::ceil(above);
        row.setPosition({0, y});
        y += std::ceil(row.height());
    }
    m_layout->endLayout();
    m_height = y;
}

double LaidOutText::widestRow() const
{
    double widest = 0;
    for (int i = 0; i < m_layout->lineCount(); ++i)
        widest = std::max(widest, m_layout->lineAt(i).naturalTextWidth());
    return widest;
}

double LaidOutText::firstBaseline() const
{
    const QTextLine first = m_layout->lineAt(0);
    return first.isValid() ? first.y() + first.ascent() : 0;
}

void LaidOutText::paint(QPainter &painter, QPointF origin, const TextRange &selection, const QColor &selectionColor,
                        const QRectF &clip) const
{
    QList<QTextLayout::FormatRange> selections;
    if (!selection.isEmpty()) {
        QTextLayout::FormatRange selected;
        selected.start = static_cast<int>(selection.location);
        selected.length = static_cast<int>(selection.length);
        selected.format.setBackground(selectionColor);
        selections.append(selected);
    }
    if (!m_styled.grounds.isEmpty())
        paintGrounds(painter, origin);
    painter.setPen(m_styled.color);
    m_layout->draw(&painter, origin, selections, clip);
    if (!m_styled.pictures.isEmpty())
        paintPictures(painter, origin);
}

void LaidOutText::paintGrounds(QPainter &painter, QPointF origin) const
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    for (const StyledText::Ground &ground : m_styled.grounds) {
        painter.setBrush(ground.color);
        for (QRectF rect : rects(ground.range)) {
            // As high as its letters, not as the row, which a larger font beside it can make much higher.
            const QTextLine row = m_layout->lineAt(lineAtY(rect.top()));
            const double baseline = row.y() + row.ascent();
            rect.setTop(std::floor(baseline - ground.ascent));
            rect.setBottom(std::ceil(baseline + ground.descent));
            painter.drawRoundedRect(rect.translated(origin).adjusted(-kGroundMargin, 0, kGroundMargin, 0),
                                    kGroundRadius, kGroundRadius);
        }
    }
    painter.restore();
}

void LaidOutText::paintPictures(QPainter &painter, QPointF origin) const
{
    painter.save();
    painter.setRenderHint(QPainter::SmoothPixmapTransform);
    for (const InlinePicture &picture : m_styled.pictures) {
        const QTextLine row = lineAt(picture.position);
        if (!row.isValid())
            continue;
        const double start = row.cursorToX(static_cast<int>(picture.position));
        const double end = row.cursorToX(static_cast<int>(picture.position) + 1);
        const QPointF corner(std::min(start, end), row.y() + row.ascent() - picture.size.height());
        painter.drawImage(QRectF(origin + corner, picture.size), picture.image);
    }
    painter.restore();
}

/// The row of a caret that stands between two rows is the second one.
QTextLine LaidOutText::lineAt(qsizetype position) const
{
    const QTextLine row = m_layout->lineForTextPosition(static_cast<int>(position));
    return row.isValid() ? row : m_layout->lineAt(m_layout->lineCount() - 1);
}

int LaidOutText::lineAtY(double y) const
{
    int first = 0;
    int last = m_layout->lineCount() - 1;
    while (first < last) {
        const int middle = (first + last) / 2;
        if (m_layout->lineAt(middle + 1).y() <= y)
            first = middle + 1;
        else
            last = middle;
    }
    return first;
}

qsizetype LaidOutText::positionAt(QPointF point) const
{
    if (m_layout->lineCount() == 0)
        return 0;
    const QTextLine row = m_layout->lineAt(lineAtY(point.y()));
    const int end = row.textStart() + row.textLength();
    const bool isLast = row.lineNumber() + 1 == m_layout->lineCount();
    const int lastCaret = isLast ? end : std::max(m_layout->previousCursorPosition(end), row.textStart());
    // The toolkit's own search finds the end of the row behind some joined signs; the nearest caret is looked for here.
    int nearest = row.textStart();
    double distance = std::numeric_limits<double>::max();
    for (int offset = nearest; offset <= lastCaret;) {
        if (const double away = std::abs(row.cursorToX(offset) - point.x()); away < distance) {
            nearest = offset;
            distance = away;
        }
        const int next = m_layout->nextCursorPosition(offset);
        if (next <= offset)
            break;
        offset = next;
    }
    return nearest;
}

bool LaidOutText::isOverText(QPointF point) const
{
    if (m_layout->lineCount() == 0 || point.y() < 0 || point.y() >= m_height)
        return false;
    const QRectF used = m_layout->lineAt(lineAtY(point.y())).naturalTextRect();
    return used.contains(point);
}

QRectF LaidOutText::caretRect(qsizetype position) const
{
    const QTextLine row = lineAt(position);
    if (!row.isValid())
        return {0, 0, 1, m_height};
    return {row.cursorToX(static_cast<int>(position)), row.y(), 1, std::ceil(row.height())};
}

QList<QRectF> LaidOutText::rects(const TextRange &range) const
{
    QList<QRectF> rects;
    if (range.isEmpty() || m_layout->lineCount() == 0)
        return rects;
    for (int i = lineAt(range.location).lineNumber(); i < m_layout->lineCount(); ++i) {
        const QTextLine row = m_layout->lineAt(i);
        const qsizetype start = std::max<qsizetype>(range.location, row.textStart());
        const qsizetype end = std::min<qsizetype>(range.end(), row.textStart() + row.textLength());
        if (row.textStart() >= range.end())
            break;
        const double from = row.cursorToX(static_cast<int>(start));
        const double to = row.cursorToX(static_cast<int>(end));
        rects.append({std::min(from, to), row.y(), std::abs(to - from), std::ceil(row.height())});
    }
    return rects;
}

const LinkSpan *LaidOutText::linkAt(QPointF point) const
{
    if (m_styled.links.isEmpty() || !isOverText(point))
        return nullptr;
    for (const LinkSpan &link : m_styled.links)
        for (const QRectF &rect : rects(link.range))
            if (rect.contains(point))
                return &link;
    return nullptr;
}

TextRange LaidOutText::rowAt(qsizetype position) const
{
    const QTextLine row = lineAt(position);
    if (!row.isValid())
        return {};
    return {row.textStart(), row.textLength()};
}

qsizetype LaidOutText::nextCharacter(qsizetype position) const
{
    return m_layout->nextCursorPosition(static_cast<int>(position));
}

qsizetype LaidOutText::previousCharacter(qsizetype position) const
{
    return m_layout->previousCursorPosition(static_cast<int>(position));
}

} // namespace MarkdownUI
