#include "hcbase/text_table.h"
#include "zrlib/zrlib.h"

#include <cstdint>
#include <gtest/gtest.h>
#include <string>

namespace {

// Clients show the texts, translate them and look for them. Whoever changes one on purpose gives the new digest here
// (FNV-1a, 64 bits).
TEST(TextTable, HasTheTextsThatClientsKnow)
{
    ASSERT_NE(ZRGetMessageHandler(), nullptr); // or nothing of the library would be linked
    std::string texts;
    int count = 0;
    for (int code = -70000; code < 1000; ++code) {
        const char* text = nullptr;
        if (HFTextGet(HFTextFind("ZRLib"), code, &text) != 0) {
            texts += std::to_string(code) + " " + text + "\n";
            ++count;
        }
    }
    std::uint64_t digest = 0xCBF29CE484222325;
    for (const char sign : texts) {
        digest = (digest ^ static_cast<unsigned char>(sign)) * 0x100000001B3;
    }
    EXPECT_EQ(count, 78);
    EXPECT_EQ(digest, 0x0F373B28D970FDF8U) << texts;
}

} // namespace
