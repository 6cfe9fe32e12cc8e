#include "hcbase/error.h"

#include "hcbase/intrusive_list.h"
#include "hcbase/records.h"
#include "hcbase/system/threads.h"

#include <array>
#include <atomic>
#include <new>
#include <utility>

namespace hcbase {

/// The records of one thread, newest last in a ring. Only its thread touches the records; the links belong to the list
/// that unloading needs, because it cannot reach the storage of other threads.
struct ErrorHistory {
    static constexpr int kCapacity = 16;

    std::array<HCError, kCapacity> records;
    int newest = -1;
    int count = 0;
    ErrorHistory* next = nullptr;
    ErrorHistory* previous = nullptr;

    HCError& FromNewest(int steps)
    {
        return records[static_cast<std::size_t>((newest - steps + kCapacity) % kCapacity)];
    }

    void Clear()
    {
        for (; count > 0; --count) {
            FromNewest(count - 1) = HCError();
        }
    }

    void Add(HCError&& error)
    {
        if (error.chain == 0) {
            Clear();
        }
        newest = (newest + 1) % kCapacity;
        count = count < kCapacity ? count + 1 : kCapacity;
        FromNewest(0) = static_cast<HCError&&>(error);
    }
};

namespace {

constinit IntrusiveList<ErrorHistory> g_histories HC_GUARDED_BY(g_recordsLock);

// Unloading must not release a history that its thread is using, nor wait for that thread. So a thread announces itself
// before it asks whether the library is closed, and unloading closes before it looks for such threads.
constinit std::atomic<bool> g_closed{false};
constinit std::atomic<int> g_inside{0};

class CallUnderWay {
public:
    CallUnderWay()
    {
        g_inside.fetch_add(1); // before the load: store-then-load (Dekker) handshake with unloading, hence seq_cst
        m_isOpen = !g_closed.load();
    }
    ~CallUnderWay() { g_inside.fetch_sub(1); }
    CallUnderWay(const CallUnderWay&) = delete;
    CallUnderWay& operator=(const CallUnderWay&) = delete;

    bool IsOpen() const { return m_isOpen; }

private:
    bool m_isOpen = false;
};

ErrorHistory* FindHistory(const CallUnderWay& call)
{
    const system::PerThread* const thread = call.IsOpen() ? system::CurrentPerThread() : nullptr;
    return thread != nullptr ? thread->errors : nullptr;
}

ErrorHistory* FindOrMakeHistory(const CallUnderWay& call)
{
    system::PerThread* const thread = call.IsOpen() ? system::CurrentPerThread() : nullptr;
    if (thread == nullptr || thread->errors != nullptr) {
        return thread != nullptr ? thread->errors : nullptr;
    }
    auto* const history = new (std::nothrow) ErrorHistory;
    if (history != nullptr) {
        thread->errors = history;
        system::ReleaseErrorsAtThreadExit(*thread);
        const LockGuard guard(g_recordsLock);
        g_histories.Add(*history);
    }
    return history;
}

} // namespace

void ReleaseErrors(ErrorHistory*& errors) noexcept
{
    const CallUnderWay call;
    if (errors == nullptr || !call.IsOpen()) {
        return; // once closed, unloading releases what there is to release
    }
    {
        const LockGuard guard(g_recordsLock);
        g_histories.Remove(*errors);
    }
    delete errors;
    errors = nullptr;
}

void AbandonErrorsOfOthers(ErrorHistory* own) noexcept
{
    if (g_inside.exchange(0) != 0) { // those threads are not in the child: nobody forks from inside
        g_histories = {};
        if (own != nullptr) {
            g_histories.Add(*own);
        }
    }
}

bool ReleaseAllErrors() noexcept HC_NO_THREAD_SAFETY_ANALYSIS
{
    g_closed = true;
    if (g_inside != 0) {
        return false; // the process ends, and its memory with it
    }
    for (ErrorHistory* history = std::exchange(g_histories.first, nullptr); history != nullptr;) {
        delete std::exchange(history, history->next);
    }
    return true;
}

} // namespace hcbase

char HFErrorSet(int code, const char* text, const char* location, char chain)
{
    const hcbase::CallUnderWay call;
    hcbase::ErrorHistory* const history = hcbase::FindOrMakeHistory(call);
    if (history == nullptr) {
        return 0;
    }
    try {
        history->Add({code, text, location, chain});
        return 1;
    } catch (const std::exception&) {
        return 0; // no memory for the texts
    }
}

char HFErrorGet(HCError& error) { return HFErrorGetPrevious(0, error); }

char HFErrorGetPrevious(int steps, HCError& error)
{
    const hcbase::CallUnderWay call;
    hcbase::ErrorHistory* const history = hcbase::FindHistory(call);
    if (history == nullptr || steps < 0 || steps >= history->count) {
        return 0;
    }
    error = history->FromNewest(steps);
    return 1;
}

void HFErrorClear()
{
    const hcbase::CallUnderWay call;
    hcbase::ErrorHistory* const history = hcbase::FindHistory(call);
    if (history != nullptr) {
        history->Clear();
    }
}
