#include "zrlib/utilities/key.h"

#include "hcbase/format.h"
#include "hcbase/string.h"
#include "zrlib/frame/relaxed.h"
#include "zrlib/frame/report.h"
#include "zrlib/numerics/random.h"
#include "zrlib/platform/tick_counter.h"

using zr::kRelaxed;

namespace {

HCString Digits(std::int64_t value)
{
    constexpr int kDecimal = 10;
    return HFFormat64(value, kDecimal, 0);
}

/// Reports what was done with a ticket, if that is wanted. Returns the ticket.
std::int64_t Announce(const char* what, std::int64_t ticket)
{
    if (ZRKey::GetVerbose() != 0) {
        HCString text;
        text.Format("%s %s", what, static_cast<const char*>(Digits(ticket)));
        zr::ReportOut(text);
    }
    return ticket;
}

} // namespace

constinit std::atomic<char> ZRKey::m_bVerbose{0};
constinit std::atomic<std::int64_t> ZRKey::m_nTicket{0};

char ZRKey::GetVerbose() { return m_bVerbose.load(kRelaxed); }

std::int64_t ZRKey::GetLastTicket() { return Announce("Last ticket was", m_nTicket.load(kRelaxed)); }

std::int64_t ZRKey::GetNextTicket() { return Announce("Next ticket will be", m_nTicket.load(kRelaxed) + 1); }

std::int64_t ZRKey::IssueTicket() { return Announce("Issued key", m_nTicket.fetch_add(1, kRelaxed) + 1); }

int ZRGenerateKey(HCString& key, int value)
{
    const HCString ticks = Digits(zr::ReadTicks());
    const auto random = static_cast<unsigned int>(zr::Random());
    key.Format("K:%08X:%04X:%s", static_cast<unsigned int>(value), random, static_cast<const char*>(ticks));
    return key.GetLength();
}

int ZRShortID(int code)
{
    constexpr int kLowWord = 0xFFFF;
    return code & kLowWord;
}
