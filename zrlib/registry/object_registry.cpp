#include "zrlib/frame/short_lock_guard.h"
#include "zrlib/registry/object_registry_index.h"
#include "zrlib/registry/refusals.h"

#include <initializer_list>
#include <memory>
#include <new>

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
    const zr::Refusal* refusal = nullptr; // null when all rules hold
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
        zr::Refuse(*violation.refusal, request.location, {violation.number, request.classID, violation.holder});
        if (violation.refusal == &zr::kClassIDIsInUse) {
            zr::Refuse(zr::kClassIDIsDuplicate, request.location, {request.code, request.classID});
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
            return {&zr::kLibraryExists, code, library->second};
        }
        break;
    case Rule::kLibraryIsKnown:
        if (m_Libraries.Find(code) == m_Libraries.End()) {
            return {&zr::kLibraryIsNotFound, code, ""};
        }
        break;
    case Rule::kLibraryOfObjectIsKnown:
        if (const int library = code & ZRObjectEntry::LIBRARYMASK; m_Libraries.Find(library) == m_Libraries.End()) {
            return {&zr::kLibraryIsNotRegistered, library, ""};
        }
        break;
    case Rule::kObjectIsNew:
        if (const ZRObjectEntry* const holder = Find(code)) {
            return {&zr::kObjectExists, code, holder->m_csName};
        }
        break;
    case Rule::kObjectIsKnown:
        if (Find(code) == nullptr) {
            return {&zr::kObjectIsNotFound, code, ""};
        }
        break;
    case Rule::kClassIDIsNew:
        if (const Index* const index = m_pIndex) {
            if (const ZRObjectEntry* const holder = index->byClassID.Find(request.classID, index->byCode)) {
                return {&zr::kClassIDIsInUse, code, holder->m_csName};
            }
        }
        break;
    }
    return {};
}

char ZRObjectRegistry::RegisterLibrary(int code, const HCString& name)
{
    const Request request{"ZRObjectRegistry::RegisterLibrary", code};
    if (!zr::Require(IsValidLibraryCode(code) != 0, zr::kLibraryCodeIsWrong, request.location, {code})) {
        return 0;
    }
    return ChangeIf({Rule::kLibraryIsNew}, request, [&] { m_Libraries.Insert(code, name); });
}

char ZRObjectRegistry::UnregisterLibrary(int code)
{
    const Request request{"ZRObjectRegistry::UnregisterLibrary", code};
    if (!zr::Require(IsValidLibraryCode(code) != 0, zr::kLibraryCodeIsWrong, request.location, {code})) {
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
    if (!zr::Require(IsValidObjectCode(code, 1) != 0, zr::kObjectCodeIsWrong, request.location, {code})) {
        return 0;
    }
    return ChangeIf({Rule::kLibraryOfObjectIsKnown, Rule::kObjectIsNew}, request, add);
}

char ZRObjectRegistry::RegisterObject(int code, const HCString& name, const HCString& classID)
{
    const Request request{"ZRObjectRegistry::RegisterObject<id,name,class>", code, classID};
    if (!zr::Require(IsValidObjectCode(code, 1) != 0, zr::kObjectCodeIsWrong, request.location, {code})
        || !zr::Require(
            ZRClassID::IsFormat(classID) != 0, zr::kClassIDIsMalformed, request.location, {code, request.classID})) {
        return 0;
    }
    return ChangeIf({Rule::kLibraryOfObjectIsKnown, Rule::kObjectIsNew, Rule::kClassIDIsNew}, request,
        [&] { Add(std::make_unique<ZRObjectEntry>(code, name, classID, 0)); });
}

char ZRObjectRegistry::UnregisterObject(int code)
{
    const Request request{"ZRObjectRegistry::UnregisterObject", code};
    if (!zr::Require(IsValidObjectCode(code, 1) != 0, zr::kObjectCodeIsWrong, request.location, {code})) {
        return 0;
    }
    return ChangeIf({Rule::kObjectIsKnown}, request, [&] {
        Index& index = *m_pIndex.load();
        const zr::CodeIndex::Iterator iterator = index.byCode.IteratorOf(code);
        const std::unique_ptr<const ZRObjectEntry> entry(iterator->second);
        index.byCode.Erase(code);
        if (entry->m_bHasClassID != 0) {
            index.byClassID.Erase(entry->m_csClassID, code);
        }
        m_Objects.Erase(iterator);
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
    const auto iterator = m_Objects.Insert(index.byCode.Next(code, m_Objects.End()), code, entry.get()).first;
    try {
        index.byCode.Insert(code, {entry.get(), iterator});
    } catch (const std::bad_alloc&) {
        m_Objects.Erase(iterator);
        throw;
    }
    const ZRObjectEntry* const added = entry.release();
    if (added->m_bHasClassID != 0) {
        index.byClassID.Insert(added->m_csClassID, code);
    }
}
