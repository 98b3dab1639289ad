#include "server/NoEngine.h"

#include "server/ModelNames.h"

namespace Tessaline::Server {

std::string sentencesWithoutEngine(const Settings &settings)
{
    const std::string ownFolder = settings.programFolders.empty() ? std::string(".") : settings.programFolders.front();
    const std::optional<ModelNames> names = modelNames(settings.modelId);
    const std::string ollamaModel = names ? std::string(names->ollama) : settings.modelId;
    return "No local engine was found, so there is no model that could answer. One of two can be installed. "
           "llama.cpp: unpack a release for Linux from https://github.com/ggml-org/llama.cpp/releases and put its "
           "program "
           "llama-server on the path or into " +
           ownFolder + "; it fetches the model by itself, or takes the file " + settings.modelFolder + "/" +
           settings.modelId +
           ".gguf if you put it there. "
           "Ollama: run “curl -fsSL https://ollama.com/install.sh | sh” and then “ollama pull " +
           ollamaModel +
           "”. "
           "Then start Tessaline again.";
}

} // namespace Tessaline::Server
