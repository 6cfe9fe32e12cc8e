/// Complaints about preferences. Not exported.
#pragma once

#include <string>
#include <string_view>

namespace hcbase {

/// Tells on standard error, in one line, what is wrong and where. The same file is read more than once while a library
/// loads; its faults are told once. Throws std::bad_alloc. Threads: any.
void Complain(const std::string& place, std::string_view reason);

} // namespace hcbase
