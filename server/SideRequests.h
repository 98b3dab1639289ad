#pragma once

#include "server/Engine.h"
#include "server/Records.h"

#include <string_view>

namespace Tessaline::Server {

/// What an engine is asked beside the conversation: short, as JSON, and of no more than fits a small context. A text is
/// cut to its beginning.
EngineRequest topicsRequest(std::string_view document);
EngineRequest digestRequest(const DigestRequest &request);
EngineRequest cardsRequest(std::string_view topic);

} // namespace Tessaline::Server
