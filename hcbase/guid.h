/// Globally unique identifiers.
#pragma once

#include "hcbase/export.h"
#include "hcbase/string.h"

/// Returns a new random identifier (UUID version 4 of RFC 4122) as text of 36 characters: upper-case hexadecimal digits
/// in groups of 8, 4, 4, 4 and 12 with dashes between them, such as "3F2504E0-4F89-41D3-9A0C-0305E82C3301". Unique
/// across threads, processes and fork, but not across `_Fork` and `vfork`, which run no hooks. It is meant to be
/// unique, not secret: do not use it as a password. Each thread has its own generator, seeded by the system at the
/// first call and again in a forked child. Takes no lock.
[[nodiscard]] HC_API HCString HFGenerateGuid();
