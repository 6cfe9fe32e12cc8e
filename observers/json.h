/// Writing JSON.
#pragma once

#include "hcbase/string.h"

#if defined(__SSE2__)
#define RAPIDJSON_SSE2 // looks at sixteen characters at once
#endif

#include <charconv>
#include <cmath>
#include <cstring>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <string>
#include <string_view>

namespace zrobservers {

/// The text with each byte that is no part of a character of UTF-8 replaced by U+FFFD.
std::string ToValidUtf8(std::string_view text);
bool IsValidUtf8(std::string_view text) noexcept;

/// One object. The names of its members are literals of plain characters; so nothing of them is looked at again, which
/// is a good part of what a short object costs.
class JsonObject {
public:
    using Writer = rapidjson::Writer<rapidjson::StringBuffer>;

    /// before: what is put in front of the object.
    template <std::size_t length>
    JsonObject(Writer& writer, rapidjson::StringBuffer& buffer, const char (&before)[length])
        : m_writer(writer)
        , m_buffer(buffer)
    {
        Put(before, length - 1);
    }
    ~JsonObject() { EndObject(); }
    JsonObject(const JsonObject&) = delete;
    JsonObject& operator=(const JsonObject&) = delete;

    /// A text from outside.
    template <std::size_t length> JsonObject& Add(const char (&name)[length], std::string_view text)
    {
        Key(name);
        m_writer.Reset(m_buffer);
        if (IsValidUtf8(text)) {
            m_writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
        } else {
            const std::string valid = ToValidUtf8(text);
            m_writer.String(valid.data(), static_cast<rapidjson::SizeType>(valid.size()));
        }
        return *this;
    }
    template <std::size_t length> JsonObject& Add(const char (&name)[length], const HCString& text)
    {
        return Add(name, text.View());
    }

    /// A text of plain characters.
    template <std::size_t length> JsonObject& AddPlain(const char (&name)[length], const char* text)
    {
        Key(name);
        m_buffer.Put('"');
        Put(text, std::strlen(text));
        m_buffer.Put('"');
        return *this;
    }

    template <std::size_t length> JsonObject& Add(const char (&name)[length], std::int64_t number)
    {
        Key(name);
        PutNumber(number);
        return *this;
    }
    template <std::size_t length> JsonObject& Add(const char (&name)[length], bool value)
    {
        Key(name);
        Put(value ? "true" : "false", value ? 4 : 5);
        return *this;
    }

    /// JSON has no NaN and no infinity; they become null.
    template <std::size_t length> JsonObject& Add(const char (&name)[length], double number)
    {
        Key(name);
        m_writer.Reset(m_buffer);
        std::isfinite(number) ? m_writer.Double(number) : m_writer.Null();
        return *this;
    }

    /// Thousandths of a unit, which are not negative.
    template <std::size_t length> JsonObject& AddThousandths(const char (&name)[length], std::int64_t thousandths)
    {
        Key(name);
        PutNumber(thousandths / 1000);
        const auto rest = static_cast<int>(thousandths % 1000);
        char* const out = m_buffer.Push(4);
        out[0] = '.';
        out[1] = static_cast<char>('0' + rest / 100);
        out[2] = static_cast<char>('0' + rest / 10 % 10);
        out[3] = static_cast<char>('0' + rest % 10);
        return *this;
    }

    /// What is added next are members of an object of its own, until EndObject; at least one.
    template <std::size_t length> JsonObject& StartObject(const char (&name)[length])
    {
        Key(name);
        m_isFirst = true;
        return *this;
    }
    void EndObject() { m_buffer.Put('}'); }

private:
    void Put(const char* text, std::size_t length)
    {
        if (length != 0) { // a buffer that has held nothing yet has no place to copy to
            std::memcpy(m_buffer.Push(length), text, length);
        }
    }

    void PutNumber(std::int64_t number)
    {
        constexpr std::size_t kLongest = 20;
        char* const out = m_buffer.Push(kLongest);
        const char* const end = std::to_chars(out, out + kLongest, number).ptr;
        m_buffer.Pop(static_cast<std::size_t>(out + kLongest - end));
    }

    template <std::size_t length> void Key(const char (&name)[length])
    {
        char* const out = m_buffer.Push(length + 3);
        out[0] = m_isFirst ? '{' : ',';
        out[1] = '"';
        std::memcpy(out + 2, name, length - 1);
        out[length + 1] = '"';
        out[length + 2] = ':';
        m_isFirst = false;
    }

    Writer& m_writer; // not owned; of strings and fractions
    rapidjson::StringBuffer& m_buffer; // not owned
    bool m_isFirst = true;
};

} // namespace zrobservers
