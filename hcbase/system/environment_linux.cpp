#include "hcbase/system/environment.h"

#include "hcbase/filename.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <pwd.h>
#include <sys/uio.h>
#include <unistd.h>
#include <vector>

namespace hcbase::system {

namespace {

HCString AccountHome()
{
    std::vector<char> buffer(1024);
    passwd entry{};
    passwd* found = nullptr;
    while (getpwuid_r(getuid(), &entry, buffer.data(), buffer.size(), &found) == ERANGE) {
        buffer.resize(2 * buffer.size());
    }
    return found != nullptr ? found->pw_dir : nullptr;
}

} // namespace

HCString Environment(const char* name) { return std::getenv(name); }

HCString HomeDirectory()
{
    HCString home = Environment("HOME");
    if (home.GetLength() == 0) {
        home = AccountHome();
    }
    return home;
}

HCString SettingsDirectory()
{
    // A relative XDG_CONFIG_HOME counts as not set: XDG Base Directory rules.
    const char* const configured = std::getenv("XDG_CONFIG_HOME");
    if (configured != nullptr && *configured == '/') {
        return configured;
    }
    const HCString home = HomeDirectory();
    return home.GetLength() > 0 ? HFBuildFilename(home, ".config", "") : home;
}

HCString CurrentDirectory()
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

void WriteErrorLine(const HCString& text)
{
    char lineEnding = '\n';
    const iovec pieces[] = {
        {const_cast<char*>(static_cast<const char*>(text)), static_cast<std::size_t>(text.GetLength())},
        {&lineEnding, 1}};
    // Where standard error is closed or full there is nobody left to tell.
    static_cast<void>(writev(STDERR_FILENO, pieces, 2) < 0);
}

} // namespace hcbase::system
