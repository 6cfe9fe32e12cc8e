#include "hcbase/string.h"

#include "hcbase/system/keep_errno.h"

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstdarg>
#include <cstdio>
#include <limits>
#include <stdexcept>
#include <system_error>

namespace {

constexpr std::size_t kLongestText = std::numeric_limits<std::int32_t>::max() - 1;

/// Large enough for most texts, so that formatting needs neither the heap nor a second pass.
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

/// Writes a number in upper-case digits, with leading zeros up to a width of at most 9. Returns the number of
/// characters.
std::size_t PutHexadecimal(char (&digits)[9], unsigned int number, std::size_t width)
{
    std::size_t length = 0;
    for (unsigned int rest = number; rest != 0 || length == 0; rest >>= 4U) {
        ++length;
    }
    length = std::max(length, width);
    for (std::size_t index = length; index > 0; --index, number >>= 4U) {
        digits[index - 1] = "0123456789ABCDEF"[number & 15U];
    }
    return length;
}

/// Formats what needs no more than %d, %u, %s, %c, %X, %01X to %09X and %%, several times faster than the standard
/// library. False when there is anything else or the text does not fit; the content of the buffer is then meaningless.
bool FormatPlainly(char* buffer, std::size_t size, const char* format, std::va_list arguments, std::size_t& length)
{
    char* out = buffer;
    char* const end = buffer + size;
    const auto put = [&out, end](const char* text, std::size_t count) {
        const bool fits = count <= static_cast<std::size_t>(end - out);
        if (fits) {
            std::memcpy(out, text, count);
            out += count;
        }
        return fits;
    };
    const auto putNumber = [&out, end](auto number) {
        const std::to_chars_result result = std::to_chars(out, end, number);
        out = result.ptr;
        return result.ec == std::errc();
    };
    const auto putText = [&put](const char* text) { return text != nullptr && put(text, std::strlen(text)); };
    while (true) {
        for (; *format != '%' && *format != '\0'; ++format) { // most pieces are too short for a call
            if (out == end) {
                return false;
            }
            *out++ = *format;
        }
        if (*format == '\0') {
            length = static_cast<std::size_t>(out - buffer);
            return true;
        }
        bool isDone = false;
        const char conversion = format[1];
        if (conversion == 'd') {
            isDone = putNumber(va_arg(arguments, int));
        } else if (conversion == 'u') {
            isDone = putNumber(va_arg(arguments, unsigned int));
        } else if (conversion == 's') {
            isDone = putText(va_arg(arguments, const char*));
        } else if (conversion == 'c') {
            const char character = static_cast<char>(va_arg(arguments, int));
            isDone = put(&character, 1);
        } else if (conversion == '%') {
            isDone = put("%", 1);
        } else {
            const bool hasWidth = conversion == '0' && format[2] >= '1' && format[2] <= '9';
            const std::size_t width = hasWidth ? static_cast<std::size_t>(format[2] - '0') : 0;
            format += hasWidth ? 2 : 0;
            char digits[9];
            isDone = format[1] == 'X' && put(digits, PutHexadecimal(digits, va_arg(arguments, unsigned int), width));
        }
        if (!isDone) {
            return false;
        }
        format += 2;
    }
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
        // The text may lie in the storage that is about to be freed, so it is copied first.
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
    if (format != nullptr) {
        std::size_t plainLength = 0;
        va_start(arguments, format);
        const bool isPlain = FormatPlainly(buffer, sizeof(buffer), format, arguments, plainLength);
        va_end(arguments);
        if (isPlain) {
            Assign(buffer, plainLength);
            return;
        }
    }
    const hcbase::system::KeepErrno keep;
    va_start(arguments, format);
    const int length = format != nullptr ? std::vsnprintf(buffer, sizeof(buffer), format, arguments) : -1;
    va_end(arguments);

    if (length < 0) {
        if (format != nullptr && errno == EOVERFLOW) {
            throw std::length_error("HCString: text too long");
        }
        Assign("", 0);
    } else if (static_cast<std::size_t>(length) < sizeof(buffer)) {
        Assign(buffer, static_cast<std::size_t>(length));
    } else {
        // Formatted into a new string, because the present text may be one of the arguments.
        HCString formatted;
        formatted.Reserve(static_cast<std::size_t>(length));
        errno = keep.Value(); // "%m" is among the conversions
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
    HCString first; // first, so that this string keeps its text when there is no memory for the copy
    first.Assign(Text(), static_cast<std::size_t>(std::clamp(count, 0, GetLength())));
    ReleaseBuffer(first.GetLength());
    return first;
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
