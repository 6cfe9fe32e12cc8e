#include "hcbase/guid.h"
#include "tests/support/allocations.h"
#include "tests/support/surroundings.h"
#include "tests/support/threads.h"

#include <mutex>
#include <set>

namespace {

TEST(Guid, IsRandomVersionFourInDashedFormAndNeverTheSame)
{
    std::set<std::string> all{HFGenerateGuid().ToString()}; // which seeds the thread's generator
    const long before = test::AllocationCount();
    EXPECT_EQ(HFGenerateGuid().GetLength(), 36);
    EXPECT_EQ(test::AllocationCount(), before) << "needs no heap";
    std::vector<std::set<char>> seen(36);
    std::mutex mutex;
    test::OnThreads(8, [&](int /*thread*/) {
        for (int count = 0; count < 2000; ++count) {
            const std::string guid = HFGenerateGuid().ToString();
            const std::lock_guard guard(mutex);
            all.insert(guid);
            for (std::size_t place = 0; place < guid.size(); ++place) {
                seen.at(place).insert(guid[place]);
            }
        }
    });
    EXPECT_EQ(all.size(), 1U + 8 * 2000);
    std::string form; // with x for all digits
    for (const std::set<char>& characters : seen) {
        const std::string given(characters.begin(), characters.end());
        form += given == "0123456789ABCDEF" ? "x" : given;
    }
    EXPECT_EQ(form, "xxxxxxxx-xxxx-4xxx-89ABxxx-xxxxxxxxxxxx");
#if !defined(_WIN32) // which has no fork
    const test::TemporaryFolder folder;
    const auto tell = [&folder] {
        test::WriteFile(folder.Path("guid"), HFGenerateGuid().ToString());
        return 0;
    };
    EXPECT_EQ(test::ResultOfChild(tell), 0);
    EXPECT_NE(HFGenerateGuid(), test::ReadFile(folder.Path("guid"))) << "the child has a copy of the generator";
#endif
}

} // namespace
