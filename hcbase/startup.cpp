// The one file of hcbase with a dynamic initialiser. Everything else is constant-initialised and usable at any time;
// what it has put on the heap goes here.

#include "hcbase/records.h"
#include "hcbase/system/threads.h"

namespace hcbase {

constinit ReentrantLock g_recordsLock;

namespace {

class Startup {
public:
    Startup() noexcept { system::InstallHooks(); }

    ~Startup()
    {
        // First the errors: from then on none is recorded, so that no thread that still runs finds its history gone.
        ReleaseAllErrors();
        system::RemoveHooks();
        ReleaseComplaints();
        ReleaseTextTables();
        ReleaseVersions();
    }

    Startup(const Startup&) = delete;
    Startup& operator=(const Startup&) = delete;
};

const Startup g_startup;

} // namespace

} // namespace hcbase
