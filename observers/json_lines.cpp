#include "zrobservers/json_lines.h"

#include "event_buffer.h"
#include "from_root.h"
#include "hcbase/text_io.h"
#include "json.h"
#include "message_types.h"
#include "quietly.h"
#include "switch_guards.h"
#include "system.h"
#include "time_stamp.h"

#include <atomic>
#include <chrono>
#include <mutex>
#include <optional>

namespace {

using Clock = std::chrono::system_clock;

/// When and on which thread an event was sent, whichever thread handles it.
ZREventOrigin OriginOf()
{
    if (const ZREventOrigin* const origin = ZREventQueue::GetOrigin(); origin != nullptr) {
        return *origin;
    }
    const ZRProfilerRun* const run = ZRProfiler::GetEnding();
    return {Clock::now(), zrobservers::ThreadId(), run != nullptr ? *run : ZRProfilerRun{}};
}

} // namespace

class ZRJsonLines::Lines {
public:
    Lines(const HCString& path, int what, const ZRFilter& filter)
        : m_path(zrobservers::FromRoot(path))
        , m_filter(filter)
    {
        using zrobservers::Quietly;
        TryFile();
        if ((what & kMessages) != 0) {
            m_messages = ZRListener(*ZRGetMessageHandler(), Quietly(*this, &Lines::OnMessage));
        }
        if ((what & kTimers) != 0) {
            m_profilerOn.emplace();
            m_timers = ZRListener(*ZRGetProfilerStateHandler(), Quietly(*this, &Lines::OnTimer));
        }
        if ((what & kProgress) != 0) {
            m_progress = ZRListener(Quietly(*this, &Lines::OnProgress));
        }
    }

    Lines(ZRObservedObject& subject, const HCString& path, const ZRFilter& filter)
        : m_path(zrobservers::FromRoot(path))
        , m_filter(filter)
    {
        TryFile();
        m_messages = ZRListener(subject, zrobservers::Quietly(*this, &Lines::OnAny));
    }

    bool IsSound() const { return m_isSound.load(std::memory_order_relaxed); }

private:
    using Object = zrobservers::JsonObject;

    struct Buffers {
        zrobservers::JsonBuffer buffer;
        Object::Writer writer;
    };

    void TryFile()
    {
        if (HCTextIo file(m_path); !Open(file)) {
            Fail();
        }
    }

    void OnAny(const ZRObservedObjectEvent& event)
    {
        OnMessage(event);
        OnTimer(event);
        OnProgress(event);
    }

    void OnMessage(const ZRObservedObjectEvent& event)
    {
        const ZRMsg& message = event.GetMsg();
        if (event.GetCode() != ZR_EVENT_MESSAGE || !m_filter.Takes(message)) {
            return;
        }
        Write(
            "message",
            [&message](Object& object) {
                object.AddPlain("type", zrobservers::NameOfType(message.GetType()))
                    .Add("level", Number(message.GetLevel()));
                object.Add("code", Number(message.GetCode())).Add("chain", message.GetChainToPrevious() != 0);
                object.Add("place", message.GetLocation());
            },
            [&message](Object& object) { object.Add("text", message.GetText()).Add("textEx", message.GetTextEx()); });
    }

    void OnTimer(const ZRObservedObjectEvent& event)
    {
        if (event.GetCode() != ZR_EVENT_PROFILER_STATE) {
            return;
        }
        const ZREventOrigin origin = OriginOf();
        const ZRProfilerState& state = event.GetProfilerState();
        if (origin.run.ticksPerSecond == 0 || !m_filter.TakesPlace(state.GetLocation())) {
            return; // a state that a client has sent itself
        }
        const double seconds = static_cast<double>(origin.run.length) / static_cast<double>(origin.run.ticksPerSecond);
        const auto length = std::chrono::duration_cast<Clock::duration>(std::chrono::duration<double>(seconds));
        const zrobservers::TimeStamp start(origin.time - length);
        Write(
            "timer",
            [&](Object& object) {
                object.Add("name", state.GetLocation()).AddPlain("start", start).Add("seconds", seconds);
                object.Add("calls", state.GetCalls()).Add("total", state.GetTotal()).Add("self", state.GetSelf());
            },
            [](Object&) {});
    }

    void OnProgress(const ZRObservedObjectEvent& event)
    {
        const std::int32_t code = event.GetCode();
        const char* const what = code == ZR_EVENT_PROGRESS_START ? "start"
            : code == ZR_EVENT_PROGRESS_RANGE                    ? "range"
            : code == ZR_EVENT_PROGRESS_UPDATE                   ? "update"
            : code == ZR_EVENT_PROGRESS_END                      ? "end"
                                                                 : nullptr;
        if (what == nullptr) {
            return;
        }
        Write(
            "progress",
            [&](Object& object) {
                object.AddPlain("what", what).Add("title", ZRProgressGetTitle());
                if (code == ZR_EVENT_PROGRESS_RANGE) {
                    object.Add("min", Number(event.GetMin())).Add("max", Number(event.GetMax()));
                } else if (code != ZR_EVENT_PROGRESS_START) {
                    object.Add("percent", Number(event.GetCount()));
                }
            },
            [&](Object& object) {
                if (code == ZR_EVENT_PROGRESS_UPDATE) {
                    object.Add("text", event.GetText());
                }
            });
    }

    static std::int64_t Number(std::int64_t number) { return number; }

    /// Appends one line: the common fields, what `fill` adds, the IDs, what `fillLast` adds.
    template <typename Fill, typename FillLast> void Write(const char* event, Fill fill, FillLast fillLast)
    {
        bool isWritten = false;
        {
            const std::lock_guard guard(m_lock);
            auto& [buffer, writer] = m_buffers.Get();
            buffer.Clear();
            {
                Object object(writer, buffer, "");
                const ZREventOrigin origin = OriginOf();
                object.AddPlain("time", zrobservers::TimeStamp(origin.time)).AddPlain("event", event);
                fill(object);
                object.Add("thread", static_cast<std::int64_t>(origin.thread));
                object.Add("process", static_cast<std::int64_t>(zrobservers::ProcessId()));
                fillLast(object);
            }
            HCTextIo file(m_path);
            isWritten = Open(file) && file.WriteString(buffer.GetString()) != 0;
            if (buffer.GetSize() > kLargest) { // one huge message must not keep its memory for ever
                buffer.Clear();
                buffer.ShrinkToFit();
            }
        }
        if (isWritten) {
            m_isSound = true;
        } else {
            Fail();
        }
    }

    /// Opens the file for appending, and creates it when there is none. It may be moved at any time.
    static bool Open(HCTextIo& file)
    {
        constexpr int kTurns = 3;
        for (int turn = 0; turn < kTurns; ++turn) {
            if (file.Open(5) != 0 || file.Open(3) != 0) {
                return true;
            }
        }
        return false;
    }

    /// Reports the first failure, without a lock, as a message calls observers.
    void Fail()
    {
        m_isSound = false;
        if (!m_isTold.exchange(true)) {
            HCString text;
            text.Format("%s: a line cannot be written", static_cast<const char*>(m_path));
            zrobservers::Tell(text, "ZRJsonLines");
        }
    }

    static constexpr std::size_t kLargest = std::size_t{1024} * 1024;

    const HCString m_path;
    const ZRFilter m_filter;
    std::atomic<bool> m_isSound{true};
    std::atomic<bool> m_isTold{false};

    HCThreadSync m_lock; // works in a forked child
    zrobservers::DataOfProcess<Buffers> m_buffers;

    std::optional<zrobservers::ProfilerOn> m_profilerOn;
    // Last, so that they are destroyed first. One observer for each subject, so that none of their locks is held while
    // a message of another is sent.
    ZRListener m_messages;
    ZRListener m_timers;
    ZRListener m_progress;
};

ZRJsonLines::ZRJsonLines(const HCString& path, int what, const ZRFilter& filter)
    : m_lines(std::make_unique<Lines>(path, what, filter))
{
}

ZRJsonLines::ZRJsonLines(ZRObservedObject& subject, const HCString& path, const ZRFilter& filter)
    : m_lines(std::make_unique<Lines>(subject, path, filter))
{
}

ZRJsonLines::~ZRJsonLines() = default;

bool ZRJsonLines::IsOpen() const { return m_lines->IsSound(); }
