/// The functions that access the registry of the process.
#pragma once

#include "hcbase/string.h"
#include "zrlib/export.h"

// There is one registry for the process. It is empty when the library is loaded; only clients fill it. It is destroyed,
// with what is left in it, when the library is unloaded or the process ends. From then on the functions are no-ops and
// find nothing: names for a code are "?", class IDs ZRClassID::Null, flags are set to 0, and the others return their
// documented "not found" value.
//
// Each function is the operation of ZRObjectRegistry (object_registry.h) in its comment, whose documentation says what
// is accepted, reported and returned.
//
// Threads: any, at any time.

extern "C" {

ZR_API char ZRRegisterLibrary(int code, const HCString& name); // RegisterLibrary
ZR_API char ZRUnregisterLibrary(int code); // UnregisterLibrary
ZR_API char ZRRegisterObject(int code, const HCString& name); // RegisterObject without a class ID

/// RegisterObject with a class ID. By convention the class ID is for whoever creates such objects; the registry stores
/// no function for that.
ZR_API char ZRRegisterFactoryObject(int code, const HCString& name, const HCString& classID);

ZR_API char ZRUnregisterObject(int code); // UnregisterObject

[[nodiscard]] ZR_API char ZRObjectIsKnown(int code); // ObjectIsKnown
ZR_API const char* ZRGetObjectName(int code, char* known); // GetObjectName
ZR_API const char* ZRGetObjectNameEx(int code, char* known); // GetObjectNameEx
ZR_API const char* ZRGetObjectClassID(int code, char* found); // GetObjectClassID
[[nodiscard]] ZR_API int ZRGetObjectMirror(int code); // GetObjectMirror
ZR_API char ZRSetObjectMirror(int code, int mirror); // SetObjectMirror

[[nodiscard]] ZR_API int ZRGetRegisteredObjectCount(); // GetObjectCount
[[nodiscard]] ZR_API const char* ZRGetRegisteredObjectName(int index); // GetObjectNameAt
[[nodiscard]] ZR_API int ZRGetRegisteredObjectID(int index); // GetObjectIDAt
[[nodiscard]] ZR_API const char* ZRGetRegisteredObjectClassID(int index); // GetObjectClassIDAt

ZR_API void ZRDumpRegistry(); // DumpOut
}
