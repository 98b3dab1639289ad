#pragma once

#include "server/Engine.h"
#include "server/EngineJson.h"
#include "server/HttpClient.h"
#include "server/Settings.h"

#include <stop_token>
#include <string>
#include <string_view>

namespace Tessaline::Server {

/// An engine as it is asked for an answer, which it streams in lines.
struct EngineTalk {
    LoopbackAddress address;
    std::string name;                                  // begins the sentences about its failures
    EngineLine (*meaning)(std::string_view) = nullptr; // of a line of its answer
};

/// Asks, and hands the answer over as Engine::generate does. An answer of another machine is refused.
EngineOutcome ask(const EngineTalk &talk, const HttpCall &call, const std::stop_token &stop,
                  const TokenReceiver &token);

/// Why an engine that would have another machine answer is not asked.
std::string remoteSentence(const std::string &name);

} // namespace Tessaline::Server
