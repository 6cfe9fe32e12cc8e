#include "zrobservers/background.h"

#include "event_buffer.h"
#include "quietly.h"
#include "zrobservers/flight_recorder.h"

#include <cxxabi.h>
#include <exception>
#include <thread>
#include <utility>

class ZRBackground::Worker {
public:
    /// subject: null for that of the process.
    Worker(ZRBackground& owner, ZRObservedObject* subject, const Options& options)
        : m_owner(owner)
        , m_filter(options.filter)
        , m_buffer(options)
    {
        Start();
        try {
            auto keep = zrobservers::Quietly(*this, &Worker::Keep);
            m_events = subject != nullptr ? ZRListener(*subject, keep) : ZRListener(keep);
        } catch (...) {
            Stop();
            throw;
        }
    }
    ~Worker() { End(); }
    Worker(const Worker&) = delete;
    Worker& operator=(const Worker&) = delete;

    zrobservers::EventBuffer& GetBuffer() { return m_buffer; }

    /// Ends the thread, when the observers have had all events.
    void End()
    {
        m_events = ZRListener();
        if (m_forkGeneration == zrobservers::ForkGeneration()) {
            Stop();
        }
    }

private:
    void Keep(const ZRObservedObjectEvent& event)
    {
        if (!m_filter.Takes(event)) {
            return;
        }
        if (m_forkGeneration != zrobservers::ForkGeneration()) { // under the lock of the listener
            StartInChild();
        }
        m_buffer.Push(event);
    }

    /// The parent's thread is not in the child. Without a thread, events are dropped once the queue is full.
    void StartInChild()
    {
        m_thread = nullptr;
        m_forkGeneration = zrobservers::ForkGeneration();
        try {
            Start();
        } catch (const std::exception&) {
            m_buffer.WithdrawReader();
        }
    }

    void Start()
    {
        m_buffer.AnnounceReader();
        zrobservers::WithoutSignals([this] { m_thread = new std::thread([this] { Run(); }); });
    }

    void Stop()
    {
        m_buffer.End();
        if (m_thread != nullptr) {
            m_thread->join();
            delete std::exchange(m_thread, nullptr);
        }
    }

    void Run()
    {
        const ZRFlightRecorder::ThreadGuard guard;
        while (m_buffer.WaitForBatch()) {
            m_buffer.Drain([this](const ZRObservedObjectEvent& event) { Send(event); }, INT_MAX);
        }
    }

    void Send(const ZRObservedObjectEvent& event)
    {
        try {
            auto& own = const_cast<ZRObservedObjectEvent&>(event); // not shared, and observers may change it
            own.SetSource(&m_owner);
            own.Broadcast(&m_owner, 0);
#if defined(__GLIBCXX__)
        } catch (const abi::__forced_unwind&) { // the thread is ended
            throw;
#endif
        } catch (...) { // of whatever type: there is nobody to pass it to
        }
    }

    ZRBackground& m_owner;
    const ZRFilter m_filter;
    zrobservers::EventBuffer m_buffer;
    std::thread* m_thread = nullptr; // owned, unless it belongs to a forked parent
    std::atomic<unsigned int> m_forkGeneration{zrobservers::ForkGeneration()};
    ZRListener m_events;
};

ZRBackground::ZRBackground(ZRObservedObject& subject)
    : ZRBackground(subject, Options())
{
}

ZRBackground::ZRBackground(ZRObservedObject& subject, const Options& options)
    : m_worker(std::make_unique<Worker>(*this, &subject, options))
{
}

ZRBackground::ZRBackground()
    : ZRBackground(Options())
{
}

ZRBackground::ZRBackground(const Options& options)
    : m_worker(std::make_unique<Worker>(*this, nullptr, options))
{
}

ZRBackground::~ZRBackground() { m_worker->End(); } // observers may use this object until then

char ZRBackground::DetachObserver(ZRObjectObserver* observer, char flag)
{
    Flush();
    return ZRObservedObject::DetachObserver(observer, flag);
}

void ZRBackground::Flush() { m_worker->GetBuffer().WaitUntilHandled(); }

std::int64_t ZRBackground::GetDroppedCount() const { return m_worker->GetBuffer().GetDroppedCount(); }
