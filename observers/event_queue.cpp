#include "zrobservers/event_queue.h"

#include "event_buffer.h"
#include "quietly.h"

class ZREventQueue::Queue {
public:
    explicit Queue(const Options& options)
        : m_filter(options.filter)
        , m_buffer(options)
    {
        using zrobservers::Quietly;
        m_listeners[0] = ZRListener(*ZRGetMessageHandler(), Quietly(*this, &Queue::Keep));
        m_listeners[1] = ZRListener(*ZRGetProfilerStateHandler(), Quietly(*this, &Queue::Keep));
        m_listeners[2] = ZRListener(Quietly(*this, &Queue::Keep));
    }
    Queue(ZRObservedObject& subject, const Options& options)
        : m_filter(options.filter)
        , m_buffer(options)
    {
        m_listeners[0] = ZRListener(subject, zrobservers::Quietly(*this, &Queue::Keep));
    }
    ~Queue() { m_buffer.End(); } // otherwise the listeners would wait for a sender that waits for room
    Queue(const Queue&) = delete;
    Queue& operator=(const Queue&) = delete;

    zrobservers::EventBuffer& GetBuffer() { return m_buffer; }

private:
    void Keep(const ZRObservedObjectEvent& event)
    {
        if (m_filter.Takes(event)) {
            m_buffer.Push(event);
        }
    }

    const ZRFilter m_filter;
    zrobservers::EventBuffer m_buffer;
    ZRListener m_listeners[3]; // last, so that they are destroyed first
};

ZREventQueue::ZREventQueue()
    : ZREventQueue(Options())
{
}

ZREventQueue::ZREventQueue(const Options& options)
    : m_queue(std::make_unique<Queue>(options))
{
}

ZREventQueue::ZREventQueue(ZRObservedObject& subject)
    : ZREventQueue(subject, Options())
{
}

ZREventQueue::ZREventQueue(ZRObservedObject& subject, const Options& options)
    : m_queue(std::make_unique<Queue>(subject, options))
{
}

ZREventQueue::~ZREventQueue() = default;

int ZREventQueue::Drain(const Handler& handle, int most) { return m_queue->GetBuffer().Drain(handle, most); }

bool ZREventQueue::WaitFor(int milliseconds) { return m_queue->GetBuffer().WaitFor(milliseconds); }

std::int64_t ZREventQueue::GetDroppedCount() const { return m_queue->GetBuffer().GetDroppedCount(); }

const ZREventOrigin* ZREventQueue::GetOrigin() noexcept { return zrobservers::EventBuffer::GetOrigin(); }
