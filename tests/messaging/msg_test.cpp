#include "zrlib/zrlib.h"

#include <gtest/gtest.h>

namespace {

TEST(Msg, StartsAsAnEmptyOutMessage)
{
    const ZRMsg message;
    EXPECT_EQ(message.GetText(), "");
    EXPECT_EQ(message.GetTextEx(), "");
    EXPECT_EQ(message.GetType(), 1);
    EXPECT_EQ(message.GetLevel(), 0);
    EXPECT_EQ(message.GetThreadID(), 0U);
    EXPECT_EQ(message.GetDestination(), 0);
    EXPECT_EQ(message.GetLocation(), "");
    EXPECT_EQ(message.GetChainToPrevious(), 0);
    EXPECT_EQ(message.GetCode(), 0);

    const ZRMsg withTexts("text", "extended", ZR_MSG_TRACE);
    EXPECT_EQ(withTexts.GetText(), "text");
    EXPECT_EQ(withTexts.GetTextEx(), "extended");
    EXPECT_EQ(withTexts.GetLevel(), 0);
    EXPECT_EQ(ZRMsg("text", ZR_MSG_WARN).GetTextEx(), "");
}

TEST(Msg, AnswersForItsExactType)
{
    for (int type = -1; type <= 16; ++type) {
        const ZRMsg message("", static_cast<short>(type));
        EXPECT_EQ(message.IsOut(), type == 1);
        EXPECT_EQ(message.IsWarn(), type == 2);
        EXPECT_EQ(message.IsError(), type == 4);
        EXPECT_EQ(message.IsTrace(), type == 8);
    }
}

TEST(Msg, IsEqualWhenAllNineFieldsAre)
{
    void (*const changes[])(ZRMsg&) = {
        [](ZRMsg& message) { message.SetText("TEXT"); },
        [](ZRMsg& message) { message.SetTextEx("x"); },
        [](ZRMsg& message) { message.SetType(3); },
        [](ZRMsg& message) { message.SetLevel(7); },
        [](ZRMsg& message) { message.SetThreadID(0xFFFFFFFFU); },
        [](ZRMsg& message) { message.SetDestination(-1); },
        [](ZRMsg& message) { message.SetLocation("here"); },
        [](ZRMsg& message) { message.SetChainToPrevious(1); },
        [](ZRMsg& message) { message.SetCode(-65840); },
    };
    const ZRMsg original("text", ZR_MSG_ERROR);
    ZRMsg everythingChanged(original);
    for (const auto change : changes) {
        ZRMsg changed(original);
        EXPECT_EQ(changed, original);
        change(changed);
        EXPECT_NE(changed, original);
        change(everythingChanged);
    }
    ZRMsg assigned;
    assigned = everythingChanged;
    EXPECT_EQ(assigned, everythingChanged);
    const ZRMsg& same = assigned;
    assigned = same;
    EXPECT_EQ(assigned, everythingChanged);
}

} // namespace
