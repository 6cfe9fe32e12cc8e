/// Ring: the common part of the linked containers, and for them only.
#pragma once

#include <cstddef>
#include <iterator>
#include <memory>
#include <type_traits>
#include <utility>

namespace zr {

/// A ring of nodes with a sentinel. Each cell is allocated by itself, so its address is stable until it is erased.
///
/// Errors: std::bad_alloc; the ring is then unchanged.
template <typename Cell> class Ring {
    struct Node {
        Node* previous = nullptr;
        Node* next = nullptr;
        Cell* cell = nullptr; // owned; null in the sentinel
    };

public:
    template <typename Element> class BasicIterator {
    public:
        using iterator_category = std::bidirectional_iterator_tag;
        using value_type = Cell;
        using difference_type = std::ptrdiff_t;
        using pointer = Element*;
        using reference = Element&;

        constexpr BasicIterator() = default;

        /// Converts an iterator to mutable elements into one to const elements.
        template <typename Other, typename = std::enable_if_t<std::is_convertible_v<Other*, Element*>>>
        BasicIterator(const BasicIterator<Other>& other)
            : m_node(other.m_node)
        {
        }

        Element& operator*() const { return *m_node->cell; }
        Element* operator->() const { return m_node->cell; }

        BasicIterator& operator++()
        {
            m_node = m_node->next;
            return *this;
        }
        BasicIterator operator++(int)
        {
            BasicIterator before = *this;
            ++*this;
            return before;
        }
        BasicIterator& operator--()
        {
            m_node = m_node->previous;
            return *this;
        }
        BasicIterator operator--(int)
        {
            BasicIterator before = *this;
            --*this;
            return before;
        }

        friend bool operator==(const BasicIterator& left, const BasicIterator& right)
        {
            return left.m_node == right.m_node;
        }
        friend bool operator!=(const BasicIterator& left, const BasicIterator& right)
        {
            return left.m_node != right.m_node;
        }

    private:
        friend class Ring;
        template <typename Other> friend class BasicIterator;

        explicit BasicIterator(Node* node)
            : m_node(node)
        {
        }

        Node* m_node = nullptr; // not owned
    };

    using Iterator = BasicIterator<Cell>;
    using ConstIterator = BasicIterator<const Cell>;

    Ring() noexcept { SetEmpty(); }

    Ring(const Ring& other)
        : Ring()
    {
        for (auto position = other.Begin(); position != other.End(); ++position) {
            InsertBefore(End(), *position);
        }
    }

    Ring& operator=(const Ring& other)
    {
        if (this != &other) {
            Ring copy(other);
            Swap(copy);
        }
        return *this;
    }

    /// Takes the cells of `other`, which is empty afterwards.
    Ring(Ring&& other) noexcept
        : Ring()
    {
        Swap(other);
    }
    Ring& operator=(Ring&& other) noexcept
    {
        Ring taken(std::move(other));
        Swap(taken);
        return *this;
    }

    ~Ring() { Clear(); }

    /// Swaps the cells. Iterators to cells stay valid in the other ring; those that are End() stay with their own.
    void Swap(Ring& other) noexcept
    {
        std::swap(m_head, other.m_head);
        std::swap(m_count, other.m_count);
        CloseAtHead();
        other.CloseAtHead();
    }

    Iterator Begin() { return Iterator(m_head.next); }
    Iterator End() { return Iterator(&m_head); }
    ConstIterator Begin() const { return ConstIterator(m_head.next); }
    ConstIterator End() const { return ConstIterator(const_cast<Node*>(&m_head)); } // the sentinel has no cell

    int GetCount() const { return m_count; }

    /// Inserts a copy of `cell` before an iterator, which may be End(). Returns an iterator to it.
    Iterator InsertBefore(Iterator next, const Cell& cell)
    {
        auto owned = std::make_unique<Cell>(cell);
        Node* const node = new Node;
        node->previous = next.m_node->previous;
        node->next = next.m_node;
        node->cell = owned.release();
        node->previous->next = node;
        node->next->previous = node;
        ++m_count;
        return Iterator(node);
    }

    /// Removes a cell and returns the iterator behind it. End() is not removed.
    Iterator Erase(Iterator position)
    {
        Node* const node = position.m_node;
        const Iterator next(node->next);
        if (node != &m_head) {
            node->previous->next = node->next;
            node->next->previous = node->previous;
            --m_count;
            delete node->cell;
            delete node;
        }
        return next;
    }

    void Clear()
    {
        for (Node* node = m_head.next; node != &m_head;) {
            Node* const next = node->next;
            delete node->cell;
            delete node;
            node = next;
        }
        SetEmpty();
    }

private:
    void SetEmpty() noexcept
    {
        m_head.next = &m_head;
        m_head.previous = &m_head;
        m_count = 0;
    }

    /// Closes the ring at this head, which has just received the links of another.
    void CloseAtHead() noexcept
    {
        if (m_count == 0) {
            SetEmpty();
        } else {
            m_head.next->previous = &m_head;
            m_head.previous->next = &m_head;
        }
    }

    Node m_head; // the sentinel; owns the ring
    int m_count; // of cells
};

} // namespace zr
