#include "zrlib/zrlib.h"

#include <climits>
#include <gtest/gtest.h>
#include <map>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

using Map = ZRCodeMap<HCString>;
using Pairs = std::vector<std::pair<int, std::string>>;

/// The pairs, forwards and then, when that gives the same, backwards.
Pairs PairsOf(const Map& map)
{
    Pairs pairs;
    for (const auto& [key, value] : map) {
        pairs.emplace_back(key, value);
    }
    std::size_t rest = pairs.size();
    for (auto place = map.End(); place != map.Begin();) {
        --place;
        EXPECT_GT(rest, 0U);
        EXPECT_EQ(place->first, pairs[--rest].first);
    }
    EXPECT_EQ(rest, 0U);
    return pairs;
}

TEST(CodeMap, KeepsItsPairsAsAnOrderedMapDoes)
{
    Map map;
    std::map<int, std::string> model;
    std::minstd_rand random(7);
    const int keys[] = {INT_MIN, INT_MIN + 1, -1, 0, 1, 0x1001, INT_MAX - 1, INT_MAX, -1605423098};
    for (int step = 0; step < 20000; ++step) {
        const int key = random() % 4 == 0 ? static_cast<int>(random() % 40) - 20 : keys[random() % std::size(keys)];
        const std::string value = std::to_string(step);
        switch (random() % 8) {
        case 0:
        case 1: {
            const auto [place, isNew] = map.Insert(key, value.c_str());
            EXPECT_EQ(isNew, model.emplace(key, value).second);
            EXPECT_EQ(place == map.End(), !isNew);
            EXPECT_TRUE(!isNew || (place->first == key && place->second == value.c_str()));
            break;
        }
        case 2:
            EXPECT_EQ(map[key], model[key].c_str());
            break;
        case 3:
            map[key] = value.c_str();
            model[key] = value;
            break;
        case 4:
        case 5:
            EXPECT_EQ(map.Erase(key), static_cast<char>(model.erase(key)));
            break;
        case 6: { // by place
            auto next = map.Begin();
            for (; next != map.End() && next->first < key; ++next) {}
            EXPECT_EQ(map.Insert(next, key, value.c_str()).second, model.emplace(key, value).second);
            map.Erase(map.Find(key));
            model.erase(key);
            break;
        }
        default:
            if (random() % 64 == 0) {
                map.Clear();
                model.clear();
            }
            EXPECT_EQ(map.Find(key) == map.End(), model.count(key) == 0);
        }
        ASSERT_EQ(map.GetCount(), static_cast<int>(model.size()));
        ASSERT_EQ(PairsOf(map), Pairs(model.begin(), model.end()));
    }
}

TEST(CodeMap, CopiesItsValues)
{
    Map map;
    map[3] = "three";
    map[-1] = "minus one";
    Map copy(map);
    map[3] = "changed";
    EXPECT_EQ(PairsOf(copy), (Pairs{{-1, "minus one"}, {3, "three"}}));
    copy = map;
    map.Clear();
    copy = static_cast<const Map&>(copy);
    EXPECT_EQ(PairsOf(copy), (Pairs{{-1, "minus one"}, {3, "changed"}}));
    EXPECT_TRUE(PairsOf(map).empty());
    EXPECT_EQ(map.Begin(), map.End());
}

} // namespace
