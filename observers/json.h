/// Writing JSON.
#pragma once

#include "hcbase/string.h"

#include <cmath>
#include <rapidjson/stringbuffer.h>
#include <rapidjson/writer.h>
#include <string_view>

namespace zrobservers {

/// The text with each byte that is no part of a character of UTF-8 replaced by U+FFFD.
std::string ToValidUtf8(std::string_view text);
bool IsValidUtf8(std::string_view text) noexcept;

/// One object of plain members.
class JsonObject {
public:
    /// before: what is put in front of the object.
    JsonObject(rapidjson::Writer<rapidjson::StringBuffer>& writer, rapidjson::StringBuffer& buffer,
        std::string_view before = "")
        : m_writer(writer)
    {
        for (const char character : before) {
            buffer.Put(character);
        }
        m_writer.Reset(buffer);
        m_writer.StartObject();
    }
    ~JsonObject() { m_writer.EndObject(); }
    JsonObject(const JsonObject&) = delete;
    JsonObject& operator=(const JsonObject&) = delete;

    /// A text of our own.
    JsonObject& Add(std::string_view name, const char* text) { return AddValid(name, text); }

    /// A text from outside.
    JsonObject& Add(std::string_view name, std::string_view text)
    {
        return IsValidUtf8(text) ? AddValid(name, text) : AddValid(name, ToValidUtf8(text));
    }
    JsonObject& Add(std::string_view name, const HCString& text) { return Add(name, text.View()); }

    JsonObject& Add(std::string_view name, std::int64_t number)
    {
        Key(name);
        m_writer.Int64(number);
        return *this;
    }
    JsonObject& Add(std::string_view name, bool value)
    {
        Key(name);
        m_writer.Bool(value);
        return *this;
    }
    /// JSON has no NaN and no infinity; they become null.
    JsonObject& Add(std::string_view name, double number)
    {
        Key(name);
        std::isfinite(number) ? m_writer.Double(number) : m_writer.Null();
        return *this;
    }

    /// Thousandths of a unit.
    JsonObject& AddThousandths(std::string_view name, std::int64_t thousandths);

    /// Members of an object of its own, until the next EndObject.
    JsonObject& StartObject(std::string_view name)
    {
        Key(name);
        m_writer.StartObject();
        return *this;
    }
    void EndObject() { m_writer.EndObject(); }

private:
    void Key(std::string_view name) { m_writer.Key(name.data(), static_cast<rapidjson::SizeType>(name.size())); }
    JsonObject& AddValid(std::string_view name, std::string_view text)
    {
        Key(name);
        m_writer.String(text.data(), static_cast<rapidjson::SizeType>(text.size()));
        return *this;
    }

    rapidjson::Writer<rapidjson::StringBuffer>& m_writer; // not owned
};

} // namespace zrobservers
