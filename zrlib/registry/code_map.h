/// ZRCodeMap: values sorted by an integer key.
#pragma once

#include <cstddef>
#include <iterator>
#include <memory>
#include <utility>

/// Pairs of a key and a value in rising order of the keys; a key occurs once.
///
/// The pairs hang on a ring of nodes with a sentinel, so they stay where they are while others come and go: a reference
/// to a value and an iterator hold until their own pair is erased. A key is sought from the first node on, in linear
/// time; who knows a place (an iterator) inserts and erases there in constant time, and a key behind the last one is
/// inserted in constant time too.
///
/// Errors: std::bad_alloc, also when it is built; the map then is as it was. Threads: one object may be read by several
/// threads at once or used by one.
template <typename T> class ZRCodeMap {
public:
    using Pair = std::pair<const int, T>;

    template <typename Element> class BasicIterator;

    /// Walks through the pairs: `first` is the key, `second` the value.
    using Iterator = BasicIterator<Pair>;
    using ConstIterator = BasicIterator<const Pair>;

    ZRCodeMap()
        : m_head(new Node)
    {
        SetEmpty();
    }

    /// Copies the values too.
    ZRCodeMap(const ZRCodeMap& other)
        : ZRCodeMap()
    {
        for (const Pair& pair : other) {
            Insert(pair.first, pair.second);
        }
    }

    ZRCodeMap& operator=(const ZRCodeMap& other)
    {
        if (this != &other) {
            ZRCodeMap copy(other);
            Swap(copy);
        }
        return *this;
    }

    ~ZRCodeMap()
    {
        Clear();
        delete m_head;
    }

    void Swap(ZRCodeMap& other) noexcept
    {
        std::swap(m_head, other.m_head);
        std::swap(m_first, other.m_first);
        std::swap(m_last, other.m_last);
        std::swap(m_count, other.m_count);
    }

    Iterator Begin() { return Iterator(m_first); }
    Iterator End() { return Iterator(m_head); }
    ConstIterator Begin() const { return ConstIterator(m_first); }
    ConstIterator End() const { return ConstIterator(m_head); }

    // For range-based loops.
    Iterator begin() { return Begin(); }
    Iterator end() { return End(); }
    ConstIterator begin() const { return Begin(); }
    ConstIterator end() const { return End(); }

    int GetCount() const { return m_count; }

    /// The pair with the key; End() when there is none.
    Iterator Find(int key) { return Iterator(FindNode(key)); }
    ConstIterator Find(int key) const { return ConstIterator(FindNode(key)); }

    /// Adds a pair and gives its place and true. When the key is there already nothing changes: End() and false.
    std::pair<Iterator, bool> Insert(int key, const T& value) { return Insert(Iterator(NodeFrom(key)), key, value); }

    /// The same for a caller that knows the first pair whose key is not less than `key`, End() when there is none. At
    /// any other place the order is lost.
    std::pair<Iterator, bool> Insert(Iterator next, int key, const T& value)
    {
        if (HasKey(next.m_node, key)) {
            return {End(), false};
        }
        return {Iterator(InsertBefore(next.m_node, key, value)), true};
    }

    /// The value of the key, which is inserted with a default value when it is not there.
    T& operator[](int key)
    {
        Node* const node = NodeFrom(key);
        return HasKey(node, key) ? node->pair->second : InsertBefore(node, key, T())->pair->second;
    }

    /// Removes a pair. 1, or 0 when the key is not there.
    char Erase(int key)
    {
        const Iterator place = Find(key);
        if (place == End()) {
            return 0;
        }
        Erase(place);
        return 1;
    }

    /// Removes the pair at a place other than End().
    void Erase(Iterator place)
    {
        Node* const node = place.m_node;
        node->previous->next = node->next;
        node->next->previous = node->previous;
        m_first = m_head->next;
        m_last = m_head->previous;
        --m_count;
        delete node->pair;
        delete node;
    }

    void Clear()
    {
        for (Node* node = m_first; node != m_head;) {
            Node* const next = node->next;
            delete node->pair;
            delete node;
            node = next;
        }
        SetEmpty();
    }

private:
    struct Node {
        Node* previous = nullptr;
        Node* next = nullptr;
        Pair* pair = nullptr; // owned; null in the sentinel
    };

    bool HasKey(const Node* node, int key) const { return node != m_head && node->pair->first == key; }

    /// The first node whose key is not less than `key`; the sentinel when there is none.
    Node* NodeFrom(int key) const
    {
        if (m_count == 0 || m_last->pair->first < key) {
            return m_head;
        }
        Node* node = m_first;
        while (node->pair->first < key) {
            node = node->next;
        }
        return node;
    }

    Node* FindNode(int key) const
    {
        Node* const node = NodeFrom(key);
        return HasKey(node, key) ? node : m_head;
    }

    Node* InsertBefore(Node* next, int key, const T& value)
    {
        auto pair = std::make_unique<Pair>(key, value);
        auto node = std::make_unique<Node>();
        node->previous = next->previous;
        node->next = next;
        node->pair = pair.release();
        Node* const linked = node.release();
        linked->previous->next = linked;
        linked->next->previous = linked;
        m_first = m_head->next;
        m_last = m_head->previous;
        ++m_count;
        return linked;
    }

    void SetEmpty()
    {
        m_head->next = m_head;
        m_head->previous = m_head;
        m_first = m_head;
        m_last = m_head;
        m_count = 0;
    }

    Node* m_head; // the sentinel; owned, and with it the ring
    Node* m_first;
    Node* m_last;
    int m_count; // of pairs
};

template <typename T> template <typename Element> class ZRCodeMap<T>::BasicIterator {
public:
    using iterator_category = std::bidirectional_iterator_tag;
    using value_type = Pair;
    using difference_type = std::ptrdiff_t;
    using pointer = Element*;
    using reference = Element&;

    BasicIterator() = default;

    Element& operator*() const { return *m_node->pair; }
    Element* operator->() const { return m_node->pair; }

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

    bool operator==(const BasicIterator& other) const { return m_node == other.m_node; }
    bool operator!=(const BasicIterator& other) const { return m_node != other.m_node; }

private:
    friend class ZRCodeMap;

    explicit BasicIterator(Node* node)
        : m_node(node)
    {
    }

    Node* m_node = nullptr; // not owned
};
