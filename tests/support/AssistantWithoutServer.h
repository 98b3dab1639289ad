#pragma once

#include "Services/LocalAIService.h"

namespace Tessaline {

inline constexpr quint64 kEightGiB = quint64(8) << 30;

/// What an assistant is made of on a machine of 8 GiB that has no server and no place for sessions.
inline LocalAIServiceParts assistantWithoutServer(const Preferences &preferences, DocumentStore &documents)
{
    return {.server = {.preferences = preferences,
                       .checkHealth = {},
                       .cancelRequests = {},
                       .dataFolder = {},
                       .candidates = {},
                       .environment = {},
                       .physicalMemoryBytes = kEightGiB},
            .documents = documents,
            .wire = {}};
}

} // namespace Tessaline
