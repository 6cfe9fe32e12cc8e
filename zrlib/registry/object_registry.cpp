#include "zrlib/registry/object_registry.h"

#include "zrlib/frame/text_codes.h"
#include "zrlib/messaging/message_functions.h"
#include "zrlib/registry/class_id_index.h"
#include "zrlib/registry/code_index.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <new>

#if defined(_WIN32)
// A client that takes the address of a constant imports it, and an import needs a definition here.
constexpr int ZRObjectRegistry::ALL_PASS;
#endif

namespace {

/// What a report may show: an object or library code, a class ID, and the name of what is in the way.
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
    Shows shows = Shows::kNumberAndHolder; // the format may leave out the last
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
    ZRErrorSet(refusal.error, text, location, 0, 1);
}

/// Reports a refusal, if there is memory for it. Gives false.
bool Refuse(const Refusal& refusal, const char* location, const Details& details)
{
    try {
        Report(refusal, location, details);
    } catch (const std::bad_alloc&) { // what is refused stays refused
    }
    return false;
}

/// Holds either text for an unknown object. Storage that needs no code to come and go, so that a text is valid for as
/// long as the library is loaded, also for objects that are older than the first call.
using NameBuffer = std::array<char, 128>;

char Truth(bool value) { return value ? 1 : 0; }

void SetFlag(char* flag, bool value)
{
    if (flag != nullptr) {
        *flag = Truth(value);
    }
}

} // namespace

/// Beside the ring of objects: the ways to an entry that need not walk it.
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

/// What must hold before something is added or removed.
enum class ZRObjectRegistry::Rule {
    kLibraryCodeIsValid,
    kLibraryIsNew,
    kLibraryIsKnown,
    kObjectCodeIsValid,
    kLibraryOfObjectIsKnown,
    kObjectIsNew,
    kObjectIsKnown,
    kClassIDIsWellFormed,
    kClassIDIsNew,
};

ZRObjectRegistry::ZRObjectRegistry() noexcept = default;

ZRObjectRegistry::ZRObjectRegistry(const ZRObjectRegistry& other)
    : ZRObjectRegistry()
{
    m_Libraries = other.m_Libraries;
    for (const auto& [code, entry] : other.m_Objects) {
        Add(code, std::make_unique<ZRObjectEntry>(*entry));
    }
}

ZRObjectRegistry& ZRObjectRegistry::operator=(const ZRObjectRegistry& other)
{
    if (this != &other) {
        ZRObjectRegistry copy(other);
        m_Libraries.Swap(copy.m_Libraries);
        m_Objects.Swap(copy.m_Objects);
        m_index.swap(copy.m_index);
    }
    return *this;
}

ZRObjectRegistry::~ZRObjectRegistry() { Release(); }

char ZRObjectRegistry::RegisterLibrary(int code, const HCString& name)
{
    const Request request{"ZRObjectRegistry::RegisterLibrary", code};
    if (!Allows(request, {Rule::kLibraryCodeIsValid, Rule::kLibraryIsNew})) {
        return 0;
    }
    try {
        m_Libraries.Insert(code, name);
        return 1;
    } catch (const std::bad_alloc&) {
        return 0;
    }
}

char ZRObjectRegistry::UnregisterLibrary(int code)
{
    const Request request{"ZRObjectRegistry::UnregisterLibrary", code};
    return Allows(request, {Rule::kLibraryCodeIsValid, Rule::kLibraryIsKnown}) ? m_Libraries.Erase(code) : 0;
}

char ZRObjectRegistry::RegisterObject(int code, const HCString& name)
{
    const Request request{"ZRObjectRegistry::RegisterObject<id,name>", code};
    const bool isShort = (code & ZRObjectEntry::BASEMASK) == 0;
    const bool isAllowed = isShort
        ? Allows(request, {Rule::kObjectIsNew})
        : Allows(request, {Rule::kObjectCodeIsValid, Rule::kLibraryOfObjectIsKnown, Rule::kObjectIsNew});
    return Truth(isAllowed && TryAdd(code, name, nullptr));
}

char ZRObjectRegistry::RegisterObject(int code, const HCString& name, const HCString& classID)
{
    const Request request{"ZRObjectRegistry::RegisterObject<id,name,class>", code, classID};
    const bool isAllowed = Allows(request,
        {Rule::kObjectCodeIsValid, Rule::kClassIDIsWellFormed, Rule::kLibraryOfObjectIsKnown, Rule::kObjectIsNew,
            Rule::kClassIDIsNew});
    return Truth(isAllowed && TryAdd(code, name, &classID));
}

char ZRObjectRegistry::UnregisterObject(int code)
{
    const Request request{"ZRObjectRegistry::UnregisterObject", code};
    if (!Allows(request, {Rule::kObjectCodeIsValid, Rule::kObjectIsKnown})) {
        return 0;
    }
    const zr::CodeIndex::Place place = m_index->byCode.PlaceOf(code);
    ZRObjectEntry* const entry = place->second;
    m_index->byCode.Erase(code);
    if (entry->m_bHasClassID != 0) {
        m_index->byClassID.Erase(entry->m_csClassID, code);
    }
    delete entry;
    m_Objects.Erase(place);
    return 1;
}

void ZRObjectRegistry::Release()
{
    m_Libraries.Clear();
    m_index.reset();
    for (const auto& [code, entry] : m_Objects) {
        delete entry;
    }
    m_Objects.Clear();
}

bool ZRObjectRegistry::Allows(const Request& request, std::initializer_list<Rule> rules) const
{
    return std::all_of(rules.begin(), rules.end(), [&](Rule rule) { return Holds(rule, request); });
}

/// The entry with just this code; null when there is none.
ZRObjectEntry* ZRObjectRegistry::Find(int code) const
{
    return m_index != nullptr ? m_index->byCode.Find(code) : nullptr;
}

/// Reports when the rule does not hold.
bool ZRObjectRegistry::Holds(Rule rule, const Request& request) const
{
    const int code = request.code;
    const char* const location = request.location;
    switch (rule) {
    case Rule::kLibraryCodeIsValid:
        return IsValidLibraryCode(code) != 0 || Refuse(kLibraryCodeIsWrong, location, {code});
    case Rule::kLibraryIsNew: {
        const auto library = m_Libraries.Find(code);
        return library == m_Libraries.End() || Refuse(kLibraryExists, location, {code, "", library->second});
    }
    case Rule::kLibraryIsKnown:
        return m_Libraries.Find(code) != m_Libraries.End() || Refuse(kLibraryIsNotFound, location, {code});
    case Rule::kObjectCodeIsValid:
        return IsValidObjectCode(code, 1) != 0 || Refuse(kObjectCodeIsWrong, location, {code});
    case Rule::kLibraryOfObjectIsKnown: {
        const int library = code & ZRObjectEntry::LIBRARYMASK;
        return m_Libraries.Find(library) != m_Libraries.End() || Refuse(kLibraryIsNotRegistered, location, {library});
    }
    case Rule::kObjectIsNew: {
        const ZRObjectEntry* const holder = Find(code);
        return holder == nullptr || Refuse(kObjectExists, location, {code, "", holder->m_csName});
    }
    case Rule::kObjectIsKnown:
        return Find(code) != nullptr || Refuse(kObjectIsNotFound, location, {code});
    case Rule::kClassIDIsWellFormed:
        return ZRClassID::IsFormat(request.classID) != 0
            || Refuse(kClassIDIsMalformed, location, {code, request.classID});
    case Rule::kClassIDIsNew: {
        const ZRObjectEntry* const holder =
            m_index != nullptr ? m_index->byClassID.Find(request.classID, m_index->byCode) : nullptr;
        if (holder == nullptr) {
            return true;
        }
        Refuse(kClassIDIsInUse, location, {code, request.classID, holder->m_csName});
        return Refuse(kClassIDIsDuplicate, location, {code, request.classID});
    }
    }
    return false;
}

/// False when there is no memory; nothing is added then.
bool ZRObjectRegistry::TryAdd(int code, const HCString& name, const HCString* classID)
{
    try {
        Add(code,
            classID != nullptr ? std::make_unique<ZRObjectEntry>(code, name, *classID, 0)
                               : std::make_unique<ZRObjectEntry>(code, name, 0));
        return true;
    } catch (const std::bad_alloc&) {
        return false;
    }
}

/// Adds an entry that the rules allow. Throws std::bad_alloc; nothing is added then.
void ZRObjectRegistry::Add(int code, std::unique_ptr<ZRObjectEntry> entry)
{
    if (m_index == nullptr) {
        m_index = std::make_unique<Index>();
    }
    if (entry->m_bHasClassID != 0) {
        m_index->byClassID.ReserveOne();
    }
    const auto place = m_Objects.Insert(m_index->byCode.Next(code, m_Objects.End()), code, entry.get()).first;
    try {
        m_index->byCode.Insert(code, {entry.get(), place});
    } catch (const std::bad_alloc&) {
        m_Objects.Erase(place);
        throw;
    }
    const ZRObjectEntry* const added = entry.release();
    if (added->m_bHasClassID != 0) {
        m_index->byClassID.Insert(added->m_csClassID, code);
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
    if (code == ALL_PASS || (!isShort && IsValidObjectCode(code, report) == 0)) {
        return nullptr;
    }
    return m_index != nullptr ? m_index->byCode.FindInRange(code) : nullptr;
}

ZRObjectEntry* ZRObjectRegistry::GetObjectEntryAt(int index) const
{
    return m_index != nullptr ? m_index->byCode.At(index) : nullptr;
}

const char* ZRObjectRegistry::GetObjectName(int code, char* known) const
{
    if (code == ALL_PASS) {
        return "?";
    }
    static constinit NameBuffer buffer{};
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
    static constinit NameBuffer buffer{};
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
    const ZRObjectEntry* const entry = GetObjectEntryAt(index);
    return entry != nullptr ? static_cast<const char*>(entry->m_csName) : nullptr;
}

const char* ZRObjectRegistry::GetObjectClassIDAt(int index) const { return ClassIDOf(GetObjectEntryAt(index)); }

/// `entry` may be null.
const char* ZRObjectRegistry::ClassIDOf(const ZRObjectEntry* entry)
{
    return entry != nullptr && entry->m_bHasClassID != 0 ? static_cast<const char*>(entry->m_csClassID)
                                                         : ZRClassID::Null;
}

int ZRObjectRegistry::GetObjectIDAt(int index) const
{
    const ZRObjectEntry* const entry = GetObjectEntryAt(index);
    return entry != nullptr ? entry->GetID() : -1;
}

int ZRObjectRegistry::GetObjectMirror(int code) const
{
    const ZRObjectEntry* const entry = GetObjectEntry(code, 1);
    return entry != nullptr ? entry->GetMirrorID() : 0;
}

char ZRObjectRegistry::SetObjectMirror(int code, int mirror)
{
    ZRObjectEntry* const entry = GetObjectEntry(code, 1);
    if (entry == nullptr) {
        return 0;
    }
    entry->SetMirrorID(mirror);
    return 1;
}

char ZRObjectRegistry::ObjectIsKnown(int code) const { return Truth(Find(code) != nullptr); }

int ZRObjectRegistry::GetObjectCount() const { return m_Objects.GetCount(); }

int ZRObjectRegistry::GetLibraryCount() const { return m_Libraries.GetCount(); }

void ZRObjectRegistry::DumpOut() const
{
    if (ZRGetMessagesEnabled() == 0) {
        return; // before thousands of lines are made for nobody
    }
    const auto print = [](const char* format, auto... values) {
        try {
            HCString line;
            line.Format(format, values...);
            ZROut(line, nullptr, 1);
        } catch (const std::bad_alloc&) { // the other lines may be shorter
        }
    };
    print("%s", "Object registry dump >>>");
    if (GetLibraryCount() == 0 && GetObjectCount() == 0) {
        print("%s", "   Registry is empty...");
        return;
    }
    if (GetLibraryCount() == 0) {
        print("%s", "   No libraries in registry...");
    }
    for (const auto& [code, name] : m_Libraries) {
        print("   Library type 0x%08X - %s", static_cast<unsigned int>(code), static_cast<const char*>(name));
    }
    if (GetObjectCount() == 0) {
        print("%s", "   No objects in registry...");
    }
    for (const auto& [code, entry] : m_Objects) {
        print("   Object type 0x%08X - %s, Short 0x%04X, Library 0x%08X", static_cast<unsigned int>(code),
            static_cast<const char*>(entry->m_csName), static_cast<unsigned int>(code & ZRObjectEntry::SHORTMASK),
            static_cast<unsigned int>(code & ZRObjectEntry::LIBRARYMASK));
    }
}
