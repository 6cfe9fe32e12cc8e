#include "zrlib/observation/progress_run.h"

#include "zrlib/platform/fork_hooks.h"

namespace {

constinit std::atomic<std::uint32_t> g_openIn{
    0}; // fork generation, plus 1, of the process in which an object has a run

} // namespace

ZRProgressRun::~ZRProgressRun()
{
    if (m_isOwn) {
        End();
    }
}

void ZRProgressRun::Begin(const HCString& title, std::int32_t total)
{
    const std::uint32_t here = zr::ForkGeneration() + 1;
    if (ZRProgressEnabled() == 0 || g_openIn.exchange(here) == here) {
        return;
    }
    m_isOwn = true;
    m_formerMin = ZRProgressGetRangeMin();
    m_formerMax = ZRProgressGetRangeMax();
    try {
        ZRProgressStart(title);
        ZRProgressSetRange(0, total);
    } catch (...) { // out of memory
        End();
        throw;
    }
}

void ZRProgressRun::End() const
{
    struct Closing {
        const char wasOn = ZRProgressEnabled();
        Closing()
        {
            if (wasOn == 0) {
                ZRProgressEnable(1);
            }
        }
        ~Closing()
        {
            if (wasOn == 0) {
                ZRProgressEnable(0);
            }
            g_openIn = 0;
        }
    };
    const Closing closing;
    ZRProgressSetRange(m_formerMin, m_formerMax);
    ZRProgressEnd();
}
