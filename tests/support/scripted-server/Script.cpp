#include "Script.h"

#include <nlohmann/json.hpp>

#include <initializer_list>
#include <stdexcept>
#include <string_view>

namespace Scripted {

namespace {

using Json = nlohmann::ordered_json;

/// A misspelt key would be a test that tests nothing.
void expectKeys(const Json &object, std::initializer_list<std::string_view> known)
{
    for (const auto &[key, value] : object.items()) {
        bool isKnown = false;
        for (const std::string_view name : known)
            isKnown = isKnown || key == name;
        if (!isKnown)
            throw std::runtime_error("unknown key \"" + key + "\" in " + object.dump());
    }
}

Milliseconds milliseconds(const Json &object, const char *key)
{
    return Milliseconds(object.value(key, 0));
}

std::string bytesOfHex(const std::string &hex)
{
    std::string bytes;
    for (std::size_t index = 0; index + 1 < hex.size(); index += 2)
        bytes += static_cast<char>(std::stoi(hex.substr(index, 2), nullptr, 16));
    return bytes;
}

std::string line(const std::string &data)
{
    return "data: " + data + "\n\n";
}

Exit parseExit(const Json &object)
{
    expectKeys(object, {"after", "code", "signal"});
    return {milliseconds(object, "after"), object.value("code", 0), object.value("signal", 0)};
}

Output parseOutput(const Json &object)
{
    expectKeys(object, {"text", "hex", "after", "to"});
    return {object.contains("hex") ? bytesOfHex(object["hex"]) : object.at("text").get<std::string>(),
            milliseconds(object, "after"), object.value("to", std::string("stdout")) == "stderr" ? 2 : 1};
}

Step parseStep(const Json &object)
{
    expectKeys(object, {"token", "event", "done", "text", "hex", "fill", "count", "every", "wait", "until", "hang",
                        "close", "reset", "exit", "kill"});
    const auto send = [&object](std::string bytes) {
        return Send{std::move(bytes), object.value("count", std::int64_t{1}), milliseconds(object, "every"),
                    object.value("until", std::string())};
    };
    if (object.contains("token"))
        return send(line(Json{{"token", object["token"]}}.dump()));
    if (object.contains("event"))
        return send(line(object["event"].dump()));
    if (object.contains("done"))
        return send(line("[DONE]"));
    if (object.contains("text"))
        return send(object["text"].get<std::string>());
    if (object.contains("hex"))
        return send(bytesOfHex(object["hex"]));
    if (object.contains("fill")) {
        const std::string piece = object["fill"];
        std::string whole;
        for (std::int64_t count = object.at("count"); count > 0; --count)
            whole += piece;
        return Send{.bytes = std::move(whole), .count = 1, .every = {}, .until = {}};
    }
    if (object.contains("wait"))
        return Wait{milliseconds(object, "wait")};
    if (object.contains("until"))
        return Until{object["until"].get<std::string>()};
    if (object.contains("hang"))
        return Hang{};
    if (object.contains("close") || object.contains("reset"))
        return Close{object.contains("reset")};
    if (object.contains("exit"))
        return Exit{Milliseconds(0), object["exit"].get<int>(), 0};
    if (object.contains("kill"))
        return Exit{Milliseconds(0), 0, object["kill"].get<int>()};
    throw std::runtime_error("a step without a meaning: " + object.dump());
}

Transfer parseTransfer(const std::string &name)
{
    if (name == "length")
        return Transfer::Length;
    if (name == "close")
        return Transfer::Close;
    if (name == "chunked")
        return Transfer::Chunked;
    throw std::runtime_error("unknown transfer \"" + name + "\"");
}

Reply parseReply(const Json &object)
{
    expectKeys(object,
               {"status", "reason", "headers", "after", "until", "body", "steps", "transfer", "cutEvery", "pause"});
    Reply reply;
    reply.status = object.value("status", reply.status);
    reply.reason = object.value("reason", reply.reason);
    if (object.contains("headers"))
        for (const auto &[name, value] : object["headers"].items())
            reply.headers.emplace_back(name, value.get<std::string>());
    reply.after = milliseconds(object, "after");
    reply.until = object.value("until", reply.until);
    if (object.contains("body"))
        reply.steps.push_back(Send{.bytes = object["body"].get<std::string>(), .count = 1, .every = {}, .until = {}});
    if (object.contains("steps")) {
        reply.transfer = Transfer::Close;
        for (const Json &step : object["steps"])
            reply.steps.push_back(parseStep(step));
    }
    if (object.contains("transfer"))
        reply.transfer = parseTransfer(object["transfer"]);
    reply.cutEvery = object.value("cutEvery", reply.cutEvery);
    reply.pause = milliseconds(object, "pause");
    return reply;
}

} // namespace

Script parseScript(const std::string &json)
{
    const Json object = Json::parse(json);
    expectKeys(object, {"port", "portFile", "record", "listenAfter", "linger", "output", "exit", "replies"});

    Script script;
    script.port = object.value("port", script.port);
    script.portFile = object.value("portFile", script.portFile);
    script.record = object.value("record", script.record);
    script.listenAfter = milliseconds(object, "listenAfter");
    if (object.contains("linger"))
        script.linger = milliseconds(object, "linger");
    if (object.contains("output"))
        for (const Json &output : object["output"])
            script.output.push_back(parseOutput(output));
    if (object.contains("exit"))
        script.exit = parseExit(object["exit"]);
    if (object.contains("replies"))
        for (const auto &[path, replies] : object["replies"].items())
            for (const Json &reply : replies)
                script.replies[path].push_back(parseReply(reply));
    return script;
}

} // namespace Scripted
