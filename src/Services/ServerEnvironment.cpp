#include "Services/ServerEnvironment.h"

#include <algorithm>

namespace Tessaline {

Environment serverEnvironment(Environment own, const AIModelOption &model, int activeProcessorCount)
{
    own.insert("RAYON_NUM_THREADS", "4");
    own.insert("OMP_NUM_THREADS", "4");
    own.insert("TESSALINE_MODEL_ID", model.id.toUtf8());
    own.insert("TESSALINE_CONTEXT_TOKENS", QByteArray::number(model.contextTokens));
    own.insert("TESSALINE_THREADS", QByteArray::number(std::clamp(activeProcessorCount - 2, 4, 8)));
    return own;
}

} // namespace Tessaline
