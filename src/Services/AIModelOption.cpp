#include "Services/AIModelOption.h"

#include <QtCore/QHashFunctions>

#include <algorithm>

namespace Tessaline {

using namespace Qt::StringLiterals;

size_t qHash(const AIModelOption &model, size_t seed) noexcept
{
    return qHashMulti(seed, model.id, model.displayName, model.parameterLabel, model.downloadSize,
                      model.minimumMemoryGB, model.contextTokens, model.summary);
}

const QList<AIModelOption> &approvedModels()
{
    static const QList<AIModelOption> kModels{
        {u"llama-3.2-3b-q4"_s, u"Llama 3.2 Compact"_s, u"3B · Q4_K_M"_s, u"2.0 GB"_s, 8, 8192,
         u"Fastest responses and the lowest memory use. Best for shorter edits."_s},
        {u"llama-3.1-8b-q4"_s, u"Llama 3.1 Balanced"_s, u"8B · Q4_K_M"_s, u"4.9 GB"_s, 16, 16384,
         u"The default balance of writing quality, context, and speed."_s},
        {u"qwen-2.5-14b-q4"_s, u"Qwen 2.5 High Quality"_s, u"14B · Q4_K_M"_s, u"9.0 GB"_s, 32, 32768,
         u"Stronger analysis and drafting for Macs with substantial unified memory."_s},
    };
    return kModels;
}

const AIModelOption &recommendedModel(quint64 physicalMemoryBytes)
{
    const quint64 units = physicalMemoryBytes >> 34; // whole 16 GiB
    if (units == 0)
        return approvedModels()[0];
    return approvedModels()[units < 3 ? 1 : 2];
}

const AIModelOption &resolveActiveModel(const std::optional<QString> &selection, quint64 physicalMemoryBytes)
{
    // NOTE: nothing reserves "automatic", but no model is named so.
    const QList<AIModelOption> &models = approvedModels();
    const auto found = std::find_if(models.begin(), models.end(),
                                    [&selection](const AIModelOption &model) { return model.id == selection; });
    return found == models.end() ? recommendedModel(physicalMemoryBytes) : *found;
}

} // namespace Tessaline
