#pragma once

#include <atomic>
#include <string>

namespace Scripted {

/// Writes what happened into a folder; see Script.h. Safe from any thread.
class Recorder
{
public:
    explicit Recorder(std::string folder); // empty: nothing is written

    void recordProcess(int argumentCount, char **arguments, char **environment) const;
    int recordRequest(const std::string &bytes); // returns its number
    void recordClosed(int request) const { record(request, "closed", {}); }
    void recordDone(int request) const { record(request, "done", {}); }

private:
    void record(int request, const char *kind, const std::string &bytes) const;

    std::string m_folder;
    std::atomic<int> m_requests = 0;
};

/// Writes a file that is complete as soon as it is there.
void writeWhole(const std::string &path, const std::string &bytes);

} // namespace Scripted
