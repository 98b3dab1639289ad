#include "editing/TextBoundaries.h"

#include "editing/TextBreaks.h"

#include <algorithm>

namespace Tessaline::TextBoundaries {

namespace {

using TextBreaks::Kind;

/// How far around a position a boundary is looked for. Longer characters and words are taken in pieces of this size.
constexpr qsizetype kWindow = 512;

bool isLineEnd(QChar unit)
{
    return unit == u'\n' || unit == u'\r' || unit == QChar(QChar::ParagraphSeparator);
}

/// A stretch of the text around a position, not cutting a surrogate pair at its ends.
struct Window {
    QString text;
    qsizetype start = 0;
    qsizetype offset = 0; // of the position
};

Window windowAround(const ChunkedText &text, qsizetype position)
{
    qsizetype start = std::max<qsizetype>(position - kWindow, 0);
    qsizetype end = std::min(position + kWindow, text.size());
    if (start > 0 && text.at(start).isLowSurrogate())
        --start;
    if (end < text.size() && text.at(end).isLowSurrogate())
        ++end;
    return {text.sliced(start, end - start), start, position - start};
}

qsizetype lineEndLengthAt(const ChunkedText &text, qsizetype position)
{
    if (position >= text.size() || !isLineEnd(text.at(position)))
        return 0;
    return text.at(position) == u'\r' && position + 1 < text.size() && text.at(position + 1) == u'\n' ? 2 : 1;
}

enum class UnitKind { Space, Word, Sign };

UnitKind kindOf(char32_t c)
{
    if (QChar::isSpace(c))
        return UnitKind::Space;
    return QChar::isLetterOrNumber(c) || QChar::isMark(c) || c == U'_' ? UnitKind::Word : UnitKind::Sign;
}

/// The kind of the character that begins at `offset`, which must be inside.
UnitKind kindAt(const QString &text, qsizetype offset)
{
    const QChar unit = text.at(offset);
    if (unit.isHighSurrogate() && offset + 1 < text.size())
        return kindOf(QChar::surrogateToUcs4(unit, text.at(offset + 1)));
    return kindOf(unit.unicode());
}

} // namespace

qsizetype nextCharacter(const ChunkedText &text, qsizetype position)
{
    if (position >= text.size())
        return text.size();
    const Window window = windowAround(text, position);
    return window.start + TextBreaks::following(Kind::Character, window.text, window.offset);
}

qsizetype previousCharacter(const ChunkedText &text, qsizetype position)
{
    if (position <= 0)
        return 0;
    const Window window = windowAround(text, position);
    return window.start + TextBreaks::preceding(Kind::Character, window.text, window.offset);
}

bool isCharacterBoundary(const ChunkedText &text, qsizetype position)
{
    if (position <= 0 || position >= text.size())
        return true;
    const Window window = windowAround(text, position);
    return TextBreaks::isBreak(Kind::Character, window.text, window.offset);
}

qsizetype nextWordEnd(const ChunkedText &text, qsizetype position)
{
    if (const qsizetype lineEnd = lineEndLengthAt(text, position); lineEnd > 0)
        return position + lineEnd;
    const Window window = windowAround(text, position);
    // Spaces before the word belong to the step, the line end does not.
    qsizetype at = window.offset;
    while (at < window.text.size() && !isLineEnd(window.text.at(at))) {
        const bool isSpace = kindAt(window.text, at) == UnitKind::Space;
        at = TextBreaks::following(Kind::Word, window.text, at);
        if (!isSpace)
            break;
    }
    return window.start + at;
}

qsizetype nextWordStart(const ChunkedText &text, qsizetype position)
{
    if (const qsizetype lineEnd = lineEndLengthAt(text, position); lineEnd > 0)
        return position + lineEnd;
    const Window window = windowAround(text, position);
    qsizetype at = window.offset;
    do
        at = TextBreaks::following(Kind::Word, window.text, at);
    while (at < window.text.size() && !isLineEnd(window.text.at(at)) && kindAt(window.text, at) == UnitKind::Space);
    return window.start + at;
}

qsizetype previousWordStart(const ChunkedText &text, qsizetype position)
{
    if (position <= 0)
        return 0;
    if (isLineEnd(text.at(position - 1)))
        return previousCharacter(text, position);
    const Window window = windowAround(text, position);
    qsizetype at = window.offset;
    do
        at = TextBreaks::preceding(Kind::Word, window.text, at);
    while (at > 0 && kindAt(window.text, at) == UnitKind::Space && !isLineEnd(window.text.at(at - 1)));
    return window.start + at;
}

TextRange wordAt(const ChunkedText &text, qsizetype position)
{
    const TextRange paragraph = paragraphContentAt(text, position);
    if (paragraph.isEmpty())
        return {paragraph.location, 0};
    // At the end of the paragraph the word before counts.
    const qsizetype inside = position < paragraph.end() ? position : previousCharacter(text, paragraph.end());
    const Window window = windowAround(text, inside);
    qsizetype end = TextBreaks::following(Kind::Word, window.text, window.offset);
    qsizetype start = TextBreaks::preceding(Kind::Word, window.text, end);
    // A tab and a space are words of their own; a person means the gap.
    const auto isGap = [&window](qsizetype at) {
        return kindAt(window.text, at) == UnitKind::Space && !isLineEnd(window.text.at(at));
    };
    if (isGap(start)) {
        while (start > 0 && isGap(start - 1))
            --start;
        while (end < window.text.size() && isGap(end))
            ++end;
    }
    const qsizetype first = std::max(window.start + start, paragraph.location);
    const qsizetype last = std::min(window.start + end, paragraph.end());
    return {first, last - first};
}

TextRange paragraphAt(const ChunkedText &text, qsizetype position)
{
    // Between CR and LF the position belongs to the paragraph that they end.
    qsizetype start = position;
    if (start > 0 && start < text.size() && text.at(start) == u'\n' && text.at(start - 1) == u'\r')
        --start;
    while (start > 0) {
        const QStringView chunk = text.chunkUpTo(start);
        const auto end =
            std::find_if(std::make_reverse_iterator(chunk.end()), std::make_reverse_iterator(chunk.begin()), isLineEnd);
        start -= std::distance(std::make_reverse_iterator(chunk.end()), end);
        if (end != std::make_reverse_iterator(chunk.begin()))
            break;
    }
    qsizetype end = position;
    while (end < text.size()) {
        const QStringView chunk = text.chunkFrom(end);
        const auto found = std::find_if(chunk.begin(), chunk.end(), isLineEnd);
        end += std::distance(chunk.begin(), found);
        if (found != chunk.end()) {
            end += lineEndLengthAt(text, end);
            break;
        }
    }
    return {start, end - start};
}

TextRange paragraphContentAt(const ChunkedText &text, qsizetype position)
{
    TextRange paragraph = paragraphAt(text, position);
    if (!paragraph.isEmpty() && isLineEnd(text.at(paragraph.end() - 1))) {
        const bool isPair =
            paragraph.length > 1 && text.at(paragraph.end() - 1) == u'\n' && text.at(paragraph.end() - 2) == u'\r';
        paragraph.length -= isPair ? 2 : 1;
    }
    return paragraph;
}

QString lineEndFor(const ChunkedText &text, qsizetype position)
{
    const auto endOf = [&text](const TextRange &paragraph, const TextRange &content) {
        return text.sliced(content.end(), paragraph.end() - content.end());
    };
    const TextRange own = paragraphAt(text, position);
    QString lineEnd = endOf(own, paragraphContentAt(text, position));
    if (lineEnd.isEmpty() && own.location > 0) {
        const qsizetype before = own.location - 1;
        lineEnd = endOf(paragraphAt(text, before), paragraphContentAt(text, before));
    }
    return lineEnd.isEmpty() ? QStringLiteral("\n") : lineEnd;
}

} // namespace Tessaline::TextBoundaries
