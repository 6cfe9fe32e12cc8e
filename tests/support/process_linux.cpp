#include "tests/support/process.h"

#include <csignal>
#include <fcntl.h>
#include <spawn.h>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>

namespace test {

Process::Process(const std::string& program, const std::vector<std::string>& arguments)
{
    std::vector<char*> argv{const_cast<char*>(program.c_str())};
    for (const std::string& argument : arguments) {
        argv.push_back(const_cast<char*>(argument.c_str()));
    }
    argv.push_back(nullptr);

    constexpr int kFlags = O_WRONLY | O_CREAT | O_TRUNC;
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, m_folder.Path("output").c_str(), kFlags, 0600);
    posix_spawn_file_actions_addopen(&actions, STDERR_FILENO, m_folder.Path("errors").c_str(), kFlags, 0600);
    pid_t process = -1;
    const int error = posix_spawn(&process, program.c_str(), &actions, nullptr, argv.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (error != 0) {
        throw std::runtime_error("cannot start " + program);
    }
    m_process = process;
}

void Process::Kill() { kill(static_cast<pid_t>(m_process), SIGKILL); }

ProcessResult Process::Wait()
{
    int status = 0;
    waitpid(static_cast<pid_t>(m_process), &status, 0);
    m_process = kNone;
    return Result(WIFEXITED(status) ? WEXITSTATUS(status) : -1);
}

} // namespace test
