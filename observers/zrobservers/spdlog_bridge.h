/// ZRSpdlogBridge and ZRSpdlogSink: messages to spdlog, and from it. For clients that have spdlog; not part of
/// zrobservers.h, and not in the library.
#pragma once

#include "zrlib/zrlib.h"
#include "zrobservers/event_queue.h"
#include "zrobservers/filter.h"

#include <cstring>
#include <exception>
#include <memory>
#include <mutex>
#include <set>
#include <spdlog/sinks/base_sink.h>
#include <spdlog/spdlog.h>
#include <string>
#include <string_view>
#include <utility>

namespace zrobservers {

/// The source file of the library's messages in spdlog. It tells a sink that a message came from here.
inline constexpr const char* kSpdlogFile = "(zrlib)";

/// Whether this thread is sending a message that came from spdlog.
inline thread_local bool t_comesFromSpdlog = false;

/// Places as spdlog needs them: texts that stay valid. Beyond 10,000 different ones they are empty.
inline const char* KeptPlace(const char* place)
{
    constexpr std::size_t kMost = 10'000;
    // Never destroyed: an asynchronous logger may format its last lines during static destruction.
    static auto& lock = *new std::mutex;
    static auto& places = *new std::set<std::string, std::less<>>;
    const std::lock_guard guard(lock);
    const auto found = places.find(std::string_view(place));
    if (found != places.end()) {
        return found->c_str();
    }
    return places.size() < kMost ? places.emplace(place).first->c_str() : "";
}

} // namespace zrobservers

/// Sends every message of the process to a spdlog logger while it exists: Out as info, Warn as warning, Error as error,
/// Trace as trace; the place is the function of the source ("%!" in a pattern). That gives access to spdlog's sinks:
/// rotating and daily files, syslog, the systemd journal, TCP and UDP.
///
/// Threads: any; a logger with sinks that are not thread-safe ("_st") is called by one thread at a time, as the handler
/// of messages is locked. Errors: spdlog reports its own through its error handler; none reaches the sender. Messages
/// below the logger's level cost little.
class [[nodiscard]] ZRSpdlogBridge {
public:
    explicit ZRSpdlogBridge(std::shared_ptr<spdlog::logger> logger, const ZRFilter& filter = {})
        : m_logger(std::move(logger))
        , m_filter(filter)
        , m_messages(*ZRGetMessageHandler(), [this](const ZRObservedObjectEvent& event) { Send(event); })
    {
    }

    /// Sends the messages of one subject, such as a ZRBackground, with the sender's time. What a ZRSpdlogSink has
    /// turned into a message on another thread is then logged a second time, but no further.
    ZRSpdlogBridge(ZRObservedObject& subject, std::shared_ptr<spdlog::logger> logger, const ZRFilter& filter = {})
        : m_logger(std::move(logger))
        , m_filter(filter)
        , m_messages(subject, [this](const ZRObservedObjectEvent& event) { Send(event); })
    {
    }

private:
    void Send(const ZRObservedObjectEvent& event)
    {
        const ZRMsg& message = event.GetMsg();
        const auto level = LevelOf(message.GetType());
        if (event.GetCode() != ZR_EVENT_MESSAGE || zrobservers::t_comesFromSpdlog || !m_logger->should_log(level)
            || !m_filter.Takes(message)) {
            return;
        }
        try {
            const spdlog::source_loc source(zrobservers::kSpdlogFile, 1, zrobservers::KeptPlace(message.GetLocation()));
            const std::string_view text(static_cast<const char*>(message.GetText())); // up to the first zero byte
            const ZREventOrigin* const origin = ZREventQueue::GetOrigin();
            const auto time = origin != nullptr ? origin->time : spdlog::log_clock::now();
            m_logger->log(time, source, level, spdlog::string_view_t(text.data(), text.size()));
        } catch (const std::exception&) { // no memory for the place
        }
    }

    static spdlog::level::level_enum LevelOf(short type)
    {
        switch (type) {
        case ZR_MSG_WARN:
            return spdlog::level::warn;
        case ZR_MSG_ERROR:
            return spdlog::level::err;
        case ZR_MSG_TRACE:
            return spdlog::level::trace;
        default:
            return spdlog::level::info;
        }
    }

    std::shared_ptr<spdlog::logger> m_logger;
    ZRFilter m_filter;
    ZRListener m_messages; // last, so that it is destroyed first
};

/// A sink that turns what is logged with spdlog into messages: trace and debug become Trace, info Out, warning Warn,
/// error and critical Error. The logger's name is the place, unless spdlog knows the function. Together with a bridge
/// there are no loops: what came from one side does not return to it, also with asynchronous loggers.
class ZRSpdlogSink final : public spdlog::sinks::base_sink<spdlog::details::null_mutex> {
protected:
    void sink_it_(const spdlog::details::log_msg& message) override
    {
        if (message.source.filename != nullptr && std::strcmp(message.source.filename, zrobservers::kSpdlogFile) == 0) {
            return;
        }
        const std::string place = message.source.funcname != nullptr
            ? std::string(message.source.funcname)
            : std::string(message.logger_name.data(), message.logger_name.size());
        const HCString text(std::string_view(message.payload.data(), message.payload.size()));
        struct FromSpdlog {
            ~FromSpdlog() { zrobservers::t_comesFromSpdlog = outer; }
            const bool outer = std::exchange(zrobservers::t_comesFromSpdlog, true);
        };
        const FromSpdlog mark;
        if (message.level >= spdlog::level::err) {
            ZRError(text, place.c_str(), 1);
        } else if (message.level == spdlog::level::warn) {
            ZRWarn(text, place.c_str(), 1);
        } else if (message.level == spdlog::level::info) {
            ZROut(text, place.c_str(), 1);
        } else {
            ZRTrace(text, place.c_str(), 1);
        }
    }
    void flush_() override {}
};
