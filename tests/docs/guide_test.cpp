#include "tests/support/process.h"
#include "tests/support/surroundings.h"

#include <filesystem>
#include <gtest/gtest.h>
#include <sstream>

namespace {

TEST(Guide, ShowsWhatItsProgramsPrint)
{
    const test::Home home;
    const std::filesystem::path bin = std::filesystem::path(PROBE_PROGRAM).parent_path();
    const std::string extension = std::filesystem::path(PROBE_PROGRAM).extension().string();
    std::istringstream names(GUIDE_PROGRAMS);
    for (std::string name; std::getline(names, name, ',');) {
        const test::ProcessResult result = test::Run((bin / ("guide_" + name + extension)).string(), {});
        EXPECT_EQ(result.exitCode, 0) << name;
        std::string output = result.output;
        std::erase(output, '\r');
        EXPECT_EQ(output, test::ReadFile(GUIDE_FOLDER "/" + name + ".txt")) << name;
        EXPECT_EQ(result.errors, "") << name;
    }
}

} // namespace
