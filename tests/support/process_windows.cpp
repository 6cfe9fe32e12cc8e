#include "tests/support/process.h"

#include <stdexcept>
#include <windows.h>

namespace test {

namespace {

HANDLE CreateOutput(const std::string& path)
{
    SECURITY_ATTRIBUTES inherited{sizeof(inherited), nullptr, TRUE};
    return CreateFileA(
        path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
}

constexpr UINT kKilled = 0xDEAD;

} // namespace

Process::Process(const std::string& program, const std::vector<std::string>& arguments)
{
    std::string commandLine = '"' + program + '"'; // no argument of the tests holds a quotation mark
    for (const std::string& argument : arguments) {
        commandLine += " \"" + argument + '"';
    }
    STARTUPINFOA start{};
    start.cb = sizeof(start);
    start.dwFlags = STARTF_USESTDHANDLES;
    start.hStdOutput = CreateOutput(m_folder.Path("output"));
    start.hStdError = CreateOutput(m_folder.Path("errors"));
    PROCESS_INFORMATION started{};
    const bool isStarted =
        CreateProcessA(nullptr, commandLine.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &start, &started) != 0;
    CloseHandle(start.hStdOutput);
    CloseHandle(start.hStdError);
    if (!isStarted) {
        throw std::runtime_error("cannot start " + program);
    }
    CloseHandle(started.hThread);
    m_process = reinterpret_cast<std::intptr_t>(started.hProcess);
}

void Process::Kill() { TerminateProcess(reinterpret_cast<HANDLE>(m_process), kKilled); }

ProcessResult Process::Wait()
{
    auto* const process = reinterpret_cast<HANDLE>(m_process);
    WaitForSingleObject(process, INFINITE);
    DWORD exitCode = 0;
    GetExitCodeProcess(process, &exitCode);
    CloseHandle(process);
    m_process = kNone;
    return Result(exitCode == kKilled ? -1 : static_cast<int>(exitCode));
}

} // namespace test
