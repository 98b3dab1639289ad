#include "probe/Answer.h"

#include <nlohmann/json.hpp>

#include <algorithm>

namespace Tessaline::Probe {

namespace {

const Operation &operationOf(const Json &request, std::span<const Operation> operations)
{
    const std::string name = Arguments(request).text("op").toStdString();
    const auto found = std::ranges::find(operations, std::string_view(name), &Operation::name);
    if (found == operations.end())
        throw BadArgument("There is no operation \"" + name + "\".");
    return *found;
}

} // namespace

std::string answer(std::string_view line, std::span<const Operation> operations)
{
    Json request;
    Json answer = Json::object();
    try {
        request = Json::parse(line);
        if (!request.is_object())
            throw BadArgument("The line is not a JSON object.");
        Json result = operationOf(request, operations).run(Arguments(request));
        answer["ok"] = true;
        answer["result"] = std::move(result);
    } catch (const Json::parse_error &error) {
        answer["ok"] = false;
        answer["error"] = "The line is not JSON: see byte " + std::to_string(error.byte) + '.';
    } catch (const Json::out_of_range &) {
        answer["ok"] = false;
        answer["error"] = "The line has a number that is too large.";
    } catch (const std::exception &error) { // a BadArgument, or no memory
        answer["ok"] = false;
        answer["error"] = error.what();
    }
    // Moved, not copied: a copy needs stack for each level of a deep value.
    if (const auto id = request.is_object() ? request.find("id") : request.end(); id != request.end())
        answer["id"] = std::move(*id);
    return lineOf(answer);
}

} // namespace Tessaline::Probe
