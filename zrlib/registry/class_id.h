/// ZRClassID: texts in the dashed form of a GUID that carry an object code.
#pragma once

#include "hcbase/string.h"
#include "zrlib/export.h"

/// A class ID is a text of 36 characters, hexadecimal digits in groups of 8, 4, 4, 4 and 12 with dashes between them.
/// One made here consists of a prefix of 28 characters, Internal or External, and an object code in eight upper-case
/// digits, for example "E30077A1-1C01-4472-9D8E-7EFFA04F3006" for the code 0xA04F3006. The client chooses the prefix;
/// the library attaches no meaning to it.
///
/// Truth values are 1 and 0. Threads: any.
class ZR_API ZRClassID {
public:
    static constexpr const char* Null = "00000000-0000-0000-0000-000000000000";
    static constexpr const char* Internal = "E30077A1-1C01-4472-9D8E-7EFF";
    static constexpr const char* External = "E3015212-3C02-4498-9D8E-7EFF";
    static constexpr int Size = 36; // characters of a class ID
    static constexpr int InternalSize = 28; // characters of the prefixes
    static constexpr int ExternalSize = 28;
    static constexpr int CodeSize = 8; // digits after the prefix

    // Each tests the beginning of the text only, so a class ID may be followed by anything. Upper-case and lower-case
    // digits differ, except for IsFormat. A null pointer yields 0.

    /// Whether the first 36 characters are those of Null.
    [[nodiscard]] static char IsNull(const char* id);

    /// Whether the first 36 characters have the form of a class ID.
    [[nodiscard]] static char IsFormat(const char* id);

    /// Whether the first 28 characters are the prefix.
    [[nodiscard]] static char IsInternal(const char* id);
    [[nodiscard]] static char IsExternal(const char* id);

    /// The prefix followed by the code, whatever it is.
    [[nodiscard]] static HCString MakeInternalID(int code);
    static HCString MakeExternalID(int code);

    /// The object code that a class ID carries: the hexadecimal number that begins at offset 32, with the high word
    /// 0xA04F. The high word in the text is not read, so the ID of a short code yields a full object code. Digits
    /// beyond the 36 characters belong to the number; one above 0x7FFFFFFF counts as 0x7FFFFFFF.
    ///
    /// check: not 0 to return 0 for a text that is no class ID or has another prefix; with 0, only a null pointer and a
    /// text of fewer than 32 characters return 0.
    static int GetInternalID(const char* id, char check);
    static int GetExternalID(const char* id, char check);
};
