#include "hcbase/guid.h"
#include "tests/support/allocations.h"
#include "tests/support/threads.h"

#include <set>
#include <string>

namespace {

TEST(Guid, IsRandomVersionFourInDashedFormAndUniqueAcrossThreads)
{
    static_cast<void>(HFGenerateGuid()); // seeds the thread's generator
    const long before = test::AllocationCount();
    EXPECT_EQ(HFGenerateGuid().GetLength(), 36);
    EXPECT_EQ(test::AllocationCount(), before) << "needs no heap";
    std::string guids[8][2000];
    test::OnThreads(8, [&guids](int thread) {
        for (std::string& guid : guids[thread]) {
            guid = HFGenerateGuid().ToString();
        }
    });
    std::set<std::string> all;
    std::vector<std::set<char>> seen(36);
    for (const auto& ofThread : guids) {
        for (const std::string& guid : ofThread) {
            all.insert(guid);
            for (std::size_t place = 0; place < guid.size(); ++place) {
                seen.at(place).insert(guid[place]);
            }
        }
    }
    EXPECT_EQ(all.size(), 8U * 2000);
    std::string form; // with x for all digits
    for (const std::set<char>& characters : seen) {
        const std::string given(characters.begin(), characters.end());
        form += given == "0123456789ABCDEF" ? "x" : given;
    }
    EXPECT_EQ(form, "xxxxxxxx-xxxx-4xxx-89ABxxx-xxxxxxxxxxxx");
}

#if !defined(_WIN32) // which has no fork
TEST(Guid, IsAnotherOneInAForkedChild)
{
    static_cast<void>(HFGenerateGuid()); // seeds the generator, of which the child gets a copy
    int channel[2];
    ASSERT_EQ(pipe(channel), 0);
    ASSERT_EQ(test::ResultOfChild([&] { return write(channel[1], HFGenerateGuid(), 36) == 36 ? 0 : 1; }), 0);
    std::string ofChild(36, ' ');
    EXPECT_EQ(read(channel[0], ofChild.data(), ofChild.size()), 36);
    EXPECT_NE(HFGenerateGuid(), ofChild);
    close(channel[0]);
    close(channel[1]);
}
#endif

} // namespace
