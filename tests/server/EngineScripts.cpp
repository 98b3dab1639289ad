#include "tests/server/EngineScripts.h"

#include <QtCore/QFile>
#include <QtCore/QJsonArray>
#include <QtCore/QJsonObject>

#include <gtest/gtest.h>

namespace Tessaline::Server {

using namespace Qt::StringLiterals;

std::string token(const std::string &text)
{
    return R"({"event":{"choices":[{"delta":{"content":")" + text + R"("}}]}})";
}

std::string streamOf(const std::string &steps)
{
    return "{\"steps\":[" + steps + ",{\"done\":true}]}";
}

QByteArray openAiScript(const std::string &chatReplies, const std::string &others)
{
    return QByteArray::fromStdString(R"({"replies":{"/v1/models":[{"body":"{\"data\":[{\"id\":\"served\"}]}"}],)"
                                     R"("*":[{"status":404,"body":""}],)" +
                                     others + "\"" + kChat + "\":[" + chatReplies + "]}}");
}

QByteArray llamaScript(const std::string &chatReplies, const std::string &others)
{
    return openAiScript(chatReplies, R"("/health":[{"status":503,"body":"{}"},{"body":"{}"}],)"
                                     R"("/props":[{"body":"{\"default_generation_settings\":{\"n_ctx\":3072}}"}],)"
                                     R"("/tokenize":[{"body":"{\"tokens\":[1,2,3,4,5]}"}],)" +
                                         others);
}

std::string urlOf(const ScriptedServer &engine)
{
    return "TESSALINE_ENGINE_URL=http://127.0.0.1:" + std::to_string(engine.port());
}

std::string ollamaOf(const ScriptedServer &engine)
{
    return "OLLAMA_HOST=127.0.0.1:" + std::to_string(engine.port());
}

LlamaFolder::LlamaFolder(const QByteArray &script) : ScriptedServerFolder(script)
{
    EXPECT_TRUE(QFile::link(executable().path(), files().url(u"llama-server"_s).path()));
    files().makeFolder(u"home"_s);
}

void LlamaFolder::wrap(const std::string &shellScript) const
{
    const QString program = files().url(u"llama-server"_s).path();
    EXPECT_TRUE(QFile::remove(program));
    files().write(u"llama-server"_s,
                  QByteArray::fromStdString("#!/bin/sh\nfolder='" + path(u""_s) + "'\nengine='" +
                                            executable().path().toStdString() + "'\n" + shellScript));
    EXPECT_TRUE(QFile::setPermissions(program, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner));
}

std::vector<std::string> LlamaFolder::variables() const
{
    return {"PATH=" + path(u""_s), "HOME=" + path(u"home"_s), "SCRIPTED_SERVER_SCRIPT=" + path(u"script.json"_s),
            "TESSALINE_CONTEXT_TOKENS=4096", "LLAMA_ARG_HOST=0.0.0.0"};
}

std::string LlamaFolder::path(const QString &name) const
{
    return files().url(name).path().toStdString();
}

std::vector<std::string> LlamaFolder::arguments() const
{
    std::vector<std::string> words;
    for (const QJsonValue &word : process().value(u"arguments"_s).toArray())
        words.push_back(word.toString().toStdString());
    return words;
}

std::string LlamaFolder::variable(const QString &name) const
{
    return process().value(u"environment"_s).toObject().value(name).toString().toStdString();
}

} // namespace Tessaline::Server
