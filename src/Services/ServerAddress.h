#pragma once

#include <QtCore/QLatin1String>
#include <QtCore/QUrl>

namespace Tessaline {

/// Where the assistant's server listens: always this machine, and always the same port outside of tests.
struct ServerAddress {
    static constexpr quint16 kPort = 23949;

    quint16 port = kPort;
    friend bool operator==(const ServerAddress &, const ServerAddress &) = default;

    /// "http://127.0.0.1:23949" and the path, which begins with a slash.
    QUrl url(QLatin1StringView path) const;
};

} // namespace Tessaline
