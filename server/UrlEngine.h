#pragma once

#include "server/OpenAiEngine.h"
#include "server/Settings.h"
#include "server/Worker.h"

#include <string>

namespace Tessaline::Server {

/// An OpenAI-compatible server that somebody else runs on this machine. It is waited for until it answers, and again
/// when it has gone.
class UrlEngine final : public OpenAiEngine
{
public:
    UrlEngine(const Settings &settings, StateListener listener);

    std::string name() const override;
    void begin() override;
    void end() override { m_worker.end(); }

private:
    void waitForAnswers(const std::stop_token &stop);
    bool answers(const std::stop_token &stop);
    void noteSilence() override { m_worker.wake(); }

    const OpenAiPeer m_wanted; // as it was set
    Worker m_worker;           // last: it ends first
};

} // namespace Tessaline::Server
