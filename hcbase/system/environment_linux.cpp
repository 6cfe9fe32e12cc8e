#include "hcbase/system/environment.h"

#include <climits>
#include <cstdlib>
#include <pwd.h>
#include <sys/uio.h>
#include <unistd.h>
#include <vector>

namespace hcbase::system {

namespace {

std::string AccountHome()
{
    std::vector<char> buffer(1024);
    passwd entry{};
    passwd* found = nullptr;
    while (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) == ERANGE) {
        buffer.resize(2 * buffer.size());
    }
    return found != nullptr && found->pw_dir != nullptr ? found->pw_dir : "";
}

} // namespace

std::string Environment(const char* name)
{
    const char* const value = std::getenv(name);
    return value != nullptr ? value : "";
}

std::string HomeDirectory()
{
    std::string home = Environment("HOME");
    return home.empty() ? AccountHome() : home;
}

std::string SettingsDirectory()
{
    // A relative XDG_CONFIG_HOME counts as not set: XDG Base Directory rules.
    const std::string configured = Environment("XDG_CONFIG_HOME");
    if (!configured.empty() && configured.front() == '/') {
        return configured;
    }
    const std::string home = HomeDirectory();
    return home.empty() ? home : home + "/.config";
}

std::string CurrentDirectory()
{
    std::vector<char> buffer(PATH_MAX);
    while (getcwd(buffer.data(), buffer.size()) == nullptr) {
        if (errno != ERANGE) {
            return {};
        }
        buffer.resize(2 * buffer.size());
    }
    return buffer.data();
}

void WriteErrorLine(const std::string& text)
{
    char lineEnding = '\n';
    const iovec pieces[] = {{const_cast<char*>(text.data()), text.size()}, {&lineEnding, 1}};
    // Where standard error is closed or full there is nobody left to tell.
    static_cast<void>(writev(STDERR_FILENO, pieces, 2) < 0);
}

} // namespace hcbase::system
