#pragma once

#include "server/Engine.h"
#include "server/HttpServer.h"
#include "server/Settings.h"

#include <condition_variable>
#include <mutex>
#include <optional>
#include <stop_token>
#include <string>

namespace Tessaline::Server {

/// Answers the application with what an engine says. From any thread.
class Assistant
{
public:
    /// The engine must outlive this object.
    Assistant(const Settings &settings, Engine &engine) : m_settings(settings), m_engine(engine) {}

    /// What is answered at which path. This object must outlive their use.
    Routes routes();

private:
    /// Marks a chat as running, as long as it lives.
    class RunningChat;
    /// Marks what is asked aside as running, as long as it lives.
    class RunningAside;

    Reply health() const;
    std::variant<Reply, EventStream> chat(const std::string &body, std::stop_token stop);
    void streamAnswer(const ChatRequest &request, std::stop_token stop, const EventWriter &write);
    Reply suggestions(const std::string &content, std::stop_token stop);
    Reply digest(const DigestRequest &request, std::stop_token stop);
    Reply conceptCards(const std::string &topic, std::stop_token stop);

    /// The engine's whole answer, once no chat runs and nothing else of this kind; absent if there is none. A chat that
    /// comes meanwhile goes first: the engine is asked again behind it.
    std::optional<std::string> askAside(const EngineRequest &request, std::stop_token client);
    int windowTokens() const;

    const Settings m_settings;
    Engine &m_engine;
    std::mutex m_mutex; // guards what follows
    std::condition_variable_any m_changed;
    int m_chats = 0;                            // that run
    bool m_isAsking = false;                    // aside
    std::stop_source m_aside{std::nostopstate}; // stops what is asked aside
};

} // namespace Tessaline::Server
