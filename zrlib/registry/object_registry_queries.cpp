#include "zrlib/frame/report.h"
#include "zrlib/frame/short_lock_guard.h"
#include "zrlib/registry/object_registry_index.h"
#include "zrlib/registry/refusals.h"

#include <array>
#include <cstdio>
#include <new>
#include <vector>

#if defined(_WIN32)
// A client that takes the address of a constant imports it, and an import needs a definition here.
constexpr int ZRObjectRegistry::ALL_PASS;
#endif

namespace {

/// Holds either text for an unknown object. Needs no constructor or destructor, so that a text is valid for as long as
/// the library is loaded, also for static objects that were constructed before the first call.
using NameBuffer = std::array<char, 128>;

char Truth(bool value) { return value ? 1 : 0; }

void SetFlag(char* flag, bool value)
{
    if (flag != nullptr) {
        *flag = Truth(value);
    }
}

} // namespace

char ZRObjectRegistry::IsValidLibraryCode(int code)
{
    return Truth(code != 0 && (code & ~ZRObjectEntry::LIBRARYMASK) == 0);
}

char ZRObjectRegistry::IsValidHighWord(int code)
{
    return Truth((code & ZRObjectEntry::BASEMASK) == ZRObjectEntry::OBJECTBASE);
}

char ZRObjectRegistry::IsValidObjectCode(int code, char report)
{
    const char* const location = "ZRObjectRegistry::IsValidObjectCode";
    if (code == 0) {
        return 0;
    }
    if (code == ALL_PASS) {
        return 1;
    }
    const bool hasHighWord = IsValidHighWord(code) != 0;
    if (hasHighWord && (code & ZRObjectEntry::LIBRARYMASK) != 0) {
        return 1;
    }
    if (report != 0) {
        zr::Refuse(hasHighWord ? zr::kNibbleIsZero : zr::kHighWordIsWrong, location, {code});
    }
    return 0;
}

ZRObjectEntry* ZRObjectRegistry::GetObjectEntry(int code, char report) const
{
    const bool isShort = (code & ZRObjectEntry::BASEMASK) == 0;
    if (isShort ? code == ALL_PASS : IsValidObjectCode(code, report) == 0) [[unlikely]] {
        return nullptr;
    }
    const Index* const index = m_pIndex.load(std::memory_order_acquire);
    return index != nullptr ? index->byCode.FindInRange(code) : nullptr;
}

/// The result of `read` for the entry at an index, or for null.
template <typename Read> auto ZRObjectRegistry::ReadAt(int position, Read read) const
{
    const zr::ShortLockGuard guard(zr::g_dataLock);
    const Index* const index = m_pIndex;
    return read(index != nullptr ? index->byCode.At(position) : nullptr);
}

ZRObjectEntry* ZRObjectRegistry::GetObjectEntryAt(int index) const
{
    return ReadAt(index, [](ZRObjectEntry* entry) { return entry; });
}

const char* ZRObjectRegistry::GetObjectName(int code, char* known) const
{
    if (code == ALL_PASS) {
        return "?";
    }
    static constinit thread_local NameBuffer buffer{};
    std::snprintf(buffer.data(), buffer.size(), "object with ID 0x%08X", static_cast<unsigned int>(code));
    const ZRObjectEntry* const entry = GetObjectEntry(code, 1);
    SetFlag(known, entry != nullptr);
    return entry != nullptr ? static_cast<const char*>(entry->m_csName) : buffer.data();
}

const char* ZRObjectRegistry::GetObjectNameEx(int code, char* known) const
{
    if (code == ALL_PASS) {
        return "?";
    }
    const auto word = [](char isValid) { return isValid != 0 ? "valid" : "invalid"; };
    static constinit thread_local NameBuffer buffer{};
    std::snprintf(buffer.data(), buffer.size(),
        "irregular or unregistered object with ID 0x%08X, high word %s, object code %s",
        static_cast<unsigned int>(code), word(IsValidHighWord(code)), word(IsValidObjectCode(code, 0)));
    const ZRObjectEntry* const entry = GetObjectEntry(code, 0);
    SetFlag(known, entry != nullptr);
    return entry != nullptr ? static_cast<const char*>(entry->m_csName) : buffer.data();
}

const char* ZRObjectRegistry::GetObjectClassID(int code, char* found) const
{
    const ZRObjectEntry* const entry = GetObjectEntry(code, 1);
    SetFlag(found, entry != nullptr && entry->m_bHasClassID != 0);
    return ClassIDOf(entry);
}

const char* ZRObjectRegistry::GetObjectNameAt(int index) const
{
    return ReadAt(index, [](const ZRObjectEntry* entry) {
        return entry != nullptr ? static_cast<const char*>(entry->m_csName) : nullptr;
    });
}

const char* ZRObjectRegistry::GetObjectClassIDAt(int index) const { return ReadAt(index, ClassIDOf); }

/// `entry` may be null.
const char* ZRObjectRegistry::ClassIDOf(const ZRObjectEntry* entry)
{
    return entry != nullptr && entry->m_bHasClassID != 0 ? static_cast<const char*>(entry->m_csClassID)
                                                         : ZRClassID::Null;
}

int ZRObjectRegistry::GetObjectIDAt(int index) const
{
    return ReadAt(index, [](const ZRObjectEntry* entry) { return entry != nullptr ? entry->GetID() : -1; });
}

int ZRObjectRegistry::GetObjectMirror(int code) const
{
    if (GetObjectEntry(code, 1) == nullptr) { // which is reported
        return 0;
    }
    const zr::ShortLockGuard guard(zr::g_dataLock);
    const ZRObjectEntry* const entry = Find(code);
    return entry != nullptr ? entry->GetMirrorID() : 0;
}

char ZRObjectRegistry::SetObjectMirror(int code, int mirror)
{
    if (GetObjectEntry(code, 1) == nullptr) { // which is reported
        return 0;
    }
    const zr::ShortLockGuard guard(zr::g_dataLock); // another thread may unregister the object
    ZRObjectEntry* const entry = Find(code);
    if (entry == nullptr) {
        return 0;
    }
    entry->SetMirrorID(mirror);
    return 1;
}

char ZRObjectRegistry::ObjectIsKnown(int code) const { return Truth(Find(code) != nullptr); }

int ZRObjectRegistry::GetObjectCount() const
{
    const zr::ShortLockGuard guard(zr::g_dataLock);
    return m_Objects.GetCount();
}

int ZRObjectRegistry::GetLibraryCount() const
{
    const zr::ShortLockGuard guard(zr::g_dataLock);
    return m_Libraries.GetCount();
}

[[gnu::cold]] void ZRObjectRegistry::DumpOut() const
{
    if (!zr::ReportsAreOn()) {
        return; // before thousands of lines are built for nobody
    }
    struct Row {
        int code;
        HCString name;
    };
    const auto print = [](const char* format, auto... values) {
        try {
            HCString line;
            line.Format(format, values...);
            zr::ReportOut(line);
        } catch (const std::bad_alloc&) { // the other lines may be shorter
        }
    };
    const auto copyRows = [](const auto& map, auto nameOf) {
        std::vector<Row> rows;
        try {
            const zr::ShortLockGuard guard(zr::g_dataLock);
            rows.reserve(static_cast<std::size_t>(map.GetCount()));
            for (const auto& [code, value] : map) {
                rows.push_back({code, nameOf(value)});
            }
        } catch (const std::bad_alloc&) { // print those that were copied
        }
        return rows;
    };
    print("%s", "Object registry dump >>>");
    const bool hasLibraries = GetLibraryCount() > 0;
    if (!hasLibraries && GetObjectCount() == 0) {
        print("%s", "   Registry is empty...");
        return;
    }
    if (!hasLibraries) {
        print("%s", "   No libraries in registry...");
    }
    for (const Row& row : copyRows(m_Libraries, [](const HCString& name) { return name; })) {
        print("   Library type 0x%08X - %s", static_cast<unsigned int>(row.code), static_cast<const char*>(row.name));
    }
    if (GetObjectCount() == 0) {
        print("%s", "   No objects in registry...");
    }
    for (const Row& row : copyRows(m_Objects, [](const ZRObjectEntry* entry) { return entry->m_csName; })) {
        print("   Object type 0x%08X - %s, Short 0x%04X, Library 0x%08X", static_cast<unsigned int>(row.code),
            static_cast<const char*>(row.name), static_cast<unsigned int>(row.code & ZRObjectEntry::SHORTMASK),
            static_cast<unsigned int>(row.code & ZRObjectEntry::LIBRARYMASK));
    }
}
