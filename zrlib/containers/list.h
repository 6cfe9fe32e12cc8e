/// ZRList: a linked list.
/// Folder containers: an array, a stack and a linked list for few elements, and what they are made of.
#pragma once

#include "zrlib/containers/ring.h"

/// A doubly linked list. An iterator stays valid until its own element is erased. Pointers among the elements do not
/// own what they point at.
///
/// Errors: std::bad_alloc; the list is then unchanged. Threads: one object may be read by several threads at once or
/// used by one.
template <typename T> class ZRList {
public:
    using Iterator = typename zr::Ring<T>::Iterator;
    using ConstIterator = typename zr::Ring<T>::ConstIterator;

    /// Appends a copy of `value`.
    void Append(const T& value) { m_ring.InsertBefore(m_ring.End(), value); }

    /// Removes an element and returns the iterator behind it; End() is not removed.
    Iterator Erase(Iterator position) { return m_ring.Erase(position); }

    /// Swaps the elements. Iterators to elements stay valid in the other list; those that are End() stay with their
    /// own.
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
