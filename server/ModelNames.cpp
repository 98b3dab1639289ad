#include "server/ModelNames.h"

#include <algorithm>
#include <array>
#include <filesystem>
#include <system_error>
#include <vector>

namespace Tessaline::Server {

std::optional<ModelNames> modelNames(std::string_view id)
{
    static constexpr std::array<ModelNames, 3> kNames{{
        {"llama-3.2-3b-q4", "bartowski/Llama-3.2-3B-Instruct-GGUF:Q4_K_M", "llama3.2:3b", 2'019'377'696},
        {"llama-3.1-8b-q4", "bartowski/Meta-Llama-3.1-8B-Instruct-GGUF:Q4_K_M", "llama3.1:8b", 4'920'739'232},
        {"qwen-2.5-14b-q4", "bartowski/Qwen2.5-14B-Instruct-GGUF:Q4_K_M", "qwen2.5:14b", 8'988'110'464},
    }};
    const auto *const found =
        std::find_if(kNames.begin(), kNames.end(), [id](const ModelNames &names) { return names.id == id; });
    return found == kNames.end() ? std::nullopt : std::optional(*found);
}

long long bytesIn(const std::string &folder)
{
    long long bytes = 0;
    std::error_code error;
    for (std::filesystem::recursive_directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        std::error_code isGone; // meanwhile
        if (std::filesystem::is_regular_file(entry->symlink_status(isGone)))
            if (const auto size = entry->file_size(isGone); !isGone)
                bytes += static_cast<long long>(size);
    }
    return bytes;
}

std::optional<std::string> modelFile(const std::string &folder, const std::string &id)
{
    std::vector<std::string> names;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        if (name == id + ".gguf")
            return entry->path().string();
        if (name.starts_with(id) && name.ends_with(".gguf"))
            names.push_back(name);
    }
    if (names.empty())
        return {};
    return folder + "/" + *std::min_element(names.begin(), names.end());
}

} // namespace Tessaline::Server
