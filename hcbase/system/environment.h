/// What the system tells a process about its surroundings. All texts are UTF-8.
#pragma once

#include <string>

namespace hcbase::system {

/// The value of an environment variable; empty when it is not set.
std::string Environment(const char* name);

/// The home directory: where the environment says, else the account's; empty when nobody knows.
std::string HomeDirectory();

/// The directory in which users' settings lie; empty when nobody knows.
std::string SettingsDirectory();

std::string CurrentDirectory();

/// Writes the text and a line ending to standard error in one go.
void WriteErrorLine(const std::string& text);

} // namespace hcbase::system
