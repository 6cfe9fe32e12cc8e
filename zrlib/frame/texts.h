/// The fixed texts by their numbers. Not exported.
#pragma once

namespace zr {

/// A text of the library's table (text_codes.h); null when there is no such text or no table.
const char* FindText(int code) noexcept;

} // namespace zr
