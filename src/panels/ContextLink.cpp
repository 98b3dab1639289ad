#include "panels/ContextLink.h"

#include <QtCore/QUrl>

namespace Tessaline {

namespace {

constexpr QStringView kScheme = u"tessaline://";
constexpr QStringView kHost = u"add-context";
constexpr QStringView kTopic = u"concept";

// QUrl would write scheme and host in small letters, and they count as they are written.

/// The text up to the first of these signs; all of it if there is none.
QStringView upToAnyOf(QStringView text, QStringView signs)
{
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (signs.contains(text[i]))
            return text.first(i);
    }
    return text;
}

QString decoded(QStringView text)
{
    return QUrl::fromPercentEncoding(text.toUtf8());
}

std::optional<QString> firstTopic(QStringView query)
{
    for (const QStringView item : query.split(u'&')) {
        const qsizetype equals = item.indexOf(u'=');
        if (equals >= 0 && decoded(item.first(equals)) == kTopic)
            return decoded(item.sliced(equals + 1));
    }
    return std::nullopt;
}

} // namespace

ContextLink contextLink(QStringView url)
{
    if (!url.startsWith(kScheme))
        return {};
    const QStringView rest = url.sliced(kScheme.size());
    const QStringView authority = upToAnyOf(rest, u"/?#");
    const QStringView host = upToAnyOf(authority.sliced(authority.lastIndexOf(u'@') + 1), u":");
    if (host != kHost)
        return {};

    const QStringView upToFragment = upToAnyOf(rest, u"#");
    const qsizetype question = upToFragment.indexOf(u'?');
    return {.isHandled = true, .topic = question < 0 ? std::nullopt : firstTopic(upToFragment.sliced(question + 1))};
}

} // namespace Tessaline
