/// Tables of fixed texts that are looked up by number.
#pragma once

#include "hcbase/export.h"

#include <cstdint>

/// Names one registered table; 0 is null. No handle is given out twice.
typedef std::uint64_t HCTextHandle;

/// One row of a table.
struct HCTextRow {
    std::int32_t code;
    const char* text;
};

static_assert(sizeof(HCTextRow) == 16, "the row layout is fixed");

extern "C" {

/// Registers the rows up to the first one whose text is null, under `name`, and gives the handle of the table. The rows
/// are not copied: they and their texts stay in place until HFTextRelease. Of rows with the same code the first counts.
/// The third argument is reserved, give 0. Gives 0 for a null name or table, when 1024 tables are registered already,
/// or when there is no memory.
HC_API HCTextHandle HFTextCreateEmbedded(const char* name, const HCTextRow* table, int reserved);

/// Gives a table up. Its rows and texts must stay in place while another thread may still be looking up in it. Gives 1,
/// or 0 when `handle` names no table.
HC_API char HFTextRelease(HCTextHandle handle);

/// Stores the text of the row with that code in `*text`, or null when there is no such row or `handle` names no table.
/// Gives 1 when there is a text, otherwise 0; with a null `text` 0. The text belongs to the table. Seeks from the first
/// row on, and takes no lock.
HC_API char HFTextGet(HCTextHandle handle, int code, const char** text);

/// The handle of the table registered under `name`, of several the newest; 0 when there is none.
[[nodiscard]] HC_API HCTextHandle HFTextFind(const char* name);
}
