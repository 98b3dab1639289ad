#include "panels/LikelyDuplicate.h"

#include "panels/UniqueSearch.h"

#include <QtCore/QSet>

namespace Tessaline {

namespace {

QString comparedName(const QString &name)
{
    return name.trimmed().toLower();
}

bool holds(const QString &name, const QString &part)
{
    return part.isEmpty() || uniqueRange(part, name, Likeness::Exact).kind != UniqueRange::Kind::Absent;
}

} // namespace

std::optional<qsizetype> findLikelyDuplicate(const QString &name, const QList<ContextItem> &attached)
{
    const QString candidate = comparedName(name);
    if (candidate.isEmpty())
        return std::nullopt;
    for (qsizetype i = 0; i < attached.size(); ++i) {
        const QString existing = comparedName(attached[i].name);
        if (holds(existing, candidate) || holds(candidate, existing))
            return i;
    }
    return std::nullopt;
}

QStringList visibleSuggestions(const QStringList &suggested, const QList<ContextItem> &attached)
{
    QStringList visible;
    QSet<QString> seen;
    for (const QString &suggestion : suggested) {
        const QString key = comparedName(suggestion);
        if (key.isEmpty() || seen.contains(key) || findLikelyDuplicate(suggestion, attached))
            continue;
        seen.insert(key);
        visible.append(suggestion);
    }
    return visible;
}

} // namespace Tessaline
