/// Paths of the observers' files. Not exported.
#pragma once

#include "hcbase/string.h"

#include <filesystem>
#include <string>
#include <system_error>

namespace zrobservers {

/// A path that names the same file after the program has changed its directory, UTF-8; an empty path stays empty.
inline std::string FromRoot(const HCString& path)
{
    if (path.GetLength() == 0) {
        return {};
    }
    try {
        const std::u8string absolute = std::filesystem::absolute(std::u8string(path.begin(), path.end())).u8string();
        return {absolute.begin(), absolute.end()};
    } catch (const std::system_error&) { // not UTF-8, or the current directory is unknown: left to who opens the file
        return path.ToString();
    }
}

} // namespace zrobservers
