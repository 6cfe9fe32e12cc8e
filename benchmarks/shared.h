/// What the benchmarks of messages and observers share: the text that they send, and where their files lie.
#pragma once

#include <filesystem>
#include <string>

constexpr const char* kText = "a message of thirty-six characters";

inline std::string PathOf(const char* name) { return (std::filesystem::temp_directory_path() / name).string(); }
