#include "tests/support/messages.h"
#include "tests/observation/recording_observer.h"
#include "tests/support/allocations.h"

#include <atomic>
#include <stdexcept>
#include <thread>

namespace {

using test::RecordingObserver;
using test::TakeError;

constexpr int kCode = 0x9000;

class Events : public test::Messages {
protected:
    Events()
    {
        for (RecordingObserver& observer : m_observers) {
            m_subject.AttachObserver(&observer, 1);
        }
    }

    /// How many events each observer has had since the last time.
    std::string TakeCounts()
    {
        std::string counts;
        for (RecordingObserver& observer : m_observers) {
            counts += std::to_string(observer.events.size());
            observer.events.clear();
            observer.sources.clear();
        }
        return counts;
    }

    ZRObservedObject m_subject;
    RecordingObserver m_observers[3];
};

TEST_F(Events, CarryTheirFields)
{
    ZRObservedObjectEvent event(kCode);
    EXPECT_EQ(event.GetCode(), kCode);
    EXPECT_EQ(
        event.GetName() == "" && event.GetCaption() == "" && event.GetText() == "" && event.GetTextEx() == "", true);
    for (const int number :
        {event.GetCount(), event.GetType(), int{event.GetState()}, event.GetMin(), event.GetMax()}) {
        EXPECT_EQ(number, 0);
    }
    EXPECT_TRUE(event.GetSource() == nullptr && event.GetPtr() == nullptr);
    EXPECT_TRUE(event.GetMsg() == ZRMsg() && event.GetProfilerState() == ZRProfilerState());
    EXPECT_NE(event.GetLockTrail().GetGUID(), ZRObservedObjectEvent(kCode).GetLockTrail().GetGUID());

    ZRProfilerState state("place");
    state.Update(1);
    ZRLockTrail trail;
    event.SetCode(1);
    event.SetSource(&m_subject);
    event.SetName("name");
    event.SetCaption("caption");
    event.SetCount(2);
    event.SetText("text");
    event.SetTextEx("more");
    event.SetType(3);
    event.SetState(4);
    event.SetMsg(ZRMsg("message", ZR_MSG_WARN));
    event.SetMin(5);
    event.SetMax(6);
    event.SetPtr(this);
    event.SetLockTrail(trail);
    event.SetProfilerState(state);
    ZRObservedObjectEvent assigned(kCode, &m_subject);
    assigned = event;
    event = static_cast<const ZRObservedObjectEvent&>(event);
    EXPECT_EQ(event.GetSource(), &m_subject);
    for (const ZRObservedObjectEvent& copy : {ZRObservedObjectEvent(event), assigned}) {
        EXPECT_EQ(copy.GetSource(), nullptr);
        EXPECT_EQ(copy.GetCode(), 1);
        EXPECT_TRUE(copy.GetName() == "name" && copy.GetCaption() == "caption");
        EXPECT_TRUE(copy.GetText() == "text" && copy.GetTextEx() == "more");
        EXPECT_EQ(copy.GetCount(), 2);
        EXPECT_EQ(copy.GetType(), 3);
        EXPECT_EQ(copy.GetState(), 4);
        EXPECT_EQ(copy.GetMin(), 5);
        EXPECT_EQ(copy.GetMax(), 6);
        EXPECT_EQ(copy.GetPtr(), this);
        EXPECT_TRUE(copy.GetMsg() == ZRMsg("message", ZR_MSG_WARN));
        EXPECT_TRUE(copy.GetLockTrail() == trail);
        EXPECT_TRUE(copy.GetProfilerState() == state);
    }
}

TEST_F(Events, AreSentByBroadcastOrByTheirDestructor)
{
    {
        ZRObservedObjectEvent event(kCode);
        event.SetSource(&m_subject);
    }
    EXPECT_EQ(TakeCounts(), "000") << "nobody asked for it";
    {
        ZRObservedObjectEvent event(kCode);
        EXPECT_EQ(event.Broadcast(&m_subject, 0), 3);
        EXPECT_EQ(m_observers[0].sources.back(), nullptr) << "broadcasting does not set the source";
    }
    EXPECT_EQ(TakeCounts(), "111");
    {
        ZRObservedObjectEvent event(kCode, &m_subject);
        event.SetText("late");
        const ZRObservedObjectEvent copy(event);
        EXPECT_EQ(TakeCounts(), "000");
    }
    EXPECT_EQ(m_observers[2].sources.back(), &m_subject);
    EXPECT_EQ(m_observers[2].events.back().GetText(), "late");
    EXPECT_EQ(TakeCounts(), "111") << "once, and not by the copy";
    {
        const ZRObservedObjectEvent silent(kCode, nullptr);
        ZRObservedObjectEvent later(kCode, nullptr);
        later.SetSource(&m_subject);
    }
    EXPECT_EQ(TakeCounts(), "111");
    ZRObservedObject alone;
    EXPECT_EQ(ZRObservedObjectEvent(kCode).Broadcast(&alone, 0), 0);
    EXPECT_EQ(TakeError(), "none");
    EXPECT_EQ(ZRObservedObjectEvent(kCode).Broadcast(nullptr, 0), -1);
    EXPECT_EQ(TakeError(), "1 ZRObservedObjectEvent::Broadcast - broadcast source not specified ZRError 0");
}

TEST_F(Events, AreAdjustedOrHaltedByTheirSubject)
{
    class Censor : public ZRObservedObject {
    public:
        char AdjustEvent(ZRObservedObjectEvent* event) override
        {
            ++calls;
            event->SetCount(7);
            return lets;
        }
        char lets = 1;
        int calls = 0;
    };
    Censor censor;
    censor.SetName("the censor");
    {
        const ZRObservedObjectEvent unseen(kCode, &censor);
    }
    EXPECT_EQ(censor.calls, 1) << "also without observers";
    censor.AttachObserver(&m_observers[0], 1);
    EXPECT_EQ(ZRObservedObjectEvent(kCode).Broadcast(&censor, 0), 1);
    EXPECT_EQ(m_observers[0].events.back().GetCount(), 7);
    EXPECT_EQ(TakeCounts(), "100");
    censor.lets = 0;
    EXPECT_EQ(ZRObservedObjectEvent(kCode).Broadcast(&censor, 0), -1);
    EXPECT_EQ(TakeError(), "1 ZRObservedObjectEvent::Broadcast - broadcast halted by the censor ZRError 0");
    EXPECT_EQ(TakeCounts(), "000");
}

TEST_F(Events, SurviveChangesOfTheObserversMeanwhile)
{
    RecordingObserver late;
    const struct {
        const char* what;
        std::function<void()> change; // made by the first observer
        int handled;
        const char* counts;
        std::size_t late;
    } rows[] = {
        {"detaches itself", [&] { m_subject.DetachObserver(&m_observers[0], 1); }, 2, "101", 0},
        {"detaches the next", [&] { m_subject.DetachObserver(&m_observers[1], 1); }, 2, "101", 0},
        {"detaches the last", [&] { m_subject.DetachObserver(&m_observers[2], 1); }, 2, "110", 0},
        {"detaches all",
            [&] {
                for (auto& any : m_observers) {
                    m_subject.DetachObserver(&any, 1);
                }
            },
            1, "100", 0},
        {"attaches one", [&] { m_subject.AttachObserver(&late, 1); }, 3, "111", 0},
        {"replaces the last",
            [&] {
                m_subject.DetachObserver(&m_observers[2], 1);
                m_subject.AttachObserver(&late, 1);
            },
            3, "110", 1},
        {"is called again",
            [&] {
                if (m_observers[0].events.size() == 1) {
                    EXPECT_EQ(ZRObservedObjectEvent(kCode).Broadcast(&m_subject, 0), 3);
                }
            },
            3, "222", 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        m_observers[0].then = [&](auto&) { row.change(); };
        EXPECT_EQ(ZRObservedObjectEvent(kCode).Broadcast(&m_subject, 0), row.handled);
        EXPECT_EQ(TakeCounts(), row.counts);
        EXPECT_EQ(late.events.size(), row.late);
        late.events.clear();
        m_subject = ZRObservedObject();
        for (RecordingObserver& observer : m_observers) {
            m_subject.AttachObserver(&observer, 1);
        }
    }
}

TEST_F(Events, HoldNoLockWhenAnObserverThrows)
{
    m_observers[1].then = [](auto&) { throw std::runtime_error("no"); };
    ZRObservedObjectEvent event(kCode);
    EXPECT_THROW(event.Broadcast(&m_subject, 0), std::runtime_error);
    EXPECT_EQ(TakeCounts(), "110");
    ZRGetMessageHandler()->AttachObserver(&m_observers[1], 1);
    EXPECT_THROW(ZROut("text", nullptr, 1), std::runtime_error);
    m_observers[1].then = nullptr;
    std::thread([&] { // would wait for ever for a lock that is still held
        EXPECT_EQ(event.Broadcast(&m_subject, 0), 3);
        ZROut("text", nullptr, 1);
    })
        .join();
    ZRGetMessageHandler()->DetachObserver(&m_observers[1], 1);
}

TEST_F(Events, AreHandledOneAtATimeByEachObserver)
{
    std::atomic<int> inside = 0;
    std::atomic<int> most = 0;
    m_observers[0].then = [&](auto&) {
        most = std::max(most.load(), ++inside);
        --inside;
    };
    ZRObservedObject subjects[4];
    std::vector<std::thread> threads;
    for (ZRObservedObject& subject : subjects) {
        subject.AttachObserver(&m_observers[0], 1);
        threads.emplace_back([&subject] {
            for (int count = 0; count < 500; ++count) {
                const ZRObservedObjectEvent event(kCode, &subject);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(most, 1);
    EXPECT_EQ(TakeCounts(), "200000");
}

#if !defined(_WIN32)
/// An observer for whose lock there was no memory, so that it can never be locked.
class UnlockableObserver : public RecordingObserver {
public:
    UnlockableObserver()
        : UnlockableObserver(test::FailingHeap(0))
    {
    }

private:
    explicit UnlockableObserver(const test::FailingHeap& /*whileTheBaseIsBuilt*/) {}
};

TEST_F(Events, PassOverAnObserverThatCannotBeLocked)
{
    const std::string report = "ZRObservedObjectEvent::Broadcast - lock failed";
    UnlockableObserver broken;
    m_subject.DetachObserver(&m_observers[2], 1);
    m_subject.AttachObserver(&broken, 1);
    m_subject.AttachObserver(&m_observers[2], 1);
    EXPECT_EQ(ZRObservedObjectEvent(kCode).Broadcast(&m_subject, 0), 3);
    EXPECT_EQ(TakeError(), "1 " + report + " ZRError 0");
    EXPECT_EQ(TakeCounts(), "111");

    // The report of a message that could not be handed over is a message itself, and fails in the same way.
    ZRSetAllFlags(ZR_DEST_CONSOLE);
    ZRMessageHandler& handler = *ZRGetMessageHandler();
    handler.AttachObserver(&m_observers[0], 1);
    handler.AttachObserver(&broken, 1);
    for (int turn = 0; turn < 2; ++turn) {
        EXPECT_EQ(Console([] { ZROut("text", nullptr, 1); }), "OUT - text\nERROR - " + report + "\n");
        ASSERT_EQ(m_observers[0].events.size(), 2U);
        EXPECT_EQ(m_observers[0].events[1].GetText(), report.c_str()) << "the others get the report";
        TakeCounts();
    }
    handler.DetachObserver(&broken, 1);
    handler.DetachObserver(&m_observers[0], 1);
    EXPECT_TRUE(broken.events.empty());
}
#endif

} // namespace
