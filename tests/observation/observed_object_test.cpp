#include "tests/support/allocations.h"
#include "tests/support/messages.h"
#include "tests/support/threads.h"

#include <functional>
#include <optional>
#include <stdexcept>
#include <utility>

namespace {

using test::TakeError;
using ObservedObject = test::Messages;

TEST_F(ObservedObject, KeepsEachObserverOnceInTheOrderOfAttachment)
{
    struct Subject : ZRObservedObject {
        using ZRObservedObject::Initialise;
    };
    Subject one;
    ZRObjectObserver observers[3];
    for (ZRObjectObserver& observer : observers) {
        EXPECT_EQ(one.AttachObserver(&observer, 1), 0);
    }
    EXPECT_EQ(one.AttachObserver(&observers[0], 1), 1) << "it was there before";
    one.SetName("100%s");
    Subject copy(one);
    EXPECT_EQ(one.DetachObserver(&observers[1], 1), 1);
    EXPECT_EQ(one.DetachObserver(&observers[1], 1), 1) << "it is gone, one way or the other";
    EXPECT_TRUE(one.IsAttached(&observers[2]) == 1 && one.IsAttached(&observers[1]) == 0);
    EXPECT_EQ(copy.GetObserver(1), &observers[1]);
    copy = one;
    copy = std::as_const(copy);
    EXPECT_TRUE(copy.GetObserverCount() == 2 && copy.GetName() == "100%s");
    EXPECT_TRUE(copy.GetObserver(0) == &observers[0] && copy.GetObserver(1) == &observers[2]);
    EXPECT_TRUE(copy.GetObserver(-1) == nullptr && copy.GetObserver(2) == nullptr);
    copy.Initialise();
    EXPECT_TRUE(copy.GetObserverCount() == 0 && copy.GetName() == "Untitled");
}

TEST_F(ObservedObject, IsKnownToItsObserversWhileItIsTheLast)
{
    ZRObservedObject one;
    ZRObservedObject other;
    ZRObjectObserver observer;
    EXPECT_TRUE(observer.GetZRSubject() == nullptr && observer.GetName() == "Untitled");
    observer.SetName("an observer");
    one.AttachObserver(&observer, 1);
    other.AttachObserver(&observer, 1);
    one.AttachObserver(&observer, 1);
    ZRObservedObject().DetachObserver(&observer, 1);
    EXPECT_EQ(observer.GetZRSubject(), &other) << "nothing has changed since";
    const ZRObjectObserver copy(observer);
    EXPECT_TRUE(copy.GetZRSubject() == &other && copy.GetName() == "an observer");
    one.DetachObserver(&observer, 1);
    EXPECT_EQ(observer.GetZRSubject(), nullptr) << "whichever subject it named";
}

TEST_F(ObservedObject, ReportsNullObservers)
{
    ZRObservedObject subject;
    EXPECT_EQ(subject.GetName(), "Untitled");
    subject.SetName("100%s");
    EXPECT_EQ(subject.AttachObserver(nullptr, 1), 0);
    EXPECT_EQ(TakeError(), "0 Null observer pointer passed to [100%s] ZRObservedObject::AttachObserver 0");
    EXPECT_EQ(subject.DetachObserver(nullptr, 1), 0);
    EXPECT_EQ(TakeError(), "0 Null observer pointer passed to [100%s] ZRObservedObject::DetachObserver 0");
    EXPECT_EQ(subject.IsAttached(nullptr), 0);
    EXPECT_EQ(TakeError(),
        "0 ZRObservedObject::IsAttached - null observer pointer passed to 100%s ZRObservedObject::IsAttached 0");
    EXPECT_EQ(ZRAttachObserver(nullptr), 0);
    EXPECT_EQ(TakeError(), "0 Null observer pointer passed to [] ZRObservedObject::AttachObserver 0");
}

constexpr int kCode = 0x9000;

int Broadcast(ZRObservedObject* subject) { return ZRObservedObjectEvent(kCode).Broadcast(subject, 0); }

class Events : public test::Messages {
protected:
    Events() { AttachThree(); }

    void AttachThree()
    {
        m_subject = ZRObservedObject();
        for (const std::size_t number : {1U, 2U, 3U}) {
            m_observers[number] = Observer(number);
        }
    }

    /// Adds its number to those that were told, and then does something.
    ZRListener Observer(std::size_t number)
    {
        return ZRListener(m_subject, [this, number](const ZRObservedObjectEvent& event) {
            m_told += std::to_string(number);
            if (m_then[number]) {
                m_then[number](event);
            }
        });
    }

    std::string TakeTold() { return std::exchange(m_told, ""); }

    ZRObservedObject m_subject;
    std::string m_told;
    std::function<void(const ZRObservedObjectEvent&)> m_then[5];
    ZRListener m_observers[5]; // from 1 on; last, so that they go first
};

std::string Fields(const ZRObservedObjectEvent& event)
{
    HCString fields;
    fields.Format("%d '%s' '%s' %d '%s' '%s' %d %d '%s' %d %d '%s'", event.GetCode(),
        static_cast<const char*>(event.GetName()), static_cast<const char*>(event.GetCaption()), event.GetCount(),
        static_cast<const char*>(event.GetText()), static_cast<const char*>(event.GetTextEx()), event.GetType(),
        event.GetState(), static_cast<const char*>(event.GetMsg().GetText()), event.GetMin(), event.GetMax(),
        static_cast<const char*>(event.GetProfilerState().GetLocation()));
    return fields.ToString();
}

TEST_F(Events, CarryTheirFields)
{
    ZRObservedObjectEvent event(1);
    EXPECT_EQ(Fields(event), "1 '' '' 0 '' '' 0 0 '' 0 0 'Unknown'");
    EXPECT_EQ(event.GetPtr(), nullptr);
    event.SetCode(2);
    event.SetSource(&m_subject);
    event.SetName("name");
    event.SetCaption("caption");
    event.SetCount(3);
    event.SetText("text");
    event.SetTextEx("more");
    event.SetType(4);
    event.SetState(5);
    event.SetMsg(ZRMsg("message", ZR_MSG_WARN));
    event.SetMin(6);
    event.SetMax(7);
    event.SetPtr(this);
    event.SetProfilerState(ZRProfilerState("place"));
    ZRObservedObjectEvent assigned(kCode);
    assigned = event;
    event = static_cast<const ZRObservedObjectEvent&>(event);
    EXPECT_EQ(event.GetSource(), &m_subject);
    for (const ZRObservedObjectEvent& copy : {ZRObservedObjectEvent(event), assigned}) {
        EXPECT_EQ(Fields(copy), "2 'name' 'caption' 3 'text' 'more' 4 5 'message' 6 7 'place'");
        EXPECT_TRUE(copy.GetSource() == nullptr && copy.GetPtr() == this);
        EXPECT_TRUE(copy.GetLockTrail() == event.GetLockTrail());
    }
}

TEST_F(Events, AreSentByBroadcastOrByTheirDestructor)
{
    ZRObservedObjectEvent broadcast(kCode);
    EXPECT_EQ(broadcast.Broadcast(&m_subject, 0), 3);
    EXPECT_EQ(broadcast.GetSource(), nullptr);
    EXPECT_EQ(TakeTold(), "123");
    const struct {
        ZRObservedObject* given; // to the constructor
        bool isAssigned; // then
        ZRObservedObject* set; // in the end
        const char* told;
    } rows[] = {
        {&m_subject, false, &m_subject, "123"}, {nullptr, false, &m_subject, "123"}, {&m_subject, false, nullptr, ""},
        {&m_subject, true, &m_subject, ""}, // a copy does not send itself
    };
    for (const auto& row : rows) {
        {
            ZRObservedObjectEvent event(kCode, row.given);
            if (row.isAssigned) {
                event = broadcast;
            }
            event.SetSource(row.set);
            EXPECT_EQ(TakeTold(), "");
        }
        EXPECT_EQ(TakeTold(), row.told) << "row " << &row - rows;
    }
    EXPECT_EQ(TakeError(), "none");
    EXPECT_EQ(Broadcast(nullptr), -1);
    EXPECT_EQ(TakeError(), "1 ZRObservedObjectEvent::Broadcast - broadcast source not specified ZRError 0");
}

TEST_F(Events, AreAdjustedOrHaltedByTheirSubject)
{
    struct Censor : ZRObservedObject {
        char AdjustEvent(ZRObservedObjectEvent* event) override
        {
            event->SetCount(event->GetCount() + 1);
            return lets;
        }
        char lets = 1;
    };
    Censor censor;
    censor.SetName("the censor");
    ZRObservedObjectEvent sent(kCode);
    EXPECT_EQ(sent.Broadcast(&censor, 0), 0);
    const ZRListener listener(
        censor, [](const ZRObservedObjectEvent& event) { EXPECT_EQ(event.GetCount(), 2) << "of two broadcasts"; });
    EXPECT_EQ(sent.Broadcast(&censor, 0), 1);
    censor.lets = 0;
    EXPECT_EQ(sent.Broadcast(&censor, 0), -1);
    EXPECT_EQ(TakeError(), "1 ZRObservedObjectEvent::Broadcast - broadcast halted by the censor ZRError 0");
}

TEST_F(Events, SurviveChangesOfTheObserversMeanwhile)
{
    const struct {
        const char* what;
        std::function<void()> change; // made by the first observer
        int handled;
        const char* told;
    } rows[] = {
        {"detaches itself", [this] { m_observers[1].Detach(); }, 2, "13"},
        {"detaches the next", [this] { m_observers[2].Detach(); }, 2, "13"},
        {"detaches the last", [this] { m_observers[3].Detach(); }, 2, "12"},
        {"detaches all", [this] { m_subject = ZRObservedObject(); }, 1, "1"},
        {"attaches one", [this] { m_observers[4] = Observer(4); }, 3, "123"},
        {"replaces the last", [this] { m_observers[3] = Observer(4); }, 3, "124"},
        {"is called again",
            [this] {
                if (m_told == "1") {
                    EXPECT_EQ(Broadcast(&m_subject), 3);
                }
            },
            3, "112323"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        m_then[1] = [&row](auto&) { row.change(); };
        EXPECT_EQ(Broadcast(&m_subject), row.handled);
        EXPECT_EQ(TakeTold(), row.told);
        AttachThree();
    }
}

TEST_F(Events, HoldTheLocksOfTheirObserversUntilTheseHaveEndedOrThrown)
{
    struct Thrower : ZRObjectObserver {
        void OnEvent(ZRObservedObjectEvent* /*event*/) override
        {
            EXPECT_EQ(Unlock(), 1);
            EXPECT_EQ(Lock(), 1);
            throw std::runtime_error("no");
        }
    };
    Thrower thrower;
    ZRObservedObject subject;
    const ZRAttachment attachment(subject, thrower);
    const ZRListener behind(subject, [](const auto&) { ADD_FAILURE() << "does not get the event"; });
    const ZRAttachment toMessages(*ZRGetMessageHandler(), thrower);
    test::OnThreads(2, [&subject](int /*thread*/) { // one would wait for ever for a lock that is still held
        EXPECT_THROW(Broadcast(&subject), std::runtime_error);
        EXPECT_THROW(ZROut("text", nullptr, 1), std::runtime_error);
    });
}

#if !defined(_WIN32)
TEST_F(Events, PassOverAnObserverThatCannotBeLocked)
{
    const std::string report = "ZRObservedObjectEvent::Broadcast - lock failed";
    std::optional<ZRObjectObserver> broken;
    {
        const test::FailingHeap noMemoryForItsLock(0);
        broken.emplace();
    }
    const ZRAttachment attachment(m_subject, *broken);
    EXPECT_EQ(Broadcast(&m_subject), 3);
    EXPECT_EQ(TakeError(), "1 " + report + " ZRError 0");

    // The report of a message that could not be handed over is a message itself, and fails in the same way.
    ZRSetAllFlags(ZR_DEST_CONSOLE);
    const ZRAttachment toMessages(*ZRGetMessageHandler(), *broken);
    std::string texts;
    const ZRListener listener(*ZRGetMessageHandler(),
        [&texts](const ZRObservedObjectEvent& event) { texts += event.GetText().ToString() + "\n"; });
    for (int turn = 0; turn < 2; ++turn) {
        EXPECT_EQ(Console([] { ZROut("text", nullptr, 1); }), "OUT - text\nERROR - " + report + "\n");
        EXPECT_EQ(std::exchange(texts, ""), report + "\ntext\n") << "the others get the report";
    }
}
#endif

} // namespace
