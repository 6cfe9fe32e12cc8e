#include "hcbase/hcbase.h"
#include "tests/support/allocations.h"
#include "zrlib/zrlib.h"

#include <algorithm>
#include <climits>
#include <gtest/gtest.h>
#include <iterator>
#include <new>
#include <random>
#include <string>
#include <utility>
#include <vector>

namespace {

struct ArrayBesideVector {
    /// Shows what the array keeps to itself.
    struct Open : ZRArray<std::string> {
        using ZRArray::GetCapacity;
        using ZRArray::GetGrowBy;
    };
    Open container; // of elements that are not plain
    std::vector<std::string> model;
    int capacity = 0;
    int growBy = 10;

    void Step(int kind, int number)
    {
        const int place = number % 12 - 2;
        if (kind < 5) {
            container.Append(std::to_string(number));
            model.push_back(std::to_string(number));
            capacity = container.GetSize();
        } else if (kind < 9) {
            container.RemoveAt(place);
            if (place >= 0 && place < static_cast<int>(model.size())) {
                model.erase(model.begin() + place);
            }
        } else {
            container.SetSize(place, number % 5 - 1);
            growBy = number % 5 > 1 ? number % 5 - 1 : 10;
            capacity = place >= 0 ? place : capacity;
            model.resize(place >= 0 ? static_cast<std::size_t>(place) : model.size());
        }
    }

    void Compare()
    {
        ASSERT_EQ((std::vector<std::string>(container.begin(), container.end())), model);
        ASSERT_EQ(container.GetData(), model.empty() ? nullptr : container.begin());
        ASSERT_EQ(container.GetCapacity(), capacity);
        ASSERT_EQ(container.GetGrowBy(), growBy);
        for (const int outside : {INT_MIN, -1, static_cast<int>(model.size()), INT_MAX}) {
            ASSERT_EQ(container.GetAt(outside), "");
            ASSERT_EQ(std::as_const(container).GetAt(outside), "");
        }
        const auto first = std::find(model.begin(), model.end(), "");
        ASSERT_EQ(container.Find(""), first != model.end() ? first - model.begin() : -1);
    }

    void IsCopy() { capacity = container.GetSize(); }
};

struct StackBesideVector {
    ZRStack<int> container;
    std::vector<int> model; // -1 for those that were cut off
    int capacity = 0;

    void Step(int kind, int number)
    {
        const int count = container.GetCount();
        int value = -1;
        if (kind < 7) {
            container.Push(number);
            model.push_back(number);
            capacity = count < capacity ? capacity : std::max(capacity + 64, count + 1);
        } else if (kind < 9) {
            const int top = count > 0 ? model.back() : -1;
            ASSERT_EQ(container.Pop(value), top != -1 ? 1 : 0);
            ASSERT_EQ(value, top);
            model.resize(model.size() - (top != -1 ? 1U : 0U));
        } else if (number % 8 == 0) {
            const bool isCutBelowTheTop = count > 0 && model.back() != -1 && std::ranges::count(model, -1) > 0;
            SetCapacity(isCutBelowTheTop ? 0 : count - number % 3);
            SetCapacity(isCutBelowTheTop ? -1 : number % 80 - 5);
        }
    }

    void SetCapacity(int room)
    {
        container.SetCapacity(room);
        capacity = room >= 0 ? room : capacity;
        model.resize(capacity > 0 ? model.size() : 0);
        std::fill(model.begin() + std::min(capacity, container.GetCount()), model.end(), -1);
        Compare();
    }

    void Compare()
    {
        const int count = container.GetCount();
        ASSERT_EQ(count, static_cast<int>(model.size()));
        ASSERT_EQ(container.GetCapacity(), capacity);
        for (int index = -1; index <= count; ++index) {
            const int expected = index >= 0 && index < count ? model[static_cast<std::size_t>(index)] : -1;
            int value = -1;
            ASSERT_EQ(container.PeekAt(index, value), expected != -1 ? 1 : 0);
            ASSERT_EQ(value, expected);
        }
        const auto cut = std::find(model.begin(), model.end(), -1);
        ASSERT_TRUE(std::equal(container.begin(), container.end(), model.begin(), cut));
    }

    void IsCopy() { capacity = (container.GetCount() + 63) / 64 * 64; }
};

struct ListBesideVector {
    ZRList<std::string> container;
    std::vector<std::string> model;

    void Step(int kind, int number)
    {
        const int distance = number % (container.GetCount() + 1);
        if (kind < 6) {
            container.Append(std::to_string(number));
            model.push_back(std::to_string(number));
        } else {
            const auto next = container.Erase(std::next(container.Begin(), distance)); // may be End
            if (distance < static_cast<int>(model.size())) {
                model.erase(model.begin() + distance);
                ASSERT_TRUE(next == std::next(container.Begin(), distance));
            }
        }
    }

    void Compare()
    {
        ASSERT_EQ(container.GetCount(), static_cast<int>(model.size()));
        ASSERT_EQ((std::vector<std::string>(container.begin(), container.end())), model);
        const std::reverse_iterator last(container.end());
        ASSERT_TRUE(std::equal(model.rbegin(), model.rend(), last));
    }

    void IsCopy() {}
};

template <typename Both> class Containers : public testing::Test {
};

using All = testing::Types<ArrayBesideVector, StackBesideVector, ListBesideVector>;
TYPED_TEST_SUITE(Containers, All, );

TYPED_TEST(Containers, KeepTheirElementsAsTheStandardOnesDo)
{
    TypeParam both;
    std::mt19937 random(5);
    const auto draw = [&random](unsigned int limit) { return static_cast<int>(random() % limit); };
    for (int step = 0; step < 2000 && !this->HasFatalFailure(); ++step) {
        SCOPED_TRACE(step);
        both.Step(draw(10), draw(1000));
        both.Compare();
        if (step % 29 == 0) {
            TypeParam copy(both);
            copy.IsCopy();
            copy.Compare();
            both.container = copy.container;
            both.IsCopy();
            both.container = std::as_const(both.container);
            copy.Step(0, 7);
            both.Compare();
            auto moved = std::move(both.container);
            both.container = std::move(moved);
            both.Compare();
        }
    }
}

TEST(Growth, CostsLittle)
{
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
    constexpr int kCount = 30'000; // their realloc copies each time
#else
    constexpr int kCount = 3'000'000;
#endif
    ZRArray<int> array;
    ZRStack<int> stack;
    for (int value = 0; value < kCount; ++value) {
        array.Append(value);
        stack.Push(value);
    }
    EXPECT_EQ(array.Find(kCount - 1), kCount - 1);
    EXPECT_EQ(stack.GetCount(), kCount);
}

#if !defined(_WIN32)
TEST(Growth, KeepsWhatIsThereWhenMemoryRunsOut)
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
