/// The name of a function as a person would write it.
#pragma once

#include <cstddef>

namespace zr {

/// A function's name, taken from the compiler's signature at compile time: "Map::Check" from "bool Map::Check(int)
/// const [with T = int]". Leaves out the return type, the parameters, template arguments, unnamed namespaces, and
/// whatever is nested in the function, such as a lambda.
template <std::size_t size> class FunctionName {
public:
    /// name: used when the signature is not understood.
    constexpr FunctionName(const char (&signature)[size], const char* name)
        : m_signature(signature)
    {
        Find();
        std::size_t used = 0;
        int depth = 0;
        for (std::size_t position = m_start; position < m_end;) {
            if (const std::size_t skipped = LengthOfUnnamed(position); skipped != 0 && position < m_operator) {
                position += skipped;
                continue;
            }
            const bool isBracket = position < m_operator && (signature[position] == '<' || signature[position] == '>');
            depth += isBracket && signature[position] == '<' ? 1 : 0;
            if (depth == 0) {
                m_text[used++] = signature[position];
            }
            depth -= isBracket && signature[position] == '>' ? 1 : 0;
            ++position;
        }
        while (used != 0 && m_text[used - 1] == ':') { // before a lambda outside any function
            m_text[--used] = '\0';
        }
        for (std::size_t position = 0; used == 0 && name[position] != 0 && position + 1 < size; ++position) {
            m_text[position] = name[position];
        }
        m_signature = nullptr;
    }

    constexpr const char* Text() const { return m_text; }

private:
    static constexpr std::size_t kNone = static_cast<std::size_t>(-1);

    /// Sets the start and end of the name, template arguments included, and the offset of "operator" in it.
    constexpr void Find()
    {
        int depth = 0; // of template arguments
        for (std::size_t position = 0; position < m_end;) {
            const char sign = m_signature[position];
            const std::size_t unnamed = LengthOfUnnamed(position);
            const std::size_t declarator = depth == 0 ? LengthOfDeclarator(position) : 0;
            if (unnamed != 0) {
                position += unnamed;
            } else if (depth == 0 && IsWord(position, "decltype")) {
                position = m_start = BehindBrackets(position);
            } else if (depth == 0 && IsWord(position, "operator")) {
                m_operator = position;
                position = m_end = EndOfOperator(position);
            } else if (declarator != 0) {
                position = m_start = position + declarator;
            } else if (depth == 0 && sign == '(') {
                m_end = position;
            } else {
                depth += sign == '<' ? 1 : sign == '>' && depth > 0 ? -1 : 0;
                ++position;
                m_start = depth == 0 && (sign == ' ' || sign == '*' || sign == '&') ? position : m_start;
            }
        }
    }

    constexpr bool IsAt(std::size_t position, const char* word) const
    {
        std::size_t index = 0;
        while (word[index] != '\0' && position + index < size && m_signature[position + index] == word[index]) {
            ++index;
        }
        return word[index] == '\0';
    }

    static constexpr bool IsOfIdentifier(char sign)
    {
        return sign == '_' || (sign >= '0' && sign <= '9') || (sign >= 'a' && sign <= 'z')
            || (sign >= 'A' && sign <= 'Z');
    }

    /// Whether a whole word of eight letters begins at an offset.
    constexpr bool IsWord(std::size_t position, const char* word) const
    {
        constexpr std::size_t kLength = 8;
        return IsAt(position, word) && (position == 0 || !IsOfIdentifier(m_signature[position - 1]))
            && !IsOfIdentifier(m_signature[position + kLength]);
    }

    /// The length of the unnamed namespace and its "::" at an offset, as g++ and clang write them; 0 for anything else.
    constexpr std::size_t LengthOfUnnamed(std::size_t position) const
    {
        return IsAt(position, "{anonymous}::") ? 13 : IsAt(position, "(anonymous namespace)::") ? 23 : 0;
    }

    /// The length of what precedes the name when the function returns a pointer or reference to a function, an array or
    /// a member: "(*", "(&" or "(Map::*". 0 for anything else.
    constexpr std::size_t LengthOfDeclarator(std::size_t position) const
    {
        if (m_signature[position] != '(') {
            return 0;
        }
        std::size_t end = position + 1 + LengthOfUnnamed(position + 1);
        while (IsOfIdentifier(m_signature[end]) || m_signature[end] == ':') {
            ++end;
        }
        const bool isSign = m_signature[end] == '*' || (m_signature[end] == '&' && end == position + 1);
        return isSign && (end == position + 1 || m_signature[end - 1] == ':') ? end + 1 - position : 0;
    }

    constexpr std::size_t BehindBrackets(std::size_t position) const
    {
        int depth = 0;
        for (; position + 1 < size; ++position) {
            depth += m_signature[position] == '(' ? 1 : m_signature[position] == ')' ? -1 : 0;
            if (depth == 0 && m_signature[position] == ')') {
                return position + 1;
            }
        }
        return position;
    }

    /// The offset of the bracket that opens an operator's parameters.
    constexpr std::size_t EndOfOperator(std::size_t position) const
    {
        constexpr std::size_t kLength = 8;
        position += kLength;
        position += IsAt(position, "()") ? 2 : 0;
        while (position + 1 < size && m_signature[position] != '(') {
            ++position;
        }
        return position;
    }

    const char* m_signature;
    std::size_t m_start = 0;
    std::size_t m_end = size - 1;
    std::size_t m_operator = kNone;
    char m_text[size] = {};
};

} // namespace zr

/// The name of the enclosing function, as a constant expression with Text().
#define ZR_FUNCTION_NAME() ::zr::FunctionName(__PRETTY_FUNCTION__, __builtin_FUNCTION())
