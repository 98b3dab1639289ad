#pragma once

#include "Recorder.h"
#include "Script.h"

#include <map>
#include <mutex>
#include <string>

namespace Scripted {

/// Hands out the replies of a script in their order. Safe from any thread.
class Replies
{
public:
    explicit Replies(const Script &script) : m_script(script) {}
    const Reply &next(const std::string &path);

private:
    const Script &m_script;
    std::mutex m_mutex; // guards m_used
    std::map<std::string, std::size_t> m_used;
};

/// Ends the program the way `exit` says, without its delay.
[[noreturn]] void endProgram(const Exit &exit);

/// Serves one client until either side closes the connection; closes the socket. Blocks.
void serve(int socket, Replies &replies, Recorder &recorder);

} // namespace Scripted
