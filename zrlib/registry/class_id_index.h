/// ClassIDIndex: finds the objects of a registry by their class IDs. Not exported.
#pragma once

#include "zrlib/registry/code_index.h"
#include "zrlib/registry/object_entry.h"

#include <cstddef>
#include <cstdint>
#include <vector>

namespace zr {

/// A hash table with open addressing from class IDs to object codes, case-insensitive.
class ClassIDIndex {
public:
    /// Throws std::bad_alloc.
    ClassIDIndex();

    /// The entry with a class ID among `objects`; null when there is none.
    const ZRObjectEntry* Find(const char* classID, const CodeIndex& objects) const;

    /// Makes room for one more. Throws std::bad_alloc; the index is then unchanged.
    void ReserveOne();

    /// Adds the code of an object that has a class ID, and so is not 0. Needs room.
    void Insert(const char* classID, int code) noexcept;

    /// A no-op when the code is not there.
    void Erase(const char* classID, int code) noexcept;

    /// Removes all.
    void Clear() noexcept;

private:
    struct Slot {
        int code; // 0 in a free slot
        std::uint32_t hash;
    };

    explicit ClassIDIndex(std::size_t size);

    std::size_t HomeOf(std::uint32_t hash) const { return hash & (m_slots.size() - 1); }
    std::size_t Following(std::size_t place) const { return (place + 1) & (m_slots.size() - 1); }
    void Insert(const Slot& slot) noexcept;

    std::vector<Slot> m_slots; // a power of two; at least half are free, so that few are probed
    std::size_t m_count = 0;
};

} // namespace zr
