#include "zrlib/zrlib.h"

#include <functional>
#include <gtest/gtest.h>
#include <string>

namespace {

/// All that can be asked for, in one line.
std::string ProgressState()
{
    HCString state;
    state.Format("%d [%d, %d] %d '%s' %d '%s'", ZRProgressEnabled(), ZRProgressGetRangeMin(), ZRProgressGetRangeMax(),
        ZRProgressGetPercent(), static_cast<const char*>(ZRProgressGetTitle()), ZRProgressGetTextVisible(),
        static_cast<const char*>(ZRProgressGetUpdateText()));
    return state.ToString();
}

TEST(Progress, FollowsItsFourStates)
{
    const char* const atFirst = "0 [0, 100] 0 '' 1 ''";
    const char* const ready = "1 [0, 100] 0 '' 1 ''";
    const char* const ended = "3 [9, -9] 50 'two' 5 'text'";
    HCString text("text");
    const struct {
        const char* what;
        std::function<void()> command;
        const char* event; // code, count, min, max, state and text; empty for none
        const char* state;
    } rows[] = {
        {"off", [] { ZRProgressStart("t"); }, "", atFirst},
        {"enable", [] { ZRProgressEnable(1); }, "", ready},
        {"ready: range", [] { ZRProgressSetRange(1, 2); }, "", ready},
        {"ready: visible", [] { ZRProgressSetTextVisible(0); }, "", ready},
        {"ready: update", [&] { ZRProgressUpdate(5, &text); }, "", ready},
        {"ready: end", [] { ZRProgressEnd(); }, "", ready},
        {"start", [] { ZRProgressStart("one"); }, "START 0 0 0 0 one", "1 [0, 100] 0 'one' 1 ''"},
        {"range", [] { ZRProgressSetRange(9, -9); }, "RANGE 0 9 -9 0 ", "1 [9, -9] 0 'one' 1 ''"},
        {"visible", [] { ZRProgressSetTextVisible(5); }, "TEXT_VISIBLE 0 0 0 5 ", "1 [9, -9] 0 'one' 5 ''"},
        {"update", [&] { ZRProgressUpdate(-7, &text); }, "UPDATE -7 0 0 0 text", "1 [9, -9] -7 'one' 5 'text'"},
        {"no text", [] { ZRProgressUpdate(50, nullptr); }, "UPDATE 50 0 0 0 ", "1 [9, -9] 50 'one' 5 'text'"},
        {"start again", [] { ZRProgressStart("two"); }, "START 0 0 0 0 two", "1 [9, -9] 50 'two' 5 'text'"},
        {"suspend", [] { ZRProgressEnable(0); }, "", "0 [9, -9] 50 'two' 5 'text'"},
        {"suspended: end", [] { ZRProgressEnd(); }, "", "0 [9, -9] 50 'two' 5 'text'"},
        {"resume", [] { ZRProgressEnable(3); }, "", ended},
        {"end", [] { ZRProgressEnd(); }, "END 100 0 0 0 ", ended},
        {"ended", [] { ZRProgressEnd(); }, "", ended},
    };
    EXPECT_EQ(ProgressState(), atFirst);
    HCString told;
    {
        const ZRListener listener([&](const ZRObservedObjectEvent& event) {
            const std::string name = ZREventName(event.GetCode());
            told.Format("%s %d %d %d %d %s", name.substr(name.find("PROGRESS_") + 9).c_str(), event.GetCount(),
                event.GetMin(), event.GetMax(), event.GetState(), static_cast<const char*>(event.GetText()));
        });
        for (const auto& row : rows) {
            SCOPED_TRACE(row.what);
            told = "";
            row.command();
            EXPECT_EQ(ProgressState(), row.state);
            EXPECT_EQ(told.ToString(), row.event);
        }
    }
    ZRProgressStart("again, for the tests behind this one");
    ZRProgressSetRange(0, 100);
    ZRProgressSetTextVisible(1);
    ZRProgressEnd();
    ZRProgressEnable(0);
}

} // namespace
