#include "foundation/EventCenter.h"

namespace Tessaline {

void EventCenter::post(QLatin1StringView name, const QVariantMap &userInfo)
{
    Q_EMIT posted(name, userInfo);
}

void EventCenter::observe(QLatin1StringView name, QObject *context, std::function<void(const QVariantMap &)> handler)
{
    connect(this, &EventCenter::posted, context,
            [name, handler = std::move(handler)](QLatin1StringView posted, const QVariantMap &userInfo) {
                if (posted == name)
                    handler(userInfo);
            });
}

} // namespace Tessaline
