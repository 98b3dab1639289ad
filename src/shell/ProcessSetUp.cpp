#include "shell/ProcessSetUp.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <unistd.h>

#ifdef __GLIBC__
#include <malloc.h>
#endif

namespace Tessaline {

void setUpProcess()
{
    for (int stream = STDIN_FILENO; stream <= STDERR_FILENO; ++stream)
        if (fcntl(stream, F_GETFD) == -1 && errno == EBADF)
            open("/dev/null", O_RDWR); // takes the lowest number that is free, which is this one

    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    std::signal(SIGCHLD, SIG_DFL);

#ifdef __GLIBC__
    // A long document passes through several forms while it is opened. What they took goes back to the system at once:
    // the library would raise these bounds after the first large block, and keep tens of megabytes.
    constexpr int kLargeBlock = 128 * 1024; // bytes
    mallopt(M_MMAP_THRESHOLD, kLargeBlock);
    mallopt(M_TRIM_THRESHOLD, kLargeBlock);
    mallopt(M_ARENA_MAX, 2); // one for the main thread, one for all workers
#endif
}

} // namespace Tessaline
