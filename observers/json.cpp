#include "json.h"

#include <cstdint>

namespace zrobservers {

namespace {

/// Number of bytes of the UTF-8 character at the start of a text that is not empty; 0 when there is none (The Unicode
/// Standard, version 15, table 3-7).
std::size_t LengthOfCharacter(std::string_view text) noexcept
{
    const auto byte = [text](std::size_t index) { return static_cast<unsigned char>(text[index]); };
    const unsigned char first = byte(0);
    if (first < 0x80) {
        return 1;
    }
    const std::size_t length = first >= 0xC2 && first < 0xE0 ? 2 : first >= 0xE0 && first < 0xF0 ? 3 : 4;
    if (first < 0xC2 || first > 0xF4 || text.size() < length) {
        return 0;
    }
    const unsigned char least = first == 0xE0 ? 0xA0 : first == 0xF0 ? 0x90 : 0x80;
    const unsigned char most = first == 0xED ? 0x9F : first == 0xF4 ? 0x8F : 0xBF;
    if (byte(1) < least || byte(1) > most) {
        return 0;
    }
    for (std::size_t index = 2; index < length; ++index) {
        if ((byte(index) & 0xC0U) != 0x80U) {
            return 0;
        }
    }
    return length;
}

} // namespace

bool IsValidUtf8(std::string_view text) noexcept
{
    while (!text.empty()) {
        std::uint64_t eight = 0;
        if (text.size() >= sizeof(eight)) {
            std::memcpy(&eight, text.data(), sizeof(eight));
            if ((eight & 0x8080808080808080U) == 0) { // most texts are ASCII
                text.remove_prefix(sizeof(eight));
                continue;
            }
        }
        const std::size_t length = LengthOfCharacter(text);
        if (length == 0) {
            return false;
        }
        text.remove_prefix(length);
    }
    return true;
}

std::string ToValidUtf8(std::string_view text)
{
    std::string valid;
    while (!text.empty()) {
        const std::size_t length = LengthOfCharacter(text);
        valid += length != 0 ? text.substr(0, length) : "\xEF\xBF\xBD";
        text.remove_prefix(length != 0 ? length : 1);
    }
    return valid;
}

} // namespace zrobservers
