#pragma once

#include <QCoro/QCoroTask>
#include <QtCore/QString>

#include <optional>
#include <stop_token>

namespace Tessaline {

class WireClient;

/// Asks the server for a short digest of a file that is being attached. Absent on any failure; one that is no refusal
/// of the server's leaves a line on the console. `wire` outlives the call; see there for the thread.
QCoro::Task<std::optional<QString>> fetchDigest(WireClient &wire, QString filename, QString content,
                                                std::stop_token stop);

} // namespace Tessaline
