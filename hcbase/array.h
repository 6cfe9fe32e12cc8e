/// HCArray: an array of exactly the requested size.
#pragma once

#include "hcbase/element_storage.h"

#include <algorithm>
#include <climits>
#include <stdexcept>
#include <utility>

// The element that stands in for those outside the bounds has hidden visibility: as a unique symbol, it would prevent
// dlclose from unmapping the library that defines it.
#if defined(_WIN32)
#define HC_NOT_SHARED
#else
#define HC_NOT_SHARED __attribute__((visibility("hidden")))
#endif

/// An array whose storage has room for exactly the requested number of elements. Elements are plain values: they are
/// moved by assignment, and pointers among them do not own what they point at. A pointer or reference to an element is
/// valid until the next SetSize or Append.
///
/// Errors: std::bad_alloc without memory, std::length_error beyond 2,147,483,647 elements; the array then keeps its
/// elements. Threads: one object may be read by several threads at once or used by one.
template <typename T> class HCArray {
public:
    HCArray() = default;

    /// The copy has room for the elements of `other` and no more.
    HCArray(const HCArray& other)
        : m_nGrowBy(other.m_nGrowBy)
    {
        m_storage.Resize(other.m_nSize);
        m_nSize = other.m_nSize;
        std::copy(other.m_storage.Data(), other.m_storage.Data() + m_nSize, m_storage.Data());
    }

    HCArray& operator=(const HCArray& other)
    {
        if (this != &other) {
            HCArray copy(other);
            Swap(copy);
        }
        return *this;
    }

    /// Takes the elements of `other`, which is empty afterwards.
    HCArray(HCArray&& other) noexcept { Swap(other); }
    HCArray& operator=(HCArray&& other) noexcept
    {
        HCArray taken(std::move(other));
        Swap(taken);
        return *this;
    }

    virtual ~HCArray() = default;

    /// Changes the number of elements, and the storage with it: unless `newSize` is the capacity already, the elements
    /// move to storage of that size. New elements have the value T(). A size of 0 frees the storage; a negative one
    /// leaves size and storage unchanged.
    ///
    /// growBy: a number stored with the array; below 1 it counts as 10. It does not affect the storage.
    void SetSize(int newSize, int growBy)
    {
        m_nGrowBy = growBy >= 1 ? growBy : kDefaultGrowBy;
        if (newSize < 0) {
            return;
        }
        const int removed = std::min(newSize, m_storage.Size()); // end of those that RemoveAt has left in the storage
        if (newSize != m_storage.Size()) {
            m_storage.Resize(newSize);
        }
        for (int index = m_nSize; index < removed; ++index) {
            m_storage.Data()[index] = T();
        }
        m_nSize = newSize;
    }

    void Swap(HCArray& other) noexcept
    {
        m_storage.Swap(other.m_storage);
        std::swap(m_nSize, other.m_nSize);
        std::swap(m_nGrowBy, other.m_nGrowBy);
    }

    /// The number of elements.
    [[nodiscard]] int GetSize() const noexcept { return m_nSize; }

    /// The elements; null when there are none.
    [[nodiscard]] T* GetData() { return m_nSize > 0 ? m_storage.Data() : nullptr; }
    [[nodiscard]] const T* GetData() const { return m_nSize > 0 ? m_storage.Data() : nullptr; }

    // For range-based loops and algorithms.
    T* begin() { return m_storage.Data(); }
    T* end() { return begin() + m_nSize; }
    const T* begin() const { return m_storage.Data(); }
    const T* end() const { return begin() + m_nSize; }

    /// The element at an index from 0. Outside the bounds, an element with the value T(), which must not be written to.
    [[nodiscard]] T& GetAt(int index) { return IsInBounds(index) ? m_storage.Data()[index] : s_none; }
    [[nodiscard]] const T& GetAt(int index) const { return IsInBounds(index) ? m_storage.Data()[index] : s_none; }

    /// The lowest index with an element equal to `value`; -1 when there is none.
    [[nodiscard]] int Find(T value) const
    {
        for (int index = 0; index < m_nSize; ++index) {
            if (m_storage.Data()[index] == value) {
                return index;
            }
        }
        return -1;
    }

    /// Appends an element.
    void Append(T value)
    {
        if (m_nSize == INT_MAX) {
            throw std::length_error("HCArray::Append");
        }
        SetSize(m_nSize + 1, m_nGrowBy);
        m_storage.Data()[m_nSize - 1] = std::move(value);
    }

    /// Removes an element; those behind it move down by one. The storage is unchanged. A no-op outside the bounds.
    void RemoveAt(int index)
    {
        if (IsInBounds(index)) {
            T* const data = m_storage.Data();
            std::move(data + index + 1, data + m_nSize, data + index);
            --m_nSize;
        }
    }

protected:
    /// The number of elements that there is room for.
    [[nodiscard]] int GetCapacity() const { return m_storage.Size(); }
    [[nodiscard]] int GetGrowBy() const noexcept { return m_nGrowBy; }

private:
    static constexpr int kDefaultGrowBy = 10;

    HC_NOT_SHARED static T s_none;

    bool IsInBounds(int index) const { return index >= 0 && index < m_nSize; }

    int m_nSize = 0;
    hcbase::ElementStorage<T> m_storage;
    int m_nGrowBy = kDefaultGrowBy;
};

template <typename T> T HCArray<T>::s_none{};
