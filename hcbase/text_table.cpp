#include "hcbase/text_table.h"

#include "hcbase/records.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cstring>
#include <exception>
#include <utility>

namespace hcbase {

namespace {

/// A handle has the index of its slot in the low bits and above them the number of the registration, which starts at 1,
/// so that no two registrations share one. Lookups take no lock: they compare the handle before and after they read the
/// rows, which belong to the client and stay in place.
struct Slot {
    std::atomic<HCTextHandle> handle{0}; // 0: released, or never used
    std::atomic<const HCTextRow*> rows{nullptr}; // not owned
    char* name HC_PT_GUARDED_BY(g_recordsLock) = nullptr; // owned
};

constexpr unsigned kSlotBits = 10;

constinit std::array<Slot, std::size_t{1} << kSlotBits> g_slots;
constinit HCTextHandle g_registrations HC_GUARDED_BY(g_recordsLock) = 0;
constinit std::size_t g_used HC_GUARDED_BY(g_recordsLock) = 0; // slots from the first that have ever been used

Slot& SlotOf(HCTextHandle handle) { return g_slots[handle % g_slots.size()]; }

/// A copy of a text; the caller deletes it.
char* CopyOf(const char* text)
{
    const std::size_t size = std::strlen(text) + 1;
    return static_cast<char*>(std::memcpy(new char[size], text, size));
}

/// The rows of a registered table; null when the handle identifies none.
const HCTextRow* RowsOf(HCTextHandle handle)
{
    const Slot& slot = SlotOf(handle);
    if (handle == 0 || slot.handle.load(std::memory_order_acquire) != handle) {
        return nullptr;
    }
    const HCTextRow* const rows = slot.rows.load(std::memory_order_acquire);
    return slot.handle.load(std::memory_order_relaxed) == handle ? rows : nullptr;
}

} // namespace

void ReleaseTextTables() noexcept
{
    for (std::size_t number = 0; number < g_used; ++number) {
        delete[] std::exchange(g_slots[number].name, nullptr); // lookups still work for those who have the handle
    }
}

} // namespace hcbase

HCTextHandle HFTextCreateEmbedded(const char* name, const HCTextRow* table, int /*reserved*/)
{
    if (name == nullptr || table == nullptr) {
        return 0;
    }
    try {
        const hcbase::LockGuard guard(hcbase::g_recordsLock);
        for (std::size_t number = 0; number < hcbase::g_slots.size() && !hcbase::g_recordsClosed; ++number) {
            hcbase::Slot& slot = hcbase::g_slots[number];
            if (slot.handle.load(std::memory_order_relaxed) == 0) {
                slot.name = hcbase::CopyOf(name);
                const HCTextHandle handle = (++hcbase::g_registrations << hcbase::kSlotBits) | number;
                slot.rows.store(table, std::memory_order_release); // readers of the slot's last table must notice
                slot.handle.store(handle, std::memory_order_release);
                hcbase::g_used = std::max(hcbase::g_used, number + 1);
                return handle;
            }
        }
    } catch (const std::exception&) {
        return 0;
    }
    return 0;
}

char HFTextRelease(HCTextHandle handle)
{
    const hcbase::LockGuard guard(hcbase::g_recordsLock);
    hcbase::Slot& slot = hcbase::SlotOf(handle);
    if (handle == 0 || slot.handle.load(std::memory_order_relaxed) != handle) {
        return 0;
    }
    slot.handle.store(0, std::memory_order_relaxed);
    delete[] std::exchange(slot.name, nullptr);
    return 1;
}

char HFTextGet(HCTextHandle handle, int code, const char** text)
{
    if (text == nullptr) {
        return 0;
    }
    const HCTextRow* row = hcbase::RowsOf(handle);
    while (row != nullptr && row->text != nullptr && row->code != code) {
        ++row;
    }
    *text = row != nullptr ? row->text : nullptr;
    return *text != nullptr ? 1 : 0;
}

HCTextHandle HFTextFind(const char* name)
{
    if (name == nullptr) {
        return 0;
    }
    const hcbase::LockGuard guard(hcbase::g_recordsLock);
    HCTextHandle newest = 0;
    for (std::size_t number = 0; number < hcbase::g_used && !hcbase::g_recordsClosed; ++number) {
        const hcbase::Slot& slot = hcbase::g_slots[number];
        const HCTextHandle handle = slot.handle.load(std::memory_order_relaxed);
        if (handle > newest && std::strcmp(slot.name, name) == 0) { // later registrations have greater handles
            newest = handle;
        }
    }
    return newest;
}
