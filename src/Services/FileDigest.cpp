#include "Services/FileDigest.h"

#include "foundation/ConsoleLine.h"
#include "Services/WireClient.h"

namespace Tessaline {

using namespace Qt::StringLiterals;

QCoro::Task<std::optional<QString>> fetchDigest(WireClient &wire, QString filename, QString content,
                                                std::stop_token stop)
{
    const auto digest = co_await wire.digestFile(std::move(filename), std::move(content), stop);
    if (digest)
        co_return digest.value();
    const WireFailure::Kind kind = digest.failure().kind;
    if (kind == WireFailure::Kind::Transport || kind == WireFailure::Kind::Malformed)
        printConsoleLine(u"Failed to fetch file digest: "_s + digest.failure().description);
    co_return std::nullopt;
}

} // namespace Tessaline
