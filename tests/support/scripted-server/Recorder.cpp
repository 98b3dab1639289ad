#include "Recorder.h"

#include <nlohmann/json.hpp>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sys/prctl.h>
#include <unistd.h>

namespace Scripted {

namespace {

using Json = nlohmann::ordered_json;

Json openDescriptors()
{
    Json open = Json::object();
    for (const auto &entry : std::filesystem::directory_iterator("/proc/self/fd")) {
        std::error_code error;
        const std::string target = std::filesystem::read_symlink(entry.path(), error).string();
        if (target != "/proc/" + std::to_string(getpid()) + "/fd") // the one that this loop reads
            open[entry.path().filename().string()] = target;
    }
    return open;
}

Json signalMask(const std::string &name)
{
    std::ifstream status("/proc/self/status");
    for (std::string line; std::getline(status, line);)
        if (line.rfind(name + ":", 0) == 0)
            return line.substr(line.find_first_not_of(" \t", name.size() + 1));
    return nullptr;
}

} // namespace

void writeWhole(const std::string &path, const std::string &bytes)
{
    const std::string temporary = path + ".partial";
    std::ofstream(temporary, std::ios::binary) << bytes;
    std::filesystem::rename(temporary, path);
}

Recorder::Recorder(std::string folder) : m_folder(std::move(folder))
{
    if (!m_folder.empty())
        std::filesystem::create_directories(m_folder);
}

void Recorder::recordProcess(int argumentCount, char **arguments, char **environment) const
{
    if (m_folder.empty())
        return;
    int deathSignal = 0;
    prctl(PR_GET_PDEATHSIG, &deathSignal);

    Json process;
    process["pid"] = getpid();
    process["arguments"] = Json::array();
    for (int index = 1; index < argumentCount; ++index)
        process["arguments"].push_back(arguments[index]);
    process["environment"] = Json::object();
    for (char **entry = environment; *entry; ++entry) {
        const std::string text = *entry;
        const std::size_t equals = text.find('=');
        process["environment"][text.substr(0, equals)] = text.substr(equals + 1);
    }
    process["folder"] = std::filesystem::current_path().string();
    process["descriptors"] = openDescriptors();
    process["blockedSignals"] = signalMask("SigBlk");
    process["ignoredSignals"] = signalMask("SigIgn");
    process["caughtSignals"] = signalMask("SigCgt");
    process["parentDeathSignal"] = deathSignal;
    writeWhole(m_folder + "/process.json", process.dump(1, ' ', false, Json::error_handler_t::replace));
}

int Recorder::recordRequest(const std::string &bytes)
{
    const int number = ++m_requests;
    record(number, "request", bytes);
    return number;
}

void Recorder::record(int request, const char *kind, const std::string &bytes) const
{
    if (m_folder.empty())
        return;
    char name[32];
    std::snprintf(name, sizeof name, "/%04d.%s", request, kind);
    writeWhole(m_folder + name, bytes);
}

} // namespace Scripted
