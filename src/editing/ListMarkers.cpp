#include "editing/ListMarkers.h"

#include "editing/BlockStyle.h"
#include "editing/Characters.h"

#include <limits>

namespace Tessaline {

namespace {

using namespace Qt::StringLiterals;

qint64 numberAfter(QStringView argument)
{
    const qint64 number = Characters::integer(argument).value_or(1);
    return number == std::numeric_limits<qint64>::max() ? number : number + 1;
}

} // namespace

SharedText ListMarker::bullet()
{
    static const SharedText kMarker(u"•\t"_s);
    return kMarker;
}

SharedText ListMarker::task(bool isDone)
{
    static const SharedText kOpen(u"☐\t"_s);
    static const SharedText kDone(u"☑\t"_s);
    return isDone ? kDone : kOpen;
}

SharedText ListMarker::number(qint64 number)
{
    return SharedText(QString::number(number) + u".\t"_s);
}

std::optional<ListItem> nextListItem(QStringView style)
{
    const BlockStyle::Tag tag = BlockStyle::read(style);
    switch (tag.kind) {
    case BlockStyle::Kind::Bullet:
        return ListItem{ListMarker::bullet(), BlockStyle::bullet()};
    case BlockStyle::Kind::Task:
        return ListItem{ListMarker::task(false), SharedText(style)};
    case BlockStyle::Kind::Numbered: {
        const qint64 next = numberAfter(tag.argument);
        return ListItem{ListMarker::number(next), BlockStyle::numbered(next)};
    }
    default:
        return std::nullopt;
    }
}

} // namespace Tessaline
