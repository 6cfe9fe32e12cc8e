/// ZRProgressRun: a run of progress that ends by itself.
#pragma once

#include "zrlib/observation/progress.h"

#include <algorithm>
#include <atomic>
#include <cstdint>
#include <limits>
#include <type_traits>

/// Begins a run when constructed and ends it when destroyed, also when an exception passes.
///
///     ZRProgressRun run("Loading", files.size());
///     for (const File& file : files) {
///         Load(file);
///         run.Step();
///     }
///
/// There is one run for the process. An object is a no-op if progress is off when it is constructed (ZRProgressEnable),
/// or another object has a run then. At the end the former range is restored, so that it does not leak into the next
/// run, and then the run ends, even if progress was turned off meanwhile. That also ends a run begun earlier with
/// ZRProgressStart. An observer that throws terminates the process, as at every event sent by its destructor.
///
/// Threads: any; steps may come from several.
class ZR_API ZRProgressRun {
public:
    /// total: the number of steps, at which the range that begins at 0 ends; any integer, clamped to 0 to
    /// 2,147,483,647.
    template <typename Total = std::int32_t, typename = std::enable_if_t<std::is_integral_v<Total>>>
    [[nodiscard]] explicit ZRProgressRun(const HCString& title, Total total = 100)
    {
        Begin(title, Limited(total));
    }
    ~ZRProgressRun();
    ZRProgressRun(const ZRProgressRun&) = delete;
    ZRProgressRun& operator=(const ZRProgressRun&) = delete;

    /// Reports that one more step is done.
    void Step()
    {
        if (m_isOwn) {
            ZRProgressUpdate(++m_done, nullptr);
        }
    }

    /// The same with a text that says which.
    void Step(const HCString& text)
    {
        if (m_isOwn) {
            HCString copy(text);
            ZRProgressUpdate(++m_done, &copy);
        }
    }

private:
    template <typename Total> static std::int32_t Limited(Total total)
    {
        constexpr auto kMost = static_cast<std::uint64_t>(std::numeric_limits<std::int32_t>::max());
        return total <= 0 ? 0 : static_cast<std::int32_t>(std::min(static_cast<std::uint64_t>(total), kMost));
    }

    void Begin(const HCString& title, std::int32_t total);
    void End() const;

    bool m_isOwn = false; // this object has begun a run
    std::int32_t m_formerMin = 0;
    std::int32_t m_formerMax = 0;
    std::atomic<std::int32_t> m_done{0};
};
