// Messages, events and broadcasts, compared with other loggers and signal libraries.

#include "benchmarks/report.h"
#include "benchmarks/shared.h"
#include "hcbase/hcbase.h"
#include "zrlib/zrlib.h"

#include <Poco/Channel.h>
#include <Poco/Logger.h>
#include <Poco/Message.h>
#include <array>
#include <benchmark/benchmark.h>
#include <boost/log/attributes/current_thread_id.hpp>
#include <boost/log/core.hpp>
#include <boost/log/expressions.hpp>
#include <boost/log/sinks.hpp>
#include <boost/log/sources/severity_logger.hpp>
#include <boost/log/trivial.hpp>
#include <boost/signals2.hpp>
#include <boost/signals2/dummy_mutex.hpp>
#include <cstring>
#include <glib.h>
#include <memory>
#include <mutex>
#include <sigc++/sigc++.h>
#include <spdlog/sinks/base_sink.h>
#include <spdlog/spdlog.h>
#include <string>

namespace {

using report::AddTarget;
using report::Measure;

/// What every receiver reads of a message.
struct Received {
    std::size_t length = 0;
    std::uint64_t thread = 0;
    int level = 0;
};

class MessageObserver : public ZRObjectObserver {
public:
    void OnEvent(ZRObservedObjectEvent* event) override
    {
        const ZRMsg& message = event->GetMsg();
        const auto length = static_cast<std::size_t>(message.GetText().GetLength())
            + static_cast<std::size_t>(message.GetLocation().GetLength());
        m_received = {length, message.GetThreadID(), message.GetLevel()};
        benchmark::DoNotOptimize(m_received);
    }

private:
    Received m_received;
};

/// Sends messages to the observer; null for none. The first thread attaches it and turns messages on.
void Send(benchmark::State& state, ZRObjectObserver* observer)
{
    ZRAttachment attachment;
    if (state.thread_index() == 0) {
        if (observer != nullptr) {
            attachment = ZRAttachment(*ZRGetMessageHandler(), *observer);
        }
        ZRSetMessagesEnabled(1);
        ZRSetAllFlags(0);
    }
    for (auto _ : state) {
        ZROut(kText, "Benchmark", 1);
    }
    if (state.thread_index() == 0) {
        ZRSetMessagesEnabled(0);
    }
}

MessageObserver messageObserver;

void MessageToObserver(benchmark::State& state) { Send(state, &messageObserver); }
void MessageToObserverByTwo(benchmark::State& state) { Send(state, &messageObserver); }
void MessageNowhereByTwo(benchmark::State& state) { Send(state, nullptr); }
BENCHMARK(MessageToObserver);
BENCHMARK(MessageToObserverByTwo)->Threads(2)->UseRealTime();
BENCHMARK(MessageNowhereByTwo)->Threads(2)->UseRealTime();

void MacroToObserver(benchmark::State& state)
{
    MessageObserver observer;
    const ZRAttachment attachment(*ZRGetMessageHandler(), observer);
    const ZRMessageSettings settings;
    ZRSetMessagesEnabled(1);
    ZRSetAllFlags(0);
    int number = 0;
    for (auto _ : state) {
        ZR_OUT("read %d of %d files", number, 1000);
        ++number;
    }
}
BENCHMARK(MacroToObserver);

class SpdlogSink : public spdlog::sinks::base_sink<std::mutex> {
protected:
    void sink_it_(const spdlog::details::log_msg& message) override
    {
        m_received = {message.payload.size(), message.thread_id, static_cast<int>(message.level)};
        benchmark::DoNotOptimize(m_received);
    }
    void flush_() override {}

private:
    Received m_received;
};

void MessageToSpdlog(benchmark::State& state)
{
    spdlog::logger logger("benchmark", std::make_shared<SpdlogSink>());
    for (auto _ : state) {
        logger.info(kText);
    }
}
BENCHMARK(MessageToSpdlog);

void NumbersToSpdlog(benchmark::State& state)
{
    const auto logger = std::make_shared<spdlog::logger>("benchmark", std::make_shared<SpdlogSink>());
    const auto former = spdlog::default_logger();
    spdlog::set_default_logger(logger);
    int number = 0;
    for (auto _ : state) {
        spdlog::info("read {} of {} files", number, 1000);
        ++number;
    }
    spdlog::set_default_logger(former);
}
BENCHMARK(NumbersToSpdlog);

void MessageToSpdlogByTwo(benchmark::State& state)
{
    static spdlog::logger logger("benchmark", std::make_shared<SpdlogSink>());
    for (auto _ : state) {
        logger.info(kText);
    }
}
BENCHMARK(MessageToSpdlogByTwo)->Threads(2)->UseRealTime();

class BoostLogSink : public boost::log::sinks::basic_sink_backend<boost::log::sinks::synchronized_feeding> {
public:
    void consume(const boost::log::record_view& record)
    {
        namespace attributes = boost::log::attributes;
        const auto text = record[boost::log::expressions::smessage];
        const auto thread = boost::log::extract<attributes::current_thread_id::value_type>("ThreadID", record);
        const auto level = boost::log::extract<boost::log::trivial::severity_level>("Severity", record);
        m_received = {text->size(), thread ? thread->native_id() : 0, static_cast<int>(*level)};
        benchmark::DoNotOptimize(m_received);
    }

private:
    Received m_received;
};

void MessageToBoostLog(benchmark::State& state)
{
    namespace log = boost::log;
    const auto core = log::core::get();
    const auto sink = boost::make_shared<log::sinks::synchronous_sink<BoostLogSink>>();
    core->add_sink(sink);
    const auto attribute = core->add_global_attribute("ThreadID", log::attributes::current_thread_id()).first;
    log::sources::severity_logger<log::trivial::severity_level> logger;
    for (auto _ : state) {
        BOOST_LOG_SEV(logger, log::trivial::info) << kText;
    }
    core->remove_global_attribute(attribute);
    core->remove_sink(sink);
}
BENCHMARK(MessageToBoostLog);

class PocoChannel : public Poco::Channel {
public:
    void log(const Poco::Message& message) override
    {
        const std::scoped_lock lock(m_mutex);
        m_received = {message.getText().size(), static_cast<std::uint64_t>(message.getTid()), message.getPriority()};
        benchmark::DoNotOptimize(m_received);
    }

private:
    std::recursive_mutex m_mutex;
    Received m_received;
};

void MessageToPoco(benchmark::State& state)
{
    Poco::Logger& logger = Poco::Logger::create("benchmark", new PocoChannel, Poco::Message::PRIO_INFORMATION);
    for (auto _ : state) {
        logger.information(kText);
    }
    Poco::Logger::destroy("benchmark");
}
BENCHMARK(MessageToPoco);

GLogWriterOutput WriteToGLib(GLogLevelFlags level, const GLogField* fields, gsize count, gpointer data)
{
    static std::recursive_mutex mutex;
    const std::scoped_lock lock(mutex);
    auto& received = *static_cast<Received*>(data);
    for (gsize place = 0; place < count; ++place) {
        if (std::strcmp(fields[place].key, "MESSAGE") == 0) {
            received = {std::strlen(static_cast<const char*>(fields[place].value)), HCThread::GetCurrentThreadId(),
                static_cast<int>(level)};
        }
    }
    benchmark::DoNotOptimize(received);
    return G_LOG_WRITER_HANDLED;
}

void MessageToGLib(benchmark::State& state)
{
    static Received received;
    static const bool isSet = (g_log_set_writer_func(WriteToGLib, &received, nullptr), true); // once per process
    benchmark::DoNotOptimize(isSet);
    for (auto _ : state) {
        g_log_structured("benchmark", G_LOG_LEVEL_MESSAGE, "MESSAGE", "%s", kText);
    }
}
BENCHMARK(MessageToGLib);

const AddTarget messages[] = {
    AddTarget({"message to an observer, to spdlog", Measure::kRatio, "MessageToObserver", "MessageToSpdlog", 0.9}),
    AddTarget({"ZR_OUT with two numbers to an observer, to spdlog::info", Measure::kRatio, "MacroToObserver",
        "NumbersToSpdlog", 0.9}),
    AddTarget({"message to an observer, to spdlog: two threads", Measure::kRatio, "MessageToObserverByTwo",
        "MessageToSpdlogByTwo", 1.2}),
    AddTarget({"message that goes nowhere, to spdlog to a sink: two threads", Measure::kRatio, "MessageNowhereByTwo",
        "MessageToSpdlogByTwo", 0.5}),
    AddTarget({"message to an observer, to Boost.Log", Measure::kRatio, "MessageToObserver", "MessageToBoostLog", 1}),
    AddTarget({"message to an observer, to POCO", Measure::kRatio, "MessageToObserver", "MessageToPoco", 1}),
    AddTarget({"message to an observer, to GLib", Measure::kRatio, "MessageToObserver", "MessageToGLib", 1}),
};

void Event(benchmark::State& state)
{
    for (auto _ : state) {
        const ZRObservedObjectEvent event(ZR_EVENT_MESSAGE);
        benchmark::DoNotOptimize(event);
    }
}
BENCHMARK(Event);
const AddTarget eventTarget({"building and destroying an event", Measure::kTime, "Event", "", 45});

// An event, constructed before, to ten receivers, each of which takes a recursive lock.

constexpr int kReceivers = 10;

class CountingObserver : public ZRObjectObserver {
public:
    void OnEvent(ZRObservedObjectEvent* event) override
    {
        m_sum += event->GetCode();
        benchmark::DoNotOptimize(m_sum);
    }

private:
    std::int64_t m_sum = 0;
};

void BroadcastToObservers(benchmark::State& state)
{
    std::array<CountingObserver, kReceivers> observers;
    ZRObservedObject subject;
    for (CountingObserver& observer : observers) {
        subject.AttachObserver(&observer, 1);
    }
    ZRObservedObjectEvent event(1);
    for (auto _ : state) {
        benchmark::DoNotOptimize(event.Broadcast(&subject, 0));
    }
}
BENCHMARK(BroadcastToObservers);

} // namespace

// Not in the unnamed namespace: other files could derive from these classes, so the compiler must keep the virtual
// call.
namespace peers {

/// Handles events under a lock of its own.
class Receiver {
public:
    Receiver() = default;
    virtual ~Receiver() = default;
    Receiver(const Receiver&) = delete;
    Receiver& operator=(const Receiver&) = delete;

    virtual void Receive(ZRObservedObjectEvent* event)
    {
        m_sum += event->GetCode();
        benchmark::DoNotOptimize(m_sum);
    }
    void ReceiveLocked(ZRObservedObjectEvent* event)
    {
        const std::scoped_lock lock(m_mutex);
        Receive(event);
    }

private:
    std::recursive_mutex m_mutex;
    std::int64_t m_sum = 0;
};

/// The same with the foundation's lock, which is faster than that of the standard library.
class FoundationReceiver : public Receiver {
public:
    void ReceiveLocked(ZRObservedObjectEvent* event)
    {
        m_sync.lock();
        Receive(event);
        m_sync.unlock();
    }

private:
    HCThreadSync m_sync;
};

} // namespace peers

namespace {

using peers::FoundationReceiver;
using peers::Receiver;

template <typename Locked> void CallDirectly(benchmark::State& state)
{
    std::array<Locked, kReceivers> receivers;
    ZRObservedObjectEvent event(1);
    for (auto _ : state) {
        for (Locked& any : receivers) {
            Locked* receiver = &any;
            benchmark::DoNotOptimize(receiver); // so that the compiler does not know its class
            receiver->ReceiveLocked(&event);
        }
    }
}

void VirtualCalls(benchmark::State& state) { CallDirectly<Receiver>(state); }
void VirtualCallsFoundationLock(benchmark::State& state) { CallDirectly<FoundationReceiver>(state); }
BENCHMARK(VirtualCalls);
BENCHMARK(VirtualCallsFoundationLock);

void EmitSigc(benchmark::State& state)
{
    std::array<Receiver, kReceivers> receivers;
    sigc::signal<void, ZRObservedObjectEvent*> signal;
    for (Receiver& receiver : receivers) {
        signal.connect([&receiver](ZRObservedObjectEvent* event) { receiver.ReceiveLocked(event); });
    }
    ZRObservedObjectEvent event(1);
    for (auto _ : state) {
        signal.emit(&event);
    }
}
BENCHMARK(EmitSigc);

void EmitBoostSignals(benchmark::State& state)
{
    namespace signals = boost::signals2;
    using Signal =
        signals::signal_type<void(ZRObservedObjectEvent*), signals::keywords::mutex_type<signals::dummy_mutex>>::type;
    std::array<Receiver, kReceivers> receivers;
    Signal signal;
#if !defined(__clang_analyzer__) // which cannot follow the reference counts of Boost
    for (Receiver& receiver : receivers) {
        signal.connect([&receiver](ZRObservedObjectEvent* event) { receiver.ReceiveLocked(event); });
    }
#endif
    ZRObservedObjectEvent event(1);
    for (auto _ : state) {
        signal(&event);
    }
}
BENCHMARK(EmitBoostSignals);

const AddTarget broadcasts[] = {
    AddTarget({"broadcast to 10 observers, to 10 virtual calls in std::recursive_mutex", Measure::kRatio,
        "BroadcastToObservers", "VirtualCalls", 1.15}),
    AddTarget({"broadcast to 10 observers, to 10 virtual calls in HCThreadSync", Measure::kRatio,
        "BroadcastToObservers", "VirtualCallsFoundationLock", 1.15}),
    AddTarget({"broadcast to 10 observers, to sigc++", Measure::kRatio, "BroadcastToObservers", "EmitSigc", 1}),
    AddTarget({"broadcast to 10 observers, to Boost.Signals2", Measure::kRatio, "BroadcastToObservers",
        "EmitBoostSignals", 1}),
};

} // namespace
