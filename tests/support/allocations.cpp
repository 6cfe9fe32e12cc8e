#include "tests/support/allocations.h"

#include <atomic>
#include <climits>
#include <cstdlib>
#include <new>

namespace {

constexpr long kEndless = LONG_MAX;

std::atomic<long> g_count{0};
std::atomic<long> g_limit{kEndless};

void* Allocate(std::size_t size) noexcept
{
    if (g_count.fetch_add(1, std::memory_order_relaxed) >= g_limit.load(std::memory_order_relaxed)) {
        return nullptr;
    }
    return std::malloc(size != 0 ? size : 1);
}

} // namespace

long test::AllocationCount() { return g_count.load(std::memory_order_relaxed); }

test::FailingHeap::FailingHeap(long allocations) { g_limit.store(AllocationCount() + allocations); }

test::FailingHeap::~FailingHeap() { g_limit.store(kEndless); }

void* operator new(std::size_t size)
{
    void* const memory = Allocate(size);
    if (memory == nullptr) {
        throw std::bad_alloc();
    }
    return memory;
}

// The forms for arrays, too: a sanitizer has its own.

void* operator new[](std::size_t size) { return operator new(size); }
void operator delete[](void* memory) noexcept { std::free(memory); }
void operator delete[](void* memory, std::size_t) noexcept { std::free(memory); }

void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return Allocate(size); }
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, const std::nothrow_t&) noexcept { std::free(memory); }
