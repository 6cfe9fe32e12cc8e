/// Complaints about preferences and home. Not exported.
#pragma once

#include <string>
#include <string_view>

namespace hcbase {

/// Reports on standard error, in one line, what is wrong and where. The same complaint is reported once, though the
/// same file is read more than once while a library loads. Throws std::bad_alloc. Threads: any.
void WarnOnce(const std::string& place, std::string_view reason);

} // namespace hcbase
