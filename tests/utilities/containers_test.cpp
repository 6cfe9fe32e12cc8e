#include "hcbase/hcbase.h"
#include "tests/support/allocations.h"
#include "zrlib/zrlib.h"

#include <gtest/gtest.h>
#include <iterator>
#include <new>
#include <string>
#include <utility>

namespace {

/// Shows what an array keeps to itself. Its elements are not plain.
struct Array : ZRArray<std::string> {
    using ZRArray::GetCapacity;
    using ZRArray::GetGrowBy;
};
using Stack = ZRStack<char>;
using List = ZRList<std::string>;

/// The elements, each with a comma behind it.
template <typename Container> std::string Elements(const Container& container)
{
    std::string text;
    for (const auto& element : container) {
        text += element;
        text += ',';
    }
    return text;
}

/// A point for each element that was cut off.
std::string Elements(const Stack& stack)
{
    std::string text;
    for (int index = -1; index <= stack.GetCount(); ++index) {
        char value = '.';
        const bool isThere = stack.PeekAt(index, value) != 0;
        EXPECT_EQ(isThere, value != '.');
        text += value;
    }
    EXPECT_EQ("." + std::string(stack.begin(), stack.end()), text.substr(0, text.find('.', 1)));
    return text.substr(1, text.size() - 2);
}

/// A container, its copies and what they are moved to have these elements.
template <typename Container> void Expect(Container& container, const std::string& elements, int capacity = 0)
{
    SCOPED_TRACE(elements);
    if constexpr (requires { container.GetCapacity(); }) {
        EXPECT_EQ(container.GetCapacity(), capacity);
    }
    Container copy(container);
    EXPECT_EQ(Elements(copy), elements);
    Container moved(std::move(copy));
    copy = container;
    moved.Swap(copy);
    container = std::as_const(container);
    copy = std::move(moved);
    EXPECT_EQ(Elements(copy), elements);
    EXPECT_EQ(Elements(container), elements);
}

TEST(Containers, ArrayHasRoomForWhatWasAskedFor)
{
    Array array;
    EXPECT_EQ(array.GetGrowBy(), 10);
    array.Append("a");
    Expect(array, "a,", 1);
    array.SetSize(4, 1);
    array.Append("b");
    Expect(array, "a,,,,b,", 5);
    for (const int place : {1, 3, 3, -1}) { // the last two of which are outside
        array.RemoveAt(place);
    }
    EXPECT_EQ(Array(array).GetCapacity(), 3);
    EXPECT_EQ(array.GetGrowBy(), 1);
    array.SetSize(-1, 0);
    EXPECT_EQ(array.GetGrowBy(), 10);
    Expect(array, "a,,,", 5);
    array.SetSize(5, 0);
    Expect(array, "a,,,,,", 5); // the b has gone
    array.GetAt(4) = "c";
    EXPECT_EQ(array.Find(""), 1);
    EXPECT_EQ(std::as_const(array).GetAt(4), "c");
    array.RemoveAt(0);
    EXPECT_EQ(array.GetAt(4), "") << "though there is room for it";
    EXPECT_EQ(std::as_const(array).GetAt(-1), "");
    EXPECT_EQ(array.Find("a"), -1);
    Expect(array, ",,,c,", 5);
    array.SetSize(1, 0);
    EXPECT_EQ(array.GetData(), array.begin());
    array.RemoveAt(0);
    EXPECT_EQ(array.GetData(), nullptr);
    Expect(array, "", 1);
    array.SetSize(0, 0);
    Expect(array, "", 0);
}

TEST(Containers, StackCountsTheElementsThatASmallerCapacityCutsOff)
{
    Stack stack;
    char value = '.';
    EXPECT_EQ(stack.Pop(value), 0);
    for (int count = 0; count < 65; ++count) {
        EXPECT_EQ(Stack(stack).GetCapacity(), (count + 63) / 64 * 64);
        stack.Push('a');
    }
    Expect(stack, std::string(65, 'a'), 128);
    stack.SetCapacity(1);
    stack.Push('b'); // for which one step would be too little
    Expect(stack, "a" + std::string(64, '.') + "b", 66);
    stack.SetCapacity(0);
    Expect(stack, "", 0);
    stack.Push('a');
    stack.Push('b');
    Expect(stack, "ab", 64);
    stack.SetCapacity(2);
    stack.SetCapacity(-1);
    Expect(stack, "ab", 2);
    stack.SetCapacity(1);
    EXPECT_EQ(stack.Pop(value), 0);
    EXPECT_EQ(value, '.');
    stack.SetCapacity(3);
    stack.Push('c');
    Expect(stack, "a.c", 3);
    EXPECT_EQ(stack.Pop(value), 1);
    EXPECT_EQ(value, 'c');
    Expect(stack, "a.", 3);
}

TEST(Containers, ListKeepsTheOrderInBothDirections)
{
    List list;
    EXPECT_TRUE(list.Erase(list.End()) == list.Begin());
    Expect(list, "");
    for (const char* const element : {"a", "b", "c"}) {
        list.Append(element);
    }
    Expect(list, "a,b,c,");
    EXPECT_EQ(*list.Erase(std::next(list.Begin())), "c");
    EXPECT_EQ(*std::prev(list.End(), 2), "a");
    EXPECT_EQ(*list.Erase(list.Begin()), "c");
    EXPECT_TRUE(list.Erase(list.End()) == list.Begin());
    EXPECT_EQ(list.GetCount(), 1);
    Expect(list, "c,");
    EXPECT_TRUE(list.Erase(list.Begin()) == list.End());
    Expect(list, "");
}

#if !defined(_WIN32)
TEST(Containers, KeepWhatIsThereWhenMemoryRunsOut)
{
    Array array;
    ZRStack<HCString> stack; // elements that are not plain are allocated where the test can see it
    List list;
    array.Append("kept");
    stack.Push("kept");
    list.Append("kept");
    {
        const test::FailingHeap heap(0);
        EXPECT_THROW(array.Append("a"), std::bad_alloc);
        EXPECT_THROW(stack.SetCapacity(1000), std::bad_alloc);
        EXPECT_THROW(list.Append("a"), std::bad_alloc);
    }
    HCString top;
    EXPECT_EQ(stack.Pop(top), 1);
    EXPECT_EQ(top, "kept");
    EXPECT_EQ(Elements(array), "kept,");
    EXPECT_EQ(Elements(list), "kept,");
}
#endif

} // namespace
