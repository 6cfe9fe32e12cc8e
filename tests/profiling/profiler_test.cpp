#include "tests/support/messages.h"
#include "tests/support/process.h"
#include "tests/support/threads.h"

#include <chrono>
#include <clocale>
#include <regex>

namespace {

constexpr double kShort = 0.005;
constexpr double kHour = 3600;

/// Longer than a short time, and so long that a thousand times as much would be printed with two digits.
void Wait() { std::this_thread::sleep_for(std::chrono::milliseconds(10)); }

class Profiler : public test::Messages {
protected:
    Profiler() { ZRSetTraceFlags(ZR_DEST_CONSOLE); }
    ~Profiler() override
    {
        m_handler.SetEnabled(0);
        ZRProfiler::SetEnabled(1);
    }

    ZRProfilerStateHandler& m_handler = *ZRGetProfilerStateHandler();
};

TEST_F(Profiler, PrintsWhatItsFormSays)
{
    const std::string line = R"(TRACE - 100%s : \d\.\d{6}secs)";
    const std::string above = line + R"( - total 36\d\d\.\d{6}\n)";
    const std::string large = line + R"( - total 1\d{300}\.0{6}\n)";
    const struct {
        const char* what;
        ZRProfiler (*make)(double& total);
        double total; // before
        bool isOn;
        bool grows; // the total
        std::string output; // a regular expression
    } rows[] = {
        {"plain", [](double&) { return ZRProfiler("100%s", nullptr); }, 0, true, false, line + "\n"},
        {"total", [](double& total) { return ZRProfiler("100%s", &total); }, kHour, true, true, above},
        {"above", [](double&) { return ZRProfiler("100%s", kShort, nullptr); }, 0, true, false, line + "\n"},
        {"below", [](double&) { return ZRProfiler("100%s", kHour, nullptr); }, 0, true, false, ""},
        {"total above", [](double& total) { return ZRProfiler("100%s", kHour, &total); }, kHour, true, true, above},
        {"total below", [](double& total) { return ZRProfiler("100%s", kHour, &total); }, 0, true, true, ""},
        {"off", [](double& total) { return ZRProfiler("100%s", &total); }, kHour, false, false, ""},
        {"too large to grow", [](double& total) { return ZRProfiler("100%s", &total); }, 1e300, true, false, large},
    };
    const ZRListener listener(*ZRGetMessageHandler(), [](const ZRObservedObjectEvent& event) {
        EXPECT_TRUE(event.GetMsg().GetLevel() == 1 && event.GetMsg().GetLocation() == "");
    });
    for (const auto& row : rows) {
        double total = row.total;
        const std::string output = Console([&] {
            const ZRProfiler timer = row.make(total);
            Wait();
            ZRProfiler::SetEnabled(row.isOn ? 1 : 0);
            EXPECT_GE(timer.GetElapsed(), kShort) << "the clock goes on";
        });
        EXPECT_EQ(total - row.total >= kShort, row.grows) << row.what;
        EXPECT_TRUE(std::regex_match(output, std::regex(row.output))) << row.what << ": " << output;
        ZRProfiler::SetEnabled(1);
    }
}

#if !defined(_WIN32)
TEST_F(Profiler, PrintsAPointInEveryLocale)
{
    const test::EnvironmentGuard path("LOCPATH", m_home.Folder());
    const std::string source = m_home.Folder() + "/source";
    test::WriteFile(source, "LC_NUMERIC\ndecimal_point \",\"\nthousands_sep \".\"\ngrouping 3\nEND LC_NUMERIC\n");
    test::Run("/usr/bin/localedef", {"-c", "-i", source, "-f", "ANSI_X3.4-1968", m_home.Folder() + "/comma"});
    ASSERT_NE(std::setlocale(LC_NUMERIC, "comma"), nullptr);
    const std::string output = Console([] {
        double total = 0;
        const ZRProfiler timer("place", &total);
        EXPECT_EQ(timer.GetAccumulator(), &total);
        EXPECT_EQ(timer.GetHandler(), nullptr);
    });
    std::setlocale(LC_NUMERIC, "C");
    EXPECT_TRUE(std::regex_match(output, std::regex(R"(TRACE - place : \d\.\d{6}secs - total \d\.\d{6}\n)"))) << output;
}
#endif

TEST_F(Profiler, ChargesItsTimeToTheStateAround)
{
    m_handler.SetEnabled(1);
    ZRProfilerState left;
    {
        const ZRProfiler timer(&left);
        m_handler.SetEnabled(0); // so that it stays on the stack
    }
    m_handler.SetEnabled(1);
    std::string seen;
    ZRProfilerState outer("outer");
    ZRProfilerState inner("inner");
    ZRProfilerState innermost("innermost");
    const ZRListener listener(m_handler, [&](const ZRObservedObjectEvent& event) {
        EXPECT_TRUE(event.GetCode() == ZR_EVENT_PROFILER_STATE && event.GetSource() == &m_handler);
        const ZRProfilerState state = event.GetProfilerState();
        seen += state.GetLocation().ToString() + " " + std::to_string(state.GetCalls()) + " ";
    });
    {
        const ZRProfiler timer(&outer);
        EXPECT_TRUE(timer.GetState() == &outer && timer.GetHandler() == &m_handler);
        const ZRProfiler nested(&inner);
        const ZRProfiler deepest(&innermost);
        const ZRProfiler again(&innermost);
        EXPECT_EQ(ZRProfiler::GetEnclosing(nullptr, 0), 4);
        Wait();
    }
    EXPECT_EQ(seen, "innermost 1 innermost 2 inner 1 outer 1 ");
    for (const ZRProfilerState* const state : {&outer, &inner, &innermost}) {
        EXPECT_EQ(state->GetDependantCalls(), 1) << state->GetLocation();
    }
    EXPECT_NEAR(innermost.GetSelf() + inner.GetSelf() + outer.GetSelf(), outer.GetTotal(), 1e-12);
    EXPECT_GE(innermost.GetMin(), kShort);
    EXPECT_EQ(left.GetDependantCalls(), 0) << "of another turn";
    EXPECT_EQ(m_handler.Pop(&left), 1) << "still there";
}

TEST_F(Profiler, FeedsItsStateAsTheSwitchesSayWhenItEnds)
{
    const struct {
        const char* what;
        char timers;
        char handler;
        int calls; // of the outer state
        int dependantCalls;
    } rows[] = {{"all", 1, 1, 1, 1}, {"no handler", 1, 0, 1, 0}, {"no timers", 0, 1, 0, 0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        ZRProfilerState outer;
        ZRProfilerState inner;
        ZRProfiler::SetEnabled(row.timers);
        m_handler.SetEnabled(row.handler);
        {
            const ZRProfiler timer(&outer);
            const ZRProfiler nested(&inner);
            const ZRProfiler copy(nested); // which has no entry of its own, and takes that of the other
            const ZRProfiler nothing(static_cast<ZRProfilerState*>(nullptr));
        }
        EXPECT_EQ(inner.GetCalls(), 2 * row.calls);
        EXPECT_EQ(outer.GetCalls(), row.calls);
        EXPECT_EQ(outer.GetDependantCalls(), row.dependantCalls);
        EXPECT_EQ(outer.GetSelf() == outer.GetTotal(), row.dependantCalls == 0);
    }
}

TEST_F(Profiler, HandlerKeepsAStackWhileItIsOn)
{
    ZRProfilerStateHandler handler;
    ZRProfilerState a;
    ZRProfilerState b;
    ZRProfilerState* top = &b;
    const auto isRefused = [&](ZRProfilerState* pushed) {
        return handler.Push(pushed) == 0 && handler.Pop(&a) == 0 && handler.PeekTop(top) == 0 && top == &b;
    };
    EXPECT_TRUE(isRefused(&a)) << "while it is off";
    handler.SetEnabled(1);
    EXPECT_TRUE(isRefused(nullptr)) << "while it is empty";
    EXPECT_TRUE(handler.Push(&b) == 1 && handler.Push(&a) == 1 && handler.PeekTop(top) == 1);
    EXPECT_EQ(top, &a);
    EXPECT_EQ(handler.Pop(nullptr), 0) << "takes nothing";
    EXPECT_EQ(handler.Pop(&a), 1);
    ZRProfilerStateHandler copy(handler);
    EXPECT_EQ(handler.Pop(&a), 0) << "takes the other one";
    EXPECT_EQ(handler.Pop(&b), 0);
    EXPECT_EQ(copy.Pop(&b), 1) << "a stack of its own";
    handler.Push(&a);
    copy = handler;
    EXPECT_EQ(copy.Pop(&a), 1);
}

TEST_F(Profiler, HandlerTellsOfItsSwitchAndOfStates)
{
    ZRProfilerStateHandler handler;
    ZRProfilerState state;
    std::string seen;
    const ZRListener listener(handler, [&seen](const ZRObservedObjectEvent& event) {
        const bool isSwitch = event.GetCode() == ZR_EVENT_PROFILER_ENABLED;
        seen += isSwitch ? "switch " + std::to_string(event.GetState())
                         : std::to_string(event.GetProfilerState().GetCalls());
        seen += " ";
    });
    for (const char enabled : {'\1', '\1', '\0', '\3', '\0'}) {
        state.Update(1);
        handler.SetEnabled(enabled);
        handler.Update(&state);
        handler.Update(static_cast<ZRProfilerState*>(nullptr));
        handler.Update(NULL);
        EXPECT_EQ(m_handler.GetEnabled(), enabled) << "one switch for the process";
    }
    EXPECT_EQ(seen, "switch 1 1 2 switch 0 switch 3 4 switch 0 ");
}

} // namespace
