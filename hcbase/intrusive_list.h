/// IntrusiveList: a doubly linked list of objects that contain their own links. Not exported.
#pragma once

namespace hcbase {

/// Constant-initialised and trivially destroyed; owns nothing. `Element` has the members `next` and `previous`, which
/// belong to the list.
template <typename Element> struct IntrusiveList {
    Element* first = nullptr;

    void Add(Element& element) noexcept
    {
        element.next = first;
        element.previous = nullptr;
        if (first != nullptr) {
            first->previous = &element;
        }
        first = &element;
    }

    void Remove(Element& element) noexcept
    {
        (element.previous != nullptr ? element.previous->next : first) = element.next;
        if (element.next != nullptr) {
            element.next->previous = element.previous;
        }
    }
};

} // namespace hcbase
