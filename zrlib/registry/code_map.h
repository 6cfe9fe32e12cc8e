/// ZRCodeMap: values sorted by an integer key.
#pragma once

#include "zrlib/containers/ring.h"

#include <utility>

/// Pairs of a key and a value in ascending order of the keys, which are unique.
///
/// The pairs hang on a ring: a reference to a value and an iterator stay valid until their own pair is erased, whatever
/// else is inserted and erased. A key is searched for from the first pair, in linear time. Inserting and erasing at an
/// iterator takes constant time, and so does inserting a key behind the last one.
///
/// Errors: std::bad_alloc; the map is then unchanged. Threads: one object may be read by several threads at once or
/// used by one.
template <typename T> class ZRCodeMap {
public:
    /// `first` is the key, `second` the value.
    using Pair = std::pair<const int, T>;
    using Iterator = typename zr::Ring<Pair>::Iterator;
    using ConstIterator = typename zr::Ring<Pair>::ConstIterator;

    void Swap(ZRCodeMap& other) noexcept { m_ring.Swap(other.m_ring); }

    Iterator Begin() { return m_ring.Begin(); }
    Iterator End() { return m_ring.End(); }
    ConstIterator Begin() const { return m_ring.Begin(); }
    ConstIterator End() const { return m_ring.End(); }

    // For range-based loops.
    Iterator begin() { return Begin(); }
    Iterator end() { return End(); }
    ConstIterator begin() const { return Begin(); }
    ConstIterator end() const { return End(); }

    [[nodiscard]] int GetCount() const noexcept { return m_ring.GetCount(); }

    /// The pair with the key; End() when there is none.
    [[nodiscard]] Iterator Find(int key) { return FindIn(*this, key); }
    [[nodiscard]] ConstIterator Find(int key) const { return FindIn(*this, key); }

    /// Adds a pair and returns its iterator and true. If the key is there already, nothing changes: End() and false.
    std::pair<Iterator, bool> Insert(int key, const T& value) { return Insert(FirstFrom(*this, key), key, value); }

    /// The same for a caller that knows the first pair whose key is not less than `key`, End() when there is none. Any
    /// other iterator breaks the order.
    std::pair<Iterator, bool> Insert(Iterator next, int key, const T& value)
    {
        if (next != End() && next->first == key) {
            return {End(), false};
        }
        return {m_ring.InsertBefore(next, Pair(key, value)), true};
    }

    /// The value of the key, which is first inserted with the value T() if it is not there.
    T& operator[](int key)
    {
        const Iterator position = FirstFrom(*this, key);
        return position != End() && position->first == key ? position->second
                                                           : Insert(position, key, T()).first->second;
    }

    /// Removes a pair. Returns 1, or 0 if the key is not there.
    char Erase(int key)
    {
        const Iterator position = Find(key);
        if (position == End()) {
            return 0;
        }
        Erase(position);
        return 1;
    }

    /// Removes the pair at an iterator; End() is not removed.
    void Erase(Iterator position) { m_ring.Erase(position); }

    void Clear() { m_ring.Clear(); }

private:
    /// The first pair whose key is not less than `key`.
    template <typename Map> static auto FirstFrom(Map& map, int key)
    {
        auto position = map.End();
        if (map.GetCount() > 0 && std::prev(position)->first >= key) {
            for (position = map.Begin(); position->first < key;) {
                ++position;
            }
        }
        return position;
    }

    template <typename Map> static auto FindIn(Map& map, int key)
    {
        const auto position = FirstFrom(map, key);
        return position != map.End() && position->first == key ? position : map.End();
    }

    zr::Ring<Pair> m_ring;
};
