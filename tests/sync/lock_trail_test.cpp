#include "zrlib/zrlib.h"

#include <functional>
#include <gtest/gtest.h>
#include <set>
#include <string>

namespace {

TEST(LockTrail, HasAnIdentityThatItsCopiesShare)
{
    std::set<std::string> identities;
    for (int count = 0; count < 1000; ++count) {
        const ZRLockTrail trail;
        const ZRLockTrail copy(trail); // before anybody has asked for the identity
        ZRLockTrail assigned;
        const HCString former = assigned.GetGUID();
        assigned = trail;
        EXPECT_EQ(copy.GetGUID(), trail.GetGUID());
        EXPECT_EQ(assigned.GetGUID(), trail.GetGUID());
        EXPECT_NE(former, trail.GetGUID());
        EXPECT_TRUE(ZRClassID::IsFormat(trail.GetGUID()));
        EXPECT_TRUE(identities.insert(static_cast<const char*>(trail.GetGUID())).second);
    }
    EXPECT_FALSE(ZRLockTrail() == ZRLockTrail());
}

TEST(LockTrail, IsEqualWhenAllItsFieldsAre)
{
    const std::function<void(ZRLockTrail&)> changes[] = {
        [](ZRLockTrail& trail) { trail.SetText("TEXT"); },
        [](ZRLockTrail& trail) { trail.SetType(1); },
        [](ZRLockTrail& trail) { trail.SetLevel(1); },
        [](ZRLockTrail& trail) { trail.SetThreadID(1); },
        [](ZRLockTrail& trail) { trail.SetDestination(1); },
        [](ZRLockTrail& trail) { trail.SetLocation("location"); },
        [](ZRLockTrail& trail) { trail.SetCode(1); },
    };
    ZRLockTrail trail;
    EXPECT_EQ(trail.IsLock() + trail.IsUnlock(), 0);
    trail.SetText("text");
    for (const auto& change : changes) {
        ZRLockTrail other(trail);
        EXPECT_TRUE(other == trail);
        change(other);
        EXPECT_FALSE(other == trail);
        trail = other;
        trail = static_cast<const ZRLockTrail&>(trail);
        EXPECT_TRUE(other == trail);
    }
    EXPECT_EQ(trail.GetText(), "TEXT");
    EXPECT_EQ(trail.GetLocation(), "location");
    EXPECT_EQ(trail.GetLevel() + trail.GetDestination() + trail.GetCode(), 3);
    EXPECT_EQ(trail.GetThreadID(), 1U);
    EXPECT_TRUE(trail.IsLock() && !trail.IsUnlock());
    trail.SetType(2);
    EXPECT_TRUE(!trail.IsLock() && trail.IsUnlock());
}

} // namespace
