/// JsonObject: writes JSON. Not exported.
#pragma once

#include "hcbase/string.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <exception>
#include <new>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <string>
#include <string_view>

namespace zrobservers {

/// The text with each byte that is not part of a UTF-8 character replaced by U+FFFD.
std::string ToValidUtf8(std::string_view text);
bool IsValidUtf8(std::string_view text) noexcept;

/// RapidJSON's source of memory. RapidJSON itself has no way to report a lack of it.
class ThrowingAllocator : public rapidjson::CrtAllocator {
public:
    void* Malloc(std::size_t size) { return Checked(rapidjson::CrtAllocator::Malloc(size), size); }
    void* Realloc(void* former, std::size_t formerSize, std::size_t size)
    {
        return Checked(rapidjson::CrtAllocator::Realloc(former, formerSize, size), size);
    }

private:
    static void* Checked(void* memory, std::size_t size)
    {
        return memory != nullptr || size == 0 ? memory : throw std::bad_alloc();
    }
};
using JsonBuffer = rapidjson::GenericStringBuffer<rapidjson::UTF8<>, ThrowingAllocator>;

/// One object. The names of its members are literals of plain characters, so they are not scanned for escapes, which is
/// a good part of what a short object costs. When memory runs out, nothing of the object stays in the buffer.
class JsonObject {
public:
    using Writer = rapidjson::Writer<JsonBuffer, rapidjson::UTF8<>, rapidjson::UTF8<>, ThrowingAllocator>;

    /// before: what is put in front of the object.
    template <std::size_t length> JsonObject(Writer& writer, JsonBuffer& buffer, const char (&before)[length])
        : m_writer(writer)
        , m_buffer(buffer)
        , m_start(buffer.GetSize())
    {
        Put(before, length - 1);
    }
    /// Throws std::bad_alloc.
    ~JsonObject() noexcept(false)
    {
        try {
            if (std::uncaught_exceptions() == m_exceptions) {
                EndObject();
                return;
            }
        } catch (const std::bad_alloc&) {
            m_buffer.Pop(m_buffer.GetSize() - m_start);
            throw;
        }
        m_buffer.Pop(m_buffer.GetSize() - m_start);
    }
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
        return Add(name, std::string_view(static_cast<const char*>(text))); // up to the first zero byte
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

    /// Thousandths of a unit, not negative.
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

    /// Adds an object of its own: members added next belong to it, until EndObject; at least one.
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
        if (length != 0) { // an unused buffer has no memory to copy to
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

    Writer& m_writer; // not owned; for strings and fractions
    JsonBuffer& m_buffer; // not owned
    std::size_t m_start; // offset at which the object begins
    int m_exceptions = std::uncaught_exceptions();
    bool m_isFirst = true;
};

} // namespace zrobservers
