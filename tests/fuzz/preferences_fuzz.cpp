// Any bytes as preference file.

#include "tests/fuzz/fuzz.h"
#include "zrlib/zrlib.h"

#include <unistd.h>

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    static const std::string path = "/tmp/zrlib-preferences-" + std::to_string(getpid()) + ".toml";
    std::FILE* const file = std::fopen(path.c_str(), "wb");
    test::Require(file != nullptr, "the file can be written");
    std::fwrite(bytes, 1, size, file);
    std::fclose(file);
    setenv("HCBASE_PREFERENCES", path.c_str(), 1);
    const ZRMode mode;
    for (char (*const get)() : {ZRMode::IsThreading, ZRMode::IsCacheQueueing, ZRMode::IsThreadBasedCache,
             ZRMode::IsOutEnabled, ZRMode::SendToFile}) {
        test::Require(get() == 0 || get() == 1, "a switch is 0 or 1");
    }
    test::Require(ZRMode::IsThreading() != 0 || ZRMode::IsCacheQueueing() == 0, "no queueing without threading");
    std::remove(path.c_str());
    return 0;
}
