#include "probe/Json.h"

#include <nlohmann/json.hpp>

#include <vector>

namespace Tessaline::Probe {

Json jsonFrom(const QString &text)
{
    return Json(text.toStdString());
}

std::string lineOf(const Json &value)
{
    struct Open { // a list or an object that is being written
        const Json *value;
        Json::const_iterator next;
    };
    std::string line;
    std::vector<Open> open;
    const auto write = [&](const Json &part) {
        if (part.is_structured()) {
            line += part.is_object() ? '{' : '[';
            open.push_back({&part, part.begin()});
        } else {
            line += part.dump(-1, ' ', false, Json::error_handler_t::replace);
        }
    };

    write(value);
    while (!open.empty()) {
        Open &inner = open.back();
        if (inner.next == inner.value->end()) {
            line += inner.value->is_object() ? '}' : ']';
            open.pop_back();
            continue;
        }
        if (inner.next != inner.value->begin())
            line += ',';
        if (inner.value->is_object()) {
            line += Json(inner.next.key()).dump(-1, ' ', false, Json::error_handler_t::replace);
            line += ':';
        }
        const Json &part = *inner.next++;
        write(part);
    }
    return line;
}

} // namespace Tessaline::Probe
