#pragma once

#include "tests/support/ScriptedServer.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>

#include <string>
#include <vector>

namespace Tessaline::Server {

inline constexpr const char *kChat = "/v1/chat/completions";

/// A step that writes a line of an OpenAI-compatible stream with this token.
std::string token(const std::string &text);

/// A reply with these steps, complete.
std::string streamOf(const std::string &steps);

/// The script of an OpenAI-compatible engine that answers a chat with these replies.
QByteArray openAiScript(const std::string &chatReplies, const std::string &others = {});

/// The script of a llama-server that loads for a moment and then answers.
QByteArray llamaScript(const std::string &chatReplies = streamOf(token("Hello")), const std::string &others = {});

/// The variables of the server's environment that make it use this engine.
std::string urlOf(const ScriptedServer &engine);
std::string ollamaOf(const ScriptedServer &engine);

/// A folder with a scripted `llama-server`, and the home of its models.
class LlamaFolder : public ScriptedServerFolder
{
public:
    explicit LlamaFolder(const QByteArray &script);

    /// Puts a shell script in the place of the program, which finds that as `$engine` and this folder as `$folder`.
    void wrap(const std::string &shellScript) const;

    std::vector<std::string> variables() const; // for the server
    std::string path(const QString &name) const;

    std::vector<std::string> arguments() const;      // that it was started with
    std::string variable(const QString &name) const; // of its environment
};

} // namespace Tessaline::Server
