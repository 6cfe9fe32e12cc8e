/// Reading the traces that a test has written.
#pragma once

#include "tests/support/messages.h"
#include "tests/support/process.h"

#include <filesystem>
#include <regex>
#include <vector>

namespace test {

#if !defined(_WIN32)
/// Whether jq can read a file and finds what is true in each value.
inline bool Holds(const std::string& filter, const std::string& path)
{
    return Run("/usr/bin/jq", {"-e", filter, path}).exitCode == 0;
}
#endif

class Traces : public Messages {
protected:
    ~Traces() override { ZRProgressEnable(0); }

    /// "phase name" of each event, in the order of the file.
    static std::vector<std::string> Names(const std::string& path)
    {
        const std::regex event("\\{\"name\":\"(.*)\",\"cat\":\"[a-z]+\",\"ph\":\"(.)\"");
        std::vector<std::string> names;
        std::smatch found;
        for (const std::string& line : Lines(ReadFile(path))) {
            if (std::regex_search(line, found, event)) {
                names.push_back(found[2].str() + " " + found[1].str());
            }
        }
        return names;
    }

    /// The traces of further processes.
    std::vector<std::string> OtherTraces() const
    {
        std::vector<std::string> paths;
        for (const auto& entry : std::filesystem::directory_iterator(m_home.Folder())) {
            const std::string name = entry.path().filename().string();
            if (name.starts_with("trace.") && name != "trace.json") {
                paths.push_back(entry.path().string());
            }
        }
        return paths;
    }
};

} // namespace test
