#include "zrlib/registry/object_registry.h"

#include "zrlib/frame/report.h"
#include "zrlib/frame/short_lock_guard.h"
#include "zrlib/frame/text_codes.h"
#include "zrlib/registry/class_id_index.h"
#include "zrlib/registry/code_index.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <new>
#include <vector>

#if defined(_WIN32)
// A client that takes the address of a constant imports it, and an import needs a definition here.
constexpr int ZRObjectRegistry::ALL_PASS;
#endif

namespace {

/// What a report may show: an object or library code, a class ID, and the name of the conflicting object or library.
struct Details {
    int number = 0;
    const char* classID = "";
    const char* holder = "";
};

enum class Shows { kNumberAndHolder, kClassIDAndHolder, kClassIDAndNumber };

/// The error code and the message of one kind of refusal.
struct Refusal {
    int error;
    const char* format;
    Shows shows = Shows::kNumberAndHolder; // the format may omit the last
};

// clang-format off
constexpr Refusal kHighWordIsWrong{ZR_ERROR_REGISTRY_HIGH_WORD, "Invalid high word in object code 0x%08X"};
constexpr Refusal kNibbleIsZero{ZR_ERROR_REGISTRY_ZERO_NIBBLE, "Invalid library nibble in object code 0x%08X"};
constexpr Refusal kLibraryCodeIsWrong{ZR_ERROR_REGISTRY_LIBRARY_CODE, "Invalid library code 0x%08X"};
constexpr Refusal kLibraryExists{ZR_ERROR_REGISTRY_LIBRARY_EXISTS, "Library 0x%08X already registered as %s"};
constexpr Refusal kLibraryIsNotFound{ZR_ERROR_REGISTRY_LIBRARY_NOT_FOUND, "Library 0x%08X not found"};
constexpr Refusal kLibraryIsNotRegistered{ZR_ERROR_REGISTRY_LIBRARY_NOT_REGISTERED, "Library 0x%08X is not registered"};
constexpr Refusal kObjectCodeIsWrong{ZR_ERROR_REGISTRY_OBJECT_CODE, "Invalid object code 0x%08X"};
constexpr Refusal kObjectExists{ZR_ERROR_REGISTRY_OBJECT_EXISTS, "Object 0x%08X already registered as %s"};
constexpr Refusal kObjectIsNotFound{ZR_ERROR_REGISTRY_OBJECT_NOT_FOUND, "Object 0x%08X not found"};
constexpr Refusal kClassIDIsMalformed{ZR_ERROR_REGISTRY_CLASS_ID_FORMAT,
    "Invalid class ID %s specified for object 0x%08X", Shows::kClassIDAndNumber};
constexpr Refusal kClassIDIsInUse{ZR_ERROR_REGISTRY_CLASS_ID_IN_USE,
    "Class ID %s already being used by %s", Shows::kClassIDAndHolder};
constexpr Refusal kClassIDIsDuplicate{ZR_ERROR_REGISTRY_CLASS_ID_IN_USE,
    "Duplicate class ID %s specified for object 0x%08X", Shows::kClassIDAndNumber};
// clang-format on

void Report(const Refusal& refusal, const char* location, const Details& details)
{
    const auto number = static_cast<unsigned int>(details.number);
    HCString text;
    switch (refusal.shows) {
    case Shows::kNumberAndHolder:
        text.Format(refusal.format, number, details.holder);
        break;
    case Shows::kClassIDAndHolder:
        text.Format(refusal.format, details.classID, details.holder);
        break;
    case Shows::kClassIDAndNumber:
        text.Format(refusal.format, details.classID, number);
        break;
    }
    zr::ReportErrorSet(refusal.error, text, location);
}

/// Reports a refusal, if there is memory for it. Returns false.
bool Refuse(const Refusal& refusal, const char* location, const Details& details)
{
    try {
        Report(refusal, location, details);
    } catch (const std::bad_alloc&) { // what is refused stays refused
    }
    return false;
}

/// Whether a condition holds that does not depend on what is registered; reports it if not.
bool Require(bool holds, const Refusal& refusal, const char* location, const Details& details)
{
    return holds || Refuse(refusal, location, details);
}

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

/// Finds entries without walking the ring of objects.
struct ZRObjectRegistry::Index {
    zr::CodeIndex byCode;
    zr::ClassIDIndex byClassID;
};

/// What an operation is about to do.
struct ZRObjectRegistry::Request {
    const char* location;
    int code;
    const char* classID = "";
};

/// What must hold before something is added or removed, where that depends on what is registered.
enum class ZRObjectRegistry::Rule {
    kLibraryIsNew,
    kLibraryIsKnown,
    kLibraryOfObjectIsKnown,
    kObjectIsNew,
    kObjectIsKnown,
    kClassIDIsNew,
};

/// A rule that does not hold: found under the lock, and reported after it is released.
struct ZRObjectRegistry::Violation {
    const Refusal* refusal = nullptr; // null when all rules hold
    int number = 0;
    HCString holder; // name of the conflicting object or library
};

ZRObjectRegistry::ZRObjectRegistry() noexcept = default;

ZRObjectRegistry::ZRObjectRegistry(const ZRObjectRegistry& other)
    : ZRObjectRegistry()
{
    m_Libraries = other.m_Libraries;
    for (const auto& [code, entry] : other.m_Objects) {
        Add(std::make_unique<ZRObjectEntry>(*entry));
    }
}

ZRObjectRegistry& ZRObjectRegistry::operator=(const ZRObjectRegistry& other)
{
    if (this != &other) {
        ZRObjectRegistry copy(other);
        m_Libraries.Swap(copy.m_Libraries);
        m_Objects.Swap(copy.m_Objects);
        m_pIndex.store(copy.m_pIndex.exchange(m_pIndex.load()));
    }
    return *this;
}

ZRObjectRegistry::~ZRObjectRegistry()
{
    Release();
    delete m_pIndex.exchange(nullptr);
}

/// Tests the rules and makes the change in one step, or reports the rule that does not hold. Changes nothing when
/// memory runs out.
template <typename Change>
char ZRObjectRegistry::ChangeIf(std::initializer_list<Rule> rules, const Request& request, Change change)
{
    try {
        Violation violation;
        {
            const zr::ShortLockGuard guard(zr::g_dataLock);
            for (auto rule = rules.begin(); rule != rules.end() && violation.refusal == nullptr; ++rule) {
                violation = Test(*rule, request);
            }
            if (violation.refusal == nullptr) {
                change();
                return 1;
            }
        }
        Refuse(*violation.refusal, request.location, {violation.number, request.classID, violation.holder});
        if (violation.refusal == &kClassIDIsInUse) {
            Refuse(kClassIDIsDuplicate, request.location, {request.code, request.classID});
        }
    } catch (const std::bad_alloc&) { // nothing was changed, or what was refused stays refused
    }
    return 0;
}

/// To be called under the lock.
ZRObjectRegistry::Violation ZRObjectRegistry::Test(Rule rule, const Request& request) const
{
    const int code = request.code;
    switch (rule) {
    case Rule::kLibraryIsNew:
        if (const auto library = m_Libraries.Find(code); library != m_Libraries.End()) {
            return {&kLibraryExists, code, library->second};
        }
        break;
    case Rule::kLibraryIsKnown:
        if (m_Libraries.Find(code) == m_Libraries.End()) {
            return {&kLibraryIsNotFound, code, ""};
        }
        break;
    case Rule::kLibraryOfObjectIsKnown:
        if (const int library = code & ZRObjectEntry::LIBRARYMASK; m_Libraries.Find(library) == m_Libraries.End()) {
            return {&kLibraryIsNotRegistered, library, ""};
        }
        break;
    case Rule::kObjectIsNew:
        if (const ZRObjectEntry* const holder = Find(code)) {
            return {&kObjectExists, code, holder->m_csName};
        }
        break;
    case Rule::kObjectIsKnown:
        if (Find(code) == nullptr) {
            return {&kObjectIsNotFound, code, ""};
        }
        break;
    case Rule::kClassIDIsNew:
        if (const Index* const index = m_pIndex) {
            if (const ZRObjectEntry* const holder = index->byClassID.Find(request.classID, index->byCode)) {
                return {&kClassIDIsInUse, code, holder->m_csName};
            }
        }
        break;
    }
    return {};
}

char ZRObjectRegistry::RegisterLibrary(int code, const HCString& name)
{
    const Request request{"ZRObjectRegistry::RegisterLibrary", code};
    if (!Require(IsValidLibraryCode(code) != 0, kLibraryCodeIsWrong, request.location, {code})) {
        return 0;
    }
    return ChangeIf({Rule::kLibraryIsNew}, request, [&] { m_Libraries.Insert(code, name); });
}

char ZRObjectRegistry::UnregisterLibrary(int code)
{
    const Request request{"ZRObjectRegistry::UnregisterLibrary", code};
    if (!Require(IsValidLibraryCode(code) != 0, kLibraryCodeIsWrong, request.location, {code})) {
        return 0;
    }
    return ChangeIf({Rule::kLibraryIsKnown}, request, [&] { m_Libraries.Erase(code); });
}

char ZRObjectRegistry::RegisterObject(int code, const HCString& name)
{
    const Request request{"ZRObjectRegistry::RegisterObject<id,name>", code};
    const auto add = [&] { Add(std::make_unique<ZRObjectEntry>(code, name, 0)); };
    const bool isShort = (code & ZRObjectEntry::BASEMASK) == 0;
    if (isShort) {
        return ChangeIf({Rule::kObjectIsNew}, request, add);
    }
    if (!Require(IsValidObjectCode(code, 1) != 0, kObjectCodeIsWrong, request.location, {code})) {
        return 0;
    }
    return ChangeIf({Rule::kLibraryOfObjectIsKnown, Rule::kObjectIsNew}, request, add);
}

char ZRObjectRegistry::RegisterObject(int code, const HCString& name, const HCString& classID)
{
    const Request request{"ZRObjectRegistry::RegisterObject<id,name,class>", code, classID};
    if (!Require(IsValidObjectCode(code, 1) != 0, kObjectCodeIsWrong, request.location, {code})
        || !Require(
            ZRClassID::IsFormat(classID) != 0, kClassIDIsMalformed, request.location, {code, request.classID})) {
        return 0;
    }
    return ChangeIf({Rule::kLibraryOfObjectIsKnown, Rule::kObjectIsNew, Rule::kClassIDIsNew}, request,
        [&] { Add(std::make_unique<ZRObjectEntry>(code, name, classID, 0)); });
}

char ZRObjectRegistry::UnregisterObject(int code)
{
    const Request request{"ZRObjectRegistry::UnregisterObject", code};
    if (!Require(IsValidObjectCode(code, 1) != 0, kObjectCodeIsWrong, request.location, {code})) {
        return 0;
    }
    return ChangeIf({Rule::kObjectIsKnown}, request, [&] {
        Index& index = *m_pIndex.load();
        const zr::CodeIndex::Place place = index.byCode.PlaceOf(code);
        const std::unique_ptr<const ZRObjectEntry> entry(place->second);
        index.byCode.Erase(code);
        if (entry->m_bHasClassID != 0) {
            index.byClassID.Erase(entry->m_csClassID, code);
        }
        m_Objects.Erase(place);
    });
}

void ZRObjectRegistry::Release()
{
    const zr::ShortLockGuard guard(zr::g_dataLock);
    m_Libraries.Clear();
    if (Index* const index = m_pIndex) { // kept, because another thread may be reading it
        index->byCode.Clear();
        index->byClassID.Clear();
    }
    for (const auto& [code, entry] : m_Objects) {
        delete entry;
    }
    m_Objects.Clear();
}

/// The entry with exactly this code; null when there is none.
ZRObjectEntry* ZRObjectRegistry::Find(int code) const
{
    const Index* const index = m_pIndex.load(std::memory_order_acquire);
    return index != nullptr ? index->byCode.Find(code) : nullptr;
}

/// Adds an entry that the rules allow. To be called under the lock. Throws std::bad_alloc; nothing is then added.
void ZRObjectRegistry::Add(std::unique_ptr<ZRObjectEntry> entry)
{
    if (m_pIndex == nullptr) {
        m_pIndex = new Index;
    }
    Index& index = *m_pIndex.load();
    if (entry->m_bHasClassID != 0) {
        index.byClassID.ReserveOne();
    }
    const int code = entry->GetID();
    const auto place = m_Objects.Insert(index.byCode.Next(code, m_Objects.End()), code, entry.get()).first;
    try {
        index.byCode.Insert(code, {entry.get(), place});
    } catch (const std::bad_alloc&) {
        m_Objects.Erase(place);
        throw;
    }
    const ZRObjectEntry* const added = entry.release();
    if (added->m_bHasClassID != 0) {
        index.byClassID.Insert(added->m_csClassID, code);
    }
}

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
        Refuse(hasHighWord ? kNibbleIsZero : kHighWordIsWrong, location, {code});
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
