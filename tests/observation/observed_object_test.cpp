#include "tests/support/messages.h"

#include <climits>

namespace {

using test::TakeError;
using ObservedObject = test::Messages;

std::vector<ZRObjectObserver*> ObserversOf(const ZRObservedObject& subject)
{
    std::vector<ZRObjectObserver*> observers;
    for (int index = 0; index < subject.GetObserverCount(); ++index) {
        observers.push_back(subject.GetObserver(index));
    }
    return observers;
}

TEST_F(ObservedObject, KeepsEachObserverOnceInTheOrderOfAttachment)
{
    struct Subject : ZRObservedObject {
        using ZRObservedObject::Initialise;
    };
    Subject subject;
    ZRObjectObserver first;
    ZRObjectObserver second;
    ZRObjectObserver third;
    EXPECT_EQ(subject.AttachObserver(&first, 1), 0);
    EXPECT_EQ(subject.AttachObserver(&first, 1), 1) << "it was there before";
    EXPECT_EQ(subject.AttachObserver(&second, 0), 0);
    EXPECT_EQ(subject.AttachObserver(&third, 1), 0);
    EXPECT_EQ(ObserversOf(subject), (std::vector{&first, &second, &third}));
    EXPECT_EQ(subject.DetachObserver(&second, 1), 1);
    EXPECT_EQ(subject.DetachObserver(&second, 1), 1) << "it is gone, one way or the other";
    EXPECT_EQ(ObserversOf(subject), (std::vector{&first, &third}));
    EXPECT_TRUE(subject.IsAttached(&third) == 1 && subject.IsAttached(&second) == 0);
    for (const int index : {INT_MIN, -1, 2, INT_MAX}) {
        EXPECT_EQ(subject.GetObserver(index), nullptr);
    }
    EXPECT_EQ(TakeError(), "none");
    subject.SetName("a name");
    subject.Initialise();
    EXPECT_TRUE(subject.GetObserverCount() == 0 && subject.GetName() == "Untitled");
}

TEST_F(ObservedObject, IsKnownToItsObserversWhileItIsTheLast)
{
    ZRObservedObject one;
    ZRObservedObject other;
    ZRObservedObject stranger;
    ZRObjectObserver observer;
    EXPECT_EQ(observer.GetZRSubject(), nullptr);
    one.AttachObserver(&observer, 1);
    other.AttachObserver(&observer, 1);
    one.AttachObserver(&observer, 1);
    EXPECT_EQ(observer.GetZRSubject(), &other) << "attaching again changes nothing";
    stranger.DetachObserver(&observer, 1);
    EXPECT_EQ(observer.GetZRSubject(), &other);
    one.DetachObserver(&observer, 1);
    EXPECT_EQ(observer.GetZRSubject(), nullptr) << "whichever subject it named";
    EXPECT_EQ(other.IsAttached(&observer), 1);

    other.SetName("other");
    const ZRObservedObject copy(other);
    one = other;
    one = static_cast<const ZRObservedObject&>(one);
    for (const ZRObservedObject* const same : {&copy, static_cast<const ZRObservedObject*>(&one)}) {
        EXPECT_EQ(ObserversOf(*same), std::vector{&observer});
        EXPECT_EQ(same->GetName(), "other");
    }
    stranger.AttachObserver(&observer, 1);
    const ZRObjectObserver copiedObserver(observer);
    EXPECT_EQ(copiedObserver.GetZRSubject(), &stranger);
    EXPECT_EQ(stranger.GetObserverCount(), 1) << "the copy is not attached";
}

TEST_F(ObservedObject, ReportsNullObservers)
{
    ZRObservedObject subject;
    ZRObjectObserver observer;
    EXPECT_EQ(subject.GetName(), "Untitled");
    EXPECT_EQ(observer.GetName(), "Untitled");
    EXPECT_EQ(ZRGetMessageHandler()->GetName(), "Untitled");
    observer.SetName("an observer");
    EXPECT_EQ(ZRObjectObserver(observer).GetName(), "an observer");
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

} // namespace
