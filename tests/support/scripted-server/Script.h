#pragma once

#include <chrono>
#include <cstdint>
#include <map>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

/// What the scripted server does, as its script says it.
///
/// Of its arguments the program heeds `--port N` alone, which goes before the script's: so it stands in for an engine
/// too, which is told its port. The environment variable SCRIPTED_SERVER_SCRIPT names a JSON file; without it the
/// server is well, and answers everything else with 404. An object with these keys, all of them optional; times are
/// milliseconds:
///
/// | key           | meaning                                                                                        |
/// |---------------|------------------------------------------------------------------------------------------------|
/// | `port`        | on 127.0.0.1; 23949 unless given, 0 for any that is free                                       |
/// | `portFile`    | written when it listens: the port in decimal                                                   |
/// | `record`      | a folder (made if missing) for what happened; see below                                        |
/// | `listenAfter` | how long it waits before it opens the port                                                     |
/// | `linger`      | how long it goes on after SIGTERM, which then ends it with status 0; -1 for ever               |
/// | `output`      | list of `{"text" or "hex", "after", "to"}`: what it writes, one write each, so long after the  |
/// |               | one before has been read; `to` is "stdout" (default) or "stderr"                               |
/// | `exit`        | `{"after", "code" or "signal"}`: it ends by itself                                             |
/// | `replies`     | object from a path ("/health") to a list of replies: the n-th request to the path gets the     |
/// |               | n-th reply, and the last one is used for all others; "*" is for paths without a list           |
///
/// A reply:
///
/// | key        | meaning                                                                                           |
/// |------------|---------------------------------------------------------------------------------------------------|
/// | `status`   | 200 unless given                                                                                  |
/// | `reason`   | "Status" unless given                                                                             |
/// | `headers`  | object, added to the reply's own                                                                  |
/// | `after`    | how long it waits before the first byte                                                           |
/// | `until`    | a path: before the first byte it also waits until there is a file                                 |
/// | `body`     | text; or                                                                                          |
/// | `steps`    | list of steps, see below                                                                          |
/// | `transfer` | how the client learns where the body ends: "length" (default of `body`; the connection stays),    |
/// |            | "close" (default of `steps`), "chunked" (the connection stays)                                    |
/// | `cutEvery` | sends what is sent in pieces of so many bytes, headers included; 0 for whole                      |
/// | `pause`    | after each such piece                                                                             |
///
/// A step is an object with one of these keys:
///
/// | key     | meaning                                                                                              |
/// |---------|------------------------------------------------------------------------------------------------------|
/// | `token` | a line `data: {"token":…}` and an empty line; with `count` and `every` so many of them at this rate, |
/// |         | with `until` and `every` as many as it takes until there is a file at that path                      |
/// | `event` | the same with any JSON value                                                                         |
/// | `done`  | `data: [DONE]` and an empty line                                                                     |
/// | `text`  | as it stands                                                                                         |
/// | `hex`   | the bytes                                                                                            |
/// | `fill`  | a text, `count` times over: a huge line                                                              |
/// | `wait`  | nothing for so long                                                                                  |
/// | `until` | nothing until there is a file at this path: the test says when it goes on                            |
/// | `hang`  | nothing until the client closes the connection                                                       |
/// | `close` | closes the connection here, whatever the headers promised                                            |
/// | `reset` | the same, and the client gets an error instead of an end                                             |
/// | `exit`  | ends the program with this status                                                                    |
/// | `kill`  | ends it by this signal                                                                               |
///
/// What is recorded, each file complete as soon as it is there:
///
/// - `process.json`: how the program was started: `pid`, `arguments`, `environment` (object), `folder` (working
///   directory), `descriptors` (object from number to what is open), `blockedSignals`, `ignoredSignals`,
///   `caughtSignals` (hexadecimal masks) and `parentDeathSignal`.
/// - `0001.request`, `0002.request`, …: every request byte by byte, in the order in which they were complete.
/// - `0001.closed`: the client closed the connection of that request before the reply was complete.
/// - `0001.done`: the reply was sent in full.
namespace Scripted {

using Milliseconds = std::chrono::milliseconds;

struct Output {
    std::string bytes;
    Milliseconds after{0};
    int descriptor = 1;
};

struct Exit {
    Milliseconds after{0};
    int code = 0;
    int signal = 0; // 0: ends with `code`
};

struct Send {
    std::string bytes;
    std::int64_t count = 1;
    Milliseconds every{0}; // after each
    std::string until;     // if there is one, `count` does not matter
};
struct Wait {
    Milliseconds duration{0};
};
struct Until {
    std::string path;
};
struct Hang {};
struct Close {
    bool isReset = false;
};
using Step = std::variant<Send, Wait, Until, Hang, Close, Exit>;

enum class Transfer { Length, Close, Chunked };

struct Reply {
    int status = 200;
    std::string reason = "Status";
    std::vector<std::pair<std::string, std::string>> headers;
    Milliseconds after{0};
    std::string until;
    std::vector<Step> steps;
    Transfer transfer = Transfer::Length;
    std::size_t cutEvery = 0;
    Milliseconds pause{0};
};

struct Script {
    std::uint16_t port = 23949;
    std::string portFile;
    std::string record;
    Milliseconds listenAfter{0};
    std::optional<Milliseconds> linger; // below 0: for ever
    std::vector<Output> output;
    std::optional<Exit> exit;
    std::map<std::string, std::vector<Reply>> replies;
};

/// Reads a script. Throws std::exception with a message if it is not one.
Script parseScript(const std::string &json);

} // namespace Scripted
