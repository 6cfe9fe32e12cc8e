/// ZRFormat: byte counts as short texts.
/// Folder utilities: small services: formatted numbers, tickets and keys, disk space, names of systems and properties.
#pragma once

#include "hcbase/string.h"
#include "zrlib/export.h"

#include <cstdint>

/// Errors: std::bad_alloc, and std::length_error for a precision close to 2,147,483,647. Threads: any.
class ZR_API ZRFormat {
public:
    /// Format code: bytes, as "999 bytes" and "1.00 KB".
    static constexpr std::int32_t BYTES = 1;

    /// A number with one of the letters K, M, G, T: "1.50 MB" for 1,572,864 with the scaled unit "B" and a precision of
    /// 2. The letters mean 1024, its square and so on; K is used from 1000 on. From 2^50 on the letter is ? and means
    /// 1e15. Below 1000, negative numbers included, the digits with the unit: "999 bytes". A null unit is left out, and
    /// so is the blank before `unit`.
    ///
    /// precision: decimals; below 0 it counts as 0. The decimal point is a point in every locale.
    static HCString KMGT(std::int64_t value, const char* unit, const char* scaledUnit, int precision);

    /// The same by a format code. Returns "Unknown format code" for any other than the one above.
    static HCString KMGT(std::int64_t value, std::int32_t format, int precision);
};
