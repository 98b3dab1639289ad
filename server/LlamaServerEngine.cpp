#include "server/LlamaServerEngine.h"

#include "server/HttpClient.h"
#include "server/ModelNames.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <filesystem>
#include <random>
#include <system_error>
#include <unistd.h>
#include <utility>

namespace Tessaline::Server {

namespace {

using Phase = EngineState::Phase;

std::string randomKey()
{
    constexpr std::string_view kDigits = "0123456789abcdef";
    constexpr int kLength = 48;
    std::random_device random; // the system's own source
    std::string key;
    for (int digit = 0; digit < kLength; ++digit)
        key += kDigits[random() % kDigits.size()];
    return key;
}

std::vector<std::string> ownEnvironment()
{
    std::vector<std::string> own;
    for (char **entry = environ; *entry; ++entry)
        own.emplace_back(*entry);
    return own;
}

} // namespace

std::vector<std::string> llamaArguments(const Settings &settings, const std::vector<std::string> &model, int port)
{
    std::vector<std::string> arguments{"--host", "127.0.0.1", "--port", std::to_string(port)};
    arguments.insert(arguments.end(), model.begin(), model.end());
    arguments.insert(arguments.end(), {"--ctx-size", std::to_string(settings.contextTokens), "--threads",
                                       std::to_string(settings.threads), "--no-webui"});
    return arguments;
}

std::vector<std::string> llamaEnvironment(const std::vector<std::string> &own, const Settings &settings,
                                          const std::string &key)
{
    // NOTE: the engine reads an option from each variable that begins with LLAMA_ARG_: tools, proxies, other hosts. The
    // key goes by the environment, since every process can read the arguments of all others.
    std::vector<std::string> environment;
    for (const std::string &entry : own)
        if (!entry.starts_with("LLAMA_") && !entry.starts_with("TESSALINE_"))
            environment.push_back(entry);
    environment.push_back("LLAMA_CACHE=" + settings.modelFolder);
    environment.push_back("LLAMA_API_KEY=" + key);
    return environment;
}

std::optional<int> percentageIn(std::string_view line)
{
    size_t end = line.rfind('%');
    if (end == std::string_view::npos)
        return {};
    while (end > 0 && line[end - 1] == ' ')
        --end;
    const auto isDigit = [](char sign) { return sign >= '0' && sign <= '9'; };
    size_t begin = end;
    while (begin > 0 && (isDigit(line[begin - 1]) || line[begin - 1] == '.'))
        --begin;
    int percent = 0;
    for (size_t index = begin; index < end && isDigit(line[index]) && percent <= 100; ++index)
        percent = percent * 10 + (line[index] - '0');
    if (begin == end || percent > 100)
        return {};
    return percent;
}

LlamaServerEngine::LlamaServerEngine(const Settings &settings, std::string program, StateListener listener)
    : OpenAiEngine(std::move(listener)), m_settings(settings), m_program(std::move(program))
{}

void LlamaServerEngine::supervise(const std::stop_token &stop)
{
    constexpr int kMostFailedStarts = 2;
    constexpr int kMostStarts = 5;

    // 1. The model: a file of the person's own, or what the engine can fetch by itself.
    std::error_code ignored;
    std::filesystem::create_directories(m_settings.modelFolder, ignored);
    std::vector<std::string> model;
    if (const std::optional<std::string> file = modelFile(m_settings.modelFolder, m_settings.modelId))
        model = {"--model", *file};
    else if (const std::optional<ModelNames> names = modelNames(m_settings.modelId)) {
        model = {"--hf-repo", std::string(names->repository)};
        m_fetched = names->bytes;
    } else
        return m_state.set({Phase::Explained, -1,
                            "The model “" + m_settings.modelId + "” is not known to this server. Put its file, " +
                                m_settings.modelId + ".gguf, into " + m_settings.modelFolder +
                                " and start Tessaline again."});

    int failedStarts = 0;
    for (int starts = 0; starts < kMostStarts && !stop.stop_requested(); ++starts) {
        // 2. The process. Another program may take the port before it does; then the next start has another.
        const OpenAiPeer peer{{"127.0.0.1", freePort(), {}}, randomKey(), m_settings.modelId};
        EngineCommand command{m_program, llamaArguments(m_settings, model, peer.address.port),
                              llamaEnvironment(ownEnvironment(), m_settings, peer.key),
                              [this](std::string_view line) { noteLine(line); }};
        m_state.set({Phase::Loading, -1, {}}); // before it can say how far it is
        m_kept = bytesIn(m_settings.modelFolder);
        std::string error;
        EngineProcess process(command, error);
        if (!error.empty())
            return explain(error);

        // 3. Its life.
        if (becomesReady(process, peer, stop)) {
            m_state.set({Phase::Ready, -1, {}});
            process.waitForEnd(stop);
        } else if (!stop.stop_requested() && ++failedStarts == kMostFailedStarts) {
            process.waitForLastLine();
            const std::lock_guard guard(m_mutex);
            error = "it ended with status " + std::to_string(process.status().value_or(0)) +
                    (m_lastLine.empty() ? std::string() : " and said last: " + m_lastLine);
        }
        if (!error.empty())
            return explain(error);
    }
    if (!stop.stop_requested())
        explain("it ended again and again");
}

bool LlamaServerEngine::becomesReady(EngineProcess &process, const OpenAiPeer &peer, const std::stop_token &stop)
{
    constexpr std::chrono::milliseconds kInterval{50};
    constexpr std::chrono::seconds kPatience{2}; // it answers at once, or is too busy for it
    constexpr std::chrono::milliseconds kBetweenLooks{500};
    std::chrono::steady_clock::time_point looked;
    while (!stop.stop_requested() && !process.waitForEnd(kInterval)) {
        if (const auto now = std::chrono::steady_clock::now(); m_fetched > 0 && now - looked >= kBetweenLooks) {
            noteDownload();
            looked = now;
        }
        if (httpCall(peer.address, {"/health", {}, peer.key, kPatience}, stop).status != 200)
            continue;
        adopt(peer, stop);
        return true;
    }
    return false;
}

void LlamaServerEngine::noteDownload()
{
    constexpr long long kLittle = 1'000'000; // bytes that are no model
    constexpr long long kMost = 99;          // per cent: what it really fetches may be a little larger
    const long long grown = bytesIn(m_settings.modelFolder) - m_kept;
    if (grown > kLittle)
        m_state.set({Phase::Downloading, static_cast<int>(std::min(kMost, 100 * grown / m_fetched)), {}});
}

void LlamaServerEngine::explain(const std::string &reason)
{
    m_state.set({Phase::Explained, -1,
                 "The engine " + m_program + " could not be kept running: " + reason +
                     ". "
                     "Choose another model in the settings, or start Tessaline again when the cause is gone."});
}

void LlamaServerEngine::noteLine(std::string_view line)
{
    constexpr size_t kLongest = 300; // bytes that are shown
    const std::optional<int> percent = percentageIn(line);
    if (percent)
        return m_state.setUnlessReady({m_fetched > 0 ? Phase::Downloading : Phase::Loading, *percent, {}});
    const std::lock_guard guard(m_mutex);
    m_lastLine = line.substr(0, kLongest);
}

void LlamaServerEngine::begin()
{
    m_worker.begin([this](const std::stop_token &stop) { supervise(stop); });
}

} // namespace Tessaline::Server
