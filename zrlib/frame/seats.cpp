#include "zrlib/frame/seats.h"

#include "zrlib/platform/process_end.h"

#include <memory>
#include <utility>

namespace zr {

constinit std::array<Seat, Seats::kCount> Seats::s_seats{};
constinit std::atomic<Seats::Block*> Seats::s_blocks{nullptr};
constinit std::atomic<int> Seats::s_walkers{0};

static_assert(std::size_t{1} << (64U - 57U) == 128, "IndexOf gives an index of a seat");

Seat& Seats::TakeAnother(std::uintptr_t self)
{
    const std::size_t first = IndexOf(self);
    for (std::size_t distance = 1; distance < kCount; ++distance) {
        Seat& seat = s_seats[(first + distance) % kCount];
        if (TakeIfFree(seat, self)) {
            return seat;
        }
    }
    const Walker walker;
    for (Block* block = s_blocks.load(); block != nullptr; block = block->next) {
        for (Seat& seat : block->seats) {
            if (TakeIfFree(seat, self)) {
                return seat;
            }
        }
    }
    auto more = std::make_unique<Block>();
    Seat& seat = more->seats.front();
    seat.owner.store(self, std::memory_order_relaxed);
    more->next = s_blocks.load();
    while (!s_blocks.compare_exchange_weak(more->next, more.get())) {}
    static_cast<void>(more.release());
    return seat;
}

bool Seats::IsAnyTaken()
{
    bool isTaken = OtherThreadsAreGone();
    ForEach([&isTaken](const Seat& seat) { isTaken = isTaken || seat.owner.load() != 0; });
    return isTaken;
}

void Seats::FreeThoseOfOthers()
{
    s_walkers = 0; // no thread forks while it walks
    const std::uintptr_t self = ThreadMark();
    ForEach([self](Seat& seat) {
        if (seat.owner.load(std::memory_order_relaxed) != self) {
            seat.call.store(0, std::memory_order_relaxed);
            seat.subject.store(nullptr, std::memory_order_relaxed);
            seat.owner.store(0, std::memory_order_relaxed);
        }
    });
}

void Seats::Release()
{
    Block* block = s_blocks.exchange(nullptr);
    if (s_walkers != 0) {
        return; // the process ends, and its memory with it
    }
    while (block != nullptr) {
        delete std::exchange(block, block->next);
    }
}

} // namespace zr
