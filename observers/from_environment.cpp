// Observers for a program that knows nothing of them: those that the environment variable ZROBSERVERS requests are
// attached when this library is loaded, and write their results when it is unloaded or the program ends.

#include "from_root.h"
#include "switch_guards.h"
#include "system.h"
#include "trace.h"
#include "zrobservers/json_lines.h"
#include "zrobservers/profile_table.h"
#include "zrobservers/progress_bar.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <fcntl.h>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <sys/stat.h>
#include <unistd.h>
#include <vector>

namespace {

/// Counts the events that this process sends.
class Counter {
public:
    Counter()
    {
        m_listeners[0] =
            ZRListener(*ZRGetMessageHandler(), [this](const ZRObservedObjectEvent& event) { Count(event); });
        m_listeners[1] =
            ZRListener(*ZRGetProfilerStateHandler(), [this](const ZRObservedObjectEvent& event) { Count(event); });
        m_listeners[2] = ZRListener([this](const ZRObservedObjectEvent& event) { Count(event); });
    }

    /// The events of a forked child's parent do not count.
    long long Get() const { return m_forkGeneration == zrobservers::ForkGeneration() ? m_count.load() : 0; }

private:
    void Count(const ZRObservedObjectEvent& event)
    {
        if (event.GetCode() == ZR_EVENT_PROFILER_ENABLED || event.GetCode() == ZR_EVENT_MESSAGES_ENABLED) {
            return; // nothing that the program has to say
        }
        if (m_forkGeneration.exchange(zrobservers::ForkGeneration()) != zrobservers::ForkGeneration()) {
            m_count = 0;
        }
        ++m_count;
    }

    std::atomic<unsigned int> m_forkGeneration{zrobservers::ForkGeneration()};
    std::atomic<long long> m_count{0};
    std::array<ZRListener, 3> m_listeners; // last, so that they are destroyed first
};

/// Appends a text to a file, in one piece among those of other processes. An empty text leaves the file alone.
void AppendTo(const std::string& path, std::string_view text, int flags = O_CREAT)
{
    if (text.empty()) {
        return;
    }
    constexpr mode_t kMode = 0666;
    const int file = open(path.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC | flags, kMode);
    const bool isUnwanted = file < 0 && (flags & O_CREAT) == 0; // nobody waits for it any more
    if (!isUnwanted && (file < 0 || write(file, text.data(), text.size()) < 0)) {
        std::fprintf(stderr, "zrobservers: %s: %s\n", path.c_str(), std::strerror(errno));
    }
    if (file >= 0) {
        close(file);
    }
}

bool EndsWith(std::string_view text, std::string_view end)
{
    return text.size() >= end.size() && text.substr(text.size() - end.size()) == end;
}

} // namespace

/// The requests, as words between semicolons:
///
/// - trace=FILE: a ZRTraceFile, once the process sends something. If FILE exists already, its name gets the process ID
///   before the extension.
/// - json=FILE: ZRJsonLines of messages.
/// - filter=TEXT: a ZRFilter for the trace and json that follow it.
/// - profile, profile=FILE: a ZRProfileTable, at the end on standard error or appended to FILE; as CSV when the name
///   ends with ".csv".
/// - stacks=FILE: the stacks of a ZRProfileTable, appended.
/// - progress: progress is on, with a ZRProgressBar on standard error.
/// - summary=FILE: for zrtrace, what was written and where most of the time went. Without such a file nobody waits for
///   it.
///
/// Of words with the same key, except filters, the first counts.
struct ZRObserversOfEnvironment {
    explicit ZRObserversOfEnvironment(std::string_view words)
    {
        while (!words.empty()) {
            const std::string_view word = words.substr(0, words.find(';'));
            words.remove_prefix(word.size() < words.size() ? word.size() + 1 : word.size());
            const std::string_view key = word.substr(0, word.find('='));
            const std::string value(word.size() > key.size() ? word.substr(key.size() + 1) : std::string_view());
            if (!word.empty() && !Attach(key, value)) {
                std::fprintf(stderr, "zrobservers: ZROBSERVERS: unknown or incomplete word: %.*s\n",
                    static_cast<int>(word.size()), word.data());
            }
        }
    }

    ~ZRObserversOfEnvironment()
    {
        m_bar.reset();
        if (m_trace) {
            try {
                m_trace->Flush();
            } catch (const std::exception&) { // from an observer that is notified of a failure
            }
        }
        if (m_showsProfile) {
            WriteProfile();
        }
        if (!m_stacksPath.empty()) {
            AppendTo(m_stacksPath, m_profile->ToStacks().View());
        }
        if (m_counter && m_counter->Get() > 0) {
            AppendTo(m_summaryPath, Summary(), O_NOFOLLOW);
        }
    }
    ZRObserversOfEnvironment(const ZRObserversOfEnvironment&) = delete;
    ZRObserversOfEnvironment& operator=(const ZRObserversOfEnvironment&) = delete;

private:
    using Trace = ZRTraceFile::Trace;

    bool Attach(std::string_view key, const std::string& value)
    {
        const HCString path(value);
        const bool isKnown = key != "filter" && std::find(m_keys.begin(), m_keys.end(), key) != m_keys.end();
        m_keys.emplace_back(key);
        if (isKnown) {
            return true;
        }
        if (key == "trace" && !value.empty()) {
            m_tracePath = value;
            m_trace.reset(new ZRTraceFile(std::make_unique<Trace>(path, m_filter, Trace::Start::kWithFirstEvent)));
        } else if (key == "json" && !value.empty()) {
            m_linesPath = value;
            m_lines.emplace(path, ZRJsonLines::kMessages, m_filter);
        } else if (key == "filter") {
            m_filter = ZRFilter(path);
            return m_filter.IsGood();
        } else if (key == "profile") {
            m_showsProfile = true;
            m_profilePath = zrobservers::FromRoot(path);
            NeedProfile();
        } else if (key == "stacks" && !value.empty()) {
            m_stacksPath = zrobservers::FromRoot(path);
            NeedProfile();
        } else if (key == "progress" && value.empty()) {
            m_progressOn.emplace(); // also for the others, where there is no terminal
            m_bar.emplace(stderr);
        } else if (key == "summary" && !value.empty()) {
            m_summaryPath = value;
            m_counter.emplace();
            NeedProfile();
        } else {
            return false;
        }
        return true;
    }

    void NeedProfile()
    {
        if (!m_profile) {
            m_profile.emplace();
        }
    }

    /// Writes nothing for a process that has measured nothing.
    void WriteProfile() const
    {
        const std::string table = m_profile->ToText().ToString();
        if (table.empty()) {
            return;
        }
        if (m_profilePath.empty()) {
            std::fprintf(stderr, "%s\n", table.c_str());
        } else if (EndsWith(m_profilePath, ".csv")) {
            const std::string csv = m_profile->ToCsv().ToString();
            struct stat status {};
            const bool hasNames = stat(m_profilePath.c_str(), &status) == 0 && status.st_size > 0;
            AppendTo(m_profilePath, hasNames ? csv.substr(csv.find('\n') + 1) : csv);
        } else {
            AppendTo(m_profilePath, table + "\n");
        }
    }

    std::string Summary() const
    {
        constexpr int kMostStates = 5;
        std::string text = zrobservers::ProcessName() + " (process " + std::to_string(zrobservers::ProcessId())
            + "): " + std::to_string(m_counter->Get()) + " events";
        if (m_trace) {
            const std::string path = m_trace->m_trace->GetPath();
            text += !m_trace->IsOpen() ? ", which " + m_tracePath + " does not have, as it could not be written"
                : path.empty()         ? ""
                                       : ", traced in " + path;
        }
        if (m_lines) {
            text += std::string(", messages ") + (m_lines->IsOpen() ? "appended to " : "lost, not in ") + m_linesPath;
        }
        text += "\n";
        const HCString table = m_profile->ToText(kMostStates);
        text += table.GetLength() != 0 && !(m_showsProfile && m_profilePath.empty()) ? table.ToString() + "\n" : "";
        return text;
    }

    std::vector<std::string> m_keys; // of the words so far
    ZRFilter m_filter;
    std::optional<zrobservers::ProgressOn> m_progressOn;
    std::unique_ptr<ZRTraceFile> m_trace;
    std::optional<ZRJsonLines> m_lines;
    std::optional<ZRProfileTable> m_profile;
    std::optional<ZRProgressBar> m_bar;
    std::optional<Counter> m_counter;
    bool m_showsProfile = false;
    std::string m_tracePath;
    std::string m_linesPath;
    std::string m_profilePath; // empty for standard error
    std::string m_stacksPath;
    std::string m_summaryPath;
};

namespace {

/// A user who starts a program with more rights than his own must not choose what it writes.
const char* Words()
{
    const char* const words = secure_getenv("ZROBSERVERS");
    return words != nullptr ? words : "";
}

const ZRObserversOfEnvironment g_ofEnvironment{Words()};

} // namespace
