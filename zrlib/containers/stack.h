/// ZRStack: a growing stack.
#pragma once

#include "hcbase/element_storage.h"

#include <algorithm>
#include <climits>
#include <stdexcept>
#include <utility>

/// A stack that grows in steps of 64 elements and never shrinks by itself. Elements are plain values: they are moved by
/// assignment, and pointers among them do not own what they point at.
///
/// Truth values are 1 and 0. Errors: std::bad_alloc without memory, std::length_error beyond 2,147,483,647 elements;
/// the stack is then unchanged. Threads: one object may be read by several threads at once or used by one.
template <typename T> class ZRStack {
public:
    ZRStack() = default;

    /// The copy's capacity is what its elements need, in whole steps.
    ZRStack(const ZRStack& other)
        : m_nGrowBy(other.m_nGrowBy)
    {
        const int steps = other.GetCount() / m_nGrowBy + (other.GetCount() % m_nGrowBy != 0 ? 1 : 0);
        m_storage.Resize(steps <= INT_MAX / m_nGrowBy ? steps * m_nGrowBy : INT_MAX);
        const int readable = std::min(other.GetCount(), other.GetCapacity());
        std::copy(other.m_storage.Data(), other.m_storage.Data() + readable, m_storage.Data());
        m_nTop = other.m_nTop;
        m_nCutFrom = other.m_nCutFrom;
        m_nCutTo = other.m_nCutTo;
    }

    ZRStack& operator=(const ZRStack& other)
    {
        if (this != &other) {
            ZRStack copy(other);
            Swap(copy);
        }
        return *this;
    }

    /// Takes the elements of `other`, which is empty afterwards.
    ZRStack(ZRStack&& other) noexcept { Swap(other); }
    ZRStack& operator=(ZRStack&& other) noexcept
    {
        ZRStack taken(std::move(other));
        Swap(taken);
        return *this;
    }

    virtual ~ZRStack() = default;

    void Swap(ZRStack& other) noexcept
    {
        m_storage.Swap(other.m_storage);
        std::swap(m_nGrowBy, other.m_nGrowBy);
        std::swap(m_nTop, other.m_nTop);
        std::swap(m_nCutFrom, other.m_nCutFrom);
        std::swap(m_nCutTo, other.m_nCutTo);
    }

    // For range-based loops and algorithms: from bottom to top, without the elements that were cut off.
    T* begin() { return m_storage.Data(); }
    T* end() { return begin() + Readable(); }
    const T* begin() const { return m_storage.Data(); }
    const T* end() const { return begin() + Readable(); }

    /// Makes room for exactly `capacity` elements. 0 also empties the stack; a negative number has no effect. A
    /// capacity below the number of elements cuts off the upper ones: they still count, but reading or popping one
    /// returns 0, and only a capacity of 0 removes them.
    void SetCapacity(int capacity)
    {
        if (capacity < 0) {
            return;
        }
        if (capacity != m_storage.Size()) {
            m_storage.Resize(capacity);
        }
        if (capacity == 0) {
            m_nTop = -1;
            m_nCutFrom = INT_MAX;
        } else if (m_nTop >= capacity) {
            m_nCutFrom = std::min(m_nCutFrom, capacity);
            m_nCutTo = m_nTop;
        }
    }

    /// The number of elements that there is room for.
    [[nodiscard]] int GetCapacity() const { return m_storage.Size(); }

    /// Puts a value on top.
    void Push(T value)
    {
        const int capacity = GetCapacity();
        if (m_nTop + 1 >= capacity) {
            if (m_nTop >= INT_MAX - 1) {
                throw std::length_error("ZRStack::Push");
            }
            const int larger = capacity <= INT_MAX - m_nGrowBy ? capacity + m_nGrowBy : INT_MAX;
            SetCapacity(std::max(larger, m_nTop + 2)); // one step is too little after a deep cut
        }
        m_storage.Data()[++m_nTop] = std::move(value);
    }

    /// Removes the top element and stores it in `value`. Returns 1; 0 on an empty stack, which leaves `value`
    /// unchanged.
    char Pop(T& value)
    {
        if (Peek(value) == 0) {
            return 0;
        }
        --m_nTop;
        return 1;
    }

    /// Stores the top element in `value`. Returns 1; 0 on an empty stack, which leaves `value` unchanged.
    char Peek(T& value) const { return PeekAt(m_nTop, value); }

    /// Stores the element at an index, counted from 0 at the bottom, in `value`. Returns 1; 0 when there is none, which
    /// leaves `value` unchanged.
    char PeekAt(int index, T& value) const
    {
        const bool isCutOff = index >= m_nCutFrom && index <= m_nCutTo;
        if (index < 0 || index > m_nTop || isCutOff) {
            return 0;
        }
        value = m_storage.Data()[index];
        return 1;
    }

    [[nodiscard]] int GetCount() const { return m_nTop + 1; }

private:
    /// The number of elements, counted from the bottom, that can be read.
    int Readable() const { return std::min(GetCount(), std::min(m_nCutFrom, GetCapacity())); }

    hcbase::ElementStorage<T> m_storage;
    int m_nGrowBy = 64;
    int m_nTop = -1; // index of the top element

    // Indices of the first and last element that were cut off.
    int m_nCutFrom = INT_MAX;
    int m_nCutTo = -1;
};
