#include "server/EngineChoice.h"

#include "server/LlamaServerEngine.h"
#include "server/NoEngine.h"
#include "server/OllamaEngine.h"
#include "server/UrlEngine.h"

#include <sys/stat.h>
#include <unistd.h>
#include <utility>

namespace Tessaline::Server {

std::optional<std::string> programIn(const std::vector<std::string> &folders, const std::string &name)
{
    for (const std::string &folder : folders) {
        const std::string path = folder + "/" + name;
        struct stat status = {};
        if (stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && access(path.c_str(), X_OK) == 0)
            return path;
    }
    return {};
}

std::unique_ptr<Engine> chooseEngine(const Settings &settings, StateListener listener)
{
    if (settings.engine)
        return std::make_unique<UrlEngine>(settings, std::move(listener));
    if (const std::optional<std::string> program = programIn(settings.programFolders, "llama-server"))
        return std::make_unique<LlamaServerEngine>(settings, *program, std::move(listener));
    if (isOllama(settings.ollama))
        return std::make_unique<OllamaEngine>(settings, std::move(listener));
    return std::make_unique<NoEngine>(settings);
}

} // namespace Tessaline::Server
