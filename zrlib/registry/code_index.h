/// CodeIndex: finds the objects of a registry by their codes. Not exported.
#pragma once

#include "zrlib/registry/code_map.h"
#include "zrlib/registry/object_entry.h"

#include <array>
#include <atomic>
#include <cstddef>

namespace zr {

/// A radix tree over the codes that a registry accepts: full object codes and short codes, in the order of the codes.
///
/// A code leads through three tables of pointers to its slot. Shared empty tables stand in for missing ones, so that a
/// lookup has no branches and a registry with few objects stays small. Tables are kept until the index is destroyed,
/// some 2.5 MB at most.
///
/// Threads: Find and FindInRange from any thread, also while one other thread uses the other operations.
class CodeIndex {
public:
    using Iterator = ZRCodeMap<ZRObjectEntry*>::Iterator;

    /// What is kept for a code.
    struct Slot {
        ZRObjectEntry* entry = nullptr; // not owned; null in a free slot
        Iterator iterator; // in the ring of objects
    };

    CodeIndex() noexcept { m_tables.fill(&s_noTables); }
    ~CodeIndex();
    CodeIndex(const CodeIndex&) = delete;
    CodeIndex& operator=(const CodeIndex&) = delete;

    /// Null for any code that is not in the index.
    ZRObjectEntry* Find(int code) const { return IsInRange(code) ? FindInRange(code) : nullptr; }

    /// As Find, for a code that has the high word 0xA04F or 0.
    ZRObjectEntry* FindInRange(int code) const
    {
        const unsigned int position = PositionOf(code);
        const Level2* const level2 = Load(m_tables[position >> (3 * kBits)]);
        const Level1* const level1 = Load(level2->below[DigitOf(position, 2)]);
        const Leaf* const leaf = Load(level1->below[DigitOf(position, 1)]);
        return Load(leaf->slots[DigitOf(position, 0)].entry);
    }

    /// The iterator of the least code above `code`, which is in the range; `otherwise` when there is none.
    Iterator Next(int code, Iterator otherwise) const;

    /// The iterator of a code that is in the index.
    Iterator IteratorOf(int code) const
    {
        return LeafAt(PositionOf(code))->slots[DigitOf(PositionOf(code), 0)].iterator;
    }

    /// The entry at an index in the order of the codes; null when there is none.
    ZRObjectEntry* At(int index) const;

    /// Adds a code that is in the range and not in the index. Throws std::bad_alloc; the code is then not added.
    void Insert(int code, const Slot& slot);

    /// Removes a code that is in the index.
    void Erase(int code) noexcept;

    /// Removes all codes.
    void Clear() noexcept;

private:
    static constexpr unsigned int kBits = 4; // of a position, for each level but the uppermost
    static constexpr std::size_t kSize = std::size_t{1} << kBits;
    static constexpr unsigned int kPositions = 0x20000; // codes with the high word 0xA04F, then those with 0

    struct Leaf {
        std::array<Slot, kSize> slots;
        int count = 0; // codes here
    };
    template <typename Below> struct Table {
        std::array<Below*, kSize> below;
        int count = 0; // codes below
    };
    using Level1 = Table<Leaf>;
    using Level2 = Table<Level1>;

    // For what lookups read while another thread writes it.
    template <typename T> static T* Load(T* const& pointer)
    {
        return std::atomic_ref<T*>(const_cast<T*&>(pointer)).load(std::memory_order_acquire);
    }
    template <typename T> static void Store(T*& pointer, T* value)
    {
        std::atomic_ref<T*>(pointer).store(value, std::memory_order_release);
    }

    static bool IsInRange(int code)
    {
        const int highWord = code & ZRObjectEntry::BASEMASK;
        return highWord == ZRObjectEntry::OBJECTBASE || highWord == 0;
    }
    /// The lowest bit of the high word is set in full codes, which come first, and clear in short ones.
    static unsigned int PositionOf(int code)
    {
        return (static_cast<unsigned int>(code) % kPositions) ^ (kPositions / 2U);
    }
    /// Index of the pointer or slot for a position at a level: 0 for the leaves.
    static std::size_t DigitOf(unsigned int position, unsigned int level)
    {
        return position >> (level * kBits) & (kSize - 1);
    }

    Level2* Level2At(unsigned int position) const { return m_tables[position >> (3 * kBits)]; }
    Level1* Level1At(unsigned int position) const { return Level2At(position)->below[DigitOf(position, 2)]; }
    Leaf* LeafAt(unsigned int position) const { return Level1At(position)->below[DigitOf(position, 1)]; }

    template <typename Below> static Below& Grow(Below*& below, const Below& none);

    // Delete what a pointer points at, with all below it.
    static void Free(Leaf* leaf) noexcept;
    static void Free(Level1* level1) noexcept;
    static void Free(Level2* level2) noexcept;

    // Stand in for what is missing. Never written to, though the pointers to them would allow it.
    static Leaf s_noSlots;
    static Level1 s_noLeaves;
    static Level2 s_noTables;

    std::array<Level2*, (kPositions >> (3 * kBits))> m_tables;
};

} // namespace zr
