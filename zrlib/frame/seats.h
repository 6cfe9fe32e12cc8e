/// Seats: which threads are inside the library, and what they do there. Not exported.
#pragma once

#include "zrlib/platform/single_threaded.h"
#include "zrlib/platform/thread_mark.h"

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>

namespace zr {

/// What others may know of a thread that is inside. It has a cache line of its own, so that threads that enter and
/// leave at the same time do not slow each other down.
struct alignas(64) Seat {
    std::atomic<std::uintptr_t> owner{0}; // mark of the thread; 0 while the seat is free

    // For broadcasts (observation/observer_call.h); the first two are null otherwise.
    std::atomic<std::uintptr_t> call{0};
    std::atomic<const void*> subject{nullptr};
    std::atomic<const void*> observer{nullptr};
    std::atomic<std::uint32_t> endedCalls{0}; // written by the owner
};

class Seats {
public:
    /// Returns a free seat, which belongs to the calling thread until Leave. Throws std::bad_alloc when all are taken
    /// and there is no memory for more.
    static Seat& Take()
    {
        const std::uintptr_t self = ThreadMark();
        Seat& first = s_seats[IndexOf(self)];
        return TakeIfFree(first, self) ? first : TakeAnother(self);
    }

    static void Leave(Seat& seat) noexcept { seat.owner.store(0, std::memory_order_release); }

    /// Calls `visit(Seat&)` for every seat, also for free ones.
    template <typename Visit> static void ForEach(Visit visit)
    {
        for (Seat& seat : s_seats) {
            visit(seat);
        }
        const Walker walker;
        for (Block* block = s_blocks.load(); block != nullptr; block = block->next) {
            for (Seat& seat : block->seats) {
                visit(seat);
            }
        }
    }

    /// Whether any thread is inside, the calling one included. Also true when the system has ended the other threads:
    /// one may have been inside, or in the middle of an allocation, so that nothing can be freed any more.
    static bool IsAnyTaken();

    /// For a forked child: frees the seats of all threads but the calling one.
    static void FreeThoseOfOthers();

    /// Frees the added blocks. For unloading, when no thread is inside.
    static void Release();

private:
    static constexpr std::size_t kCount = 128; // in each block; a power of two

    struct Block {
        std::array<Seat, kCount> seats;
        Block* next = nullptr;
    };

    /// Exists while a thread walks the blocks, which must not be released meanwhile.
    struct Walker {
        Walker() { s_walkers.fetch_add(1); }
        ~Walker() { s_walkers.fetch_sub(1); }
        Walker(const Walker&) = delete;
        Walker& operator=(const Walker&) = delete;
    };

    /// Where a thread looks first. Multiplicative hashing (Knuth, The Art of Computer Programming, volume 3, section
    /// 6.4) spreads the marks, which are addresses.
    static std::size_t IndexOf(std::uintptr_t mark)
    {
        return static_cast<std::size_t>((mark * std::uint64_t{0x9E3779B97F4A7C15U}) >> 57U);
    }

    static bool TakeIfFree(Seat& seat, std::uintptr_t self)
    {
        if (seat.owner.load(std::memory_order_relaxed) != 0) {
            return false;
        }
        if (IsSingleThreaded()) {
            seat.owner.store(self, std::memory_order_relaxed);
            return true;
        }
        // Sequentially consistent: a thread that takes a seat and then asks whether the module is alive, and one that
        // ends the module and then looks for taken seats, must not both miss what the other did.
        std::uintptr_t nobody = 0;
        return seat.owner.compare_exchange_strong(nobody, self);
    }

    static Seat& TakeAnother(std::uintptr_t self);

    static std::array<Seat, kCount> s_seats;
    static std::atomic<Block*> s_blocks; // added when s_seats is full
    static std::atomic<int> s_walkers;
};

} // namespace zr
