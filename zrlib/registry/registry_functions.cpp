#include "zrlib/registry/registry_functions.h"

#include "zrlib/frame/module.h"
#include "zrlib/registry/object_registry.h"
#include "zrlib/registry/process_registry.h"

#include <functional>

namespace {

/// The result of an operation on the registry; `whenGone` when a thread or a static object asks that outlives the
/// library's own objects.
template <typename Result, typename Operation, typename... Arguments>
Result Ask(Result whenGone, Operation operation, const Arguments&... arguments)
{
    return ZRModuleUse::ModuleSeemsToStand() ? std::invoke(operation, g_ObjectRegistry, arguments...) : whenGone;
}

/// The flag of a question whose answer is then that there is nothing.
void ClearWhenGone(char* flag)
{
    if (flag != nullptr && !ZRModuleUse::ModuleSeemsToStand()) {
        *flag = 0;
    }
}

} // namespace

char ZRRegisterLibrary(int code, const HCString& name)
{
    return Ask('\0', &ZRObjectRegistry::RegisterLibrary, code, name);
}

char ZRUnregisterLibrary(int code) { return Ask('\0', &ZRObjectRegistry::UnregisterLibrary, code); }

char ZRRegisterObject(int code, const HCString& name)
{
    return Ask('\0', [&](ZRObjectRegistry& registry) { return registry.RegisterObject(code, name); });
}

char ZRRegisterFactoryObject(int code, const HCString& name, const HCString& classID)
{
    return Ask('\0', [&](ZRObjectRegistry& registry) { return registry.RegisterObject(code, name, classID); });
}

char ZRUnregisterObject(int code) { return Ask('\0', &ZRObjectRegistry::UnregisterObject, code); }

char ZRObjectIsKnown(int code) { return Ask('\0', &ZRObjectRegistry::ObjectIsKnown, code); }

const char* ZRGetObjectName(int code, char* known)
{
    ClearWhenGone(known);
    return Ask("?", &ZRObjectRegistry::GetObjectName, code, known);
}

const char* ZRGetObjectNameEx(int code, char* known)
{
    ClearWhenGone(known);
    return Ask("?", &ZRObjectRegistry::GetObjectNameEx, code, known);
}

const char* ZRGetObjectClassID(int code, char* found)
{
    ClearWhenGone(found);
    return Ask(ZRClassID::Null, &ZRObjectRegistry::GetObjectClassID, code, found);
}

int ZRGetObjectMirror(int code) { return Ask(0, &ZRObjectRegistry::GetObjectMirror, code); }

char ZRSetObjectMirror(int code, int mirror) { return Ask('\0', &ZRObjectRegistry::SetObjectMirror, code, mirror); }

int ZRGetRegisteredObjectCount() { return Ask(0, &ZRObjectRegistry::GetObjectCount); }

const char* ZRGetRegisteredObjectName(int index)
{
    return Ask<const char*>(nullptr, &ZRObjectRegistry::GetObjectNameAt, index);
}

int ZRGetRegisteredObjectID(int index) { return Ask(-1, &ZRObjectRegistry::GetObjectIDAt, index); }

const char* ZRGetRegisteredObjectClassID(int index)
{
    return Ask(ZRClassID::Null, &ZRObjectRegistry::GetObjectClassIDAt, index);
}

void ZRDumpRegistry()
{
    if (ZRModuleUse::ModuleSeemsToStand()) {
        g_ObjectRegistry.DumpOut();
    }
}
