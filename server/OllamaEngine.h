#pragma once

#include "server/Engine.h"
#include "server/Settings.h"
#include "server/StateKeeper.h"
#include "server/Worker.h"

#include <chrono>
#include <optional>
#include <string>
#include <vector>

namespace Tessaline::Server {

/// Ollama, which somebody else runs on this machine; when it has gone, it is waited for. It fetches the model if it
/// lacks it. A model of which another machine would do the work is refused, whatever Ollama thinks of it: nothing that
/// the person writes leaves this one.
class OllamaEngine final : public Engine
{
public:
    OllamaEngine(const Settings &settings, StateListener listener);

    std::string name() const override;
    EngineState state() const override { return m_state.state(); }
    std::optional<int> contextTokens() const override { return {}; }
    std::optional<int> countTokens(std::string_view, std::stop_token) override { return {}; } // it offers no tokenizer
    EngineOutcome generate(const EngineRequest &request, std::stop_token stop, const TokenReceiver &token) override;
    void begin() override;
    void end() override { m_worker.end(); }

private:
    enum class Found { Model, OnlyOthers, RemoteModel, Nobody };

    void prepare(const std::stop_token &stop);
    Found look(const std::stop_token &stop) const;
    bool pull(const std::stop_token &stop);

    const Settings m_settings;
    const std::string m_model; // by Ollama's name
    StateKeeper m_state;
    Worker m_worker; // last: it ends first
};

/// Whether Ollama answers at this address. What else is there is given up after that time.
bool isOllama(const LoopbackAddress &address, std::chrono::milliseconds patience = std::chrono::seconds(2));

} // namespace Tessaline::Server
