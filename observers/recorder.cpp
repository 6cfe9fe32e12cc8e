#include "zrobservers/recorder.h"

#include "quietly.h"
#include "switch_guards.h"
#include "system.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <utility>

class ZRRecorder::Record {
public:
    Record()
    {
        using zrobservers::Quietly;
        m_messagesOn.emplace();
        m_listeners[0] = ZRListener(*ZRGetMessageHandler(), Quietly(*this, &Record::Keep));
        m_listeners[1] = ZRListener(*ZRGetProfilerStateHandler(), Quietly(*this, &Record::Keep));
        m_listeners[2] = ZRListener(Quietly(*this, &Record::Keep));
        Clear(); // removes the event of the messages' switch
    }
    explicit Record(ZRObservedObject& subject)
    {
        m_listeners[0] = ZRListener(subject, zrobservers::Quietly(*this, &Record::Keep));
    }

    template <typename Read> auto WithEvents(Read read) const
    {
        const std::lock_guard guard(m_lock);
        return read(std::as_const(m_data.Get().events));
    }

    bool WaitFor(const Predicate& predicate, int milliseconds) const
    {
        const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(milliseconds);
        std::unique_lock guard(m_lock);
        auto& [more, events] = m_data.Get();
        std::size_t next = 0;
        const auto isThere = [&predicate, &next, &events = events] {
            next = next <= events.size() ? next : 0; // after Clear
            while (next < events.size()) {
                if (predicate(events[next++])) {
                    return true;
                }
            }
            return false;
        };
        return more.wait_until(guard, end, isThere);
    }

    void Clear()
    {
        const std::lock_guard guard(m_lock);
        m_data.Get().events.clear();
    }

private:
    void Keep(const ZRObservedObjectEvent& event)
    {
        const std::lock_guard guard(m_lock);
        auto& [more, events] = m_data.Get();
        events.push_back(event);
        more.notify_all();
    }

    struct Data {
        std::condition_variable_any more;
        std::vector<ZRObservedObjectEvent> events;
    };

    mutable HCThreadSync m_lock; // works in a forked child
    mutable zrobservers::DataOfProcess<Data> m_data;
    std::optional<zrobservers::MessagesOn> m_messagesOn;
    ZRListener m_listeners[3]; // last, so that they are destroyed first
};

ZRRecorder::ZRRecorder()
    : m_record(std::make_unique<Record>())
{
}

ZRRecorder::ZRRecorder(ZRObservedObject& subject)
    : m_record(std::make_unique<Record>(subject))
{
}

ZRRecorder::~ZRRecorder() = default;

std::vector<ZRObservedObjectEvent> ZRRecorder::GetEvents() const
{
    return m_record->WithEvents([](const auto& events) { return events; });
}

std::vector<ZRObservedObjectEvent> ZRRecorder::GetEvents(std::int32_t code) const
{
    return m_record->WithEvents([code](const auto& events) {
        std::vector<ZRObservedObjectEvent> found;
        for (const ZRObservedObjectEvent& event : events) {
            if (event.GetCode() == code) {
                found.push_back(event);
            }
        }
        return found;
    });
}

std::vector<ZRMsg> ZRRecorder::GetMessages(int types) const
{
    return m_record->WithEvents([types](const auto& events) {
        std::vector<ZRMsg> found;
        for (const ZRObservedObjectEvent& event : events) {
            if (event.GetCode() == ZR_EVENT_MESSAGE && (event.GetMsg().GetType() & types) != 0) {
                found.push_back(event.GetMsg());
            }
        }
        return found;
    });
}

bool ZRRecorder::WaitFor(const Predicate& predicate, int milliseconds) const
{
    return m_record->WaitFor(predicate, milliseconds);
}

void ZRRecorder::Clear() { m_record->Clear(); }
