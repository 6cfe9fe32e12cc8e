#include "tests/support/messages.h"
#include "tests/support/threads.h"

#include <memory>

namespace {

/// A handler that somebody has enabled after all, and whose lock can be taken from outside.
class EnabledHandler : public ZRLockTrailHandler {
public:
    EnabledHandler() { m_bEnabled = 1; }
    using ZRLockTrailHandler::Lock;
    using ZRLockTrailHandler::Unlock;
};

using LockTrail = test::Messages;

TEST_F(LockTrail, IsEqualToItsCopiesUntilAFieldChanges)
{
    void (*const changes[])(ZRLockTrail&) = {
        [](ZRLockTrail& trail) { trail.SetText("text"); },
        [](ZRLockTrail& trail) { trail.SetText("TEXT"); },
        [](ZRLockTrail& trail) { trail.SetType(1); },
        [](ZRLockTrail& trail) { trail.SetLevel(2); },
        [](ZRLockTrail& trail) { trail.SetThreadID(3); },
        [](ZRLockTrail& trail) { trail.SetDestination(4); },
        [](ZRLockTrail& trail) { trail.SetLocation("location"); },
        [](ZRLockTrail& trail) { trail.SetCode(5); },
    };
    ZRLockTrail trail;
    EXPECT_FALSE(trail == ZRLockTrail()) << "an identity of its own";
    for (const auto& change : changes) {
        ZRLockTrail copy(trail);
        EXPECT_TRUE(copy == trail) << &change - changes;
        change(copy);
        EXPECT_FALSE(copy == trail) << &change - changes;
        trail = copy;
    }
    EXPECT_TRUE(trail.GetText() == "TEXT" && trail.GetLocation() == "location" && trail.GetThreadID() == 3);
    EXPECT_TRUE(trail.GetLevel() == 2 && trail.GetDestination() == 4 && trail.GetCode() == 5);
    EXPECT_TRUE(trail.IsLock() == 1 && trail.IsUnlock() == 0);
}

TEST_F(LockTrail, HandlerOfTheProcessKeepsRecordsAndSendsNothing)
{
    const ZRListener listener(*ZRGetLockTrailHandler(), [](const auto&) { ADD_FAILURE() << "an event"; });
    ZRSetLockTrailEnabled(1);
    EXPECT_EQ(test::TakeError(),
        "1 ZRLockTrailHandler::SetEnabled - not currently intended for use with release build code ZRError 0");
    EXPECT_EQ(ZRGetLockTrailEnabled(), 0);
    ZRLockTrail* listed[4];
    for (ZRLockTrail*& trail : listed) {
        trail = ZRAppendLockTrail();
    }
    ZRLockTrailLock(listed[0]);
    ZRLockTrailUnlock(nullptr);
    ZRGetLockTrailHandler()->BroadcastLock(*listed[0]);
    EXPECT_EQ(listed[0]->GetThreadID(), 0U) << "not stamped";
    EXPECT_EQ(ZRRemoveLockTrail(nullptr), 0);
    for (const std::size_t place : {1U, 3U, 0U, 2U}) {
        ZRLockTrail copy(*listed[place]);
        copy.SetText("not compared");
        EXPECT_EQ(ZRRemoveLockTrail(&copy), 1);
        EXPECT_EQ(ZRRemoveLockTrail(&copy), 0) << "a second time";
    }
}

TEST_F(LockTrail, CopiesOfAHandlerShareRecordsLockAndObservers)
{
    ZRObjectObserver observer;
    EnabledHandler source;
    source.AttachObserver(&observer, 1);
    ZRLockTrail* const trail = source.Append();
    EnabledHandler assigned;
    static_cast<ZRLockTrailHandler&>(assigned) = ZRLockTrailHandler();
    EXPECT_EQ(assigned.GetEnabled(), 0) << "the switch is assigned too";
    const std::unique_ptr<ZRLockTrail> replaced(assigned.Append()); // listed by nobody after the assignment
    {
        EnabledHandler copy(source);
        assigned = copy;
        for (EnabledHandler* const same : {&copy, &assigned}) {
            EXPECT_TRUE(same->IsAttached(&observer) == 1 && same->GetEnabled() == 1);
            EXPECT_EQ(source.Lock("a"), 1);
            test::OnThreads(1, [&](int /*thread*/) { EXPECT_EQ(same->Unlock("a"), 0) << "held by another"; });
            EXPECT_EQ(same->Unlock("b"), 1);
            EXPECT_EQ(source.Unlock("a"), 0);
        }
    }
    EXPECT_EQ(assigned.Remove(replaced.get()), 0);
    EXPECT_EQ(source.Remove(trail), 1);
    EXPECT_EQ(trail->GetType(), 0) << "still listed by one";
    EXPECT_EQ(assigned.Remove(trail), 1); // destroys it
}

TEST_F(LockTrail, CopiesAreSentStampedBeforeALockIsHeldAndAfterItsRelease)
{
    ZRLockTrailHandler& handler = *ZRGetLockTrailHandler();
    EnabledHandler enabled;
    handler = enabled; // shares its lock from now on
    ZRThreadSync sync;
    sync.SetWarningThreshold(1e9);
    ZRLockTrail trail;
    trail.SetText("which lock");
    std::string steps;
    const ZRListener listener(handler, [&](const ZRObservedObjectEvent& event) {
        const ZRLockTrail& sent = event.GetLockTrail();
        steps += std::to_string(sent.GetType()) + " ";
        EXPECT_TRUE(event.GetCode() == ZR_EVENT_LOCK_TRAIL && event.GetSource() == &handler);
        EXPECT_TRUE(event.GetText() == "which lock" && sent.GetGUID() == trail.GetGUID());
        EXPECT_EQ(sent.GetThreadID(), HCThread::GetCurrentThreadId());
        EXPECT_EQ(sync.unlock(), 0) << "not held";
        EXPECT_EQ(enabled.Unlock("the handler's"), 1) << "held while an event goes its way";
        enabled.Lock("the handler's");
    });
    for (const char report : {'\0', '\1'}) {
        sync.SetReport(report);
        test::OnThreads(1, [&](int /*thread*/) {
            {
                const ZRLockGuard guard(sync, "a", &trail);
                steps += "held ";
            }
            sync.Unlock("a", &trail); // which fails
        });
    }
    sync.SetActive(0);
    sync.Lock("a", &trail);
    sync.Unlock("a", &trail);
    EXPECT_EQ(steps, "1 held 2 2 1 held 2 2 ") << "and nothing while it is off";
    EXPECT_TRUE(trail.GetType() == 0 && trail.GetThreadID() == 0) << "copies were stamped";
    handler.BroadcastLock(trail);
    EXPECT_EQ(trail.GetThreadID(), HCThread::GetCurrentThreadId());
    handler = ZRLockTrailHandler();
}

} // namespace
