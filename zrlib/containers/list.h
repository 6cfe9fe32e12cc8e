/// ZRList: a linked list.
#pragma once

#include "zrlib/containers/ring.h"

/// A doubly linked list. An iterator is valid until its own element is erased. What pointers among the elements point
/// at is not owned.
///
/// Errors: std::bad_alloc; the list then is as it was. Threads: one object may be read by
/// several threads at once or used by one.
template <typename T> class ZRList {
public:
    using Iterator = typename zr::Ring<T>::Iterator;
    using ConstIterator = typename zr::Ring<T>::ConstIterator;

    /// Adds a copy of `value` behind the others.
    void Append(const T& value) { m_ring.InsertBefore(m_ring.End(), value); }

    /// Removes an element. Gives the place behind it; End() is not removed.
    Iterator Erase(Iterator place) { return m_ring.Erase(place); }

    /// End() of either list is not that of the other afterwards.
    void Swap(ZRList& other) noexcept { m_ring.Swap(other.m_ring); }

    [[nodiscard]] int GetCount() const noexcept { return m_ring.GetCount(); }

    Iterator Begin() { return m_ring.Begin(); }
    Iterator End() { return m_ring.End(); }
    ConstIterator Begin() const { return m_ring.Begin(); }
    ConstIterator End() const { return m_ring.End(); }

    // For range-based loops.
    Iterator begin() { return Begin(); }
    Iterator end() { return End(); }
    ConstIterator begin() const { return Begin(); }
    ConstIterator end() const { return End(); }

private:
    zr::Ring<T> m_ring;
};
