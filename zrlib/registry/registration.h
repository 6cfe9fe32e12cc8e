/// ZRRegistration: a library and its objects, registered for the length of a scope.
#pragma once

#include "hcbase/array.h"
#include "zrlib/registry/object_entry.h"
#include "zrlib/registry/registry_functions.h"

/// Registers a library when constructed, and unregisters its objects and the library when destroyed, for example when a
/// plug-in is unloaded.
///
///     ZRRegistration roads(0x3000, "Roads");
///     roads.Add(kBridge, "Bridge");
///     if (!roads.IsComplete()) { ... } // what was refused was reported
///
/// Only what this object has registered itself is unregistered. Pass full codes: short ones, whose high word is 0, are
/// refused without a report, because their objects cannot be unregistered.
///
/// Threads: one object is used by one thread at a time. Errors: std::bad_alloc from Add, which has then added nothing.
class [[nodiscard]] ZRRegistration {
public:
    /// The arguments of ZRRegisterLibrary.
    [[nodiscard]] ZRRegistration(int library, const HCString& name)
        : m_library(library)
        , m_hasLibrary(ZRRegisterLibrary(library, name) != 0)
        , m_isComplete(m_hasLibrary)
    {
    }
    ~ZRRegistration()
    {
        for (int index = m_codes.GetSize() - 1; index >= 0; --index) {
            ZRUnregisterObject(m_codes.GetAt(index));
        }
        if (m_hasLibrary) {
            ZRUnregisterLibrary(m_library);
        }
    }
    ZRRegistration(const ZRRegistration&) = delete;
    ZRRegistration& operator=(const ZRRegistration&) = delete;

    /// Registers an object (ZRRegisterObject, and with a class ID ZRRegisterFactoryObject). Returns whether it was
    /// accepted.
    bool Add(int code, const HCString& name)
    {
        return Keep(code, [&] { return ZRRegisterObject(code, name); });
    }
    bool Add(int code, const HCString& name, const HCString& classID)
    {
        return Keep(code, [&] { return ZRRegisterFactoryObject(code, name, classID); });
    }

    /// Whether the library and all objects were accepted so far.
    [[nodiscard]] bool IsComplete() const noexcept { return m_isComplete; }

private:
    template <typename Register> bool Keep(int code, Register registerObject)
    {
        m_codes.Append(code); // first, so that no object is forgotten when memory runs out
        bool isRegistered = false;
        try {
            isRegistered = CanBeTakenBack(code) && registerObject() != 0;
        } catch (...) { // from an observer of the refusal
            Refused();
            throw;
        }
        if (!isRegistered) {
            Refused();
        }
        return isRegistered;
    }

    /// Whether the code is not a short one. The registry refuses other wrong codes.
    static bool CanBeTakenBack(int code) { return (code & ZRObjectEntry::BASEMASK) != 0; }

    void Refused()
    {
        m_codes.RemoveAt(m_codes.GetSize() - 1);
        m_isComplete = false;
    }

    int m_library;
    bool m_hasLibrary;
    bool m_isComplete;
    HCArray<int> m_codes; // of the objects that were accepted
};
