/// Tables of fixed texts that are looked up by number.
#pragma once

#include "hcbase/export.h"

#include <cstdint>

/// Identifies one registered table; 0 is null. No handle is issued twice.
typedef std::uint64_t HCTextHandle;

/// One row of a table.
struct HCTextRow {
    std::int32_t code;
    const char* text;
};

static_assert(sizeof(HCTextRow) == 16, "the row layout is fixed");

extern "C" {

/// Registers the rows up to the first one whose text is null, under `name`, and returns the handle of the table. The
/// rows are not copied: they and their texts must stay valid until HFTextRelease. Of rows with the same code the first
/// counts. The third argument is reserved; pass 0. Returns 0 for a null name or table, when 1024 tables are registered
/// already, or when there is no memory.
HC_API HCTextHandle HFTextCreateEmbedded(const char* name, const HCTextRow* table, int reserved);

/// Unregisters a table. Its rows and texts must stay valid while another thread may still be looking up in it. Returns
/// 1, or 0 when `handle` identifies no table.
HC_API char HFTextRelease(HCTextHandle handle);

/// Stores the text of the row with that code in `*text`, or null when there is no such row or `handle` identifies no
/// table. Returns 1 when there is a text, otherwise 0; 0 for a null `text`. The text belongs to the table. Searches
/// from the first row on, and takes no lock.
HC_API char HFTextGet(HCTextHandle handle, int code, const char** text);

/// The handle of the table registered under `name`, the newest of several; 0 when there is none.
[[nodiscard]] HC_API HCTextHandle HFTextFind(const char* name);
}
