/// Folders, files and environment variables of a test.
#pragma once

#include <string>
#include <vector>

namespace test {

/// A new, empty folder; whoever asks removes it.
std::string MakeTemporaryFolder();

/// The content with each line ending as a line feed; empty when the file cannot be read.
std::string ReadFile(const std::string& path);

void WriteFile(const std::string& path, const std::string& content);

std::vector<std::string> Lines(const std::string& text);

/// Sets an environment variable for the length of a scope; an empty value removes it.
class EnvironmentGuard {
public:
    EnvironmentGuard(const char* name, const std::string& value);
    ~EnvironmentGuard();
    EnvironmentGuard(const EnvironmentGuard&) = delete;
    EnvironmentGuard& operator=(const EnvironmentGuard&) = delete;

private:
    const char* m_name;
    std::string m_before;
};

/// A home and a preference file of the test's own, removed with the object.
class Home {
public:
    Home();
    ~Home();
    Home(const Home&) = delete;
    Home& operator=(const Home&) = delete;

    const std::string& Folder() const { return m_folder; }
    std::string LogPath() const { return m_folder + "/zr_messages.txt"; }
    std::string PreferencesPath() const { return m_folder + "/preferences.toml"; }
    std::string Log() const { return ReadFile(LogPath()); }

private:
    std::string m_folder;
    EnvironmentGuard m_home;
    EnvironmentGuard m_preferences;
};

} // namespace test
