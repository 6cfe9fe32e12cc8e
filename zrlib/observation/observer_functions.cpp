#include "zrlib/observation/observer_functions.h"

#include "zrlib/frame/module_lease.h"
#include "zrlib/observation/global_subject.h"
#include "zrlib/observation/observed_object.h"

char ZRAttachObserver(ZRObjectObserver* observer)
{
    const zr::ModuleLease lease;
    return lease.IsAlive() ? g_GlobalSubject.AttachObserver(observer, 1) : char{0};
}

char ZRDetachObserver(ZRObjectObserver* observer)
{
    const zr::ModuleLease lease;
    // At the end of the process too: a thread that was inside the library then may continue a broadcast.
    const char detached = zr::GlobalSubjectHasGone() ? char{0} : g_GlobalSubject.DetachObserver(observer, 1);
    return lease.IsAlive() ? detached : char{0};
}
