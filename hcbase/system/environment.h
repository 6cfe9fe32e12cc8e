/// Environment and directories of the process. All texts are UTF-8. Not exported.
#pragma once

#include "hcbase/string.h"

namespace hcbase::system {

/// The value of an environment variable; empty when it is not set, and in a process with more rights than the user who
/// started it, because that user must not choose the files of such a process.
HCString Environment(const char* name);

/// The home directory: from the environment, else that of the account with whose rights the process runs; empty when
/// neither has one.
HCString HomeDirectory();

/// Frees the cached home of the account. For unloading.
void ReleaseAccountHome() noexcept;

/// The directory of the account's settings; empty when none is known.
HCString SettingsDirectory();

HCString CurrentDirectory();

/// Writes the text and a line ending to standard error at once.
void WriteErrorLine(const HCString& text);

} // namespace hcbase::system
