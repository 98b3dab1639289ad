#include "server/EngineProcess.h"
#include "server/HttpClient.h"
#include "tests/server/RunningServer.h"

#include <gtest/gtest.h>

#include <csignal>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <spawn.h>
#include <string>
#include <sys/wait.h>
#include <system_error>
#include <unistd.h>
#include <vector>

namespace Tessaline::Server {

namespace {

/// A server with whatever a test gives it for its standard files.
class StandardFilesTest : public testing::Test
{
protected:
    StandardFilesTest() { posix_spawn_file_actions_init(&m_files); }
    ~StandardFilesTest() override
    {
        posix_spawn_file_actions_destroy(&m_files);
        if (m_server == -1)
            return;
        kill(m_server, SIGTERM);
        int status = -1;
        EXPECT_EQ(waitpid(m_server, &status, 0), m_server);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << status;
    }

    /// Whether it gets well.
    bool start()
    {
        spawn();
        return comesTrue([this] {
            if (waitpid(m_server, nullptr, WNOHANG) == m_server)
                spawn(); // its port has been taken in the meantime
            return httpCall({"127.0.0.1", m_port, {}}, {"/health", {}, {}}, {}).status == 200;
        });
    }

    std::string nameOfFile(int number) const
    {
        std::error_code error;
        return std::filesystem::read_symlink("/proc/" + std::to_string(m_server) + "/fd/" + std::to_string(number),
                                             error);
    }

    posix_spawn_file_actions_t m_files = {};

private:
    void spawn()
    {
        m_server = -1;
        m_port = freePort();
        std::vector<std::string> arguments{TESSALINE_SERVER, "--port", std::to_string(m_port)};
        std::vector<std::string> variables{"HOME=/nonexistent", "PATH=/nonexistent", "OLLAMA_HOST=127.0.0.1:1"};
        for (const char *const name : {"ASAN_OPTIONS", "TSAN_OPTIONS", "UBSAN_OPTIONS", "LSAN_OPTIONS"})
            if (const char *const value = std::getenv(name))
                variables.push_back(std::string(name) + "=" + value);
        const auto pointers = [](std::vector<std::string> &texts) {
            std::vector<char *> list;
            for (std::string &text : texts)
                list.push_back(text.data());
            list.push_back(nullptr);
            return list;
        };
        EXPECT_EQ(posix_spawn(&m_server, arguments.front().c_str(), &m_files, nullptr, pointers(arguments).data(),
                              pointers(variables).data()),
                  0);
    }

    pid_t m_server = -1;
    int m_port = 0;
};

} // namespace

TEST_F(StandardFilesTest, AreNeverAConnectionThoughTheyWereClosed)
{
    for (const int file : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        posix_spawn_file_actions_addclose(&m_files, file);

    EXPECT_TRUE(start());

    for (const int file : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        EXPECT_EQ(nameOfFile(file), "/dev/null") << file;
}

TEST_F(StandardFilesTest, HoldTheServerUpNeitherFullNorClosedAtTheirOtherEnd)
{
    int ends[2] = {-1, -1};
    ASSERT_EQ(pipe2(ends, O_CLOEXEC | O_NONBLOCK), 0);
    while (write(ends[1], "x", 1) == 1) {
    }
    fcntl(ends[1], F_SETFL, 0);
    posix_spawn_file_actions_adddup2(&m_files, ends[1], STDOUT_FILENO);

    EXPECT_TRUE(start());

    close(ends[0]);
    close(ends[1]);
}

} // namespace Tessaline::Server
