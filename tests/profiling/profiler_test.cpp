#include "tests/support/messages.h"
#include "tests/support/process.h"
#include "tests/support/threads.h"
#include "zrobservers/recorder.h"

#include <chrono>
#include <clocale>
#include <regex>

namespace {

constexpr double kShort = 0.005;
constexpr double kHour = 3600;

/// Longer than a short time, and so long that a thousand times as much would be printed with two digits.
void Wait() { std::this_thread::sleep_for(std::chrono::milliseconds(10)); }

ZRProfiler Copy(double& total)
{
    const ZRProfiler first("100%s", &total);
    return ZRProfiler(first);
}

ZRProfiler Assign(double& total)
{
    ZRProfiler timer;
    timer = ZRProfiler("100%s", &total);
    return timer;
}

class Profiler : public test::Messages {
protected:
    ~Profiler() override
    {
        m_handler.SetEnabled(0);
        ZRProfiler::SetEnabled(1);
    }

    /// Level, place and text of the trace messages. Forgets them.
    std::string TakeMessages()
    {
        std::string all;
        for (const ZRMsg& message : m_messages.GetMessages(ZR_MSG_TRACE)) {
            all += std::to_string(message.GetLevel()) + message.GetLocation().ToString() + message.GetText().ToString();
        }
        m_messages.Clear();
        return all;
    }

    ZRRecorder m_messages{*ZRGetMessageHandler()};
    ZRProfilerStateHandler& m_handler = *ZRGetProfilerStateHandler();
};

TEST_F(Profiler, PrintsWhatItsFormSays)
{
    const std::string line = R"(1100%s : \d\.\d{6}secs)";
    const std::string above = line + R"( - total 36\d\d\.\d{6})";
    const std::string large = line + R"( - total 1\d{300}\.0{6})";
    const struct {
        const char* what;
        ZRProfiler (*make)(double& total);
        double total; // before; below 0 for none
        bool isOn;
        bool grows; // the total
        std::string messages; // a regular expression
    } rows[] = {
        {"stopwatch", [](double&) { return ZRProfiler(); }, -1, true, false, ""},
        {"plain", [](double&) { return ZRProfiler("100%s", nullptr); }, -1, true, false, line},
        {"total", [](double& total) { return ZRProfiler("100%s", &total); }, kHour, true, true, above},
        {"above", [](double&) { return ZRProfiler("100%s", kShort, nullptr); }, -1, true, false, line},
        {"below", [](double&) { return ZRProfiler("100%s", kHour, nullptr); }, -1, true, false, ""},
        {"total above", [](double& total) { return ZRProfiler("100%s", kHour, &total); }, kHour, true, true, above},
        {"total below", [](double& total) { return ZRProfiler("100%s", kHour, &total); }, 0, true, true, ""},
        {"off", [](double&) { return ZRProfiler("100%s", nullptr); }, -1, false, false, ""},
        {"total off", [](double& total) { return ZRProfiler("100%s", &total); }, kHour, false, false, ""},
        {"too large to grow", [](double& total) { return ZRProfiler("100%s", &total); }, 1e300, true, false, large},
        {"copied", Copy, kHour, true, true, above + above},
        {"assigned", Assign, kHour, true, true, above + above},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        double total = row.total;
        {
            const ZRProfiler timer = row.make(total);
            Wait();
            ZRProfiler::SetEnabled(row.isOn ? 1 : 0);
            EXPECT_GE(timer.GetElapsed(), kShort) << "the clock goes on";
            EXPECT_EQ(timer.GetAccumulator(), row.total < 0 ? nullptr : &total);
            EXPECT_EQ(timer.GetHandler(), nullptr);
        }
        EXPECT_EQ(total - row.total >= kShort, row.grows);
        const std::string messages = TakeMessages();
        EXPECT_TRUE(std::regex_match(messages, std::regex(row.messages))) << messages;
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
    {
        const ZRProfiler timer("place", nullptr);
    }
    std::setlocale(LC_NUMERIC, "C");
    const std::string message = TakeMessages();
    EXPECT_TRUE(std::regex_match(message, std::regex(R"(1place : \d\.\d{6}secs)"))) << message;
}
#endif

TEST_F(Profiler, ChargesItsTimeToTheStateAround)
{
    std::string seen;
    m_handler.SetEnabled(1);
    ZRProfilerState outer("outer");
    ZRProfilerState inner("inner");
    ZRProfilerState innermost("innermost");
    const ZRListener listener(m_handler, [&](const ZRObservedObjectEvent& event) {
        const ZRProfilerState& state = event.GetProfilerState();
        EXPECT_EQ(event.GetCode(), ZR_EVENT_PROFILER_STATE);
        EXPECT_EQ(event.GetSource(), &m_handler);
        EXPECT_TRUE(state == outer || state.GetLocation() != "outer");
        seen += state.GetLocation().ToString() + " " + std::to_string(state.GetCalls()) + " ";
    });
    {
        const ZRProfiler timer(&outer);
        EXPECT_EQ(timer.GetState(), &outer);
        EXPECT_EQ(timer.GetHandler(), &m_handler);
        const ZRProfiler nested(&inner);
        const ZRProfiler deepest(&innermost);
        const ZRProfiler again(&innermost);
        Wait();
    }
    EXPECT_EQ(seen, "innermost 1 innermost 2 inner 1 outer 1 ");
    for (const ZRProfilerState* const state : {&outer, &inner, &innermost}) {
        EXPECT_EQ(state->GetDependantCalls(), 1) << state->GetLocation();
    }
    EXPECT_NEAR(innermost.GetSelf() + inner.GetSelf() + outer.GetSelf(), outer.GetTotal(), 1e-12);
    EXPECT_GE(innermost.GetMin(), kShort);
    EXPECT_EQ(TakeMessages(), "");
}

TEST_F(Profiler, FeedsItsStateAsTheSwitchesSayWhenItEnds)
{
    const struct {
        const char* what;
        char timers;
        char handler;
        int calls; // of the outer state
        int dependantCalls;
    } rows[] = {{"all", 1, 1, 1, 1}, {"no handler", 1, 0, 1, 0}, {"no timers", 0, 1, 0, 0}, {"nothing", 0, 0, 0, 0}};
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

TEST_F(Profiler, DoesNotChargeAStateThatWasLeftWhileTheHandlerWasOff)
{
    ZRProfilerState left;
    ZRProfilerState state;
    m_handler.SetEnabled(1);
    {
        const ZRProfiler timer(&left);
        m_handler.SetEnabled(0);
    }
    m_handler.SetEnabled(1);
    {
        const ZRProfiler timer(&state);
        EXPECT_EQ(ZRProfiler::GetEnclosing(nullptr, 0), 1);
    }
    EXPECT_EQ(left.GetDependantCalls(), 0);
    ZRProfilerState* top = nullptr;
    EXPECT_EQ(m_handler.PeekTop(top), 1);
    EXPECT_EQ(top, &left);
}

TEST_F(Profiler, MayBeUsedByManyThreads)
{
    m_handler.SetEnabled(1);
    ZRProfilerState shared;
    test::OnThreads(8, [&](int /*thread*/) {
        for (int turn = 0; turn < 300; ++turn) {
            const ZRProfiler timer(&shared);
            ZRProfilerState* top = nullptr;
            m_handler.Push(&shared);
            m_handler.PeekTop(top);
            m_handler.Pop(top);
        }
    });
    EXPECT_EQ(shared.GetCalls(), 8 * 300);
}

TEST_F(Profiler, HandlerKeepsAStackWhileItIsOn)
{
    ZRProfilerStateHandler handler;
    ZRProfilerState a("a");
    ZRProfilerState b("b");
    ZRProfilerState* top = &b;
    EXPECT_EQ(handler.Push(&a) + handler.Pop(&a) + handler.PeekTop(top), 0);
    handler.SetEnabled(1);
    EXPECT_EQ(handler.Push(nullptr) + handler.Pop(nullptr) + handler.Pop(&a) + handler.PeekTop(top), 0);
    EXPECT_EQ(top, &b);
    EXPECT_EQ(handler.Push(&b) + handler.Push(&a) + handler.PeekTop(top), 3);
    EXPECT_EQ(top, &a);
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
    EXPECT_EQ(handler.GetName(), "Untitled");
    EXPECT_EQ(handler.GetEnabled(), 0);
    ZRProfilerState state;
    const ZRRecorder recorder(handler);
    for (const char enabled : {'\1', '\1', '\0', '\3', '\0'}) {
        state.Update(1);
        handler.SetEnabled(enabled);
        handler.Update(&state);
        handler.Update(static_cast<ZRProfilerState*>(nullptr));
        handler.Update(NULL);
        EXPECT_EQ(m_handler.GetEnabled(), enabled) << "one switch for the process";
    }
    std::string seen;
    for (const ZRObservedObjectEvent& event : recorder.GetEvents()) {
        const bool isSwitch = event.GetCode() == ZR_EVENT_PROFILER_ENABLED;
        seen += isSwitch ? "switch " + std::to_string(event.GetState())
                         : std::to_string(event.GetProfilerState().GetCalls());
        seen += " ";
    }
    EXPECT_EQ(seen, "switch 1 1 2 switch 0 switch 3 4 switch 0 ");
}

} // namespace
