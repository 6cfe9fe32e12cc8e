#include "zrlib/zrlib.h"

#include <climits>
#include <gtest/gtest.h>
#include <string>

namespace {

using Map = ZRCodeMap<HCString>;

std::string Text(const Map& map)
{
    std::string text = std::to_string(map.GetCount());
    for (const auto& [key, value] : map) {
        text += " " + std::to_string(key) + ":" + value.ToString();
    }
    return text;
}

TEST(CodeMap, KeepsItsPairsInOrder)
{
    Map map;
    for (const int key : {5, INT_MAX, -1, INT_MIN, 0}) {
        EXPECT_EQ(map.Erase(key), 0);
        const auto [place, isNew] = map.Insert(key, "v");
        EXPECT_TRUE(isNew && place == map.Find(key)) << key;
        EXPECT_EQ(map.Insert(key, "again"), std::pair(map.End(), false));
    }
    EXPECT_EQ(map[3], "");
    map[5] = "five";
    const Map copy(map);
    EXPECT_EQ(map.Erase(INT_MIN), 1);
    EXPECT_EQ(map.Erase(INT_MAX), 1);
    map.Erase(map.Find(4)); // does nothing
    map[3] = "changed";
    EXPECT_EQ(Text(map), "4 -1:v 0:v 3:changed 5:five");
    EXPECT_TRUE(copy.Find(4) == copy.End());
    map = copy;
    EXPECT_EQ(Text(map), "6 -2147483648:v -1:v 0:v 3: 5:five 2147483647:v");
}

} // namespace
