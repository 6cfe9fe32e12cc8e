#include "tests/support/allocations.h"
#include "tests/support/messages.h"
#include "tests/support/threads.h"

#include <functional>
#include <optional>
#include <stdexcept>

namespace {

using test::TakeError;

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
    EXPECT_TRUE(event.GetSource() == nullptr && event.GetPtr() == nullptr);
    EXPECT_NE(event.GetLockTrail().GetGUID(), ZRObservedObjectEvent(1).GetLockTrail().GetGUID());
    const ZRLockTrail trail;
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
    event.SetLockTrail(trail);
    event.SetProfilerState(ZRProfilerState("place"));
    ZRObservedObjectEvent assigned(kCode, &m_subject);
    assigned = event;
    event = static_cast<const ZRObservedObjectEvent&>(event);
    EXPECT_EQ(event.GetSource(), &m_subject);
    for (const ZRObservedObjectEvent& copy : {ZRObservedObjectEvent(event), assigned}) {
        EXPECT_EQ(Fields(copy), "2 'name' 'caption' 3 'text' 'more' 4 5 'message' 6 7 'place'");
        EXPECT_TRUE(copy.GetSource() == nullptr && copy.GetPtr() == this);
        EXPECT_TRUE(copy.GetLockTrail() == trail);
    }
}

TEST_F(Events, AreSentByBroadcastOrByTheirDestructor)
{
    const void* source = nullptr;
    m_then[3] = [&source](const ZRObservedObjectEvent& event) { source = event.GetSource(); };
    EXPECT_EQ(Broadcast(&m_subject), 3);
    EXPECT_EQ(source, nullptr) << "broadcasting does not set the source";
    EXPECT_EQ(TakeTold(), "123");
    const struct {
        ZRObservedObject* source; // given to the constructor
        void (*change)(ZRObservedObjectEvent&, ZRObservedObject&);
        const char* told;
    } rows[] = {
        {&m_subject, [](auto&, auto&) {}, "123"},
        {&m_subject, [](auto& event, auto&) { static_cast<void>(ZRObservedObjectEvent(event)); }, "123"}, // by one
        {&m_subject,
            [](auto& event, auto& subject) {
                event = ZRObservedObjectEvent(kCode);
                event.SetSource(&subject);
            },
            ""},
        {&m_subject, [](auto& event, auto&) { event.SetSource(nullptr); }, ""},
        {nullptr, [](auto& event, auto& subject) { event.SetSource(&subject); }, "123"},
    };
    for (const auto& row : rows) {
        source = nullptr;
        {
            ZRObservedObjectEvent event(kCode, row.source);
            row.change(event, m_subject);
            EXPECT_EQ(TakeTold(), "");
        }
        EXPECT_EQ(source, m_told.empty() ? nullptr : &m_subject);
        EXPECT_EQ(TakeTold(), row.told) << "row " << &row - rows;
    }
    {
        ZRObservedObjectEvent event(kCode);
        event.SetSource(&m_subject);
    }
    EXPECT_EQ(TakeTold(), "") << "nobody asked for it";
    ZRObservedObject alone;
    EXPECT_EQ(Broadcast(&alone), 0);
    EXPECT_EQ(TakeError(), "none");
    EXPECT_EQ(Broadcast(nullptr), -1);
    EXPECT_EQ(TakeError(), "1 ZRObservedObjectEvent::Broadcast - broadcast source not specified ZRError 0");
}

TEST_F(Events, AreAdjustedOrHaltedByTheirSubject)
{
    struct Censor : ZRObservedObject {
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
    EXPECT_EQ(Broadcast(&censor), 0);
    EXPECT_EQ(censor.calls, 1) << "also without observers";
    std::vector<int> counts;
    const ZRListener listener(censor, [&](const ZRObservedObjectEvent& event) { counts.push_back(event.GetCount()); });
    EXPECT_EQ(Broadcast(&censor), 1);
    censor.lets = 0;
    EXPECT_EQ(Broadcast(&censor), -1);
    EXPECT_EQ(TakeError(), "1 ZRObservedObjectEvent::Broadcast - broadcast halted by the censor ZRError 0");
    EXPECT_EQ(counts, std::vector{7});
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
    m_observers[3].Detach();
    const ZRAttachment attachment(m_subject, *broken);
    m_observers[3] = Observer(3);
    EXPECT_EQ(Broadcast(&m_subject), 3);
    EXPECT_EQ(TakeError(), "1 " + report + " ZRError 0");
    EXPECT_EQ(TakeTold(), "123");

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
