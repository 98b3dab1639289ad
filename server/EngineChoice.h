#pragma once

#include "server/Engine.h"
#include "server/Settings.h"

#include <memory>
#include <optional>
#include <string>

namespace Tessaline::Server {

/// The first engine that there is: the one at the address that was set, `llama-server`, Ollama, none. Asks Ollama,
/// which takes a moment if it is there and no time if it is not.
std::unique_ptr<Engine> chooseEngine(const Settings &settings, StateListener listener);

/// The first folder's program of this name that can be started.
std::optional<std::string> programIn(const std::vector<std::string> &folders, const std::string &name);

} // namespace Tessaline::Server
