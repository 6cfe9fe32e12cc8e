#include "hcbase/text_table.h"

#include "hcbase/records.h"
#include "hcbase/string.h"

#include <array>
#include <atomic>
#include <bit>
#include <memory>
#include <new>
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
        m_index.resize(std::bit_ceil(2 * count + 1), HCTextRow{0, nullptr});
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
    /// Where the code stands, or the free place where it would stand. The multiplier is 2^32 divided by the golden
    /// ratio (Knuth, The Art of Computer Programming, volume 3, section 6.4): it spreads runs of neighbouring codes.
    std::size_t PlaceOf(std::int32_t code) const
    {
        const std::size_t mask = m_index.size() - 1;
        const std::uint32_t hash = static_cast<std::uint32_t>(code) * 2654435769U;
        std::size_t place = (hash >> 16U) & mask;
        while (m_index[place].text != nullptr && m_index[place].code != code) {
            place = (place + 1) & mask;
        }
        return place;
    }

    HCString m_name;
    std::vector<HCTextRow> m_index;
};

/// A handle is the number of its slot in the low bits and above them the number of the registration, which starts at 1.
struct Slot {
    std::atomic<HCTextHandle> handle{0};
    const TextTable* table = nullptr; // owned; valid while handle is not 0
};

constexpr unsigned kSlotBits = 10;

constinit std::array<Slot, std::size_t{1} << kSlotBits> g_slots;
constinit HCTextHandle g_registrations HC_GUARDED_BY(g_recordsLock) = 0;

Slot& SlotOf(HCTextHandle handle) { return g_slots[handle % g_slots.size()]; }

void Release(Slot& slot)
{
    slot.handle.store(0, std::memory_order_relaxed);
    delete slot.table;
    slot.table = nullptr;
}

} // namespace

void ReleaseTextTables() noexcept
{
    for (Slot& slot : g_slots) {
        Release(slot);
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
        for (std::size_t number = 0; number < hcbase::g_slots.size(); ++number) {
            hcbase::Slot& slot = hcbase::g_slots[number];
            if (slot.table == nullptr) {
                const HCTextHandle handle = (++hcbase::g_registrations << hcbase::kSlotBits) | number;
                slot.table = registered.release();
                slot.handle.store(handle, std::memory_order_release);
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
    hcbase::Release(slot);
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
    for (const hcbase::Slot& slot : hcbase::g_slots) {
        const HCTextHandle handle = slot.handle.load(std::memory_order_relaxed);
        if (handle > newest && slot.table->Name() == name) { // later registrations have greater handles
            newest = handle;
        }
    }
    return newest;
}
