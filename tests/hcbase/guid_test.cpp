#include "hcbase/guid.h"
#include "tests/support/allocations.h"

#include <gtest/gtest.h>
#include <regex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#if !defined(_WIN32)
#include <sys/wait.h>
#include <unistd.h>
#endif

namespace {

TEST(Guid, IsRandomVersionFourInDashedForm)
{
    const std::regex form("[0-9A-F]{8}-[0-9A-F]{4}-4[0-9A-F]{3}-[89AB][0-9A-F]{3}-[0-9A-F]{12}");
    std::vector<std::set<char>> seen(36);
    for (int turn = 0; turn < 2000; ++turn) {
        const std::string guid(static_cast<const char*>(HFGenerateGuid()));
        ASSERT_TRUE(std::regex_match(guid, form)) << guid;
        for (std::size_t place = 0; place < guid.size(); ++place) {
            seen[place].insert(guid[place]);
        }
    }
    for (std::size_t place = 0; place < seen.size(); ++place) {
        const std::size_t expected = place == 8 || place == 13 || place == 14 || place == 18 || place == 23 ? 1
            : place == 19                                                                                   ? 4
                                                                                                            : 16;
        EXPECT_EQ(seen[place].size(), expected) << "place " << place;
    }
}

TEST(Guid, IsUniqueAcrossThreads)
{
    constexpr std::size_t kThreads = 8;
    constexpr std::size_t kEach = 10000;
    std::vector<std::vector<std::string>> guids(kThreads);
    std::vector<std::thread> threads;
    for (auto& own : guids) {
        threads.emplace_back([&own] {
            for (std::size_t turn = 0; turn < kEach; ++turn) {
                own.emplace_back(static_cast<const char*>(HFGenerateGuid()));
            }
        });
    }
    std::set<std::string> all;
    for (std::size_t thread = 0; thread < kThreads; ++thread) {
        threads[thread].join();
        all.insert(guids[thread].begin(), guids[thread].end());
    }
    EXPECT_EQ(all.size(), kThreads * kEach);
}

TEST(Guid, NeedsNoHeap)
{
#if defined(_WIN32)
    GTEST_SKIP() << "allocations inside a library cannot be counted there";
#endif
    static_cast<void>(HFGenerateGuid()); // seeds the thread's generator
    const long before = test::AllocationCount();
    static_cast<void>(HFGenerateGuid());
    EXPECT_EQ(test::AllocationCount(), before);
}

#if !defined(_WIN32) // Windows has no fork
TEST(Guid, IsAnotherOneInAForkedChild)
{
    static_cast<void>(HFGenerateGuid());
    int channel[2];
    ASSERT_EQ(pipe(channel), 0);
    std::set<std::string> all;
    for (int child = 0; child < 3; ++child) {
        const pid_t process = fork();
        if (process == 0) {
            const HCString guid = HFGenerateGuid();
            _exit(write(channel[1], guid, 36) == 36 ? 0 : 1);
        }
        waitpid(process, nullptr, 0);
        char text[36];
        ASSERT_EQ(read(channel[0], text, sizeof(text)), 36);
        all.emplace(text, sizeof(text));
    }
    all.emplace(static_cast<const char*>(HFGenerateGuid()));
    EXPECT_EQ(all.size(), 4U);
    close(channel[0]);
    close(channel[1]);
}
#endif

} // namespace
