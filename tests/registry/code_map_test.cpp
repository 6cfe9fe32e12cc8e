#include "zrlib/zrlib.h"

#include <algorithm>
#include <climits>
#include <gtest/gtest.h>
#include <iterator>
#include <map>
#include <random>
#include <string>

namespace {

using Map = ZRCodeMap<HCString>;
using Model = std::map<int, HCString>;

bool AreAlike(const Map& map, const Model& model)
{
    return map.GetCount() == static_cast<int>(model.size())
        && std::equal(map.Begin(), map.End(), model.begin(), model.end());
}

TEST(CodeMap, KeepsItsPairsAsAnOrderedMapDoes)
{
    Map map;
    Model model;
    std::minstd_rand random(7);
    const int keys[] = {INT_MIN, INT_MIN + 1, -0x5FB0CFFA, -1, 0, 1, 2, 0x1001, INT_MAX - 1, INT_MAX};
    for (int step = 0; step < 3000; ++step) {
        const int key = keys[random() % std::size(keys)];
        const HCString value = std::to_string(step).c_str();
        switch (random() % 4) {
        case 0: {
            const auto [place, isNew] = map.Insert(key, value);
            EXPECT_EQ(isNew, model.emplace(key, value).second);
            EXPECT_TRUE(isNew ? place == map.Find(key) : place == map.End());
            break;
        }
        case 1: {
            const auto next =
                std::find_if(map.Begin(), map.End(), [key](const auto& pair) { return pair.first >= key; });
            EXPECT_EQ(map.Insert(next, key, value).second, model.emplace(key, value).second);
            break;
        }
        case 2:
            EXPECT_EQ(map[key], model[key]);
            map[key] = model[key] = value;
            break;
        default:
            map.Erase(map.End()); // does nothing
            EXPECT_EQ(map.Erase(key), static_cast<char>(model.erase(key)));
        }
        EXPECT_EQ(static_cast<const Map&>(map).Find(key) == map.End(), model.count(key) == 0);
        ASSERT_TRUE(AreAlike(map, model)) << "step " << step;
    }
    map[3] = model[3] = "three";
    const Map copy(map);
    map[3] = "changed";
    EXPECT_TRUE(AreAlike(copy, model)) << "copies its values";
    map = copy;
    map = static_cast<const Map&>(map);
    EXPECT_TRUE(AreAlike(map, model));
    map.Clear();
    EXPECT_TRUE(AreAlike(map, {}));
}

} // namespace
