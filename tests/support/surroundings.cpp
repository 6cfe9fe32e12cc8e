#include "tests/support/surroundings.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>
#include <sstream>

namespace test {

namespace {

void SetEnvironment(const char* name, const std::string& value)
{
#if defined(_WIN32)
    _putenv_s(name, value.c_str());
#else
    static_cast<void>(value.empty() ? unsetenv(name) : setenv(name, value.c_str(), 1));
#endif
}

} // namespace

TemporaryFolder::TemporaryFolder()
{
    std::random_device random;
    const auto folder = std::filesystem::temp_directory_path() / ("zrlib_test_" + std::to_string(random()));
    std::filesystem::create_directories(folder);
    m_folder = folder.generic_string();
}

TemporaryFolder::~TemporaryFolder()
{
    std::error_code ignored;
    std::filesystem::remove_all(m_folder, ignored);
}

std::string ReadFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    std::string content(std::istreambuf_iterator<char>(file), {});
    std::erase(content, '\r');
    return content;
}

void WriteFile(const std::string& path, const std::string& content)
{
    std::ofstream(path, std::ios::binary) << content;
}

std::vector<std::string> Lines(const std::string& text)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    for (std::string line; std::getline(stream, line);) {
        lines.push_back(line);
    }
    return lines;
}

EnvironmentGuard::EnvironmentGuard(const char* name, const std::string& value)
    : m_name(name)
{
    if (const char* const before = std::getenv(name); before != nullptr) {
        m_before = before;
    }
    SetEnvironment(name, value);
}

EnvironmentGuard::~EnvironmentGuard() { SetEnvironment(m_name, m_before); }

} // namespace test
