#include "server/RequestGate.h"

namespace Tessaline::Server {

std::optional<std::string> refusal(const RequestHead &head, int port)
{
    if (head.hasOrigin)
        return "Web pages may not use this server.";
    const std::string ownPort = ":" + std::to_string(port);
    if (head.hostCount != 1 || (head.host != "127.0.0.1" + ownPort && head.host != "localhost" + ownPort))
        return "This server answers under its own address only.";
    return {};
}

} // namespace Tessaline::Server
