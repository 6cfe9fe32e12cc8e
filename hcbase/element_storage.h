/// ElementStorage: storage for the elements of the containers, and for them only.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdlib>
#include <memory>
#include <new>
#include <type_traits>

namespace hcbase {

/// A block of elements that grows and shrinks in steps of any size: plain elements are left to the system's realloc,
/// which seldom has to copy them. Elements start with the value T().
template <typename T> class ElementStorage {
public:
    ElementStorage() = default;
    ElementStorage(const ElementStorage&) = delete;
    ElementStorage& operator=(const ElementStorage&) = delete;
    ~ElementStorage() { Free(m_data); }

    /// The elements; null when there are none.
    T* Data() const noexcept { return m_data; }

    int Size() const noexcept { return m_size; }

    /// Changes the number of elements; the lower ones keep their values. Throws std::bad_alloc and is then unchanged.
    void Resize(int size)
    {
        const std::size_t count = static_cast<unsigned int>(size); // which no compiler takes for a negative one
        const int kept = std::min(size, m_size);
        if (size == 0) {
            Free(m_data);
            m_data = nullptr;
        } else if constexpr (kIsPlain) {
            // T may well be a pointer. NOLINTNEXTLINE(bugprone-sizeof-expression)
            void* const data = std::realloc(m_data, count * sizeof(T));
            if (data == nullptr) {
                throw std::bad_alloc();
            }
            m_data = static_cast<T*>(data);
            std::fill(m_data + kept, m_data + size, T());
        } else {
            std::unique_ptr<T[]> data(new T[count]());
            std::move(m_data, m_data + kept, data.get());
            Free(m_data);
            m_data = data.release();
        }
        m_size = size;
    }

    void Swap(ElementStorage& other) noexcept
    {
        std::swap(m_data, other.m_data);
        std::swap(m_size, other.m_size);
    }

private:
    static constexpr bool kIsPlain =
        std::is_trivially_copyable_v<
            T> && std::is_trivially_default_constructible_v<T> && alignof(T) <= alignof(std::max_align_t);

    static void Free(T* data) noexcept
    {
        if constexpr (kIsPlain) {
            std::free(data);
        } else {
            delete[] data;
        }
    }

    T* m_data = nullptr; // owned
    int m_size = 0;
};

} // namespace hcbase
