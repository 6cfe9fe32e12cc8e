/// What the system tells a process about its surroundings. All texts are UTF-8.
#pragma once

#include "hcbase/string.h"

namespace hcbase::system {

/// The value of an environment variable; empty when it is not set, and in a process that runs with more rights than
/// whoever has started it, because that one must not choose the files of such a process.
HCString Environment(const char* name);

/// The home directory: where the environment says, else that of the account with whose rights the process runs; empty
/// when nobody knows.
HCString HomeDirectory();

/// Forgets the account's home. For unloading.
void ReleaseAccountHome() noexcept;

/// The directory in which the account's settings lie; empty when nobody knows.
HCString SettingsDirectory();

HCString CurrentDirectory();

/// Writes the text and a line ending to standard error in one go.
void WriteErrorLine(const HCString& text);

} // namespace hcbase::system
