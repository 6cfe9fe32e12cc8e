#include "tests/observation/recording_observer.h"

#include <gtest/gtest.h>
#include <string>

namespace {

/// All that can be asked for, in one line.
std::string State()
{
    HCString state;
    state.Format("%d [%d, %d] %d '%s' %d '%s'", ZRProgressEnabled(), ZRProgressGetRangeMin(), ZRProgressGetRangeMax(),
        ZRProgressGetPercent(), static_cast<const char*>(ZRProgressGetTitle()), ZRProgressGetTextVisible(),
        static_cast<const char*>(ZRProgressGetUpdateText()));
    return static_cast<const char*>(state);
}

TEST(Progress, FollowsItsFourStates)
{
    const std::string atFirst = "0 [0, 100] 0 '' 1 ''";
    EXPECT_EQ(State(), atFirst);
    HCString text("text");
    const struct {
        const char* what;
        std::function<void()> command;
        int code; // of the event that is sent; 0 for none
        const char* fields; // count, min, max, state, text
        const char* state;
    } rows[] = {
        {"off", [] { ZRProgressStart("t"); }, 0, "", "0 [0, 100] 0 '' 1 ''"},
        {"enable", [] { ZRProgressEnable(1); }, 0, "", "1 [0, 100] 0 '' 1 ''"},
        {"ready: range", [] { ZRProgressSetRange(1, 2); }, 0, "", "1 [0, 100] 0 '' 1 ''"},
        {"ready: visible", [] { ZRProgressSetTextVisible(0); }, 0, "", "1 [0, 100] 0 '' 1 ''"},
        {"ready: update", [&] { ZRProgressUpdate(5, &text); }, 0, "", "1 [0, 100] 0 '' 1 ''"},
        {"ready: end", [] { ZRProgressEnd(); }, 0, "", "1 [0, 100] 0 '' 1 ''"},
        {"start", [] { ZRProgressStart("one"); }, ZR_EVENT_PROGRESS_START, "0 0 0 0 one", "1 [0, 100] 0 'one' 1 ''"},
        {"range", [] { ZRProgressSetRange(9, -9); }, ZR_EVENT_PROGRESS_RANGE, "0 9 -9 0 ", "1 [9, -9] 0 'one' 1 ''"},
        {"visible", [] { ZRProgressSetTextVisible(5); }, ZR_EVENT_PROGRESS_TEXT_VISIBLE, "0 0 0 5 ",
            "1 [9, -9] 0 'one' 5 ''"},
        {"update", [&] { ZRProgressUpdate(-7, &text); }, ZR_EVENT_PROGRESS_UPDATE, "-7 0 0 0 text",
            "1 [9, -9] -7 'one' 5 'text'"},
        {"no text", [] { ZRProgressUpdate(50, nullptr); }, ZR_EVENT_PROGRESS_UPDATE, "50 0 0 0 ",
            "1 [9, -9] 50 'one' 5 'text'"},
        {"start again", [] { ZRProgressStart("two"); }, ZR_EVENT_PROGRESS_START, "0 0 0 0 two",
            "1 [9, -9] 50 'two' 5 'text'"},
        {"suspend", [] { ZRProgressEnable(0); }, 0, "", "0 [9, -9] 50 'two' 5 'text'"},
        {"suspended: end", [] { ZRProgressEnd(); }, 0, "", "0 [9, -9] 50 'two' 5 'text'"},
        {"resume", [] { ZRProgressEnable(3); }, 0, "", "3 [9, -9] 50 'two' 5 'text'"},
        {"end", [] { ZRProgressEnd(); }, ZR_EVENT_PROGRESS_END, "100 0 0 0 ", "3 [9, -9] 50 'two' 5 'text'"},
        {"ended", [] { ZRProgressEnd(); }, 0, "", "3 [9, -9] 50 'two' 5 'text'"},
    };
    test::RecordingObserver observer;
    std::string stateSeen;
    observer.then = [&](auto&) { stateSeen = State(); };
    EXPECT_EQ(ZRAttachObserver(&observer), 0);
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        row.command();
        EXPECT_EQ(State(), row.state);
        ASSERT_EQ(observer.events.size(), row.code != 0 ? 1U : 0U);
        if (row.code != 0) {
            const ZRObservedObjectEvent& event = observer.events.front();
            EXPECT_EQ(event.GetCode(), row.code);
            EXPECT_EQ(stateSeen, row.state) << "the state comes first";
            EXPECT_EQ(observer.sources.front(), observer.GetZRSubject());
            HCString fields;
            fields.Format("%d %d %d %d %s", event.GetCount(), event.GetMin(), event.GetMax(), event.GetState(),
                static_cast<const char*>(event.GetText()));
            EXPECT_EQ(fields, row.fields);
        }
        observer.events.clear();
        observer.sources.clear();
    }
    EXPECT_EQ(ZRDetachObserver(&observer), 1);
    EXPECT_EQ(observer.GetZRSubject(), nullptr);
    ZRProgressStart("unobserved");
    ZRProgressUpdate(1, nullptr);
    EXPECT_EQ(State(), "3 [9, -9] 1 'unobserved' 5 'text'");
}

} // namespace
