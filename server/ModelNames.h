#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace Tessaline::Server {

/// What the two engines call a model of the application.
struct ModelNames {
    std::string_view id;         // the application's
    std::string_view repository; // where llama-server fetches it: owner/name:quantisation
    std::string_view ollama;     // model:tag
    long long bytes = 0;         // of the file in the repository
};

/// Absent for a model that is not in the table.
std::optional<ModelNames> modelNames(std::string_view id);

/// How much is in a folder and all below it, in bytes, links not counted; 0 if it is not there.
long long bytesIn(const std::string &folder);

/// The model's own file in `folder`: `<id>.gguf`, or the first by name that begins with the id and ends so.
std::optional<std::string> modelFile(const std::string &folder, const std::string &id);

} // namespace Tessaline::Server
