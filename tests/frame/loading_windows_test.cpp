// Loads the library by hand: nothing of it is linked to this program.

#include "tests/support/surroundings.h"

#include <gtest/gtest.h>
#include <string>
#include <thread>
#include <windows.h>

namespace {

template <typename Result> Result Call(HMODULE library, const char* function)
{
    const auto address = reinterpret_cast<void*>(GetProcAddress(library, function));
    return reinterpret_cast<Result (*)()>(address)();
}

TEST(Loading, ManyTimesOnASecondThreadLeavesNothingBehind)
{
    const test::Home home;
    std::thread([&home] {
        DWORD handles = 0;
        for (int cycle = 0; cycle < 200; ++cycle) {
            const bool toFile = cycle % 2 == 0;
            test::WriteFile(home.PreferencesPath(),
                std::string("[Libraries.zrlib]\nOutEnabled = true\nSendToFile = ") + (toFile ? "true\n" : "false\n"));
            const HMODULE library = LoadLibraryA(ZRLIB_FILE);
            ASSERT_NE(library, nullptr);
            EXPECT_EQ(Call<short>(library, "ZRGetOutFlags"), toFile ? 8 : 0) << "read afresh";
            EXPECT_EQ(Call<char>(library, "_ZN6ZRMode12IsMainThreadEv"), 1);
            ASSERT_NE(FreeLibrary(library), 0);
            ASSERT_EQ(GetModuleHandleA("zrlib.dll"), nullptr);
            ASSERT_EQ(GetModuleHandleA("hcbase.dll"), nullptr);
            if (cycle == 99) {
                GetProcessHandleCount(GetCurrentProcess(), &handles);
            }
        }
        DWORD handlesNow = 0;
        GetProcessHandleCount(GetCurrentProcess(), &handlesNow);
        EXPECT_EQ(handlesNow, handles);
    }).join();
}

} // namespace
