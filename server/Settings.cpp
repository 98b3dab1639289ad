#include "server/Settings.h"

#include <algorithm>
#include <charconv>
#include <cstdlib>
#include <pwd.h>
#include <unistd.h>

namespace Tessaline::Server {

namespace {

std::optional<int> wholeNumber(std::string_view text, int lowest, int highest)
{
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc() || end != text.data() + text.size() || number < lowest || number > highest)
        return {};
    return number;
}

int numberOr(const std::optional<std::string> &text, int lowest, int highest, int otherwise)
{
    return text ? wholeNumber(*text, lowest, highest).value_or(otherwise) : otherwise;
}

/// Whether a model may be called that: it stands in lines, paths and requests.
bool isModelId(std::string_view text)
{
    constexpr size_t kLongest = 200;
    constexpr std::string_view kSigns = "._-:/";
    const auto isSound = [kSigns](char sign) {
        return (sign >= 'a' && sign <= 'z') || (sign >= 'A' && sign <= 'Z') || (sign >= '0' && sign <= '9') ||
               kSigns.find(sign) != std::string_view::npos;
    };
    return !text.empty() && text.size() <= kLongest && kSigns.find(text.front()) == std::string_view::npos &&
           text.find("..") == std::string_view::npos && std::all_of(text.begin(), text.end(), isSound);
}

/// The person's own folder; that of the system's list where the environment has none.
std::string homeFolder(Variables variable)
{
    const std::optional<std::string> home = variable("HOME");
    if (home && home->starts_with('/'))
        return *home;
    const passwd *const entry = getpwuid(getuid());
    return entry && entry->pw_dir ? std::string(entry->pw_dir) : std::string();
}

std::string notOnThisMachine(const std::string &url)
{
    return "The engine’s address “" + url + "” is not one of this machine: use http://127.0.0.1:PORT.";
}

} // namespace

std::optional<std::string> ownVariable(const char *name)
{
    const char *const value = std::getenv(name);
    return value ? std::optional<std::string>(value) : std::nullopt;
}

std::optional<LoopbackAddress> loopbackAddress(std::string_view url, int defaultPort)
{
    constexpr std::string_view kScheme = "http://";
    if (url.starts_with(kScheme))
        url.remove_prefix(kScheme.size());
    LoopbackAddress address;

    // 1. The path; it stands in the first line of requests as it is.
    const auto isInUrl = [](char sign) { return sign > ' ' && sign < 0x7F; };
    if (!std::all_of(url.begin(), url.end(), isInUrl) || url.find_first_of("?#") != std::string_view::npos)
        return {};
    if (const size_t slash = url.find('/'); slash != std::string_view::npos) {
        address.path = url.substr(slash);
        while (address.path.ends_with('/'))
            address.path.pop_back();
        url = url.substr(0, slash);
    }

    // 2. The host, by its name or its number; an IPv6 address stands in brackets.
    std::string_view port;
    if (url.starts_with('[')) {
        const size_t end = url.find(']');
        if (end == std::string_view::npos)
            return {};
        address.host = url.substr(1, end - 1);
        port = url.substr(end + 1);
    } else {
        const size_t colon = url.find(':');
        address.host = url.substr(0, colon);
        port = colon == std::string_view::npos ? std::string_view() : url.substr(colon);
    }
    if (address.host != "127.0.0.1" && address.host != "localhost" && address.host != "::1")
        return {};

    // 3. The port.
    address.port = defaultPort;
    if (!port.empty()) {
        if (port.front() != ':')
            return {};
        const std::optional<int> number = wholeNumber(port.substr(1), 1, 65535);
        if (!number)
            return {};
        address.port = *number;
    }
    return address;
}

std::variant<Settings, std::string> settingsFromEnvironment(Variables variable, const std::string &ownFolder)
{
    Settings settings;

    // 1. What the application says.
    if (const auto model = variable("TESSALINE_MODEL_ID"); model && isModelId(*model))
        settings.modelId = *model;
    settings.contextTokens = numberOr(variable("TESSALINE_CONTEXT_TOKENS"), 2048, 1048576, settings.contextTokens);
    const int libraryThreads = numberOr(variable("OMP_NUM_THREADS"), 1, 256,
                                        numberOr(variable("RAYON_NUM_THREADS"), 1, 256, settings.threads));
    settings.threads = numberOr(variable("TESSALINE_THREADS"), 1, 256, libraryThreads);

    // 2. Where engines and models are.
    if (const auto url = variable("TESSALINE_ENGINE_URL"); url && !url->empty()) {
        settings.engine = loopbackAddress(*url, 80);
        if (!settings.engine)
            return notOnThisMachine(*url);
    }
    if (const auto host = variable("OLLAMA_HOST"))
        if (const auto address = loopbackAddress(*host, settings.ollama.port))
            settings.ollama = *address;
    settings.modelFolder = homeFolder(variable) + "/.cache/tessaline-local-ai";
    settings.programFolders.push_back(ownFolder);
    const std::string path = variable("PATH").value_or("/usr/local/bin:/usr/bin:/bin");
    for (size_t begin = 0; begin <= path.size();) {
        const size_t end = std::min(path.find(':', begin), path.size());
        if (path[begin] == '/') // a relative one would depend on where the server was started
            settings.programFolders.push_back(path.substr(begin, end - begin));
        begin = end + 1;
    }
    return settings;
}

std::variant<CommandLine, std::string> parseCommandLine(const std::vector<std::string> &arguments)
{
    CommandLine line;
    for (size_t index = 0; index < arguments.size(); ++index) {
        const size_t equals = arguments[index].find('=');
        const std::string name = arguments[index].substr(0, equals);
        if (name == "--help" || name == "-h") {
            line.wish = CommandLine::Wish::ShowHelp;
            continue;
        }
        if (name == "--version") {
            line.wish = CommandLine::Wish::ShowVersion;
            continue;
        }
        if (name != "--port" && name != "--engine-url")
            return "Unknown argument “" + arguments[index] + "”: see tessaline-server --help.";
        std::string value;
        if (equals != std::string::npos)
            value = arguments[index].substr(equals + 1);
        else if (index + 1 < arguments.size())
            value = arguments[++index];
        if (name == "--port") {
            line.port = wholeNumber(value, 0, 65535);
            if (!line.port)
                return "The port “" + value + "” is not a number from 0 to 65535.";
        } else {
            if (!loopbackAddress(value, 80))
                return notOnThisMachine(value);
            line.engineUrl = value;
        }
    }
    return line;
}

std::string helpText()
{
    return "Usage: tessaline-server [--port N] [--engine-url URL]\n"
           "\n"
           "Answers the assistant of Tessaline on 127.0.0.1, port 23949, with an engine of this machine: the one at\n"
           "TESSALINE_ENGINE_URL, or llama-server, or Ollama, whichever is found first.\n"
           "\n"
           "  --port N          listen on another port; 0 for any free one\n"
           "  --engine-url URL  use the OpenAI-compatible server at this address of this machine\n"
           "  --version         print the version\n"
           "  --help            print this\n"
           "\n"
           "Status: 0 ended on request, 2 a setting is wrong, 3 the port is taken.\n";
}

} // namespace Tessaline::Server
