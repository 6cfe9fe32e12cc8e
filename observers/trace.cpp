#include "trace.h"

#include "from_root.h"
#include "message_types.h"
#include "quietly.h"

#include <array>
#include <chrono>
#include <exception>
#include <utility>

using zrobservers::Quietly;

namespace {

constexpr auto kPause = std::chrono::milliseconds(250);
constexpr std::int64_t kNanosecondsPerSecond = 1'000'000'000;

constinit std::atomic<std::uint32_t> g_traces{0};

/// The last few traces, in this process, that contain the name of the thread.
class NamedIn {
public:
    /// Adds a trace. False when it is among them already.
    bool Add(std::uint32_t trace, unsigned int forkGeneration)
    {
        for (const Entry& entry : m_entries) {
            if (entry.trace == trace && entry.forkGeneration == forkGeneration) {
                return false;
            }
        }
        m_entries[m_next++ % m_entries.size()] = {trace, forkGeneration};
        return true;
    }

private:
    struct Entry {
        std::uint32_t trace;
        unsigned int forkGeneration;
    };
    std::array<Entry, 4> m_entries{};
    std::size_t m_next = 0;
};
constinit thread_local NamedIn t_namedIn;

/// Unique to this thread, while the system reuses the IDs of ended threads.
std::uint64_t ThreadNumber()
{
    static constinit std::atomic<std::uint64_t> last{0};
    thread_local const std::uint64_t number = ++last;
    return number;
}

/// The time on the clock of ZRProfiler::GetTicks.
std::int64_t Now() { return std::chrono::nanoseconds(std::chrono::steady_clock::now().time_since_epoch()).count(); }

std::int64_t ToNanoseconds(std::int64_t ticks, std::int64_t ticksPerSecond)
{
    return ticks / ticksPerSecond * kNanosecondsPerSecond
        + ticks % ticksPerSecond * kNanosecondsPerSecond / ticksPerSecond;
}

} // namespace

class ZRTraceFile::Trace::Flusher {
public:
    explicit Flusher(Trace& trace)
        : m_thread([this, &trace] { Run(trace); })
    {
    }
    ~Flusher()
    {
        {
            const std::lock_guard guard(m_lock);
            m_isOver = true;
        }
        m_wake.notify_one();
        m_thread.join();
    }
    Flusher(const Flusher&) = delete;
    Flusher& operator=(const Flusher&) = delete;

private:
    void Run(Trace& trace)
    {
        std::unique_lock guard(m_lock);
        while (!m_wake.wait_for(guard, kPause, [this] { return m_isOver; })) {
            guard.unlock();
            try {
                trace.Write(); // others report a failure: who waits for this thread may hold locks of observers
            } catch (const std::exception&) {
            }
            guard.lock();
        }
    }

    std::mutex m_lock;
    std::condition_variable m_wake;
    bool m_isOver = false;
    std::thread m_thread; // last, as it uses the others
};

ZRTraceFile::Trace::Trace(const HCString& path, const ZRFilter& filter, Start start)
    : m_path(zrobservers::FromRoot(path))
    , m_filter(filter)
    , m_start(start)
    , m_number(++g_traces)
    , m_process(zrobservers::ProcessId())
    , m_forkGeneration(zrobservers::ForkGeneration())
{
    m_buffers = new Buffers;
    try {
        if (m_start == Start::kNow) {
            NoteWhether(OpenFile());
        }
        TellFailure();
        m_messages = ZRListener(*ZRGetMessageHandler(), Quietly(*this, &Trace::OnMessage));
        m_timers = ZRListener(*ZRGetProfilerStateHandler(), Quietly(*this, &Trace::OnTimer));
        m_progress = ZRListener(Quietly(*this, &Trace::OnProgress));
    } catch (...) {
        End();
        throw;
    }
}

ZRTraceFile::Trace::~Trace() { End(); }

void ZRTraceFile::Trace::End()
{
    m_messages = ZRListener();
    m_timers = ZRListener();
    m_progress = ZRListener();
    if (!IsOfThisProcess()) {
        return;
    }
    delete m_flusher;
    try {
        Write();
        if (m_file.IsOpen() && OpenFile()) {
            m_file.Write("\n]\n", 3);
        }
        TellFailure();
    } catch (const std::exception&) { // from an observer, or out of memory
    }
    delete m_buffers;
}

/// False in a forked child that has sent nothing: all data belong to its parent then.
bool ZRTraceFile::Trace::IsOfThisProcess() const { return m_forkGeneration == zrobservers::ForkGeneration(); }

void ZRTraceFile::Trace::OnMessage(const ZRObservedObjectEvent& event)
{
    const ZRMsg& message = event.GetMsg();
    if (event.GetCode() != ZR_EVENT_MESSAGE || !m_filter.Takes(message)) {
        return;
    }
    Append("i", "message", Now(), zrobservers::AsSent(message.GetText()), [&message](Object& object) {
        object.AddPlain("s", "t").StartObject("args");
        object.AddPlain("type", zrobservers::NameOfType(message.GetType())).Add("place", message.GetLocation());
        object.Add("level", std::int64_t{message.GetLevel()}).Add("code", std::int64_t{message.GetCode()}).EndObject();
    });
}

void ZRTraceFile::Trace::OnTimer(const ZRObservedObjectEvent& event)
{
    const ZRProfilerRun* const run = ZRProfiler::GetEnding();
    if (event.GetCode() != ZR_EVENT_PROFILER_STATE || run == nullptr) {
        return; // also a state that a client has sent itself
    }
    const HCString name = event.GetProfilerState().GetLocation();
    if (!m_filter.TakesPlace(name)) {
        return;
    }
    const std::int64_t length = ToNanoseconds(run->length, run->ticksPerSecond);
    const std::int64_t start = ToNanoseconds(run->start, run->ticksPerSecond);
    Append("X", "timer", start, name.View(), [length](Object& object) { object.AddThousandths("dur", length); });
}

void ZRTraceFile::Trace::OnProgress(const ZRObservedObjectEvent& event)
{
    const std::int64_t now = Now();
    const auto span = [this](Object& object) { object.Add("id", m_progressRun); };
    switch (event.GetCode()) {
    case ZR_EVENT_PROGRESS_START:
        ++m_progressRun;
        m_progressSpanIn = zrobservers::ForkGeneration();
        m_progressTitle = event.GetText();
        Append("b", "progress", now, m_progressTitle.View(), span);
        break;
    case ZR_EVENT_PROGRESS_UPDATE: {
        const double range = static_cast<double>(ZRProgressGetRangeMax()) - ZRProgressGetRangeMin();
        const double part = static_cast<double>(event.GetCount()) - ZRProgressGetRangeMin();
        const auto percent = static_cast<std::int64_t>(range > 0 ? 100 * part / range : 0);
        Append("C", "progress", now, m_progressTitle.View(),
            [percent](Object& object) { object.StartObject("args").Add("percent", percent).EndObject(); });
        break;
    }
    case ZR_EVENT_PROGRESS_END:
        if (std::exchange(m_progressSpanIn, std::nullopt) == zrobservers::ForkGeneration()) {
            // otherwise it began before the trace
            Append("e", "progress", now, m_progressTitle.View(), span);
        }
        break;
    default:
        break;
    }
}

/// Adds one event. `fill` adds the fields that not all events have.
template <typename Fill> void ZRTraceFile::Trace::Append(
    const char* phase, const char* category, std::int64_t nanoseconds, std::string_view name, Fill fill)
{
    bool isFull = false;
    {
        const std::lock_guard guard(m_lock);
        if (!IsOfThisProcess()) {
            StartInChild();
        }
        if (!m_hasTriedFlusher) {
            StartFlusher();
        }
        const std::uint64_t thread = zrobservers::ThreadId();
        if (t_namedIn.Add(m_number, m_forkGeneration)) {
            NameThread(thread);
        }
        {
            Object object(m_buffers->writer, m_buffers->collected, ",\n");
            object.Add("name", name).AddPlain("cat", category).AddPlain("ph", phase).AddThousandths("ts", nanoseconds);
            object.Add("pid", static_cast<std::int64_t>(m_process)).Add("tid", static_cast<std::int64_t>(thread));
            fill(object);
        }
        m_count.fetch_add(1, std::memory_order_relaxed);
        isFull = m_buffers->collected.GetSize() >= kFullBuffer;
    }
    if (isFull) {
        Write();
    }
    TellFailure();
}

/// Names a thread once: asking the system is expensive.
void ZRTraceFile::Trace::NameThread(std::uint64_t thread)
{
    constexpr std::size_t kMost = 10'000;
    auto& named = m_buffers->namedThreads;
    if (named.size() >= kMost) { // most of them have ended
        named.clear();
    }
    if (named.insert(ThreadNumber()).second) {
        WriteThreadName(thread);
    }
}

void ZRTraceFile::Trace::WriteThreadName(std::uint64_t thread)
{
    const std::string name = zrobservers::ThreadName();
    if (name.empty()) {
        return;
    }
    Object object(m_buffers->writer, m_buffers->collected, ",\n");
    object.AddPlain("name", "thread_name").AddPlain("ph", "M").Add("pid", static_cast<std::int64_t>(m_process));
    object.Add("tid", static_cast<std::int64_t>(thread)).StartObject("args");
    object.Add("name", std::string_view(name)).EndObject();
}

/// What was collected so far belongs to the parent, and so does the file.
void ZRTraceFile::Trace::StartInChild()
{
    m_process = zrobservers::ProcessId();
    m_isChild = true;
    m_buffers = new Buffers;
    m_count = 0;
    m_file.Close();
    m_flusher = nullptr;
    m_hasTriedFlusher = false;
    m_forkGeneration = zrobservers::ForkGeneration();
}

/// Called with the first event, so that a program that sends nothing has no extra thread. Without the thread, the
/// buffer is written when it is full, and at the end.
void ZRTraceFile::Trace::StartFlusher()
{
    m_hasTriedFlusher = true;
    try {
        zrobservers::WithoutSignals([this] { m_flusher = new Flusher(*this); });
    } catch (const std::exception&) {
    }
}

ZRTraceFile::ZRTraceFile(const HCString& path, const ZRFilter& filter)
    : m_trace(std::make_unique<Trace>(path, filter, Trace::Start::kNow))
{
}

ZRTraceFile::ZRTraceFile(std::unique_ptr<Trace> trace)
    : m_trace(std::move(trace))
{
}

ZRTraceFile::~ZRTraceFile() = default;

bool ZRTraceFile::IsOpen() const { return m_trace->IsSound(); }

void ZRTraceFile::Flush() { m_trace->Flush(); }

std::int64_t ZRTraceFile::GetEventCount() const { return m_trace->GetEventCount(); }
