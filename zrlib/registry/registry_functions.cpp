#include "zrlib/registry/registry_functions.h"

#include "zrlib/registry/process_registry.h"

#include <functional>

namespace {

/// The result of an operation on the registry; `whenGone` for a caller that outlives the library's own objects. An
/// operation does not touch the registry any more once it has sent a report.
template <typename Result, typename Operation, typename... Arguments>
Result CallRegistry(Result whenGone, Operation operation, const Arguments&... arguments)
{
    const zr::ModuleLease lease(zr::Runs::kOwnCodeOnly);
    return lease.IsAlive() && g_ObjectRegistry.IsAlive() ? std::invoke(operation, g_ObjectRegistry.object, arguments...)
                                                         : whenGone;
}

/// The same for an operation with a flag, which is set to 0 then.
template <typename Operation> const char* AskWithFlag(const char* whenGone, Operation operation, int code, char* flag)
{
    const zr::ModuleLease lease(zr::Runs::kOwnCodeOnly);
    if (lease.IsAlive() && g_ObjectRegistry.IsAlive()) {
        return std::invoke(operation, g_ObjectRegistry.object, code, flag);
    }
    if (flag != nullptr) {
        *flag = 0;
    }
    return whenGone;
}

} // namespace

char ZRRegisterLibrary(int code, const HCString& name)
{
    return CallRegistry('\0', &ZRObjectRegistry::RegisterLibrary, code, name);
}

char ZRUnregisterLibrary(int code) { return CallRegistry('\0', &ZRObjectRegistry::UnregisterLibrary, code); }

char ZRRegisterObject(int code, const HCString& name)
{
    return CallRegistry('\0', [&](ZRObjectRegistry& registry) { return registry.RegisterObject(code, name); });
}

char ZRRegisterFactoryObject(int code, const HCString& name, const HCString& classID)
{
    return CallRegistry('\0', [&](ZRObjectRegistry& registry) { return registry.RegisterObject(code, name, classID); });
}

char ZRUnregisterObject(int code) { return CallRegistry('\0', &ZRObjectRegistry::UnregisterObject, code); }

char ZRObjectIsKnown(int code) { return CallRegistry('\0', &ZRObjectRegistry::ObjectIsKnown, code); }

const char* ZRGetObjectName(int code, char* known)
{
    return AskWithFlag("?", &ZRObjectRegistry::GetObjectName, code, known);
}

const char* ZRGetObjectNameEx(int code, char* known)
{
    return AskWithFlag("?", &ZRObjectRegistry::GetObjectNameEx, code, known);
}

const char* ZRGetObjectClassID(int code, char* found)
{
    return AskWithFlag(ZRClassID::Null, &ZRObjectRegistry::GetObjectClassID, code, found);
}

int ZRGetObjectMirror(int code) { return CallRegistry(0, &ZRObjectRegistry::GetObjectMirror, code); }

char ZRSetObjectMirror(int code, int mirror)
{
    return CallRegistry('\0', &ZRObjectRegistry::SetObjectMirror, code, mirror);
}

int ZRGetRegisteredObjectCount() { return CallRegistry(0, &ZRObjectRegistry::GetObjectCount); }

const char* ZRGetRegisteredObjectName(int index)
{
    return CallRegistry<const char*>(nullptr, &ZRObjectRegistry::GetObjectNameAt, index);
}

int ZRGetRegisteredObjectID(int index) { return CallRegistry(-1, &ZRObjectRegistry::GetObjectIDAt, index); }

const char* ZRGetRegisteredObjectClassID(int index)
{
    return CallRegistry(ZRClassID::Null, &ZRObjectRegistry::GetObjectClassIDAt, index);
}

void ZRDumpRegistry()
{
    const zr::ModuleLease lease; // observers of the lines run between accesses to the registry
    if (lease.IsAlive() && g_ObjectRegistry.IsAlive()) {
        g_ObjectRegistry.object.DumpOut();
    }
}
