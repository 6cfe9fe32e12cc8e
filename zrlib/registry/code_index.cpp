#include "zrlib/registry/code_index.h"

#include <algorithm>

namespace zr {

namespace {

template <typename Table, typename Below> constexpr Table EmptyTable(Below& none)
{
    Table table{};
    table.below.fill(&none);
    return table;
}

/// What hangs on a pointer of a table; makes it first if there is nothing yet.
template <typename Below> Below& Grow(Below*& below, const Below& none)
{
    if (below == &none) {
        below = new Below(none);
    }
    return *below;
}

/// The place in which the code after `index` others is found; `index` becomes the number of others within that place.
template <typename Places> auto* PlaceAt(const Places& places, int& index)
{
    auto place = places.begin();
    for (; index >= (*place)->count; ++place) {
        index -= (*place)->count;
    }
    return *place;
}

} // namespace

constinit CodeIndex::Leaf CodeIndex::s_noSlots{};
constinit CodeIndex::Leaves CodeIndex::s_noLeaves = EmptyTable<Leaves>(s_noSlots);
constinit CodeIndex::Tables CodeIndex::s_noTables = EmptyTable<Tables>(s_noLeaves);

CodeIndex::Place CodeIndex::Next(int code, Place otherwise) const
{
    unsigned int position = PositionOf(code) + 1;
    while (position < kPositions) {
        const Tables* const tables = TablesAt(position);
        const Leaves* const leaves = tables->below[DigitOf(position, 2)];
        const Leaf* const leaf = leaves->below[DigitOf(position, 1)];
        const Slot& slot = leaf->slots[DigitOf(position, 0)];
        if (slot.entry != nullptr) {
            return slot.place;
        }
        // On to the first position behind the largest thing here that is empty.
        const unsigned int level = tables == &s_noTables ? 3 : leaves == &s_noLeaves ? 2 : leaf == &s_noSlots ? 1 : 0;
        position = ((position >> (level * kBits)) + 1) << (level * kBits);
    }
    return otherwise;
}

ZRObjectEntry* CodeIndex::At(int index) const
{
    int count = 0;
    for (const Tables* const tables : m_tables) {
        count += tables->count;
    }
    if (index < 0 || index >= count) {
        return nullptr;
    }
    const Leaf* const leaf = PlaceAt(PlaceAt(PlaceAt(m_tables, index)->below, index)->below, index);
    const auto isTaken = [&index](const Slot& slot) { return slot.entry != nullptr && index-- == 0; };
    return std::find_if(leaf->slots.begin(), leaf->slots.end(), isTaken)->entry;
}

void CodeIndex::Insert(int code, const Slot& slot)
{
    const unsigned int position = PositionOf(code);
    // If memory runs out on the way, the tables that were made stay, empty, until they are needed or their owner goes.
    Tables& tables = Grow(m_tables[position >> (3 * kBits)], s_noTables);
    Leaves& leaves = Grow(tables.below[DigitOf(position, 2)], s_noLeaves);
    Leaf& leaf = Grow(leaves.below[DigitOf(position, 1)], s_noSlots);
    leaf.slots[DigitOf(position, 0)] = slot;
    ++leaf.count;
    ++leaves.count;
    ++tables.count;
}

void CodeIndex::Erase(int code) noexcept
{
    const unsigned int position = PositionOf(code);
    Tables*& tables = m_tables[position >> (3 * kBits)];
    Leaves*& leaves = tables->below[DigitOf(position, 2)];
    Leaf*& leaf = leaves->below[DigitOf(position, 1)];
    leaf->slots[DigitOf(position, 0)] = {};
    const bool isLastOfLeaf = --leaf->count == 0;
    const bool isLastOfLeaves = --leaves->count == 0;
    const bool isLastOfTables = --tables->count == 0;
    if (isLastOfTables) {
        Free(tables);
    } else if (isLastOfLeaves) {
        Free(leaves);
    } else if (isLastOfLeaf) {
        Free(leaf);
    }
}

CodeIndex::~CodeIndex()
{
    for (Tables*& tables : m_tables) {
        Free(tables);
    }
}

void CodeIndex::Free(Leaf*& leaf) noexcept
{
    if (leaf != &s_noSlots) {
        delete leaf;
        leaf = &s_noSlots;
    }
}

void CodeIndex::Free(Leaves*& leaves) noexcept
{
    if (leaves != &s_noLeaves) {
        for (Leaf*& leaf : leaves->below) {
            Free(leaf);
        }
        delete leaves;
        leaves = &s_noLeaves;
    }
}

void CodeIndex::Free(Tables*& tables) noexcept
{
    if (tables != &s_noTables) {
        for (Leaves*& leaves : tables->below) {
            Free(leaves);
        }
        delete tables;
        tables = &s_noTables;
    }
}

} // namespace zr
