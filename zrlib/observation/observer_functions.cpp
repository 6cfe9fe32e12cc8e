#include "zrlib/observation/observer_functions.h"

#include "zrlib/frame/module.h"
#include "zrlib/observation/global_subject.h"
#include "zrlib/observation/observed_object.h"

char ZRAttachObserver(ZRObjectObserver* observer)
{
    return ZRModuleUse::ModuleSeemsToStand() ? g_GlobalSubject.AttachObserver(observer, 1) : char{0};
}

char ZRDetachObserver(ZRObjectObserver* observer)
{
    return ZRModuleUse::ModuleSeemsToStand() ? g_GlobalSubject.DetachObserver(observer, 1) : char{0};
}
