#include "tests/support/allocations.h"
#include "tests/support/messages.h"
#include "tests/support/threads.h"

#include <functional>

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
    const std::function<void(ZRLockTrail&)> changes[] = {
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
    EXPECT_TRUE(trail.IsLock() == 0 && trail.IsUnlock() == 0);
    trail.SetText("text");
    for (const auto& change : changes) {
        SCOPED_TRACE(&change - changes);
        ZRLockTrail copy(trail);
        EXPECT_TRUE(copy == trail);
        change(copy);
        EXPECT_FALSE(copy == trail);
        trail = ZRLockTrail();
        trail = copy;
        trail = static_cast<const ZRLockTrail&>(trail);
        EXPECT_TRUE(trail == copy);
    }
    EXPECT_TRUE(trail.GetText() == "TEXT" && trail.GetLocation() == "location" && trail.GetThreadID() == 3);
    EXPECT_TRUE(trail.GetLevel() == 2 && trail.GetDestination() == 4 && trail.GetCode() == 5);
    EXPECT_TRUE(trail.IsLock() == 1 && trail.IsUnlock() == 0);
}

TEST_F(LockTrail, HandlerOfTheProcessKeepsRecordsAndSendsNothing)
{
    ZRLockTrail stranger;
    EXPECT_EQ(ZRRemoveLockTrail(&stranger), 0) << "from an empty list";
    ZRLockTrail* listed[4];
    for (ZRLockTrail*& trail : listed) {
        trail = ZRAppendLockTrail();
    }
    const ZRListener listener(*ZRGetLockTrailHandler(), [](const auto&) { ADD_FAILURE() << "an event"; });
    for (const char enable : {'\1', '\0'}) {
        ZRSetLockTrailEnabled(enable);
        EXPECT_EQ(test::TakeError(),
            "1 ZRLockTrailHandler::SetEnabled - not currently intended for use with release build code ZRError 0");
        EXPECT_EQ(ZRGetLockTrailEnabled(), 0);
    }
    ZRLockTrailLock(listed[0]);
    ZRLockTrailUnlock(nullptr);
    ZRGetLockTrailHandler()->BroadcastLock(*listed[0]);
    EXPECT_EQ(listed[0]->GetThreadID(), 0U) << "not stamped";
    EXPECT_EQ(ZRRemoveLockTrail(&stranger), 0);
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
    ZRLockTrail* const another = source.Append();
    EnabledHandler assigned;
    static_cast<ZRLockTrailHandler&>(assigned) = ZRLockTrailHandler();
    EXPECT_EQ(assigned.GetEnabled(), 0) << "the switch is assigned too";
    ZRLockTrail* const replaced = assigned.Append(); // listed by nobody after the assignment: ours to destroy
    {
        EnabledHandler copy(source);
        assigned = copy;
        assigned = static_cast<const EnabledHandler&>(assigned);
        for (EnabledHandler* const same : {&copy, &assigned}) {
            EXPECT_TRUE(same->IsAttached(&observer) == 1 && same->GetEnabled() == 1);
            EXPECT_EQ(source.Lock("a"), 1);
            test::OnThreads(1, [&](int /*thread*/) { EXPECT_EQ(same->Unlock("a"), 0) << "held by another"; });
            EXPECT_EQ(same->Unlock("b"), 1);
            EXPECT_EQ(source.Unlock("a"), 0);
        }
        EXPECT_EQ(assigned.Remove(replaced), 0);
        EXPECT_EQ(copy.Remove(trail), 1);
        EXPECT_EQ(copy.Remove(trail), 0);
        EXPECT_EQ(source.Remove(trail), 1);
        EXPECT_EQ(trail->GetType(), 0) << "still listed by one";
        EXPECT_EQ(assigned.Remove(trail), 1); // destroys it
    }
    EXPECT_EQ(assigned.Remove(another), 1);
    EXPECT_EQ(source.Remove(another), 1);
    delete replaced;
}

TEST_F(LockTrail, HandlerSendsStampedCopiesWhenEnabled)
{
    EnabledHandler handler;
    ZRLockTrail* const trail = handler.Append();
    trail->SetText("which lock");
    std::string types;
    const ZRListener listener(handler, [&](const ZRObservedObjectEvent& event) {
        const ZRLockTrail& sent = event.GetLockTrail();
        types += std::to_string(sent.GetType());
        EXPECT_TRUE(event.GetCode() == ZR_EVENT_LOCK_TRAIL && event.GetSource() == &handler);
        EXPECT_TRUE(event.GetText() == "which lock" && sent.GetGUID() == trail->GetGUID());
        EXPECT_EQ(sent.GetThreadID(), HCThread::GetCurrentThreadId());
        EXPECT_EQ(handler.Unlock("its own"), 1) << "held while an event goes its way";
        handler.Lock("its own");
    });
    test::OnThreads(1, [&](int /*thread*/) {
        handler.Lock(trail);
        handler.Unlock(trail);
        handler.Lock(static_cast<ZRLockTrail*>(nullptr));
        EXPECT_TRUE(trail->GetType() == 0 && trail->GetThreadID() == 0) << "copies were stamped";
        handler.BroadcastLock(*trail);
        EXPECT_EQ(trail->GetThreadID(), HCThread::GetCurrentThreadId());
    });
    EXPECT_EQ(types, "120");
    handler.Remove(trail);
}

#if !defined(_WIN32)
TEST_F(LockTrail, HandlerGivesNullWhenMemoryRunsOut)
{
    ZRLockTrail* trail = nullptr;
    long allocations = 0;
    for (; trail == nullptr && allocations < 100; ++allocations) {
        const test::FailingHeap heap(allocations);
        trail = ZRAppendLockTrail();
    }
    EXPECT_GT(allocations, 2) << "for the record and for its place in the list";
    EXPECT_EQ(ZRRemoveLockTrail(trail), 1);
}
#endif

} // namespace
