/// Folders, files and environment variables of a test.
#pragma once

#include <string>
#include <vector>

namespace test {

/// A new, empty folder, removed with the object.
class TemporaryFolder {
public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& Folder() const { return m_folder; }
    std::string Path(const std::string& name) const { return m_folder + "/" + name; }

private:
    std::string m_folder;
};

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

/// A home and a preference file of the test's own.
class Home : public TemporaryFolder {
public:
    std::string LogPath() const { return Path("zr_messages.txt"); }
    std::string PreferencesPath() const { return Path("preferences.toml"); }
    std::string Log() const { return ReadFile(LogPath()); }

private:
    EnvironmentGuard m_home{"HCBASE_HOME", Folder()};
    EnvironmentGuard m_preferences{"HCBASE_PREFERENCES", PreferencesPath()};
};

} // namespace test
