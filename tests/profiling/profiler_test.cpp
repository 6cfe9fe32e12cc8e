#include "tests/support/messages.h"
#include "tests/observation/recording_observer.h"
#include "zrobservers/recorder.h"

#include <clocale>
#include <cmath>
#include <limits>
#include <memory>
#include <optional>
#include <regex>
#include <thread>

namespace {

using test::RecordingObserver;

/// Waits until so many seconds have passed on a timer.
void WaitFor(const ZRProfiler& timer, double seconds)
{
    while (timer.GetElapsed() < seconds) {}
}

class Profiler : public test::Messages {
protected:
    ~Profiler() override
    {
        ZRProfiler::SetEnabled(1);
        ZRGetProfilerStateHandler()->SetEnabled(0);
    }

    ZRRecorder m_messages{*ZRGetMessageHandler()};
};

TEST_F(Profiler, PrintsWhatItsFormSays)
{
    constexpr double kShort = 0.001;
    constexpr double kHour = 3600;
    constexpr double kNoThreshold = std::numeric_limits<double>::quiet_NaN();
    const struct {
        const char* what;
        double threshold;
        double total; // before; below 0 for a timer without an accumulator
        char enabled;
        const char* message; // a regular expression; empty for none
    } rows[] = {
        {"plain", kNoThreshold, -1, 1, R"(100%s : \d+\.\d{6}secs)"},
        {"total", kNoThreshold, kHour, 1, R"(100%s : \d+\.\d{6}secs - total 36\d\d\.\d{6})"},
        {"above", kShort, -1, 1, R"(100%s : \d+\.\d{6}secs)"},
        {"below", kHour, -1, 1, ""},
        {"total above", kHour, kHour, 1, R"(100%s : \d+\.\d{6}secs - total 36\d\d\.\d{6})"},
        {"total below", kHour, 0, 1, ""},
        {"off", kNoThreshold, -1, 0, ""},
        {"total off", kNoThreshold, 5, 0, ""},
        {"large", kNoThreshold, 1e300, 1, R"(100%s : \d+\.\d{6}secs - total 1\d{300}\.000000)"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        double total = row.total;
        double* const accumulator = row.total < 0 ? nullptr : &total;
        ZRProfiler::SetEnabled(1);
        {
            std::optional<ZRProfiler> timer;
            if (std::isnan(row.threshold)) {
                timer.emplace("100%s", accumulator);
            } else {
                timer.emplace("100%s", row.threshold, accumulator);
            }
            EXPECT_EQ(timer->GetAccumulator(), accumulator);
            EXPECT_EQ(timer->GetState(), nullptr);
            EXPECT_EQ(timer->GetHandler(), nullptr);
            WaitFor(*timer, kShort);
            ZRProfiler::SetEnabled(row.enabled);
        }
        if (accumulator != nullptr && row.total < 1e9) {
            EXPECT_EQ(total - row.total >= kShort, row.enabled != 0);
        }
        ASSERT_EQ(m_messages.GetEvents().size(), *row.message != '\0' ? 1U : 0U);
        if (*row.message != '\0') {
            const ZRMsg message = m_messages.GetMessages().front();
            EXPECT_TRUE(std::regex_match(static_cast<const char*>(message.GetText()), std::regex(row.message)))
                << static_cast<const char*>(message.GetText());
            EXPECT_EQ(message.IsTrace(), 1);
            EXPECT_EQ(message.GetLocation(), "");
            EXPECT_EQ(message.GetLevel(), 1);
        }
        m_messages.Clear();
    }
}

TEST_F(Profiler, IsAStopwatchByDefault)
{
    const std::int64_t ticks = ZRProfiler::GetTicks();
    {
        const ZRProfiler timer;
        const double first = timer.GetElapsed();
        EXPECT_GE(first, 0);
        EXPECT_LT(first, 10) << "seconds";
        WaitFor(timer, first + 0.001);
        ZRProfiler::SetEnabled(0);
        EXPECT_GE(timer.GetElapsed(), first + 0.001) << "the clock is always live";
    }
    EXPECT_GT(ZRProfiler::GetTicks(), ticks);
    EXPECT_EQ(ZRProfiler::GetEnabled(), 0);
    EXPECT_TRUE(m_messages.GetEvents().empty());
}

TEST_F(Profiler, ChargesItsTimeToTheStateAround)
{
    ZRProfilerStateHandler& handler = *ZRGetProfilerStateHandler();
    RecordingObserver observer;
    handler.AttachObserver(&observer, 1);
    handler.SetEnabled(1);
    observer.events.clear();
    ZRProfilerState outer("outer");
    ZRProfilerState inner("inner");
    ZRProfilerState innermost("innermost");
    {
        const ZRProfiler timer(&outer);
        EXPECT_EQ(timer.GetState(), &outer);
        EXPECT_EQ(timer.GetHandler(), &handler);
        const ZRProfiler nested(&inner);
        const ZRProfiler deepest(&innermost);
        const ZRProfiler recursive(&innermost);
        WaitFor(recursive, 0.001);
    }
    std::string order;
    for (const ZRObservedObjectEvent& event : observer.events) {
        EXPECT_EQ(event.GetCode(), ZR_EVENT_PROFILER_STATE);
        order += event.GetProfilerState().GetLocation();
        order += " ";
    }
    EXPECT_EQ(order, "innermost innermost inner outer ");
    EXPECT_EQ(observer.sources.back(), &handler);
    EXPECT_EQ(observer.events.front().GetProfilerState().GetCalls(), 1) << "a snapshot";
    EXPECT_TRUE(observer.events.back().GetProfilerState() == outer);
    EXPECT_EQ(innermost.GetCalls(), 2);
    EXPECT_EQ(innermost.GetDependantCalls(), 1);
    EXPECT_EQ(inner.GetDependantCalls(), 1);
    EXPECT_EQ(outer.GetDependantCalls(), 1);
    EXPECT_NEAR(innermost.GetSelf() + inner.GetSelf() + outer.GetSelf(), outer.GetTotal(), 1e-12);
    EXPECT_GE(innermost.GetMin(), 0.001);
    EXPECT_TRUE(m_messages.GetEvents().empty());
    handler.DetachObserver(&observer, 1);
}

TEST_F(Profiler, FeedsItsStateAsTheSwitchesSayWhenItEnds)
{
    const struct {
        const char* what;
        char timers;
        char handler;
        int calls; // of each state
        int dependantCalls; // of the outer one
    } rows[] = {{"all", 1, 1, 1, 1}, {"no handler", 1, 0, 1, 0}, {"no timers", 0, 1, 0, 0}, {"nothing", 0, 0, 0, 0}};
    for (const auto& row : rows) {
        SCOPED_TRACE(row.what);
        ZRProfilerState outer;
        ZRProfilerState inner;
        ZRProfiler::SetEnabled(row.timers);
        ZRGetProfilerStateHandler()->SetEnabled(row.handler);
        {
            const ZRProfiler timer(&outer);
            const ZRProfiler nested(&inner);
            const ZRProfiler nothing(static_cast<ZRProfilerState*>(nullptr));
        }
        EXPECT_EQ(outer.GetCalls() + inner.GetCalls(), 2 * row.calls);
        EXPECT_EQ(outer.GetDependantCalls(), row.dependantCalls);
        EXPECT_EQ(outer.GetSelf() == outer.GetTotal(), row.dependantCalls == 0);
        ZRProfilerState* left = nullptr; // by timers that ended while they were off
        while (ZRGetProfilerStateHandler()->PeekTop(left) != 0) {
            ZRGetProfilerStateHandler()->Pop(left);
        }
    }
}

TEST_F(Profiler, DoesNotChargeAStateThatWasLeftWhileTheHandlerWasOff)
{
    ZRProfilerStateHandler& handler = *ZRGetProfilerStateHandler();
    handler.SetEnabled(1);
    ZRProfilerState left;
    {
        const ZRProfiler timer(&left);
        handler.SetEnabled(0);
    }
    handler.SetEnabled(1);
    ZRProfilerState state;
    {
        const ZRProfiler timer(&state);
        ZRProfilerState* enclosing = nullptr;
        EXPECT_EQ(ZRProfiler::GetEnclosing(&enclosing, 1), 1);
        EXPECT_EQ(enclosing, &state);
    }
    EXPECT_EQ(left.GetDependantCalls(), 0);
    ZRProfilerState* top = nullptr;
    EXPECT_EQ(handler.PeekTop(top), 1);
    EXPECT_EQ(top, &left);
    handler.Pop(top);
}

TEST_F(Profiler, CopiesAreTimersOfTheirOwn)
{
    ZRProfilerState state;
    double total = 0;
    {
        const ZRProfiler timer(&state);
        const ZRProfiler copy(timer);
        ZRProfiler printing("copied", &total);
        const ZRProfiler another(printing);
        printing = timer;
    }
    EXPECT_EQ(state.GetCalls(), 3);
    EXPECT_EQ(m_messages.GetEvents().size(), 1U);
    EXPECT_GT(total, 0);
}

TEST_F(Profiler, NestsDeeplyAndOnManyThreads)
{
    ZRGetProfilerStateHandler()->SetEnabled(1);
    ZRProfilerState state;
    {
        std::vector<std::unique_ptr<ZRProfiler>> timers;
        for (int depth = 0; depth < 1000; ++depth) {
            timers.push_back(std::make_unique<ZRProfiler>(&state));
        }
        while (!timers.empty()) {
            timers.pop_back();
        }
    }
    EXPECT_EQ(state.GetCalls(), 1000);
    EXPECT_EQ(state.GetDependantCalls(), 999);
    // A timer may find the state of another thread beneath it, which is the clients' to guard; so all have one.
    ZRThreadSync guard;
    std::vector<std::thread> threads;
    for (int thread = 0; thread < 8; ++thread) {
        threads.emplace_back([&] {
            ZRProfilerStateHandler& handler = *ZRGetProfilerStateHandler();
            for (int turn = 0; turn < 300; ++turn) {
                handler.Push(&state);
                ZRProfilerState* top = nullptr;
                handler.PeekTop(top);
                handler.Pop(&state);
                guard.Lock("test", nullptr);
                handler.Update(&state);
                handler.Update(NULL);
                {
                    const ZRProfiler timer(&state);
                }
                guard.Unlock("test", nullptr);
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
}

TEST_F(Profiler, HandlerKeepsAStackWhileItIsOn)
{
    ZRProfilerStateHandler handler;
    ZRProfilerState a("a");
    ZRProfilerState b("b");
    ZRProfilerState* top = &b;
    EXPECT_EQ(handler.GetEnabled(), 0);
    EXPECT_EQ(handler.Push(&a) + handler.Pop(&a) + handler.PeekTop(top), 0);
    EXPECT_EQ(top, &b);

    RecordingObserver observer;
    handler.AttachObserver(&observer, 1);
    for (const int enabled : {1, 1, 0, 3, 1}) {
        handler.SetEnabled(static_cast<char>(enabled));
    }
    ASSERT_EQ(observer.events.size(), 4U);
    EXPECT_EQ(observer.events[1].GetState(), 0);
    EXPECT_EQ(observer.events[2].GetState(), 3);
    EXPECT_EQ(observer.events[2].GetCode(), ZR_EVENT_PROFILER_ENABLED);
    EXPECT_EQ(observer.sources[2], &handler);
    EXPECT_EQ(ZRGetProfilerStateHandler()->GetEnabled(), 1) << "one switch for the process";

    EXPECT_EQ(handler.Push(nullptr) + handler.Pop(nullptr) + handler.Pop(&a) + handler.PeekTop(top), 0);
    EXPECT_EQ(handler.Push(&a) + handler.Push(&b) + handler.PeekTop(top), 3);
    EXPECT_EQ(top, &b);
    EXPECT_EQ(handler.Pop(&b), 1);
    ZRProfilerStateHandler copy(handler);
    handler.SetEnabled(0);
    handler.SetEnabled(1);
    EXPECT_EQ(handler.Pop(&b), 0) << "takes the other one";
    EXPECT_EQ(handler.Pop(&a), 0);
    EXPECT_EQ(copy.Pop(&a), 1) << "a stack of its own";
    handler.Push(&a);
    copy = handler;
    EXPECT_EQ(copy.Pop(&a), 1);
    EXPECT_EQ(copy.GetObserver(0), &observer);

    observer.events.clear();
    a.Update(2);
    handler.Update(&a);
    handler.Update(static_cast<ZRProfilerState*>(nullptr));
    a.Update(3);
    handler.SetEnabled(0);
    handler.Update(&a);
    ASSERT_EQ(observer.events.size(), 2U);
    EXPECT_EQ(observer.events[0].GetProfilerState().GetTotal(), 2);
    EXPECT_EQ(handler.GetName(), "Untitled");
}

TEST_F(Profiler, PrintsAPointInEveryLocale)
{
    const char* const former = std::setlocale(LC_NUMERIC, nullptr);
    const std::string kept = former;
    for (const char* name : {"de_DE.UTF-8", "de_DE", "fr_FR.UTF-8"}) {
        std::setlocale(LC_NUMERIC, name); // where there is such a one
    }
    {
        const ZRProfiler timer("place", nullptr);
    }
    std::setlocale(LC_NUMERIC, kept.c_str());
    EXPECT_TRUE(std::regex_match(
        static_cast<const char*>(m_messages.GetEvents().front().GetText()), std::regex(R"(place : \d+\.\d{6}secs)")));
}

} // namespace
