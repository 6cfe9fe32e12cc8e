/// ZRKey: tickets, and keys made of text.
#pragma once

#include "zrlib/export.h"

#include <atomic>
#include <cstdint>

class HCString;

/// The tickets of the process: each is one more than the last, starting at 1. A derived class may set m_bVerbose, which
/// makes each operation report what it does with ZROut.
///
/// Threads: any. No ticket is issued twice; the next ticket may be issued to another thread.
class ZR_API ZRKey {
public:
    /// The ticket that was issued last; 0 when none was.
    [[nodiscard]] static std::int64_t GetLastTicket();

    /// The ticket that would be issued now. Does not reserve it.
    [[nodiscard]] static std::int64_t GetNextTicket();

    /// Issues the next ticket, which nobody else gets.
    static std::int64_t IssueTicket();

    /// Whether operations report what they do.
    [[nodiscard]] static char GetVerbose();

protected:
    static std::atomic<char> m_bVerbose; // initially 0
    static std::atomic<std::int64_t> m_nTicket;
};

extern "C" {

/// Overwrites `key` with "K:", `value` in hexadecimal, a random number in hexadecimal and the clock's ticks, separated
/// by colons: "K:0000002A:1F3C:123456789012". Returns its length. Draws a number from the standard library's rand,
/// without seeding it. Threads: any, each with a key of its own.
ZR_API int ZRGenerateKey(HCString& key, int value);

/// The short ID of an object code: its low 16 bits. The code is not checked. Threads: any.
[[nodiscard]] ZR_API int ZRShortID(int code);
}
