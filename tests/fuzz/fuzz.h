/// What the fuzz targets have in common.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fuzzer/FuzzedDataProvider.h>
#include <string>

namespace test {

/// Ends the program with a report when what must hold does not. On standard output, since the other one is closed to
/// the library.
inline void Require(bool holds, const char* what)
{
    if (!holds) {
        std::printf("does not hold: %s\n", what);
        std::fflush(stdout);
        std::abort();
    }
}

/// A text without zero bytes, of at most so many.
inline std::string TextFrom(FuzzedDataProvider& data, std::size_t most)
{
    std::string text = data.ConsumeRandomLengthString(most);
    std::erase(text, '\0');
    return text;
}

} // namespace test

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);
