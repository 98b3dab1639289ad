#include "shell/ProcessSetUp.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

namespace Tessaline {

void setUpProcess()
{
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream)
        if (fcntl(stream, F_GETFD) == -1 && errno == EBADF)
            open("/dev/null", O_RDWR); // takes the lowest number that is free, which is this one

    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGCHLD, SIG_DFL);
}

} // namespace Tessaline
