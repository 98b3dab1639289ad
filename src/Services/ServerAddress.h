#pragma once

#include <QtCore/QtGlobal>

namespace Tessaline {

/// Where the assistant's server listens: always at 127.0.0.1, and always at the same port outside of tests. The server
/// is not told, it has to know.
struct ServerAddress {
    static constexpr quint16 kPort = 23949;

    quint16 port = kPort;
    friend bool operator==(const ServerAddress &, const ServerAddress &) = default;
};

} // namespace Tessaline
