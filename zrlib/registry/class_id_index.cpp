#include "zrlib/registry/class_id_index.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace zr {

namespace {

constexpr std::size_t kLeastSize = 16;

/// Equal for texts that differ in case only.
std::uint32_t HashOf(const char* text)
{
    // Multiplicative hashing (Knuth, The Art of Computer Programming, volume 3, 6.4), eight characters at a time. The
    // bit that distinguishes lower from upper case is set in every character.
    constexpr std::uint64_t kGoldenRatio = 0x9E3779B97F4A7C15; // of 2 to the power 64
    constexpr std::uint64_t kCaseBits = 0x2020202020202020;
    std::uint64_t hash = 0;
    const auto add = [&hash](std::uint64_t word) {
        hash = (hash ^ (word | kCaseBits)) * kGoldenRatio;
        hash ^= hash >> 32; // a product carries differences upwards only
    };
    std::uint64_t word = 0;
    std::size_t rest = std::strlen(text);
    for (; rest >= sizeof(word); rest -= sizeof(word), text += sizeof(word)) {
        std::memcpy(&word, text, sizeof(word));
        add(word);
    }
    if (rest > 0) {
        word = 0;
        std::memcpy(&word, text, rest);
        add(word);
    }
    return static_cast<std::uint32_t>((hash * kGoldenRatio) >> 32);
}

} // namespace

ClassIDIndex::ClassIDIndex()
    : ClassIDIndex(kLeastSize)
{
}

ClassIDIndex::ClassIDIndex(std::size_t size)
    : m_slots(size)
{
}

const ZRObjectEntry* ClassIDIndex::Find(const char* classID, const CodeIndex& objects) const
{
    const std::uint32_t hash = HashOf(classID);
    for (std::size_t index = HomeOf(hash); m_slots[index].code != 0; index = Following(index)) {
        if (m_slots[index].hash == hash) {
            const ZRObjectEntry* const entry = objects.Find(m_slots[index].code);
            if (entry != nullptr && entry->m_bHasClassID != 0 && entry->m_csClassID.CompareNoCase(classID) == 0) {
                return entry;
            }
        }
    }
    return nullptr;
}

void ClassIDIndex::ReserveOne()
{
    if (2 * (m_count + 1) <= m_slots.size()) {
        return;
    }
    ClassIDIndex larger(2 * m_slots.size());
    for (const Slot& slot : m_slots) {
        if (slot.code != 0) {
            larger.Insert(slot);
        }
    }
    *this = std::move(larger);
}

void ClassIDIndex::Insert(const char* classID, int code) noexcept { Insert(Slot{code, HashOf(classID)}); }

void ClassIDIndex::Insert(const Slot& slot) noexcept
{
    std::size_t index = HomeOf(slot.hash);
    while (m_slots[index].code != 0) {
        index = Following(index);
    }
    m_slots[index] = slot;
    ++m_count;
}

void ClassIDIndex::Erase(const char* classID, int code) noexcept
{
    std::size_t gap = HomeOf(HashOf(classID));
    while (m_slots[gap].code != code) {
        if (m_slots[gap].code == 0) {
            return;
        }
        gap = Following(gap);
    }
    // Entries after the gap move up, unless that would put one before its home.
    const std::size_t mask = m_slots.size() - 1;
    for (std::size_t index = Following(gap); m_slots[index].code != 0; index = Following(index)) {
        const std::size_t distanceFromHome = (index - HomeOf(m_slots[index].hash)) & mask;
        if (distanceFromHome >= ((index - gap) & mask)) {
            m_slots[gap] = m_slots[index];
            gap = index;
        }
    }
    m_slots[gap] = {};
    --m_count;
}

void ClassIDIndex::Clear() noexcept
{
    std::fill(m_slots.begin(), m_slots.end(), Slot{});
    m_count = 0;
}

} // namespace zr
