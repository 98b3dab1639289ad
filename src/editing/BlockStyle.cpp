#include "editing/BlockStyle.h"

#include "editing/Characters.h"

#include <array>

namespace Tessaline::BlockStyle {

namespace {

using namespace Qt::StringLiterals;

constexpr QStringView kHeading = u"heading:";
constexpr QStringView kNumbered = u"numbered:";
constexpr QStringView kTask = u"task:";
constexpr QStringView kCode = u"code:";

} // namespace

SharedText paragraph()
{
    static const SharedText kTag(u"paragraph"_s);
    return kTag;
}

SharedText heading(int level)
{
    static const std::array kTags{SharedText(u"heading:1"_s), SharedText(u"heading:2"_s), SharedText(u"heading:3"_s),
                                  SharedText(u"heading:4"_s), SharedText(u"heading:5"_s), SharedText(u"heading:6"_s)};
    Q_ASSERT(level >= 1 && level <= 6);
    return kTags[static_cast<size_t>(level - 1)];
}

SharedText quote()
{
    static const SharedText kTag(u"quote"_s);
    return kTag;
}

SharedText bullet()
{
    static const SharedText kTag(u"bullet"_s);
    return kTag;
}

SharedText numbered(qint64 number)
{
    return SharedText(kNumbered.toString() + QString::number(number));
}

SharedText task(bool isDone)
{
    static const SharedText kOpen(u"task:0"_s);
    static const SharedText kDone(u"task:1"_s);
    return isDone ? kDone : kOpen;
}

SharedText code(QStringView info)
{
    static const SharedText kWithoutInfo(u"code:"_s);
    return info.isEmpty() ? kWithoutInfo : SharedText(kCode.toString().append(info));
}

SharedText tableHeader()
{
    static const SharedText kTag(u"tableHeader"_s);
    return kTag;
}

SharedText tableRow()
{
    static const SharedText kTag(u"tableRow"_s);
    return kTag;
}

SharedText horizontalRule()
{
    static const SharedText kTag(u"horizontalRule"_s);
    return kTag;
}

Tag read(QStringView tag)
{
    const auto whole = [tag](QStringView name, Kind kind) { return Tag{tag == name ? kind : Kind::Paragraph, {}}; };
    const auto prefixed = [tag](QStringView prefix, Kind kind) {
        return Characters::startsWith(tag, prefix) ? Tag{kind, tag.sliced(prefix.size())} : Tag();
    };
    switch (tag.isEmpty() ? u' ' : tag.front().unicode()) {
    case u'b':
        return whole(u"bullet", Kind::Bullet);
    case u'c':
        return prefixed(kCode, Kind::Code);
    case u'h':
        return tag == u"horizontalRule" ? Tag{Kind::HorizontalRule, {}} : prefixed(kHeading, Kind::Heading);
    case u'n':
        return prefixed(kNumbered, Kind::Numbered);
    case u'q':
        return whole(u"quote", Kind::Quote);
    case u't':
        if (tag == u"tableHeader" || tag == u"tableRow")
            return {tag == u"tableRow" ? Kind::TableRow : Kind::TableHeader, {}};
        return prefixed(kTask, Kind::Task);
    default:
        return {};
    }
}

qint64 headingLevel(QStringView argument)
{
    return Characters::integer(argument).value_or(1);
}

bool isDoneTask(QStringView tag)
{
    return tag == u"task:1";
}

bool isOpenTask(QStringView tag)
{
    return tag == u"task:0";
}

} // namespace Tessaline::BlockStyle
