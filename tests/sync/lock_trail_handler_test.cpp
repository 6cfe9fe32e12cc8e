#include "tests/support/messages.h"
#include "tests/observation/recording_observer.h"
#include "tests/support/allocations.h"
#include "zrobservers/recorder.h"

#include <thread>

namespace {

using test::RecordingObserver;

/// A handler that somebody has enabled after all.
class EnabledHandler : public ZRLockTrailHandler {
public:
    EnabledHandler() { m_bEnabled = 1; }
};

using LockTrailHandler = test::Messages;

TEST_F(LockTrailHandler, RefusesToBeEnabled)
{
    const ZRRecorder recorder(*ZRGetLockTrailHandler());
    ZRLockTrail* const trail = ZRAppendLockTrail();
    for (const int enable : {1, 0}) {
        ZRSetLockTrailEnabled(static_cast<char>(enable));
        EXPECT_EQ(test::TakeError(),
            "1 ZRLockTrailHandler::SetEnabled - not currently intended for use with release build code ZRError 0");
        EXPECT_EQ(ZRGetLockTrailEnabled(), 0);
    }
    ZRThreadSync sync;
    sync.Lock("a", trail);
    ZRLockTrailLock(trail);
    ZRGetLockTrailHandler()->BroadcastLock(*trail);
    sync.Unlock("a", trail);
    EXPECT_TRUE(recorder.GetEvents().empty());
    EXPECT_EQ(trail->GetThreadID(), 0U);
    EXPECT_EQ(ZRRemoveLockTrail(trail), 1);
    EXPECT_EQ(ZRGetLockTrailHandler()->GetName(), "Untitled");
}

TEST_F(LockTrailHandler, RemovesRecordsByTheirIdentity)
{
    EXPECT_EQ(ZRRemoveLockTrail(nullptr), 0);
    ZRLockTrailLock(nullptr);
    ZRLockTrailUnlock(nullptr);
    ZRLockTrail stranger;
    EXPECT_EQ(ZRRemoveLockTrail(&stranger), 0) << "from an empty list";
    ZRLockTrail* listed[4];
    for (ZRLockTrail*& trail : listed) {
        trail = ZRAppendLockTrail();
    }
    EXPECT_EQ(ZRRemoveLockTrail(&stranger), 0);
    for (const int place : {1, 3, 0, 2}) {
        ZRLockTrail copy(*listed[place]);
        copy.SetText("not compared");
        EXPECT_EQ(ZRRemoveLockTrail(&copy), 1);
        EXPECT_EQ(ZRRemoveLockTrail(&copy), 0) << "a second time";
    }
    ZRLockTrail* const first = ZRAppendLockTrail();
    ZRLockTrail* const second = ZRAppendLockTrail();
    second->SetText("stays");
    ZRLockTrail both(*second);
    both = *first;
    EXPECT_EQ(ZRRemoveLockTrail(first), 1);
    EXPECT_EQ(second->GetText(), "stays");
    EXPECT_EQ(ZRRemoveLockTrail(&both), 0);
    EXPECT_EQ(ZRRemoveLockTrail(second), 1);
}

TEST_F(LockTrailHandler, CopiesListTheSameRecords)
{
    ZRLockTrailHandler source;
    ZRLockTrail* const trail = source.Append();
    ZRLockTrail* const another = source.Append();
    ZRLockTrailHandler assigned;
    ZRLockTrail* const replaced = assigned.Append(); // listed by nobody after the assignment: ours to destroy
    {
        ZRLockTrailHandler copy(source);
        assigned = copy;
        assigned = static_cast<const ZRLockTrailHandler&>(assigned);
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

TEST_F(LockTrailHandler, SendsStampedCopiesWhenEnabled)
{
    EnabledHandler handler;
    RecordingObserver observer;
    handler.AttachObserver(&observer, 1);
    ZRLockTrail* const trail = handler.Append();
    trail->SetText("which lock");
    unsigned int worker = 0;
    std::thread([&] {
        worker = HCThread::GetCurrentThreadId();
        handler.Lock(trail);
        handler.Unlock(trail);
    }).join();
    handler.Lock(static_cast<ZRLockTrail*>(nullptr));
    ASSERT_EQ(observer.events.size(), 2U);
    for (const ZRObservedObjectEvent& event : observer.events) {
        EXPECT_EQ(event.GetCode(), ZR_EVENT_LOCK_TRAIL);
        EXPECT_EQ(event.GetText(), "which lock");
        EXPECT_EQ(event.GetLockTrail().GetGUID(), trail->GetGUID());
        EXPECT_EQ(event.GetLockTrail().GetThreadID(), worker);
    }
    EXPECT_EQ(observer.events[0].GetLockTrail().IsLock(), 1);
    EXPECT_EQ(observer.events[1].GetLockTrail().IsUnlock(), 1);
    EXPECT_EQ(observer.sources.back(), &handler);
    EXPECT_EQ(trail->GetType(), 0);
    EXPECT_EQ(trail->GetThreadID(), 0U);
    handler.BroadcastLock(*trail);
    EXPECT_EQ(trail->GetThreadID(), HCThread::GetCurrentThreadId());
    handler.Remove(trail);
}

TEST_F(LockTrailHandler, IsSharedByThreads)
{
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 8; ++thread) {
        threads.emplace_back([] {
            ZRLockTrail* kept = nullptr;
            for (int turn = 0; turn < 200; ++turn) {
                ZRLockTrail* const trail = ZRAppendLockTrail();
                ZRLockTrailLock(trail);
                EXPECT_EQ(kept != nullptr ? ZRRemoveLockTrail(kept) : 1, 1);
                kept = trail;
            }
            EXPECT_EQ(ZRRemoveLockTrail(kept), 1);
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

#if !defined(_WIN32)
TEST_F(LockTrailHandler, GivesNullWhenMemoryRunsOut)
{
    for (long allocations = 0;; ++allocations) {
        const test::FailingHeap heap(allocations);
        if (ZRLockTrail* const trail = ZRAppendLockTrail()) {
            EXPECT_EQ(ZRRemoveLockTrail(trail), 1);
            EXPECT_EQ(allocations, 3) << "record, node and cell";
            break;
        }
    }
}
#endif

} // namespace
