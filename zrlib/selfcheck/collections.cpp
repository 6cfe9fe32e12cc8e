#include "zrlib/containers/stack.h"
#include "zrlib/messaging/message_functions.h"
#include "zrlib/selfcheck/self_checks.h"

namespace {

/// Reports both numbers if they differ.
bool Require(int required, int found)
{
    if (found == required) {
        return true;
    }
    HCString text;
    text.Format("Required %d but got %d", required, found);
    ZROut(text, nullptr, 1);
    return false;
}

bool StackKeepsItsElements()
{
    constexpr int kElements = 4;
    ZRStack<int> stack;
    for (int element = 0; element < kElements; ++element) {
        stack.Push(element);
    }
    for (int index = 0; index < stack.GetCount(); ++index) {
        int element = 0;
        stack.PeekAt(index, element);
        if (!Require(index, element)) {
            return false;
        }
    }
    int top = 0;
    return Require(kElements, stack.GetCount()) //
        && (stack.Pop(top), Require(kElements - 1, top)) //
        && Require(kElements - 1, stack.GetCount()) //
        && (stack.Pop(top), stack.Peek(top), Require(1, top)) //
        && Require(2, stack.GetCount());
}

} // namespace

int ZRTestCollections(char messages)
{
    ZRSetMessagesEnabled(messages);
    ZROut("Test stack...", nullptr, 1);
    if (!StackKeepsItsElements()) {
        ZRError("Stack test failed", nullptr, 1);
        return 0;
    }
    ZROut("Stack test OK", nullptr, 1);
    return 1;
}
