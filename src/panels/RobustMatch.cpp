#include "panels/RobustMatch.h"

#include "foundation/CharacterBreaks.h"
#include "panels/UniqueSearch.h"

namespace Tessaline {

namespace {

using Kind = UniqueRange::Kind;

} // namespace

NormalizedText normalizedForMatching(QStringView text)
{
    NormalizedText result;
    result.text.reserve(text.size());
    result.positions.reserve(size_t(text.size()) + 1);
    const CharacterBreaks breaks(text);
    for (qsizetype position = 0; position < text.size();) {
        const qsizetype end = breaks.following(position);
        result.positions.push_back(position);
        result.text += normalizedCharacter(text.sliced(position, end - position));
        position = end;
    }
    result.positions.push_back(text.size());
    return result;
}

std::optional<TextRange> robustMatchRange(QStringView original, QStringView document)
{
    if (original.isEmpty() || document.isEmpty())
        return std::nullopt;
    // What is absent in the loosest form is absent in the stricter ones.
    const SearchableText searchable(document, Likeness::Normalized);
    UniqueRange found = searchable.uniqueRange(original);
    if (found.kind != Kind::Absent) {
        for (const Likeness likeness : {Likeness::Exact, Likeness::CaseIgnored}) {
            const UniqueRange stricter = uniqueRange(original, document, likeness);
            if (stricter.kind == Kind::Unique)
                return stricter.range;
            if (stricter.kind == Kind::Ambiguous)
                return std::nullopt;
        }
    }
    if (found.kind != Kind::Unique) {
        const QString normalized = normalizedForMatching(original).text;
        const QString trimmed = normalized.trimmed();
        if (trimmed.size() == normalized.size())
            return std::nullopt;
        found = searchable.uniqueRange(trimmed); // absent if it is empty
    }
    return found.kind == Kind::Unique ? std::optional(found.range) : std::nullopt;
}

QString replacing(const QString &text, const TextRange &range, QStringView replacement)
{
    QString result;
    result.reserve(text.size() - range.length + replacement.size());
    result += QStringView(text).first(range.location);
    result += replacement;
    result += QStringView(text).sliced(range.end());
    return result;
}

} // namespace Tessaline
