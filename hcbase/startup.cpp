// The one file of hcbase with a dynamic initialiser. Everything else is constant-initialised and usable at any time;
// what it has allocated is released here.

#include "hcbase/records.h"
#include "hcbase/system/environment.h"
#include "hcbase/system/threads.h"

namespace hcbase {

constinit ReentrantLock g_recordsLock;
constinit bool g_recordsClosed = false;

namespace {

/// Other threads may still run when a process ends, and none is waited for: on Windows one may have ended, and its lock
/// is never released. What cannot be released then ends with the process.
void ReleaseRecords() HC_NO_THREAD_SAFETY_ANALYSIS
{
    if (g_recordsLock.TryLock()) {
        g_recordsClosed = true;
        ReleaseComplaints();
        ReleaseTextTables();
        ReleaseVersions();
        system::ReleaseAccountHome();
        g_recordsLock.Unlock();
    }
}

class Startup {
public:
    Startup() noexcept { system::InstallHooks(); }

    ~Startup()
    {
        if (system::OtherThreadsAreGone()) {
            return; // one may have been in the middle of an allocation: the memory ends with the process
        }
        if (ReleaseAllErrors()) {
            system::RemoveHooks();
        }
        ReleaseRecords();
    }

    Startup(const Startup&) = delete;
    Startup& operator=(const Startup&) = delete;
};

const Startup g_startup;

} // namespace

} // namespace hcbase
