#include "editing/MarkdownPieces.h"

#include <optional>
#include <utility>
#include <vector>

namespace Tessaline {

using MarkdownPiece::Neighbour;

namespace {

const Neighbour *pointer(const std::optional<Neighbour> &neighbour)
{
    return neighbour ? &*neighbour : nullptr;
}

} // namespace

MarkdownPieces::Sum &MarkdownPieces::Sum::operator+=(const Sum &other)
{
    paragraphs += other.paragraphs;
    length += other.length;
    return *this;
}

MarkdownPieces::Sum &MarkdownPieces::Sum::operator-=(const Sum &other)
{
    paragraphs -= other.paragraphs;
    length -= other.length;
    return *this;
}

QString MarkdownPieces::reset(const RecordStream &next)
{
    m_pieces.clear();
    QString markdown;
    std::vector<Piece> pieces;
    std::optional<Neighbour> before;
    std::optional<ParagraphRecord> record = next();
    while (record) {
        std::optional<ParagraphRecord> behind = next();
        const Neighbour paragraph = MarkdownPiece::follow(pointer(before), record->tag);
        const qsizetype start = markdown.size();
        markdown.append(MarkdownPiece::opening(pointer(before), paragraph));
        MarkdownPiece::appendContent(paragraph, record->content, markdown);
        markdown.append(MarkdownPiece::closing(record->tag, behind ? &behind->tag : nullptr));
        pieces.push_back(Piece(paragraph, markdown.size() - start));
        before = paragraph;
        record = std::move(behind);
    }
    m_pieces.reset(pieces);
    return markdown;
}

QString MarkdownPieces::reset(qsizetype count, const RecordSource &recordAt)
{
    qsizetype paragraph = 0;
    return reset([&]() -> std::optional<ParagraphRecord> {
        if (paragraph == count)
            return std::nullopt;
        return recordAt(paragraph++);
    });
}

MarkdownChange MarkdownPieces::replace(qsizetype first, qsizetype removed, const QList<ParagraphRecord> &fresh,
                                       const RecordSource &recordAt)
{
    // 1. What stands there: the paragraph before, the removed ones, and the one behind. `old` is as it was, `now` as it
    // is.
    Pieces::Place place = placeOf(first);
    Pieces::Place from = place; // the first piece that changes
    size_t replaced = 0;        // pieces from there on
    MarkdownChange change{place.before.length, 0, {}};
    std::vector<Piece> pieces;
    std::optional<Piece> before;
    if (first > 0) {
        Pieces::Place placeBefore = placeOf(first - 1);
        before = m_pieces.at(placeBefore);
    }
    std::optional<Neighbour> oldBefore = before ? std::optional(before->neighbour()) : std::nullopt;
    std::optional<Neighbour> nowBefore = oldBefore;
    bool hasNext = first < m_pieces.count();
    const SharedText *oldNext = hasNext ? &m_pieces.at(place).tag : nullptr;
    for (qsizetype i = 0; i < removed; ++i) {
        change.removed += m_pieces.at(place).length;
        oldBefore = m_pieces.at(place).neighbour();
        hasNext = m_pieces.advance(place);
    }
    replaced = static_cast<size_t>(removed);
    const std::optional<SharedText> tagBehind = hasNext ? std::optional(m_pieces.at(place).tag) : std::nullopt;
    const SharedText *behind = tagBehind ? &*tagBehind : nullptr;

    // 2. The paragraph before closes its block of code, or does so no more.
    if (before) {
        const QStringView oldClosing = MarkdownPiece::closing(before->tag, oldNext);
        const QStringView closing =
            MarkdownPiece::closing(before->tag, fresh.isEmpty() ? behind : &fresh.constFirst().tag);
        if (oldClosing != closing) {
            change.location -= oldClosing.size();
            change.removed += oldClosing.size();
            change.inserted.append(closing);
            pieces.push_back(Piece(*nowBefore, before->length + closing.size() - oldClosing.size()));
            from = placeOf(first - 1);
            ++replaced;
        }
    }

    // 3. The paragraphs of the edit.
    for (qsizetype i = 0; i < fresh.size(); ++i) {
        const ParagraphRecord &record = fresh.at(i);
        const Neighbour paragraph = MarkdownPiece::follow(pointer(nowBefore), record.tag);
        const qsizetype start = change.inserted.size();
        change.inserted.append(MarkdownPiece::opening(pointer(nowBefore), paragraph));
        MarkdownPiece::appendContent(paragraph, record.content, change.inserted);
        change.inserted.append(
            MarkdownPiece::closing(record.tag, i + 1 < fresh.size() ? &fresh.at(i + 1).tag : behind));
        pieces.push_back(Piece(paragraph, change.inserted.size() - start));
        nowBefore = paragraph;
    }

    // 4. The one behind is parted anew from what stands before it, and rows whose table came or went are written anew.
    for (qsizetype number = first + fresh.size(); hasNext; ++number) {
        const Piece old = m_pieces.at(place);
        const Neighbour wasThere = old.neighbour();
        const Neighbour paragraph = MarkdownPiece::follow(pointer(nowBefore), old.tag);
        const QString oldOpening = MarkdownPiece::opening(pointer(oldBefore), wasThere);
        const QString opening = MarkdownPiece::opening(pointer(nowBefore), paragraph);
        if (paragraph == wasThere && opening == oldOpening)
            break;
        ++replaced;
        if (paragraph == wasThere) {
            change.removed += oldOpening.size();
            change.inserted.append(opening);
            pieces.push_back(Piece(paragraph, old.length + opening.size() - oldOpening.size()));
            break;
        }
        const qsizetype start = change.inserted.size();
        change.removed += old.length;
        change.inserted.append(opening);
        MarkdownPiece::appendContent(paragraph, recordAt(number).content, change.inserted);
        pieces.push_back(Piece(paragraph, change.inserted.size() - start));
        oldBefore = wasThere;
        nowBefore = paragraph;
        hasNext = m_pieces.advance(place);
    }

    m_pieces.replace(from, replaced, pieces);
    return change;
}

TextRange MarkdownPieces::rangeOf(qsizetype paragraph) const
{
    const Pieces::Place place = placeOf(paragraph);
    return {place.before.length, m_pieces.at(place).length};
}

qsizetype MarkdownPieces::paragraphAt(qsizetype location) const
{
    return m_pieces.find([location](const Sum &behind) { return behind.length > location; }).before.paragraphs;
}

MarkdownPieces::Pieces::Place MarkdownPieces::placeOf(qsizetype paragraph) const
{
    if (paragraph == m_pieces.count())
        return m_pieces.end();
    return m_pieces.find([paragraph](const Sum &behind) { return behind.paragraphs > paragraph; });
}

} // namespace Tessaline
