#include "zrlib/observation/observer_functions.h"

#include "zrlib/frame/module.h"
#include "zrlib/observation/global_subject.h"
#include "zrlib/observation/observed_object.h"

char ZRAttachObserver(ZRObjectObserver* observer)
{
    const ZRModuleUse module;
    return module.Stands() ? g_GlobalSubject.AttachObserver(observer, 1) : char{0};
}

char ZRDetachObserver(ZRObjectObserver* observer)
{
    const ZRModuleUse module;
    return module.Stands() ? g_GlobalSubject.DetachObserver(observer, 1) : char{0};
}
