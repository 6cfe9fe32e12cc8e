/// Running other programs.
#pragma once

#include "tests/support/surroundings.h"

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
    ~Process()
    {
        if (m_process != kNone) {
            Kill();
            Wait();
        }
    }

    /// What the program has written to standard output so far.
    std::string OutputSoFar() const { return ReadFile(m_folder.Path("output")); }

    /// Ends the program at once, without a chance to tidy up.
    void Kill();

    ProcessResult Wait();

private:
    static constexpr std::intptr_t kNone = -1;

    ProcessResult Result(int exitCode) const { return {exitCode, OutputSoFar(), ReadFile(m_folder.Path("errors"))}; }

    TemporaryFolder m_folder;
    std::intptr_t m_process = kNone;
};

inline ProcessResult Run(const std::string& program, const std::vector<std::string>& arguments)
{
    return Process(program, arguments).Wait();
}

} // namespace test
