#include "hcbase/system/environment.h"

#include "hcbase/filename.h"
#include "hcbase/records.h"
#include "hcbase/system/keep_errno.h"

#include <climits>
#include <cstdlib>
#include <pwd.h>
#include <sys/uio.h>
#include <unistd.h>
#include <utility>
#include <vector>

namespace hcbase::system {

namespace {

/// Asks the account database. False when it could not answer.
bool AskForHomeOf(uid_t user, HCString& home)
{
    const KeepErrno keep;
    std::vector<char> buffer(1024);
    passwd entry{};
    passwd* found = nullptr;
    int error = 0;
    while ((error = getpwuid_r(user, &entry, buffer.data(), buffer.size(), &found)) == ERANGE || error == EINTR) {
        buffer.resize(error == ERANGE ? 2 * buffer.size() : buffer.size());
    }
    home = found != nullptr ? found->pw_dir : nullptr;
    return error == 0 || error == ENOENT || error == ESRCH; // the account exists, or it does not
}

/// The last answer of the account database, kept because asking may take long.
struct Answer {
    uid_t user;
    HCString home;
};

constinit Answer* g_answer HC_PT_GUARDED_BY(g_recordsLock) = nullptr; // created with the first question

HCString AccountHome()
{
    const uid_t user = geteuid();
    {
        const LockGuard guard(g_recordsLock);
        if (g_answer != nullptr && g_answer->user == user) {
            return g_answer->home;
        }
    }
    HCString home;
    const bool isAnswered = AskForHomeOf(user, home);
    const LockGuard guard(g_recordsLock);
    if (g_recordsClosed || !isAnswered) {
        return home;
    }
    if (g_answer == nullptr) {
        g_answer = new Answer;
    }
    *g_answer = {user, home};
    return home;
}

} // namespace

void ReleaseAccountHome() noexcept { delete std::exchange(g_answer, nullptr); }

HCString Environment(const char* name) { return secure_getenv(name); }

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
    HCString configured = Environment("XDG_CONFIG_HOME");
    if (*static_cast<const char*>(configured) == '/') {
        return configured;
    }
    const HCString home = HomeDirectory();
    return home.GetLength() > 0 ? HFBuildFilename(home, ".config", "") : home;
}

HCString CurrentDirectory()
{
    const KeepErrno keep;
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
    const KeepErrno keep;
    char lineEnding = '\n';
    const iovec pieces[] = {
        {const_cast<char*>(static_cast<const char*>(text)), static_cast<std::size_t>(text.GetLength())},
        {&lineEnding, 1}};
    // Where standard error is closed or full there is nowhere to report it.
    static_cast<void>(writev(STDERR_FILENO, pieces, 2) < 0);
}

} // namespace hcbase::system
