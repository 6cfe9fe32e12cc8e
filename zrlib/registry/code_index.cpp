#include "zrlib/registry/code_index.h"

namespace zr {

namespace {

template <typename Table, typename Below> constexpr Table EmptyTable(Below& none)
{
    Table table{};
    table.below.fill(&none);
    return table;
}

/// What hangs on a pointer of a table; makes it first if there is nothing yet.
template <typename Below> Below& Grow(Below*& below, int& used, const Below& none)
{
    if (below == &none) {
        below = new Below(none);
        ++used;
    }
    return *below;
}

/// Deletes what hangs on a pointer if it has become empty.
template <typename Below> void Shrink(Below*& below, int& used, Below& none) noexcept
{
    if (below->used == 0) {
        delete below;
        below = &none;
        --used;
    }
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
        const Leaves* const leaves = tables->below[At(position, 2)];
        const Leaf* const leaf = leaves->below[At(position, 1)];
        const Slot& slot = leaf->slots[At(position, 0)];
        if (slot.entry != nullptr) {
            return slot.place;
        }
        // On to the first position behind the largest thing here that is empty.
        const unsigned int level = tables == &s_noTables ? 3 : leaves == &s_noLeaves ? 2 : leaf == &s_noSlots ? 1 : 0;
        position = ((position >> (level * kBits)) + 1) << (level * kBits);
    }
    return otherwise;
}

void CodeIndex::Insert(int code, const Slot& slot)
{
    const unsigned int position = PositionOf(code);
    Tables& tables = Grow(m_tables[position >> (3 * kBits)], m_used, s_noTables);
    Leaves& leaves = Grow(tables.below[At(position, 2)], tables.used, s_noLeaves);
    Leaf& leaf = Grow(leaves.below[At(position, 1)], leaves.used, s_noSlots);
    leaf.slots[At(position, 0)] = slot;
    ++leaf.used;
}

void CodeIndex::Erase(int code) noexcept
{
    const unsigned int position = PositionOf(code);
    Tables*& tables = m_tables[position >> (3 * kBits)];
    Leaves*& leaves = tables->below[At(position, 2)];
    Leaf*& leaf = leaves->below[At(position, 1)];
    leaf->slots[At(position, 0)] = {};
    --leaf->used;
    Shrink(leaf, leaves->used, s_noSlots);
    Shrink(leaves, tables->used, s_noLeaves);
    Shrink(tables, m_used, s_noTables);
}

void CodeIndex::Clear() noexcept
{
    for (Tables*& tables : m_tables) {
        if (tables == &s_noTables) {
            continue;
        }
        for (Leaves* const leaves : tables->below) {
            if (leaves == &s_noLeaves) {
                continue;
            }
            for (Leaf* const leaf : leaves->below) {
                if (leaf != &s_noSlots) {
                    delete leaf;
                }
            }
            delete leaves;
        }
        delete tables;
        tables = &s_noTables;
    }
    m_used = 0;
}

} // namespace zr
