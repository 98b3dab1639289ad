#include "MarkdownUI/CodeBlockBox.h"

#include "foundation_ui/Symbols.h"

#include <QtCore/QCoreApplication>
#include <QtGui/QFontMetricsF>
#include <QtGui/QPainter>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace MarkdownUI {

using namespace Qt::StringLiterals;
using Tessaline::TextRange;

namespace {

constexpr qsizetype kLongestPiece = 2000; // units; longer lines are laid out in parts
constexpr size_t kMostLayouts = 300;      // kept from one painting to the next
constexpr int kTabColumns = 4;
constexpr char16_t kFirstWide = 0x1100; // from here on a character is taken for two columns wide
constexpr int kButtonSide = 24;
constexpr int kButtonMargin = 6; // between the button and the corner of the block
constexpr double kButtonRadius = 4;
constexpr double kSymbolSize = 13;

/// The code without the line end that closes it.
QStringView withoutLastEnd(QStringView content)
{
    return content.endsWith(u'\n') ? content.chopped(1) : content;
}

int rowHeightOf(const CodeLook &look)
{
    return static_cast<int>(std::ceil(QFontMetricsF(look.font).height()));
}

int heightOfRows(qsizetype rows, int rowHeight, const CodeLook &look)
{
    const qsizetype height = rows * rowHeight + (rows - 1) * look.lineSpacing + qsizetype(2) * look.padding;
    return static_cast<int>(std::min<qsizetype>(height, std::numeric_limits<int>::max() / 4));
}

/// How many columns of a fixed width a line takes, about.
qsizetype columnsOf(QStringView line)
{
    qsizetype columns = 0;
    for (const QChar character : line) {
        if (character == u'\t')
            columns += kTabColumns - columns % kTabColumns;
        else
            columns += character.unicode() < kFirstWide || character.isSurrogate() ? 1 : 2;
    }
    return columns;
}

} // namespace

CodeBlockBox::CodeBlockBox(QString content, QString language, CodeLook look, CodeSyntaxHighlighter highlighter)
    : m_content(withoutLastEnd(content).toString()), m_language(std::move(language)), m_look(std::move(look)),
      m_highlighter(std::move(highlighter)), m_rowHeight(rowHeightOf(m_look)),
      m_advance(QFontMetricsF(m_look.font).horizontalAdvance(u'0'))
{
    qsizetype columns = 0;
    for (qsizetype start = 0; start >= 0;) {
        m_starts.push_back(start);
        const qsizetype end = m_content.indexOf(u'\n', start);
        columns = std::max(columns,
                           columnsOf(QStringView(m_content).sliced(start, (end < 0 ? m_content.size() : end) - start)));
        start = end < 0 ? -1 : end + 1;
    }
    m_longest = std::ceil(static_cast<double>(columns) * m_advance);
}

int CodeBlockBox::heightOf(QStringView content, const CodeLook &look)
{
    return heightOfRows(withoutLastEnd(content).count(u'\n') + 1, rowHeightOf(look), look);
}

void CodeBlockBox::layOut(int width)
{
    m_width = width;
    setSideways(m_sideways);
}

int CodeBlockBox::height() const
{
    return heightOfRows(lineCount(), m_rowHeight, m_look);
}

double CodeBlockBox::firstBaseline() const
{
    return m_look.padding + QFontMetricsF(m_look.font).ascent();
}

double CodeBlockBox::sidewaysRange() const
{
    return std::max(0.0, m_longest + 2 * m_look.padding - m_width);
}

void CodeBlockBox::setSideways(double points)
{
    m_sideways = std::clamp(points, 0.0, sidewaysRange());
}

// Lines

qsizetype CodeBlockBox::lineAt(qsizetype position) const
{
    const auto after = std::upper_bound(m_starts.begin(), m_starts.end(), position);
    return std::max<qsizetype>(after - m_starts.begin() - 1, 0);
}

qsizetype CodeBlockBox::lineEnd(qsizetype line) const
{
    return line + 1 < lineCount() ? m_starts[static_cast<size_t>(line) + 1] - 1 : m_content.size();
}

CodeBlockBox::Piece CodeBlockBox::pieceAt(qsizetype line, qsizetype position) const
{
    const qsizetype start = m_starts[static_cast<size_t>(line)];
    const qsizetype end = lineEnd(line);
    if (end - start <= kLongestPiece)
        return {start, end - start, 0};
    // A pair of surrogates stays together.
    const auto boundary = [this, end](qsizetype at) {
        return at < end && m_content.at(at).isLowSurrogate() ? at + 1 : std::min(at, end);
    };
    const qsizetype last = (end - start - 1) / kLongestPiece;
    qsizetype index = std::clamp<qsizetype>((position - start) / kLongestPiece, 0, last);
    if (index > 0 && boundary(start + index * kLongestPiece) > position)
        --index;
    const qsizetype from = index == 0 ? start : boundary(start + index * kLongestPiece);
    const qsizetype to = boundary(start + (index + 1) * kLongestPiece);
    return {from, to - from, static_cast<double>(from - start) * m_advance};
}

/// The pieces of a line between two places, points from the start of the line.
std::vector<CodeBlockBox::Piece> CodeBlockBox::pieces(qsizetype line, double from, double to) const
{
    std::vector<Piece> pieces;
    const qsizetype start = m_starts[static_cast<size_t>(line)];
    const qsizetype end = lineEnd(line);
    const auto first = static_cast<qsizetype>(std::max(0.0, from) / m_advance);
    // A piece of wide characters reaches into those behind it.
    qsizetype position = std::max(start, std::min(start + first, end) - kLongestPiece);
    if (end - start <= kLongestPiece)
        position = start;
    while (true) {
        const Piece piece = pieceAt(line, position);
        if (piece.x > to)
            break;
        pieces.push_back(piece);
        position = piece.start + piece.length;
        if (position >= end)
            break;
    }
    return pieces;
}

const QTextLayout &CodeBlockBox::laidOut(const Piece &piece) const
{
    std::unique_ptr<QTextLayout> &layout = m_layouts[piece.start];
    if (layout)
        return *layout;
    QString text = m_content.sliced(piece.start, piece.length);
    // What would begin a new row or hold an object is shown as an unknown sign.
    for (QChar &character : text)
        if (character == QChar::LineSeparator || character == QChar::ParagraphSeparator || character == u'\r' ||
            character == QChar::ObjectReplacementCharacter || character == QChar::Null)
            character = character == u'\r' ? u' ' : QChar(QChar::ReplacementCharacter);
    layout = std::make_unique<QTextLayout>(text, m_look.font);
    layout->setCacheEnabled(true);
    if (m_highlighter)
        layout->setFormats(m_highlighter(text, m_language));
    QTextOption option;
    option.setWrapMode(QTextOption::NoWrap);
    option.setTextDirection(Qt::LeftToRight);
    option.setTabStopDistance(kTabColumns * m_advance);
    option.setFlags(QTextOption::IncludeTrailingSpaces);
    layout->setTextOption(option);
    layout->beginLayout();
    QTextLine row = layout->createLine();
    if (row.isValid())
        row.setLineWidth(std::numeric_limits<int>::max() / 256.0); // the toolkit counts in 64ths of a pixel
    layout->endLayout();
    return *layout;
}

// Painting

void CodeBlockBox::paint(QPainter &painter, QPointF origin, const BoxPaint &paint) const
{
    if (m_layouts.size() > kMostLayouts)
        m_layouts.clear();
    const QRectF box(origin, QSizeF(m_width, height()));
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(m_look.background);
    painter.drawRoundedRect(box, m_look.radius, m_look.radius);
    painter.setClipRect(box, Qt::IntersectClip);
    painter.setPen(m_look.color);

    const double pitch = m_rowHeight + m_look.lineSpacing;
    const double textTop = origin.y() + m_look.padding;
    const double textLeft = origin.x() + m_look.padding - m_sideways;
    const QRectF seen = paint.clip.isNull() ? box : paint.clip.intersected(box);
    const auto first = std::max<qsizetype>(0, static_cast<qsizetype>((seen.top() - textTop) / pitch) - 1);
    for (qsizetype line = first; line < lineCount(); ++line) {
        const double y = textTop + static_cast<double>(line) * pitch;
        if (y > seen.bottom())
            break;
        for (const Piece &piece : pieces(line, seen.left() - textLeft, seen.right() - textLeft)) {
            QList<QTextLayout::FormatRange> selections;
            const qsizetype from = std::max(paint.selection.location, piece.start);
            const qsizetype to = std::min(paint.selection.end(), piece.start + piece.length);
            if (from < to) {
                QTextLayout::FormatRange selected;
                selected.start = static_cast<int>(from - piece.start);
                selected.length = static_cast<int>(to - from);
                selected.format.setBackground(paint.selectionColor);
                selections.append(selected);
            }
            laidOut(piece).draw(&painter, QPointF(textLeft + piece.x, y), selections);
        }
    }
    painter.restore();
    if (paint.isHovered || paint.focusedTarget == 0)
        paintButton(painter, origin, paint);
}

QRectF CodeBlockBox::buttonRect() const
{
    const double margin = std::min<double>(kButtonMargin, (height() - kButtonSide) / 2.0);
    return {m_width - kButtonSide - std::max(margin, 0.0), std::max(margin, 0.0), kButtonSide, kButtonSide};
}

void CodeBlockBox::paintButton(QPainter &painter, QPointF origin, const BoxPaint &paint) const
{
    const QRectF button = buttonRect().translated(origin);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen(m_look.border, 1));
    painter.setBrush(paint.hoveredTarget == 0 ? m_look.border : m_look.background);
    painter.drawRoundedRect(button.adjusted(0.5, 0.5, -0.5, -0.5), kButtonRadius, kButtonRadius);
    painter.restore();
    Tessaline::Symbols::draw(painter, paint.finishedTarget == 0 ? u"checkmark" : u"doc.on.doc", button, kSymbolSize,
                             m_look.symbol);
}

QList<BlockTarget> CodeBlockBox::targets() const
{
    BlockTarget copy;
    copy.kind = BlockTarget::Kind::CopyCode;
    copy.name = QCoreApplication::translate("MarkdownUI::CodeBlockBox", "Copy Code");
    copy.rects = {buttonRect()};
    return {copy};
}

// Places

qsizetype CodeBlockBox::positionAt(QPointF point) const
{
    const double pitch = m_rowHeight + m_look.lineSpacing;
    const auto row = static_cast<qsizetype>(std::floor((point.y() - m_look.padding) / pitch));
    const qsizetype line = std::clamp<qsizetype>(row, 0, lineCount() - 1);
    const double x = point.x() - m_look.padding + m_sideways;
    const std::vector<Piece> candidates = pieces(line, x, x);
    if (candidates.empty())
        return m_starts[static_cast<size_t>(line)];
    const Piece &piece = candidates.back();
    const QTextLine text = laidOut(piece).lineAt(0);
    return text.isValid() ? piece.start + text.xToCursor(x - piece.x) : piece.start;
}

bool CodeBlockBox::isOverText(QPointF point) const
{
    return QRectF(0, 0, m_width, height()).contains(point) && !buttonRect().contains(point);
}

QRectF CodeBlockBox::caretRect(qsizetype position) const
{
    const qsizetype line = lineAt(position);
    const Piece piece = pieceAt(line, position);
    const QTextLine text = laidOut(piece).lineAt(0);
    const double x =
        text.isValid() ? text.cursorToX(static_cast<int>(std::min(position - piece.start, piece.length))) : 0;
    const double y = m_look.padding + static_cast<double>(line) * (m_rowHeight + m_look.lineSpacing);
    return {m_look.padding - m_sideways + piece.x + x, y, 1, static_cast<double>(m_rowHeight)};
}

TextRange CodeBlockBox::rowAt(qsizetype position) const
{
    const qsizetype line = lineAt(position);
    const qsizetype start = m_starts[static_cast<size_t>(line)];
    return {start, lineEnd(line) - start};
}

qsizetype CodeBlockBox::nextCharacter(qsizetype position) const
{
    const qsizetype line = lineAt(position);
    if (position >= lineEnd(line))
        return std::min(position + 1, m_content.size());
    const Piece piece = pieceAt(line, position);
    return piece.start + laidOut(piece).nextCursorPosition(static_cast<int>(position - piece.start));
}

qsizetype CodeBlockBox::previousCharacter(qsizetype position) const
{
    const qsizetype line = lineAt(position);
    if (position == m_starts[static_cast<size_t>(line)])
        return std::max<qsizetype>(position - 1, 0);
    const Piece piece = pieceAt(line, position - 1);
    return piece.start + laidOut(piece).previousCursorPosition(static_cast<int>(position - piece.start));
}

} // namespace MarkdownUI
