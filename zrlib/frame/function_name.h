/// The name of a function as a person would write it.
#pragma once

#include <cstddef>

namespace zr {

/// A name taken out of what the compiler says of a function: "Map::Check" of "bool Map::Check(int) const [with T =
/// int]". Without return type, parameters, arguments of templates, unnamed namespaces, and what lies inside the
/// function, such as a lambda. Worked out at compile time.
template <std::size_t size> class FunctionName {
public:
    constexpr explicit FunctionName(const char (&signature)[size])
    {
        const std::size_t end = EndOfName(signature);
        std::size_t length = 0;
        int depth = 0;
        for (std::size_t place = StartOfName(signature, end); place < end; ++place) {
            if (const std::size_t skipped = LengthOfUnnamed(signature, place); skipped != 0) {
                place += skipped - 1;
                continue;
            }
            const bool isOperator = EndsWithOperator(signature, place);
            depth += signature[place] == '<' && !isOperator ? 1 : 0;
            if (depth == 0) {
                m_text[length++] = signature[place];
            }
            depth -= signature[place] == '>' && depth > 0 ? 1 : 0;
        }
        m_text[length] = '\0';
    }

    constexpr const char* Text() const { return m_text; }

private:
    static constexpr bool IsAt(const char (&signature)[size], std::size_t place, const char* word)
    {
        std::size_t index = 0;
        while (word[index] != '\0' && place + index < size && signature[place + index] == word[index]) {
            ++index;
        }
        return word[index] == '\0';
    }

    /// How g++ and clang write the unnamed namespace and what follows it.
    static constexpr std::size_t LengthOfUnnamed(const char (&signature)[size], std::size_t place)
    {
        return IsAt(signature, place, "{anonymous}::")          ? 13
            : IsAt(signature, place, "(anonymous namespace)::") ? 23
                                                                : 0;
    }

    /// Whether "operator", and perhaps further signs of its name, stand right before a place.
    static constexpr bool EndsWithOperator(const char (&signature)[size], std::size_t place)
    {
        constexpr std::size_t kLength = 8;
        while (place > 0
            && (signature[place - 1] == '<' || signature[place - 1] == '>' || signature[place - 1] == '-'
                || signature[place - 1] == '=')) {
            --place;
        }
        return place >= kLength && IsAt(signature, place - kLength, "operator");
    }

    /// How deep in the arguments of templates what follows a character lies.
    static constexpr int DepthBehind(const char (&signature)[size], std::size_t place, int depth)
    {
        if (EndsWithOperator(signature, place)) {
            return depth; // a sign of its name
        }
        return depth + (signature[place] == '<' ? 1 : signature[place] == '>' && depth > 0 ? -1 : 0);
    }

    /// The bracket that opens the parameters, at the level of the function itself.
    static constexpr std::size_t EndOfName(const char (&signature)[size])
    {
        int depth = 0;
        for (std::size_t place = 0; place + 1 < size; ++place) {
            const std::size_t skipped = LengthOfUnnamed(signature, place);
            if (skipped != 0) {
                place += skipped - 1;
            } else if (EndsWithOperator(signature, place) && IsAt(signature, place, "()")) {
                ++place; // the operator of that name
            } else if (signature[place] == '(' && depth == 0) {
                return place;
            } else {
                depth = DepthBehind(signature, place, depth);
            }
        }
        return size - 1;
    }

    /// Behind the last blank before the name, which is not inside the arguments of a template.
    static constexpr std::size_t StartOfName(const char (&signature)[size], std::size_t end)
    {
        std::size_t start = 0;
        int depth = 0;
        for (std::size_t place = 0; place < end; ++place) {
            if (const std::size_t skipped = LengthOfUnnamed(signature, place); skipped != 0) {
                place += skipped - 1;
                continue;
            }
            depth = DepthBehind(signature, place, depth);
            if (depth == 0 && (signature[place] == ' ' || signature[place] == '*' || signature[place] == '&')
                && !EndsWithOperator(signature, place)) {
                start = place + 1;
            }
        }
        return start;
    }

    char m_text[size] = {};
};

} // namespace zr

/// The name of the function in which it stands, as a constant expression with Text().
#define ZR_FUNCTION_NAME() ::zr::FunctionName<sizeof(__PRETTY_FUNCTION__)>(__PRETTY_FUNCTION__)
