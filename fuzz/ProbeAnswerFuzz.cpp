// Whatever the line, the probe gives one line of JSON that says whether it could answer.

#include "fuzz/Require.h"

#include "probe/Answer.h"

#include <nlohmann/json.hpp>

using namespace Tessaline::Probe;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const std::vector<Operation> operations = [] {
        std::vector<Operation> all = allOperations();
        // An input would soon ask for the tree of the whole disk.
        std::erase_if(all, [](const Operation &operation) { return operation.name == "buildTree"; });
        return all;
    }();

    const std::string text = answer(std::string_view(reinterpret_cast<const char *>(data), size), operations);

    REQUIRE(text.find('\n') == std::string::npos);
    const Json read = Json::parse(text, nullptr, false);
    REQUIRE(read.is_object());
    REQUIRE(read.contains("ok") && read.at("ok").is_boolean());
    const bool ok = read.at("ok").get<bool>();
    REQUIRE(read.contains("result") == ok);
    REQUIRE(read.contains("error") == !ok);
    return 0;
}
