/// Running other programs.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace test {

struct ProcessResult {
    int exitCode = -1; // -1 when the program did not end by itself
    std::string output;
    std::string errors;
};

/// A program that runs beside the test, with the test's environment. Its two outputs go to files.
class Process {
public:
    Process(const std::string& program, const std::vector<std::string>& arguments);
    ~Process();
    Process(const Process&) = delete;
    Process& operator=(const Process&) = delete;

    /// What the program has written to standard output so far.
    std::string OutputSoFar() const;

    /// Ends the program at once, without a chance to tidy up.
    void Kill();

    ProcessResult Wait();

private:
    std::string m_folder;
    std::intptr_t m_process;
};

inline ProcessResult Run(const std::string& program, const std::vector<std::string>& arguments)
{
    return Process(program, arguments).Wait();
}

} // namespace test
