#include "hcbase/text_table.h"

#include "hcbase/records.h"
#include "hcbase/string.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <bit>
#include <memory>
#include <utility>
#include <vector>

namespace hcbase {

namespace {

/// One registered table with an index from codes to texts: a hash table with open addressing, at most half full. The
/// rows cannot change, so it is built once and read without a lock.
class TextTable {
public:
    TextTable(const char* name, const HCTextRow* rows)
        : m_name(name)
    {
        std::size_t count = 0;
        while (rows[count].text != nullptr) {
            ++count;
        }
        m_index.resize(std::bit_ceil(2 * count + 2), HCTextRow{0, nullptr});
        m_shift = 64U - static_cast<unsigned>(std::countr_zero(m_index.size()));
        for (std::size_t row = 0; row < count; ++row) {
            HCTextRow& place = m_index[PlaceOf(rows[row].code)];
            if (place.text == nullptr) {
                place = rows[row];
            }
        }
    }

    const HCString& Name() const { return m_name; }

    const char* Find(std::int32_t code) const { return m_index[PlaceOf(code)].text; }

private:
    /// Where the code stands, or the free place where it would stand. The multiplier is 2^64 divided by the golden
    /// ratio, and the highest bits of the product count (Knuth, The Art of Computer Programming, volume 3,
    /// section 6.4): that spreads runs of neighbouring codes.
    std::size_t PlaceOf(std::int32_t code) const
    {
        const std::uint64_t hash = static_cast<std::uint32_t>(code) * 0x9E3779B97F4A7C15U;
        std::size_t place = hash >> m_shift;
        while (m_index[place].text != nullptr && m_index[place].code != code) {
            place = (place + 1) & (m_index.size() - 1);
        }
        return place;
    }

    HCString m_name;
    std::vector<HCTextRow> m_index; // a power of two of places
    unsigned m_shift;
};

/// A handle is the number of its slot in the low bits and above them the number of the registration, which starts at 1.
/// The index of a released table stays until its slot is used again or the library is unloaded, for the sake of a
/// thread that has just looked up its handle.
struct Slot {
    std::atomic<HCTextHandle> handle{0}; // 0: released, or never used
    const TextTable* table = nullptr; // owned
};

constexpr unsigned kSlotBits = 10;

constinit std::array<Slot, std::size_t{1} << kSlotBits> g_slots;
constinit HCTextHandle g_registrations HC_GUARDED_BY(g_recordsLock) = 0;
constinit std::size_t g_used HC_GUARDED_BY(g_recordsLock) = 0; // slots from the first that have ever been used

Slot& SlotOf(HCTextHandle handle) { return g_slots[handle % g_slots.size()]; }

} // namespace

void ReleaseTextTables() noexcept
{
    for (std::size_t number = 0; number < g_used; ++number) {
        Slot& slot = g_slots[number];
        if (slot.handle.load(std::memory_order_relaxed) == 0) { // the others are still their client's
            delete std::exchange(slot.table, nullptr);
        }
    }
}

} // namespace hcbase

HCTextHandle HFTextCreateEmbedded(const char* name, const HCTextRow* table, int /*reserved*/)
{
    if (name == nullptr || table == nullptr) {
        return 0;
    }
    try {
        auto registered = std::make_unique<const hcbase::TextTable>(name, table);
        const hcbase::LockGuard guard(hcbase::g_recordsLock);
        for (std::size_t number = 0; number < hcbase::g_slots.size() && !hcbase::g_recordsClosed; ++number) {
            hcbase::Slot& slot = hcbase::g_slots[number];
            if (slot.handle.load(std::memory_order_relaxed) == 0) {
                const HCTextHandle handle = (++hcbase::g_registrations << hcbase::kSlotBits) | number;
                delete std::exchange(slot.table, registered.release());
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
    return 1;
}

char HFTextGet(HCTextHandle handle, int code, const char** text)
{
    if (text == nullptr) {
        return 0;
    }
    const hcbase::Slot& slot = hcbase::SlotOf(handle);
    const bool isRegistered = handle != 0 && slot.handle.load(std::memory_order_acquire) == handle;
    *text = isRegistered ? slot.table->Find(code) : nullptr;
    return *text != nullptr ? 1 : 0;
}

HCTextHandle HFTextFind(const char* name)
{
    if (name == nullptr) {
        return 0;
    }
    const hcbase::LockGuard guard(hcbase::g_recordsLock);
    HCTextHandle newest = 0;
    for (std::size_t number = 0; number < hcbase::g_used; ++number) {
        const hcbase::Slot& slot = hcbase::g_slots[number];
        const HCTextHandle handle = slot.handle.load(std::memory_order_relaxed);
        if (handle > newest && slot.table->Name() == name) { // later registrations have greater handles
            newest = handle;
        }
    }
    return newest;
}
