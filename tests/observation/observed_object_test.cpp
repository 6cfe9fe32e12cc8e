#include "tests/support/allocations.h"
#include "tests/support/messages.h"
#include "tests/support/threads.h"

#include <functional>
#include <optional>
#include <stdexcept>
#include <utility>

namespace {

using test::TakeError;
using Events = test::Messages;
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
    const std::string place = "ZRObservedObject::";
    EXPECT_EQ(subject.AttachObserver(nullptr, 1), 0);
    EXPECT_EQ(TakeError(), "0 Null observer pointer passed to [Untitled] " + place + "AttachObserver 0");
    EXPECT_EQ(subject.DetachObserver(nullptr, 1), 0);
    EXPECT_EQ(TakeError(), "0 Null observer pointer passed to [Untitled] " + place + "DetachObserver 0");
    EXPECT_EQ(subject.IsAttached(nullptr), 0);
    EXPECT_EQ(
        TakeError(), "0 " + place + "IsAttached - null observer pointer passed to Untitled " + place + "IsAttached 0");
    EXPECT_EQ(ZRAttachObserver(nullptr), 0);
    EXPECT_EQ(TakeError(), "0 Null observer pointer passed to [] " + place + "AttachObserver 0");
}

constexpr int kCode = 0x9000;

int Broadcast(ZRObservedObject* subject) { return ZRObservedObjectEvent(kCode).Broadcast(subject, 0); }

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
    ZRObservedObject subject;
    ZRObservedObjectEvent event(1);
    EXPECT_EQ(Fields(event), "1 '' '' 0 '' '' 0 0 '' 0 0 'Unknown'");
    EXPECT_EQ(event.GetPtr(), nullptr);
    event.SetCode(2);
    event.SetSource(&subject);
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
    EXPECT_EQ(event.GetSource(), &subject);
    for (const ZRObservedObjectEvent& copy : {ZRObservedObjectEvent(event), assigned}) {
        EXPECT_EQ(Fields(copy), "2 'name' 'caption' 3 'text' 'more' 4 5 'message' 6 7 'place'");
        EXPECT_TRUE(copy.GetSource() == nullptr && copy.GetPtr() == this);
        EXPECT_TRUE(copy.GetLockTrail() == event.GetLockTrail());
    }
}

TEST_F(Events, AreSentByBroadcastOrByTheirDestructor)
{
    ZRObservedObject subject;
    int told = 0;
    const ZRListener listener(subject, [&told](const auto&) { ++told; });
    ZRObservedObjectEvent broadcast(kCode);
    EXPECT_EQ(broadcast.Broadcast(&subject, 0), 1);
    EXPECT_EQ(broadcast.GetSource(), nullptr);
    {
        ZRObservedObjectEvent event(kCode, nullptr);
        event.SetSource(&subject);
        EXPECT_EQ(told, 1);
    }
    EXPECT_EQ(told, 2);
    {
        ZRObservedObjectEvent event(kCode, &subject);
        event.SetSource(nullptr);
        ZRObservedObjectEvent assigned(kCode, &subject);
        assigned = event;
        assigned.SetSource(&subject);
    }
    EXPECT_EQ(told, 2) << "without a source none sends itself, and a copy never does";
    EXPECT_EQ(Broadcast(nullptr), -1);
    EXPECT_EQ(TakeError(), "1 ZRObservedObjectEvent::Broadcast - broadcast source not specified ZRError 0");
}

TEST_F(Events, AreAdjustedOrHaltedByTheirSubject)
{
    struct Censor : ZRObservedObject {
        char AdjustEvent(ZRObservedObjectEvent* event) override
        {
            event->SetCount(event->GetCount() + 1);
            return event->GetCount() == 1 ? 1 : 0;
        }
    };
    Censor censor;
    censor.SetName("the censor");
    const ZRListener listener(censor, [](const auto& event) { EXPECT_EQ(event.GetCount(), 1); });
    ZRObservedObjectEvent sent(kCode);
    EXPECT_EQ(sent.Broadcast(&censor, 0), 1);
    EXPECT_EQ(sent.Broadcast(&censor, 0), -1);
    EXPECT_EQ(TakeError(), "1 ZRObservedObjectEvent::Broadcast - broadcast halted by the censor ZRError 0");
}

TEST_F(Events, SurviveChangesOfTheObserversMeanwhile)
{
    ZRObservedObject subject;
    std::string told;
    std::function<void()> change; // made by the first observer
    ZRListener observers[4];
    const auto attach = [&](std::size_t place, int number) {
        observers[place] = ZRListener(subject, [&told, &change, number](const auto&) {
            told += std::to_string(number);
            if (told == "1") {
                change();
            }
        });
    };
    const struct {
        const char* what;
        std::function<void()> change;
        int handled;
        const char* told;
    } rows[] = {
        {"detaches itself", [&] { observers[0].Detach(); }, 2, "13"},
        {"detaches the next", [&] { observers[1].Detach(); }, 2, "13"},
        {"detaches the last", [&] { observers[2].Detach(); }, 2, "12"},
        {"detaches all", [&] { subject = ZRObservedObject(); }, 1, "1"},
        {"attaches one", [&] { attach(3, 4); }, 3, "123"},
        {"replaces the last", [&] { attach(2, 4); }, 3, "124"},
        {"is called again", [&] { EXPECT_EQ(Broadcast(&subject), 3); }, 3, "112323"},
    };
    for (const auto& row : rows) {
        subject = ZRObservedObject();
        attach(0, 1);
        attach(1, 2);
        attach(2, 3);
        told = "";
        change = row.change;
        EXPECT_EQ(Broadcast(&subject), row.handled) << row.what;
        EXPECT_EQ(told, row.told) << row.what;
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
    ZRObservedObject subject;
    const ZRAttachment attachment(subject, *broken);
    EXPECT_EQ(Broadcast(&subject), 0);

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
