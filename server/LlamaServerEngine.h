#pragma once

#include "server/EngineProcess.h"
#include "server/OpenAiEngine.h"
#include "server/Settings.h"
#include "server/Worker.h"

#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace Tessaline::Server {

/// llama.cpp's `llama-server` as a child of this process, on a free port and with a key for this run, which nobody else
/// has: whatever a web page or another program sends it, it refuses. It is started anew when it dies after it was
/// ready; when it dies before, twice, the person is told what it said last. How far the download of a model is, it says
/// on terminals only, so that is also seen by how the folder of the models grows.
class LlamaServerEngine final : public OpenAiEngine
{
public:
    LlamaServerEngine(const Settings &settings, std::string program, StateListener listener);

    std::string name() const override { return "llama-server (" + m_program + ")"; }
    void begin() override;
    void end() override { m_worker.end(); }

private:
    void supervise(const std::stop_token &stop);
    bool becomesReady(EngineProcess &process, const OpenAiPeer &peer, const std::stop_token &stop);
    void noteDownload();
    void explain(const std::string &reason);
    void noteLine(std::string_view line);

    const Settings m_settings;
    const std::string m_program;
    long long m_fetched = 0; // bytes of the model that is fetched; 0 if there is a file of it
    long long m_kept = 0;    // bytes in the folder of the models before
    std::mutex m_mutex;      // guards m_lastLine
    std::string m_lastLine;  // of its output
    Worker m_worker;         // last: it ends first
};

/// The arguments for `llama-server`; `model` are the words that name the model.
std::vector<std::string> llamaArguments(const Settings &settings, const std::vector<std::string> &model, int port);

/// `own` with where models are kept and the key, and without all that could turn on what is not wanted here.
std::vector<std::string> llamaEnvironment(const std::vector<std::string> &own, const Settings &settings,
                                          const std::string &key);

/// The last percentage in a line of output, such as " 42%" or "42.5 %"; absent if there is none.
std::optional<int> percentageIn(std::string_view line);

} // namespace Tessaline::Server
