#include "tests/support/WithoutPrivileges.h"

#include <cstdio>
#include <cstdlib>

#include <grp.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Tessaline {

int runWithoutPrivileges(const std::function<int()> &body)
{
    std::fflush(nullptr); // or the child would print what the test has printed before it
    const pid_t child = fork();
    if (child < 0)
        return -1;
    if (child == 0) {
        constexpr uid_t kNobody = 65534;
        const bool dropped =
            geteuid() != 0 || (setgroups(0, nullptr) == 0 && setresgid(kNobody, kNobody, kNobody) == 0 &&
                               setresuid(kNobody, kNobody, kNobody) == 0);
        if (!dropped)
            std::abort();
        const int result = body();
        std::fflush(nullptr);
        _exit(result); // the test's own objects are the parent's
    }
    int status = 0;
    if (waitpid(child, &status, 0) != child || !WIFEXITED(status))
        return -1;
    return WEXITSTATUS(status);
}

void letEverybodyIn(const char *folder)
{
    if (chmod(folder, 0755) != 0)
        std::abort();
}

} // namespace Tessaline
