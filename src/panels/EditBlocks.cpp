#include "panels/EditBlocks.h"

#include <optional>

namespace Tessaline {

namespace {

constexpr QStringView kSearch = u"<<<<<<< SEARCH";
constexpr QStringView kDivider = u"\n=======";
constexpr QStringView kReplace = u"\n>>>>>>> REPLACE";

/// The position behind the line break at `position`; absent if there is none.
std::optional<qsizetype> behindLineBreak(QStringView text, qsizetype position)
{
    if (position < text.size() && text[position] == u'\r')
        ++position;
    if (position < text.size() && text[position] == u'\n')
        return position + 1;
    return std::nullopt;
}

/// The text from `begin` to the line break whose line feed stands at `lineFeed`.
TextRange upToLineBreak(QStringView text, qsizetype begin, qsizetype lineFeed)
{
    const bool hasReturn = lineFeed > begin && text[lineFeed - 1] == u'\r';
    return {begin, lineFeed - (hasReturn ? 1 : 0) - begin};
}

struct Marker {
    qsizetype begin = 0;
    qsizetype behind = 0; // behind the line break that ends it
};

/// The next marker, at or behind `from`, whose line ends with it.
std::optional<Marker> nextMarker(QStringView text, QStringView marker, qsizetype from)
{
    for (qsizetype begin = text.indexOf(marker, from); begin >= 0; begin = text.indexOf(marker, begin + 1)) {
        if (const std::optional<qsizetype> behind = behindLineBreak(text, begin + marker.size()))
            return Marker{begin, *behind};
    }
    return std::nullopt;
}

} // namespace

QList<EditBlock> editBlocks(QStringView answer)
{
    QList<EditBlock> blocks;
    qsizetype from = 0;
    // Where one start finds no divider, or one divider no end, those further on find none either.
    while (const std::optional<Marker> search = nextMarker(answer, kSearch, from)) {
        const std::optional<Marker> divider = nextMarker(answer, kDivider, search->behind);
        if (!divider)
            break;
        const qsizetype replace = answer.indexOf(kReplace, divider->behind);
        if (replace < 0)
            break;
        from = replace + kReplace.size();
        blocks.append({.whole = {search->begin, from - search->begin},
                       .original = upToLineBreak(answer, search->behind, divider->begin),
                       .replacement = upToLineBreak(answer, divider->behind, replace)});
    }
    return blocks;
}

} // namespace Tessaline
