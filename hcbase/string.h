/// HCString: the string of the system, a value.
#pragma once

#include "hcbase/export.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <string_view>
#include <type_traits>
#if defined(__cpp_impl_three_way_comparison)
#include <compare>
#endif

// The compiler checks the arguments of Format against its format, as those of printf.
#if defined(__MINGW32__)
#define HC_PRINTF_FORMAT(formatPlace, firstPlace) __attribute__((format(gnu_printf, formatPlace, firstPlace)))
#else
#define HC_PRINTF_FORMAT(formatPlace, firstPlace) __attribute__((format(printf, formatPlace, firstPlace)))
#endif

namespace hcbase {

/// Whether a type is one of the standard library's texts of 8-bit characters.
template <typename Text> inline constexpr bool isStandardText =
    std::is_same_v<Text, std::string> || std::is_same_v<Text, std::string_view>;

} // namespace hcbase

/// A zero-terminated text of 8-bit characters that owns its storage.
///
/// Bytes pass through unchanged, so UTF-8 stays UTF-8; lengths count bytes. Texts of up to 39 characters are inside the
/// object and need no heap. Null pointers count as the empty text wherever a text is taken. Copies keep a zero byte
/// that was written through GetBuffer; code that reads the text as a `const char*`, comparisons and messages among it,
/// sees it end there.
///
/// Threads: as for an int, one object may be read by several threads at once or used by one.
/// Errors: std::bad_alloc without memory, std::length_error for a text beyond 2,147,483,646 characters; the object then
/// keeps its text.
class HC_API HCString {
public:
    /// The empty text.
    HCString() noexcept { SetEmpty(); }

    /// A copy of `text`.
    HCString(const char* text);

    HCString(const HCString& other);

    /// Takes the text of `other`, which is empty afterwards.
    HCString(HCString&& other) noexcept;

    ~HCString()
    {
        if (IsOnHeap()) {
            Empty();
        }
    }

    /// Replaces the text by a copy of `text`, which may be a part of this string's own text.
    const HCString& operator=(const char* text);
    const HCString& operator=(const HCString& other);
    HCString& operator=(HCString&& other) noexcept;

    /// The zero-terminated text. Valid until the string is changed or destroyed.
    operator const char*() const noexcept { return IsOnHeap() ? m_storage.heap : m_storage.local; }

    /// Replaces the text by the result of formatting as printf does; this string's own text may be among the arguments.
    /// A null format, or one that printf refuses, yields the empty text. errno is preserved, and "%m" shows it.
    void Format(const char* format, ...) HC_PRINTF_FORMAT(2, 3);

    /// Below, equal to or above 0 when this text comes before, is equal to or comes after `text` in the order of its
    /// bytes.
    [[nodiscard]] int Compare(const char* text) const noexcept;

    /// As Compare, with the letters A to Z equal to a to z, in every locale.
    [[nodiscard]] int CompareNoCase(const char* text) const noexcept;

    /// Makes the text empty and frees its memory.
    void Empty() noexcept;

    /// The number of characters (bytes).
    [[nodiscard]] int GetLength() const noexcept { return m_storage.sizes.length; }

    // Among the standard types: ToString() copies the text; View() and the range of characters refer to it and are
    // valid until the string is changed or destroyed.

    /// A copy of `text`, zero bytes included.
    explicit HCString(std::string_view text)
        : HCString()
    {
        Assign(text.data(), text.size());
    }

    /// Replaces the text by a copy of a std::string or std::string_view.
    template <typename Text, typename = std::enable_if_t<hcbase::isStandardText<Text>>>
    const HCString& operator=(const Text& text)
    {
        Assign(text.data(), text.size());
        return *this;
    }

    [[nodiscard]] std::string_view View() const noexcept { return {begin(), static_cast<std::size_t>(GetLength())}; }
    [[nodiscard]] std::string ToString() const { return std::string(View()); }
    const char* begin() const noexcept { return *this; }
    const char* end() const noexcept { return begin() + GetLength(); }

    /// Cuts this string to its first `count` characters and returns a copy of them. A count of 0 or below empties it; a
    /// count beyond the length changes nothing. When there is no memory for the copy the string is not cut.
    HCString Left(int count);

    /// Returns writable text with room for at least `minimumLength` characters and the terminator; the present text is
    /// kept. After writing, call ReleaseBuffer before the next use of the string.
    char* GetBuffer(int minimumLength);

    /// Ends GetBuffer and sets the length to `newLength`, at most what there is room for; below 0 the text ends at the
    /// first zero byte.
    void ReleaseBuffer(int newLength = -1) noexcept;

private:
    static constexpr int kLocalSize = 40;

    struct Storage {
        union {
            char local[kLocalSize];
            char* heap;
        };
        // Characters without the terminator. Heap capacity: 0 while the text is inside the object.
        struct Sizes {
            std::int32_t length;
            std::int32_t heapCapacity;
        } sizes;
    };

    bool IsOnHeap() const noexcept { return m_storage.sizes.heapCapacity != 0; }
    char* Text() noexcept { return IsOnHeap() ? m_storage.heap : m_storage.local; }
    int Capacity() const noexcept { return IsOnHeap() ? m_storage.sizes.heapCapacity : kLocalSize - 1; }
    void SetEmpty() noexcept
    {
        m_storage.local[0] = '\0';
        m_storage.sizes = {0, 0};
    }
    void SetLocal(const char* text, std::size_t length) noexcept;
    void Assign(const char* text, std::size_t length);
    void Reserve(std::size_t capacity);

    Storage m_storage;
};

static_assert(sizeof(HCString) == 48, "clients are compiled against this size");

inline void HCString::SetLocal(const char* text, std::size_t length) noexcept
{
    std::memcpy(m_storage.local, text, length);
    m_storage.local[length] = '\0';
    m_storage.sizes = {static_cast<std::int32_t>(length), 0};
}

inline HCString::HCString(const char* text)
{
    if (text == nullptr) {
        text = "";
    }
    const std::size_t length = std::strlen(text);
    if (length < kLocalSize) {
        SetLocal(text, length);
    } else {
        SetEmpty();
        *this = text;
    }
}

inline HCString::HCString(const HCString& other)
    : m_storage(other.m_storage)
{
    if (IsOnHeap()) {
        SetEmpty();
        Assign(other, static_cast<std::size_t>(other.GetLength()));
    }
}

inline HCString::HCString(HCString&& other) noexcept
    : m_storage(other.m_storage)
{
    other.SetEmpty();
}

inline const HCString& HCString::operator=(const HCString& other)
{
    if (IsOnHeap() || other.IsOnHeap()) {
        Assign(other, static_cast<std::size_t>(other.GetLength()));
    } else {
        m_storage = other.m_storage;
    }
    return *this;
}

inline HCString& HCString::operator=(HCString&& other) noexcept
{
    if (this != &other) {
        if (IsOnHeap()) {
            Empty();
        }
        m_storage = other.m_storage;
        other.SetEmpty();
    }
    return *this;
}

namespace hcbase {

template <typename String, typename Text> using IfComparable =
    std::enable_if_t<std::is_same_v<String, HCString> && isStandardText<Text>, int>;

} // namespace hcbase

// Without these, comparisons, and so std::map and std::sort, would compare addresses.
inline bool operator==(const HCString& left, const HCString& right) noexcept { return left.Compare(right) == 0; }
inline bool operator==(const HCString& left, const char* right) noexcept { return left.Compare(right) == 0; }
inline bool operator==(const char* left, const HCString& right) noexcept { return right.Compare(left) == 0; }
inline bool operator!=(const HCString& left, const HCString& right) noexcept { return left.Compare(right) != 0; }
inline bool operator!=(const HCString& left, const char* right) noexcept { return left.Compare(right) != 0; }
inline bool operator!=(const char* left, const HCString& right) noexcept { return right.Compare(left) != 0; }
inline bool operator<(const HCString& left, const HCString& right) noexcept { return left.Compare(right) < 0; }
inline bool operator<(const HCString& left, const char* right) noexcept { return left.Compare(right) < 0; }
inline bool operator<(const char* left, const HCString& right) noexcept { return right.Compare(left) > 0; }
inline bool operator>(const HCString& left, const HCString& right) noexcept { return left.Compare(right) > 0; }
inline bool operator>(const HCString& left, const char* right) noexcept { return left.Compare(right) > 0; }
inline bool operator>(const char* left, const HCString& right) noexcept { return right.Compare(left) < 0; }
inline bool operator<=(const HCString& left, const HCString& right) noexcept { return left.Compare(right) <= 0; }
inline bool operator<=(const HCString& left, const char* right) noexcept { return left.Compare(right) <= 0; }
inline bool operator<=(const char* left, const HCString& right) noexcept { return right.Compare(left) >= 0; }
inline bool operator>=(const HCString& left, const HCString& right) noexcept { return left.Compare(right) >= 0; }
inline bool operator>=(const HCString& left, const char* right) noexcept { return left.Compare(right) >= 0; }
inline bool operator>=(const char* left, const HCString& right) noexcept { return right.Compare(left) <= 0; }

// With the standard library's texts. Neither side is converted to fit.
template <typename String, typename Text, hcbase::IfComparable<String, Text> = 0>
bool operator==(const String& left, const Text& right) noexcept
{
    return std::string_view(static_cast<const char*>(left)) == right;
}
template <typename String, typename Text, hcbase::IfComparable<String, Text> = 0>
bool operator!=(const String& left, const Text& right) noexcept
{
    return !(left == right);
}
template <typename Text, typename String, hcbase::IfComparable<String, Text> = 0>
bool operator==(const Text& left, const String& right) noexcept
{
    return right == left;
}
template <typename Text, typename String, hcbase::IfComparable<String, Text> = 0>
bool operator!=(const Text& left, const String& right) noexcept
{
    return !(right == left);
}
template <typename String, typename Text, hcbase::IfComparable<String, Text> = 0>
bool operator<(const String& left, const Text& right) noexcept
{
    return std::string_view(static_cast<const char*>(left)) < right;
}
template <typename Text, typename String, hcbase::IfComparable<String, Text> = 0>
bool operator<(const Text& left, const String& right) noexcept
{
    return left < std::string_view(static_cast<const char*>(right));
}
template <typename String, typename Text, hcbase::IfComparable<String, Text> = 0>
bool operator>(const String& left, const Text& right) noexcept
{
    return std::string_view(static_cast<const char*>(left)) > right;
}
template <typename Text, typename String, hcbase::IfComparable<String, Text> = 0>
bool operator>(const Text& left, const String& right) noexcept
{
    return left > std::string_view(static_cast<const char*>(right));
}
template <typename String, typename Text, hcbase::IfComparable<String, Text> = 0>
bool operator<=(const String& left, const Text& right) noexcept
{
    return std::string_view(static_cast<const char*>(left)) <= right;
}
template <typename Text, typename String, hcbase::IfComparable<String, Text> = 0>
bool operator<=(const Text& left, const String& right) noexcept
{
    return left <= std::string_view(static_cast<const char*>(right));
}
template <typename String, typename Text, hcbase::IfComparable<String, Text> = 0>
bool operator>=(const String& left, const Text& right) noexcept
{
    return std::string_view(static_cast<const char*>(left)) >= right;
}
template <typename Text, typename String, hcbase::IfComparable<String, Text> = 0>
bool operator>=(const Text& left, const String& right) noexcept
{
    return left >= std::string_view(static_cast<const char*>(right));
}

#if defined(__cpp_impl_three_way_comparison)
// The standard library tries this first for pairs, tuples and vectors.
inline std::strong_ordering operator<=>(const HCString& left, const HCString& right) noexcept
{
    return left.Compare(right) <=> 0;
}
inline std::strong_ordering operator<=>(const HCString& left, const char* right) noexcept
{
    return left.Compare(right) <=> 0;
}
#endif

/// The hash of the text up to its first zero byte, so that equal strings have equal hashes.
template <> struct std::hash<HCString> {
    std::size_t operator()(const HCString& string) const noexcept
    {
        return std::hash<std::string_view>()(static_cast<const char*>(string));
    }
};
