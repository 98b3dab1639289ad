#pragma once

#include "server/Engine.h"
#include "server/Settings.h"

#include <string>

namespace Tessaline::Server {

/// What the person reads when there is no engine: which two there are, how to install them here, and where models go.
std::string sentencesWithoutEngine(const Settings &settings);

/// Stands where no engine was found, and explains that.
class NoEngine final : public Engine
{
public:
    explicit NoEngine(const Settings &settings) : m_sentences(sentencesWithoutEngine(settings)) {}

    std::string name() const override { return "none"; }
    EngineState state() const override { return {EngineState::Phase::Explained, -1, m_sentences}; }
    std::optional<int> contextTokens() const override { return {}; }
    std::optional<int> countTokens(std::string_view, std::stop_token) override { return {}; }
    EngineOutcome generate(const EngineRequest &, std::stop_token, const TokenReceiver &) override
    {
        return {EngineOutcome::End::Failed, m_sentences};
    }

private:
    std::string m_sentences;
};

} // namespace Tessaline::Server
