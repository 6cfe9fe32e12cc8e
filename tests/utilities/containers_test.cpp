#include "hcbase/hcbase.h"
#include "tests/support/allocations.h"
#include "zrlib/zrlib.h"

#include <climits>
#include <gtest/gtest.h>
#include <list>
#include <new>
#include <random>
#include <string>
#include <vector>

namespace {

/// Shows what the array keeps to itself.
template <typename T> class OpenArray : public ZRArray<T> {
public:
    using ZRArray<T>::GetCapacity;
    using ZRArray<T>::GetGrowBy;

    std::vector<T> Elements() const { return {this->GetData(), this->GetData() + this->GetSize()}; }
};

using Ints = std::vector<int>;

OpenArray<int> ArrayOf(const Ints& elements)
{
    OpenArray<int> array;
    for (const int element : elements) {
        array.Append(element);
    }
    return array;
}

TEST(Array, HasRoomForJustWhatWasAskedFor)
{
    const struct {
        const char* what;
        void (*change)(OpenArray<int>&);
        Ints elements;
        int capacity;
        int growBy;
    } rows[] = {
        {"nothing", [](auto&) {}, {1, 2, 3, 4, 5}, 5, 10},
        {"only the grow-by", [](auto& array) { array.SetSize(-1, 3); }, {1, 2, 3, 4, 5}, 5, 3},
        {"a grow-by of 0", [](auto& array) { array.SetSize(-1, 0); }, {1, 2, 3, 4, 5}, 5, 10},
        {"a grow-by below 0", [](auto& array) { array.SetSize(-1, INT_MIN); }, {1, 2, 3, 4, 5}, 5, 10},
        {"an invalid size", [](auto& array) { array.SetSize(INT_MIN, 2); }, {1, 2, 3, 4, 5}, 5, 2},
        {"the same size", [](auto& array) { array.SetSize(5, 7); }, {1, 2, 3, 4, 5}, 5, 7},
        {"shrink", [](auto& array) { array.SetSize(2, 10); }, {1, 2}, 2, 10},
        {"grow", [](auto& array) { array.SetSize(7, 10); }, {1, 2, 3, 4, 5, 0, 0}, 7, 10},
        {"empty", [](auto& array) { array.SetSize(0, 1); }, {}, 0, 1},
        {"remove", [](auto& array) { array.RemoveAt(1); }, {1, 3, 4, 5}, 5, 10},
        {"remove outside", [](auto& array) { array.RemoveAt(5), array.RemoveAt(-1); }, {1, 2, 3, 4, 5}, 5, 10},
        {"remove, append", [](auto& array) { array.RemoveAt(0), array.Append(6); }, {2, 3, 4, 5, 6}, 5, 10},
        {"remove two, grow", [](auto& array) { array.RemoveAt(0), array.RemoveAt(0), array.SetSize(6, 10); },
            {3, 4, 5, 0, 0, 0}, 6, 10},
        {"remove two, the old size", [](auto& array) { array.RemoveAt(0), array.RemoveAt(0), array.SetSize(5, 10); },
            {3, 4, 5, 0, 0}, 5, 10},
        {"remove two, append", [](auto& array) { array.RemoveAt(4), array.RemoveAt(0), array.Append(6); }, {2, 3, 4, 6},
            4, 10},
        {"remove all",
            [](auto& array) {
                for (int i = 0; i < 5; ++i) {
                    array.RemoveAt(0);
                }
            },
            {}, 5, 10},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        OpenArray<int> array = ArrayOf({1, 2, 3, 4, 5});
        row.change(array);
        EXPECT_EQ(array.Elements(), row.elements);
        EXPECT_EQ(array.GetCapacity(), row.capacity);
        EXPECT_EQ(array.GetGrowBy(), row.growBy);
        EXPECT_EQ(array.GetData() == nullptr, row.elements.empty());

        const OpenArray<int> copy(array);
        OpenArray<int> assigned = ArrayOf({9, 9});
        assigned = array;
        assigned = static_cast<const OpenArray<int>&>(assigned);
        for (const OpenArray<int>* const other : {&copy, static_cast<const OpenArray<int>*>(&assigned)}) {
            EXPECT_EQ(other->Elements(), row.elements);
            EXPECT_EQ(other->GetCapacity(), static_cast<int>(row.elements.size()));
            EXPECT_EQ(other->GetGrowBy(), row.growBy);
        }
    }
}

TEST(Array, FindsAndReadsAnyIndex)
{
    OpenArray<int> array = ArrayOf({4, 5, 5});
    for (const int index : {INT_MIN, -1, 3, INT_MAX}) {
        EXPECT_EQ(array.GetAt(index), 0);
        EXPECT_EQ(OpenArray<int>().GetAt(index), 0);
    }
    array.GetAt(1) = 6;
    EXPECT_EQ(array.Find(5), 2);
    EXPECT_EQ(array.Find(0), -1);
    EXPECT_EQ(OpenArray<int>().Find(0), -1);

    ZRArray<HCString> texts; // elements that are not plain
    texts.Append("a text that is too long to lie inside of a string");
    texts.Append("b");
    texts.RemoveAt(0);
    texts.Append("c");
    EXPECT_EQ(texts.Find("c"), 1);
    EXPECT_EQ(texts.GetAt(7), "");
}

using IntStack = ZRStack<int>;

IntStack StackOf(int count)
{
    IntStack stack;
    for (int value = 0; value < count; ++value) {
        stack.Push(value);
    }
    return stack;
}

TEST(Stack, GrowsInSteps)
{
    const struct {
        int count;
        int capacity;
    } rows[] = {{0, 0}, {1, 64}, {64, 64}, {65, 128}, {128, 128}, {129, 192}};
    for (const auto& row : rows) {
        IntStack stack = StackOf(row.count);
        EXPECT_EQ(stack.GetCapacity(), row.capacity);
        stack.SetCapacity(1000);
        stack.SetCapacity(-1);
        EXPECT_EQ(stack.GetCapacity(), 1000);
        IntStack copy(stack);
        EXPECT_EQ(copy.GetCapacity(), row.capacity) << "what the elements need";
        copy.Push(7);
        copy = stack;
        copy = static_cast<const IntStack&>(copy);
        EXPECT_EQ(copy.GetCount(), row.count);
        for (int value = row.count; value-- > 0;) {
            int read = -1;
            EXPECT_EQ(copy.PeekAt(value, read), 1);
            EXPECT_EQ(read, value);
            EXPECT_EQ(copy.Peek(read) + copy.Pop(read), 2);
            EXPECT_EQ(read, value);
        }
        int read = -1;
        EXPECT_EQ(copy.Pop(read) + copy.Peek(read) + copy.PeekAt(0, read), 0);
        EXPECT_EQ(read, -1) << "left alone";
        EXPECT_EQ(copy.GetCount(), 0);
        stack.SetCapacity(0);
        EXPECT_EQ(stack.GetCapacity() + stack.GetCount(), 0);
    }
}

TEST(Stack, CutBelowItsCountReadsAsFalse)
{
    IntStack stack = StackOf(200);
    stack.SetCapacity(3);
    const auto isReadable = [](const IntStack& any, int index) {
        int value = -1;
        const bool isThere = any.PeekAt(index, value) != 0;
        EXPECT_EQ(value, isThere ? index : -1);
        return isThere;
    };
    for (const int index : {INT_MIN, -1, 3, 4, 199, 200, INT_MAX}) {
        EXPECT_FALSE(isReadable(stack, index)) << index;
    }
    EXPECT_TRUE(isReadable(stack, 2));
    EXPECT_EQ(stack.GetCount(), 200);
    int value = -1;
    EXPECT_EQ(stack.Peek(value) + stack.Pop(value), 0);
    stack.Push(200);
    EXPECT_TRUE(isReadable(stack, 200));
    EXPECT_FALSE(isReadable(stack, 199)) << "cut off for good";
    const IntStack copy(stack);
    EXPECT_TRUE(isReadable(copy, 200) && isReadable(copy, 2));
    EXPECT_FALSE(isReadable(copy, 3) || isReadable(copy, 199));
    stack.SetCapacity(0);
    stack.Push(0);
    EXPECT_TRUE(isReadable(stack, 0));
}

TEST(List, KeepsItsElementsAsTheStandardListDoes)
{
    ZRList<HCString> list;
    std::list<std::string> model;
    std::minstd_rand random(5);
    for (int step = 0; step < 5000; ++step) {
        if (random() % 2 == 0 || model.empty()) {
            const std::string text = std::to_string(step);
            list.Append(text.c_str());
            model.push_back(text);
        } else {
            auto place = list.Begin();
            auto modelPlace = model.begin();
            for (auto steps = random() % model.size(); steps > 0; --steps) {
                ++place;
                ++modelPlace;
            }
            place = list.Erase(place);
            modelPlace = model.erase(modelPlace);
            EXPECT_EQ(place == list.End(), modelPlace == model.end());
            EXPECT_TRUE(place == list.End() || *place == modelPlace->c_str());
        }
        ASSERT_EQ(list.GetCount(), static_cast<int>(model.size()));
        if (step % 97 == 0) {
            ZRList<HCString> copy(list);
            list = copy;
            list = static_cast<const ZRList<HCString>&>(list);
            copy.Append("not in the original");
            ASSERT_EQ((std::vector<std::string>(list.begin(), list.end())),
                (std::vector<std::string>(model.begin(), model.end())));
        }
    }
    ZRList<int> empty;
    EXPECT_TRUE(empty.Erase(empty.End()) == empty.End());
}

TEST(Containers, HoldMillions)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    constexpr int kCount = 30'000; // their realloc copies each time
#else
    constexpr int kCount = 3'000'000;
#endif
    ZRArray<int> array;
    IntStack stack;
    for (int value = 0; value < kCount; ++value) {
        array.Append(value);
        stack.Push(value);
    }
    EXPECT_EQ(array.GetAt(kCount - 1), kCount - 1);
    EXPECT_EQ(array.Find(kCount - 1), kCount - 1);
    EXPECT_EQ(IntStack(stack).GetCount(), kCount);
    int value = 0;
    EXPECT_EQ(stack.Pop(value), 1);
    EXPECT_EQ(value, kCount - 1);
}

#if !defined(_WIN32)
TEST(Containers, KeepWhatTheyHaveWhenMemoryRunsOut)
{
    ZRArray<HCString> array; // elements that are not plain are allocated where the test can see it
    ZRStack<HCString> stack;
    ZRList<HCString> list;
    array.Append("kept");
    stack.Push("kept");
    list.Append("kept");
    {
        const test::FailingHeap heap(0);
        EXPECT_THROW(array.Append("a"), std::bad_alloc);
        EXPECT_THROW(array.SetSize(1000, 1), std::bad_alloc);
        EXPECT_THROW(stack.SetCapacity(1000), std::bad_alloc);
        EXPECT_THROW(list.Append("a"), std::bad_alloc);
        EXPECT_THROW(list = ZRList<HCString>(list), std::bad_alloc);
    }
    HCString top;
    EXPECT_EQ(array.GetSize() + stack.GetCount() + list.GetCount(), 3);
    EXPECT_TRUE(array.GetAt(0) == "kept" && stack.Peek(top) != 0 && top == "kept" && *list.Begin() == "kept");
}
#endif

} // namespace
