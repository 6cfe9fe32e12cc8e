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

/// The table in which the code after `index` others is found; `index` becomes the number of others within that table.
template <typename Tables> auto* TableWith(const Tables& tables, int& index)
{
    auto table = tables.begin();
    for (; index >= (*table)->count; ++table) {
        index -= (*table)->count;
    }
    return *table;
}

} // namespace

constinit CodeIndex::Leaf CodeIndex::s_noSlots{};
constinit CodeIndex::Level1 CodeIndex::s_noLeaves = EmptyTable<Level1>(s_noSlots);
constinit CodeIndex::Level2 CodeIndex::s_noTables = EmptyTable<Level2>(s_noLeaves);

CodeIndex::Iterator CodeIndex::Next(int code, Iterator otherwise) const
{
    unsigned int position = PositionOf(code) + 1;
    while (position < kPositions) {
        const Leaf* const leaf = LeafAt(position);
        const Slot& slot = leaf->slots[DigitOf(position, 0)];
        if (slot.entry != nullptr) {
            return slot.iterator;
        }
        unsigned int emptyLevel = 0; // of the largest empty part here
        if (Level2At(position)->count == 0) {
            emptyLevel = 3;
        } else if (Level1At(position)->count == 0) {
            emptyLevel = 2;
        } else if (leaf->count == 0) {
            emptyLevel = 1;
        }
        position = ((position >> (emptyLevel * kBits)) + 1) << (emptyLevel * kBits);
    }
    return otherwise;
}

ZRObjectEntry* CodeIndex::At(int index) const
{
    int count = 0;
    for (const Level2* const level2 : m_tables) {
        count += level2->count;
    }
    if (index < 0 || index >= count) {
        return nullptr;
    }
    const Leaf* const leaf = TableWith(TableWith(TableWith(m_tables, index)->below, index)->below, index);
    const auto isTaken = [&index](const Slot& slot) { return slot.entry != nullptr && index-- == 0; };
    return std::find_if(leaf->slots.begin(), leaf->slots.end(), isTaken)->entry;
}

/// What a pointer of a table points at; creates it first if there is nothing yet.
template <typename Below> Below& CodeIndex::Grow(Below*& below, const Below& none)
{
    if (below == &none) {
        Store(below, new Below(none));
    }
    return *below;
}

void CodeIndex::Insert(int code, const Slot& slot)
{
    const unsigned int position = PositionOf(code);
    Level2& level2 = Grow(m_tables[position >> (3 * kBits)], s_noTables);
    Level1& level1 = Grow(level2.below[DigitOf(position, 2)], s_noLeaves);
    Leaf& leaf = Grow(level1.below[DigitOf(position, 1)], s_noSlots);
    Slot& free = leaf.slots[DigitOf(position, 0)];
    free.iterator = slot.iterator;
    Store(free.entry, slot.entry);
    ++leaf.count;
    ++level1.count;
    ++level2.count;
}

void CodeIndex::Erase(int code) noexcept
{
    const unsigned int position = PositionOf(code);
    Store<ZRObjectEntry>(LeafAt(position)->slots[DigitOf(position, 0)].entry, nullptr);
    --LeafAt(position)->count;
    --Level1At(position)->count;
    --Level2At(position)->count;
}

void CodeIndex::Clear() noexcept
{
    while (const ZRObjectEntry* const entry = At(0)) {
        Erase(entry->GetID());
    }
}

CodeIndex::~CodeIndex()
{
    for (Level2* const level2 : m_tables) {
        Free(level2);
    }
}

void CodeIndex::Free(Leaf* leaf) noexcept
{
    if (leaf != &s_noSlots) {
        delete leaf;
    }
}

void CodeIndex::Free(Level1* level1) noexcept
{
    if (level1 != &s_noLeaves) {
        for (Leaf* const leaf : level1->below) {
            Free(leaf);
        }
        delete level1;
    }
}

void CodeIndex::Free(Level2* level2) noexcept
{
    if (level2 != &s_noTables) {
        for (Level1* const level1 : level2->below) {
            Free(level1);
        }
        delete level2;
    }
}

} // namespace zr
