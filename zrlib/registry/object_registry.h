/// ZRObjectRegistry: the libraries that are present and the objects that they contribute.
/// Folder registry: registries of libraries and objects, found by code or index.
#pragma once

#include "hcbase/string.h"
#include "zrlib/export.h"
#include "zrlib/registry/code_map.h"
#include "zrlib/registry/object_entry.h"

#include <atomic>
#include <initializer_list>
#include <memory>

/// Libraries and objects by their codes (object_entry.h). An object has a name and, if its client wants, a class ID
/// that no other object has.
///
/// The process has one registry, which is reached through the functions in registry_functions.h; a client may have
/// others of its own.
///
/// A code or class ID that is not accepted is reported with ZRErrorSet, with one of the ZR_ERROR_REGISTRY_ codes and
/// the operation as location, and changes nothing. `char` results are 1 for success or truth, otherwise 0. Codes may be
/// any numbers, texts any texts. When memory runs out, nothing is added, the result is 0 and nothing is reported; a
/// report or a line of the dump is lost when there is no memory for it.
///
/// Threads: any, for every operation but copying, assigning and destroying. No lock is held while a message is sent, so
/// an observer of messages may use the registry. An entry and its texts are valid until the object is unregistered; the
/// client must not unregister it while another thread looks it up or uses the result. Lookups by code take no lock.
class ZR_API ZRObjectRegistry {
public:
    /// A code that counts as valid but names no object: lookups do not find it, whatever is registered.
    static constexpr int ALL_PASS = 0x1234;

    /// An empty registry; allocates nothing, so it cannot fail.
    ZRObjectRegistry() noexcept;

    /// Copies the entries too: each registry owns its own. Throws std::bad_alloc; the target of an assignment is then
    /// unchanged.
    ZRObjectRegistry(const ZRObjectRegistry& other);
    ZRObjectRegistry& operator=(const ZRObjectRegistry& other);
    virtual ~ZRObjectRegistry();

    /// Adds a library. Its code is one of 0x1000, 0x2000 to 0xF000 that is free; names may be equal or empty.
    char RegisterLibrary(int code, const HCString& name);

    /// Removes a library. Its objects stay; new ones are not accepted until it is registered again.
    char UnregisterLibrary(int code);

    /// Adds an object without a class ID. A code with the high word 0 needs no library; any other must be a full code
    /// of a registered library.
    char RegisterObject(int code, const HCString& name);

    /// Adds an object with a class ID in the right form (ZRClassID::IsFormat) that no other object has, compared
    /// case-insensitively. The code must be a full code, or ALL_PASS, of a registered library.
    char RegisterObject(int code, const HCString& name, const HCString& classID);

    /// Removes an object. Not for short codes: their objects stay until Release.
    char UnregisterObject(int code);

    /// Removes everything. The registry may be used again.
    void Release();

    /// Whether the code is one of 0x1000, 0x2000 to 0xF000.
    [[nodiscard]] static char IsValidLibraryCode(int code);

    /// Whether the high word is 0xA04F.
    [[nodiscard]] static char IsValidHighWord(int code);

    /// Whether the code is a full object code, of a library registered or not, or ALL_PASS. report: not 0 to report
    /// what is wrong; the code 0 is never reported.
    static char IsValidObjectCode(int code, char report);

    /// The entry of an object; null when there is none, and for ALL_PASS. Only a malformed code is reported, and only
    /// when `report` is not 0. The registry owns the entry, which is valid until the object is unregistered; the client
    /// may set the mirror ID and must not change anything else.
    ZRObjectEntry* GetObjectEntry(int code, char report) const;

    /// The entry at an index, from 0 in ascending order of the codes; null beyond the last one and for negative
    /// numbers. Indices change when objects are added or removed.
    [[nodiscard]] ZRObjectEntry* GetObjectEntryAt(int index) const;

    // Texts for a code. A name or class ID of an entry belongs to the entry: it is valid while the object is
    // registered. `known` and `found` may be null.

    /// The name of an object. If there is none, "object with ID 0x..." in a buffer of the calling thread, which the
    /// thread's next call on any registry overwrites and which is destroyed with the thread; a malformed code is
    /// reported. known: set to 1 when the object exists, otherwise to 0. ALL_PASS yields "?" and leaves `known`
    /// unchanged.
    const char* GetObjectName(int code, char* known) const;

    /// As GetObjectName, but with a more detailed text, in a buffer of its own, and without a report.
    const char* GetObjectNameEx(int code, char* known) const;

    /// The class ID of an object; ZRClassID::Null without one. A malformed code is reported. found: set to 1 when the
    /// object was registered with a class ID, otherwise to 0.
    const char* GetObjectClassID(int code, char* found) const;

    // The same by index.

    /// Null when there is none.
    [[nodiscard]] const char* GetObjectNameAt(int index) const;

    /// ZRClassID::Null when there is none.
    [[nodiscard]] const char* GetObjectClassIDAt(int index) const;

    /// -1 when there is none.
    [[nodiscard]] int GetObjectIDAt(int index) const;

    /// The mirror ID of an object; 0 if there is no object. A malformed code is reported.
    [[nodiscard]] int GetObjectMirror(int code) const;

    /// Sets the mirror ID of an object. Returns 1; 0 if there is no object. A malformed code is reported.
    char SetObjectMirror(int code, int mirror);

    /// Whether an object is registered under exactly this code, ALL_PASS included. No report.
    char ObjectIsKnown(int code) const;

    [[nodiscard]] int GetObjectCount() const;
    [[nodiscard]] int GetLibraryCount() const;

    /// Prints the registry as Out messages: the libraries as they are after the first line is sent, then the objects as
    /// they are after the libraries are.
    void DumpOut() const;

private:
    struct Index;
    struct Request;
    struct Violation;
    enum class Rule;

    ZRCodeMap<HCString> m_Libraries;
    ZRCodeMap<ZRObjectEntry*> m_Objects; // the entries are owned
    std::atomic<Index*> m_pIndex{nullptr}; // owned; index of the same entries for fast lookups; null before the first

    template <typename Change> char ChangeIf(std::initializer_list<Rule> rules, const Request& request, Change change);
    template <typename Read> auto ReadAt(int position, Read read) const;
    Violation Test(Rule rule, const Request& request) const;
    [[nodiscard]] ZRObjectEntry* Find(int code) const;
    void Add(std::unique_ptr<ZRObjectEntry> entry);
    static const char* ClassIDOf(const ZRObjectEntry* entry);
};
