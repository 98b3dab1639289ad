#pragma once

#include "foundation/ChildProcess.h"
#include "Services/AIModelOption.h"

namespace Tessaline {

/// `own` with the five variables that the server is told by: RAYON_NUM_THREADS and OMP_NUM_THREADS (4),
/// TESSALINE_MODEL_ID, TESSALINE_CONTEXT_TOKENS, and TESSALINE_THREADS, which leaves two processors to others but is at
/// least 4 and at most 8.
Environment serverEnvironment(Environment own, const AIModelOption &model, int activeProcessorCount);

} // namespace Tessaline
