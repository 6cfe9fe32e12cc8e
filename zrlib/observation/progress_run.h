/// ZRProgressRun: a run of progress that ends by itself.
#pragma once

#include "zrlib/observation/progress.h"

#include <atomic>
#include <cstdint>

/// Begins a run when it is built and ends it when it goes, also when an exception passes.
///
///     ZRProgressRun run("Loading", static_cast<int>(files.size()));
///     for (const File& file : files) {
///         Load(file);
///         run.Step();
///     }
///
/// While progress is off nothing happens (ZRProgressEnable). There is one run for the process. At the end the range is
/// put back to what it was, so that it does not leak into the next run, and then the run ends. An observer that throws
/// ends the process, as at every event that is sent by its destructor.
///
/// Threads: any; steps may come from several.
class [[nodiscard]] ZRProgressRun {
public:
    /// total: number of steps, the end of the range that begins at 0.
    explicit ZRProgressRun(const HCString& title, std::int32_t total = 100)
    {
        ZRProgressStart(title);
        ZRProgressSetRange(0, total);
    }
    ~ZRProgressRun()
    {
        ZRProgressSetRange(m_formerMin, m_formerMax);
        ZRProgressEnd();
    }
    ZRProgressRun(const ZRProgressRun&) = delete;
    ZRProgressRun& operator=(const ZRProgressRun&) = delete;

    /// One more step is done.
    void Step() { ZRProgressUpdate(++m_done, nullptr); }

    /// The same with a text that says which.
    void Step(const HCString& text)
    {
        HCString copy(text);
        ZRProgressUpdate(++m_done, &copy);
    }

private:
    std::int32_t m_formerMin = ZRProgressGetRangeMin();
    std::int32_t m_formerMax = ZRProgressGetRangeMax();
    std::atomic<std::int32_t> m_done{0};
};
