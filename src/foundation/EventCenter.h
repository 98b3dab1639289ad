#pragma once

#include <QtCore/QLatin1StringView>
#include <QtCore/QObject>
#include <QtCore/QVariantMap>

#include <functional>

namespace Tessaline {

/// Named events between parts of the application that hold no reference to each other. An event is delivered to its
/// observers synchronously, in the order of their registration; nobody learns whether it was heard, and one without
/// observers is lost. Main thread only.
class EventCenter final : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;

    /// `userInfo` is empty for an event that carries nothing.
    void post(QLatin1StringView name, const QVariantMap &userInfo = {});

    /// Calls `handler` for each event of this name until `context` is destroyed. A handler reads the dictionary
    /// defensively: a missing key or a value of another type means that the event is ignored.
    void observe(QLatin1StringView name, QObject *context, std::function<void(const QVariantMap &)> handler);

Q_SIGNALS:
    void posted(QLatin1StringView name, const QVariantMap &userInfo);
};

} // namespace Tessaline
