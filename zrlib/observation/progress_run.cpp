#include "zrlib/observation/progress_run.h"

namespace {

constinit std::atomic<bool> g_isOpen{false}; // an object has begun the run of the process

} // namespace

ZRProgressRun::~ZRProgressRun()
{
    if (m_isOwn) {
        End();
    }
}

void ZRProgressRun::Begin(const HCString& title, std::int32_t total)
{
    if (ZRProgressEnabled() == 0 || g_isOpen.exchange(true)) {
        return;
    }
    m_isOwn = true;
    m_formerMin = ZRProgressGetRangeMin();
    m_formerMax = ZRProgressGetRangeMax();
    try {
        ZRProgressStart(title);
        ZRProgressSetRange(0, total);
    } catch (...) { // of an observer, or there is no memory
        End();
        throw;
    }
}

void ZRProgressRun::End() const
{
    struct Closing {
        const char wasOn = ZRProgressEnabled();
        ~Closing()
        {
            ZRProgressEnable(wasOn);
            g_isOpen = false;
        }
    };
    const Closing closing;
    ZRProgressEnable(1);
    ZRProgressSetRange(m_formerMin, m_formerMax);
    ZRProgressEnd();
}
