#pragma once

#include "server/Records.h"

#include <functional>
#include <optional>
#include <stop_token>
#include <string>
#include <string_view>
#include <vector>

namespace Tessaline::Server {

/// How far an engine is. Only `Ready` answers from a model; `Explained` answers every question with why there is none.
struct EngineState {
    enum class Phase { Loading, Downloading, Ready, Explained };
    Phase phase = Phase::Loading;
    int percent = -1;        // of the download or the load; below 0: unknown
    std::string explanation; // a few plain sentences: always for Explained, for Loading if there is more to say
    friend bool operator==(const EngineState &, const EngineState &) = default;
};

/// What an engine is asked.
struct EngineRequest {
    std::vector<Turn> turns;
    double temperature = 0.7;
    double topP = 0.9;
    int mostTokens = 0;     // of the answer
    std::string jsonSchema; // the answer is to be JSON of this schema; empty: plain text
};

/// How an answer ended.
struct EngineOutcome {
    /// Silent: nobody answered at all. Refused: it did not begin. Failed: it began, and came to no good end.
    enum class End { Complete, Stopped, Failed, Silent, Refused, TooLong };
    End end = End::Complete;
    std::string sentence; // for the person, unless it is complete or was stopped
};

/// A piece of the answer; false if no more is wanted.
using TokenReceiver = std::function<bool(std::string_view token)>;

/// What computes the answers. Every implementation is one pair of files; `EngineChoice` picks one. All functions may be
/// called from any thread, many at once.
class Engine
{
public:
    virtual ~Engine() = default;

    /// For the line at the start: the engine and where it is.
    virtual std::string name() const = 0;
    virtual EngineState state() const = 0;
    /// Begins to make ready what it needs, on a thread of its own. Once.
    virtual void begin() {}
    /// The real size of the context; absent while it is not known.
    virtual std::optional<int> contextTokens() const = 0;
    /// By the engine's own tokenizer; absent if it offers none.
    virtual std::optional<int> countTokens(std::string_view text, std::stop_token stop) = 0;
    /// Hands the answer over piece by piece, and returns when it has ended.
    virtual EngineOutcome generate(const EngineRequest &request, std::stop_token stop, const TokenReceiver &token) = 0;
    /// Ends what it started, and returns when that has gone. What is asked afterwards fails.
    virtual void end() {}
};

/// Told whenever the state of an engine changes, on the engine's thread.
using StateListener = std::function<void(const EngineState &state)>;

} // namespace Tessaline::Server
