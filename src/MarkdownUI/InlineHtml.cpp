#include "MarkdownUI/InlineHtml.h"

#include <algorithm>

namespace MarkdownUI {

namespace {

bool isNameCharacter(QChar sign)
{
    return (sign >= u'a' && sign <= u'z') || (sign >= u'A' && sign <= u'Z') || (sign >= u'0' && sign <= u'9');
}

} // namespace

bool isLineBreakTag(QStringView html)
{
    // A tag has to be closed somewhere: behind the last bracket nothing is one, and before it every name is.
    const qsizetype last = html.lastIndexOf(u'>');
    for (qsizetype start = html.indexOf(u'<'); start >= 0 && start < last; start = html.indexOf(u'<', start + 1)) {
        qsizetype name = start + 1;
        if (html.at(name) == u'/')
            ++name;
        const QStringView rest = html.sliced(name, last - name);
        const auto end = std::ranges::find_if_not(rest, isNameCharacter);
        if (end != rest.begin())
            return rest.first(end - rest.begin()).compare(u"br", Qt::CaseInsensitive) == 0;
    }
    return false;
}

} // namespace MarkdownUI
