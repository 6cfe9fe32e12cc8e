#include "hcbase/string.h"

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <limits>
#include <stdexcept>

namespace {

constexpr std::size_t kLongestText = std::numeric_limits<std::int32_t>::max() - 1;

/// Most texts of the system fit here, so that formatting needs neither the heap nor a second pass.
constexpr std::size_t kFormatBufferSize = 512;

const char* OrEmpty(const char* text) { return text != nullptr ? text : ""; }

int FoldCase(char character)
{
    const auto byte = static_cast<unsigned char>(character);
    return byte >= 'A' && byte <= 'Z' ? byte + ('a' - 'A') : byte;
}

char* AllocateText(std::size_t capacity)
{
    if (capacity > kLongestText) {
        throw std::length_error("HCString: text too long");
    }
    return new char[capacity + 1];
}

} // namespace

void HCString::Reserve(std::size_t capacity)
{
    if (capacity <= static_cast<std::size_t>(Capacity())) {
        return;
    }
    char* const larger = AllocateText(capacity);
    std::memcpy(larger, Text(), static_cast<std::size_t>(m_storage.sizes.length) + 1);
    if (IsOnHeap()) {
        delete[] m_storage.heap;
    }
    m_storage.heap = larger;
    m_storage.sizes.heapCapacity = static_cast<std::int32_t>(capacity);
}

void HCString::Assign(const char* text, std::size_t length)
{
    if (length > static_cast<std::size_t>(Capacity())) {
        // The text may lie in the storage that is given up, so it is copied first.
        char* const larger = AllocateText(length);
        std::memcpy(larger, text, length);
        if (IsOnHeap()) {
            delete[] m_storage.heap;
        }
        m_storage.heap = larger;
        m_storage.sizes.heapCapacity = static_cast<std::int32_t>(length);
    } else {
        std::memmove(Text(), text, length);
    }
    Text()[length] = '\0';
    m_storage.sizes.length = static_cast<std::int32_t>(length);
}

const HCString& HCString::operator=(const char* text)
{
    text = OrEmpty(text);
    Assign(text, std::strlen(text));
    return *this;
}

void HCString::Format(const char* format, ...)
{
    char buffer[kFormatBufferSize];
    std::va_list arguments;
    va_start(arguments, format);
    errno = 0;
    const int length = format != nullptr ? std::vsnprintf(buffer, sizeof(buffer), format, arguments) : -1;
    va_end(arguments);

    if (length < 0 && errno == EOVERFLOW) {
        throw std::length_error("HCString: text too long");
    }
    if (length < 0) {
        Assign("", 0);
    } else if (static_cast<std::size_t>(length) < sizeof(buffer)) {
        Assign(buffer, static_cast<std::size_t>(length));
    } else {
        // Formatted beside the text that the string has, because that may be one of the arguments.
        HCString formatted;
        formatted.Reserve(static_cast<std::size_t>(length));
        va_start(arguments, format);
        std::vsnprintf(formatted.Text(), static_cast<std::size_t>(length) + 1, format, arguments);
        va_end(arguments);
        formatted.m_storage.sizes.length = length;
        *this = static_cast<HCString&&>(formatted);
    }
}

int HCString::Compare(const char* text) const noexcept { return std::strcmp(*this, OrEmpty(text)); }

int HCString::CompareNoCase(const char* text) const noexcept
{
    const char* left = *this;
    const char* right = OrEmpty(text);
    while (*left != '\0' && FoldCase(*left) == FoldCase(*right)) {
        ++left;
        ++right;
    }
    return FoldCase(*left) - FoldCase(*right);
}

void HCString::Empty() noexcept
{
    if (IsOnHeap()) {
        delete[] m_storage.heap;
    }
    SetEmpty();
}

HCString HCString::Left(int count)
{
    if (count < m_storage.sizes.length) {
        ReleaseBuffer(std::max(count, 0));
    }
    return *this;
}

char* HCString::GetBuffer(int minimumLength)
{
    Reserve(static_cast<std::size_t>(std::max(minimumLength, 0)));
    return Text();
}

void HCString::ReleaseBuffer(int newLength) noexcept
{
    char* const text = Text();
    if (newLength < 0) {
        const void* const end = std::memchr(text, '\0', static_cast<std::size_t>(Capacity()));
        newLength = end != nullptr ? static_cast<int>(static_cast<const char*>(end) - text) : Capacity();
    }
    m_storage.sizes.length = std::min(newLength, Capacity());
    text[m_storage.sizes.length] = '\0';
}
