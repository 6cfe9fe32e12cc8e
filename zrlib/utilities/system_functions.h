/// Small services: texts into buffers, disk space, names of operating systems.
#pragma once

#include "zrlib/export.h"

#include <cstdint>

class HCString;

extern "C" {

/// Copies a text into a buffer of `size` bytes, truncated to what fits before the terminating zero, and fills the rest
/// with zeros. Returns the number of bytes copied. For a null buffer or a size below 1, nothing is written and the
/// result is 0. A character of several bytes may be cut in two. Threads: any.
ZR_API int ZRStringToBuffer(char* buffer, int size, const HCString& text);

/// Whether the process may still write size1 + size2 bytes, added modulo 2^64, to the disk of the current directory. 1
/// or 0; 0 also when the system does not say. Threads: any.
ZR_API char ZRCheckDiskSpace(std::uint64_t size1, std::uint64_t size2);

/// The name of an operating system: 1 to 12 for the twelve texts from ZR_TEXT_OPSYS_RSX on, 101 for
/// ZR_TEXT_OPSYS_WINDOWS; the codes are not those of text_codes.h. Never null. The name for any other code says so, and
/// is valid until the same thread calls again with such a code, or ends. Threads: any.
[[nodiscard]] ZR_API const char* ZRGetOpSysName(int code);
}
