#include "server/EngineTalk.h"

#include "server/Lines.h"

namespace Tessaline::Server {

using End = EngineOutcome::End;

std::string remoteSentence(const std::string &name)
{
    return name + " would send what you write to another machine; Tessaline does not allow that.";
}

EngineOutcome ask(const EngineTalk &talk, const HttpCall &call, const std::stop_token &stop, const TokenReceiver &token)
{
    // 1. The answer.
    Lines lines;
    EngineLine last;
    bool isUnwanted = false;
    const HttpOutcome outcome = httpCall(talk.address, call, stop, [&](std::string_view bytes) {
        return lines.append(bytes, [&](std::string_view line) {
            last = talk.meaning(line);
            if (!last.isRemote && !last.token.empty() && !token(last.token))
                isUnwanted = true;
            return last.error.empty() && !last.isRemote && !last.isDone && !isUnwanted;
        });
    });

    // 2. How it ended.
    if (stop.stop_requested() || isUnwanted)
        return {End::Stopped, {}};
    if (last.isRemote)
        return {End::Failed, remoteSentence(talk.name)};
    if (!last.error.empty())
        return {End::Failed, talk.name + " reports a failure: " + last.error + "."};
    if (last.isDone)
        return {End::Complete, {}};
    if (outcome.status == 0)
        return {End::Silent, talk.name + " does not answer."};
    if (outcome.status == 200)
        return {End::Failed, talk.name + " ended in the middle of its answer."};
    const EngineError refusal = engineError(outcome.body);
    if (refusal.type == "exceed_context_size_error")
        return {End::TooLong, "The question, with what comes with it, is too long for the model."};
    return {End::Refused, talk.name + " refused the question: " + refusal.message + "."};
}

} // namespace Tessaline::Server
