/// ZRObjectEntry: a registry's record of one object, and the layout of object codes.
#pragma once

#include "hcbase/string.h"
#include "zrlib/frame/relaxed.h"
#include "zrlib/registry/class_id.h"

namespace zr {
class ClassIDIndex;
}

/// One object: its code, name, class ID and mirror ID. The entry checks no argument; the registry does before it
/// constructs one.
///
/// A full object code is 0xA04FLnnn: the high word of all object codes, the nibble L of the library (1 to 15) and the
/// number of the object within its library. A short code has the high word 0. Codes compare as signed numbers, so full
/// codes come before short ones.
///
/// An entry that belongs to a registry must not be assigned to: the registry finds it by what it was registered with.
///
/// Threads: one object is used by one thread at a time, except for the mirror ID, which any thread may read and set.
class ZRObjectEntry {
public:
    static constexpr int OBJECTBASE = -0x5FB10000; // 0xA04F0000, the high word of full object codes
    static constexpr int BASEMASK = -0x10000; // 0xFFFF0000, selects the high word
    static constexpr int SHORTMASK = 0xFFFF; // selects the short ID: library and number
    static constexpr int LIBRARYMASK = 0xF000; // selects the library code

    /// All numbers 0, all texts empty.
    ZRObjectEntry() { Initialise(); }

    /// Without a class ID. The mirror ID is the code. The last argument has no effect.
    ZRObjectEntry(int code, const HCString& name, int /*unused*/)
        : m_nID(code)
        , m_csName(name)
        , m_bHasClassID(0)
        , m_nMirrorID(code)
    {
    }

    /// With a class ID, which may be any text.
    ZRObjectEntry(int code, const HCString& name, const HCString& classID, int /*unused*/)
        : m_nID(code)
        , m_csName(name)
        , m_bHasClassID(1)
        , m_csClassID(classID)
        , m_nMirrorID(code)
    {
    }

    ZRObjectEntry(const ZRObjectEntry& other) = default;
    ZRObjectEntry& operator=(const ZRObjectEntry& other) = default;
    ~ZRObjectEntry() = default;

    /// 1 when everything is equal, with texts compared case-sensitively; otherwise 0.
    char operator==(const ZRObjectEntry& other) const
    {
        return m_nID == other.m_nID && m_csName.Compare(other.m_csName) == 0 && m_bHasClassID == other.m_bHasClassID
                && m_csClassID.Compare(other.m_csClassID) == 0 && m_nMirrorID == other.m_nMirrorID
            ? 1
            : 0;
    }
    char operator!=(const ZRObjectEntry& other) const { return *this == other ? 0 : 1; }

    /// The object code.
    [[nodiscard]] int GetID() const noexcept { return m_nID; }

    /// The library nibble and the object number together.
    [[nodiscard]] int GetShortID() const { return m_nID & SHORTMASK; }

    /// The library code: the nibble at its position, 0x1000 to 0xF000 for a full object code.
    [[nodiscard]] int GetLibrary() const { return m_nID & LIBRARYMASK; }

    [[nodiscard]] HCString GetName() const { return m_csName; }

    /// 1 when the object was registered with a class ID.
    char HasClassID() const { return m_bHasClassID; }

    /// The class ID; ZRClassID::Null when there is none.
    [[nodiscard]] HCString GetClassID() const { return m_bHasClassID != 0 ? m_csClassID : HCString(ZRClassID::Null); }

    /// A number for clients; the object code until it is set.
    [[nodiscard]] int GetMirrorID() const noexcept { return m_nMirrorID; }
    void SetMirrorID(int mirror) { m_nMirrorID = mirror; }

protected:
    /// Restores the state of a default-constructed entry.
    void Initialise()
    {
        m_nID = 0;
        m_csName.Empty();
        m_bHasClassID = 0;
        m_csClassID.Empty();
        m_nMirrorID = 0;
    }

private:
    // Read the texts without copying them.
    friend class ZRObjectRegistry;
    friend class zr::ClassIDIndex;

    int m_nID;
    HCString m_csName;
    char m_bHasClassID;
    HCString m_csClassID;
    zr::Relaxed<int> m_nMirrorID;
};
