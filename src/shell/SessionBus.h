#pragma once

#include "foundation/Descriptor.h"

#include <QtCore/QByteArray>

#include <chrono>

namespace Tessaline {

/// A first question to the desktop's session bus. The toolkit waits without limit for a bus that takes a connection and
/// then says nothing, as soon as it makes a window; such a bus has to be kept away from it.
class SessionBus
{
public:
    /// Asks the bus at `address`, as libdbus writes it ("unix:path=/run/user/1000/bus"), and does not wait. Needs no
    /// application object. Not asked are an empty address, one of another form than unix:path and unix:abstract, and
    /// one where nobody listens: whoever goes there learns so without delay.
    explicit SessionBus(const QByteArray &address);

    /// The address of the person's bus: what the environment names, else the usual place; empty without both.
    static QByteArray addressOfUser();

    /// Whether nobody who goes to the bus is kept waiting: true once it has answered, or was not asked. Blocks until it
    /// answers, at most for `patience`.
    bool answersWithin(std::chrono::milliseconds patience);

    /// From here on this process and its children have no session bus. To be called before the toolkit looks for it.
    static void keepAway();

private:
    Descriptor m_connection; // open while the answer is awaited
    bool m_isSilent = false;
};

} // namespace Tessaline
