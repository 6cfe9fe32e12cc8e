#include "zrobservers/profile_table.h"

#include "quietly.h"
#include "switch_guards.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>
#include <map>
#include <mutex>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

namespace {

/// What was measured at one location, in seconds.
struct Row {
    std::int64_t calls = 0;
    double total = 0;
    double self = 0;
    double shortest = std::numeric_limits<double>::max();
    double longest = 0;
};

std::string Formatted(const char* format, const std::string& name, const Row& row, double share)
{
    char text[256];
    const int length = std::snprintf(text, sizeof(text), format, static_cast<long long>(row.calls), row.total, row.self,
        row.shortest, row.longest, share);
    return name + std::string(text, static_cast<std::size_t>(std::clamp(length, 0, 255)));
}

std::string Quoted(const std::string& text)
{
    if (text.find_first_of(",\"\r\n") == std::string::npos) {
        return text;
    }
    std::string quoted = "\"";
    for (const char character : text) {
        quoted += character;
        quoted += character == '"' ? "\"" : "";
    }
    return quoted + "\"";
}

} // namespace

class ZRProfileTable::Table {
public:
    Table() { m_timers = ZRListener(*ZRGetProfilerStateHandler(), zrobservers::Quietly(*this, &Table::OnTimer)); }

    /// The locations, that with most time of its own first.
    std::vector<std::pair<std::string, Row>> Rows() const
    {
        std::map<std::string, Row> rows;
        const std::lock_guard guard(m_lock);
        for (const auto& [stack, node] : m_nodes) {
            Row& row = rows[stack.substr(stack.rfind(kSeparator) + 1)];
            row.calls += node.calls;
            row.total += node.total;
            row.self += SelfOf(stack, node);
            row.shortest = std::min(row.shortest, node.shortest);
            row.longest = std::max(row.longest, node.longest);
        }
        std::vector<std::pair<std::string, Row>> sorted(rows.begin(), rows.end());
        std::stable_sort(sorted.begin(), sorted.end(),
            [](const auto& left, const auto& right) { return left.second.self > right.second.self; });
        return sorted;
    }

    std::string Stacks() const
    {
        std::string text;
        const std::lock_guard guard(m_lock);
        for (const auto& [stack, node] : std::map(m_nodes.begin(), m_nodes.end())) {
            const auto microseconds = std::llround(SelfOf(stack, node) * 1e6);
            if (microseconds > 0) {
                text += stack + " " + std::to_string(microseconds) + "\n";
            }
        }
        return text;
    }

private:
    static constexpr char kSeparator = ';';

    /// Where the runs that end in this location are counted: by the locations of all timers around it.
    std::string StackOf(const HCString& location) const
    {
        constexpr int kDeepest = 128; // what is further out is left away
        ZRProfilerState* around[kDeepest];
        const int depth = std::min(ZRProfiler::GetEnclosing(around, kDeepest), kDeepest);
        std::string stack;
        for (int index = depth - 1; index >= 0; --index) {
            stack += Cleaned(around[index]->GetLocation()) + kSeparator;
        }
        return stack + Cleaned(location);
    }

    static std::string Cleaned(const HCString& location)
    {
        std::string text = location.ToString();
        std::replace(text.begin(), text.end(), kSeparator, ':');
        return text;
    }

    void OnTimer(const ZRObservedObjectEvent& event)
    {
        const ZRProfilerRun* const run = ZRProfiler::GetEnding();
        if (event.GetCode() != ZR_EVENT_PROFILER_STATE || run == nullptr) {
            return; // also a state that a client has sent itself
        }
        const double seconds = static_cast<double>(run->length) / static_cast<double>(run->ticksPerSecond);
        const std::string stack = StackOf(event.GetProfilerState().GetLocation());
        const std::lock_guard guard(m_lock);
        Row& node = m_nodes[stack];
        ++node.calls;
        node.total += seconds;
        node.shortest = std::min(node.shortest, seconds);
        node.longest = std::max(node.longest, seconds);
        if (const std::size_t end = stack.rfind(kSeparator); end != std::string::npos) {
            m_inner[stack.substr(0, end)] += seconds;
        }
    }

    /// What is left of the time of a location when that of the timers right inside it is taken away. A timer that still
    /// runs has none yet.
    double SelfOf(const std::string& stack, const Row& node) const
    {
        const auto inner = m_inner.find(stack);
        return node.total - (inner != m_inner.end() ? inner->second : 0);
    }

    mutable HCThreadSync m_lock; // one that works in a forked child
    std::unordered_map<std::string, Row> m_nodes; // by stack; self stays 0
    std::unordered_map<std::string, double> m_inner; // seconds of the timers right inside a stack
    zrobservers::ProfilerOn m_profilerOn;
    ZRListener m_timers; // last, so that it goes first
};

ZRProfileTable::ZRProfileTable()
    : m_table(std::make_unique<Table>())
{
}

ZRProfileTable::~ZRProfileTable() = default;

HCString ZRProfileTable::ToText(int lines) const
{
    const auto rows = m_table->Rows();
    if (rows.empty()) {
        return {};
    }
    double all = 0;
    std::size_t width = 8;
    for (const auto& [name, row] : rows) {
        all += row.self;
        width = std::max(width, name.size());
    }
    const auto padded = [width](std::string name) {
        name.resize(width, ' ');
        return name;
    };
    std::string text = padded("Location") + "    calls     total s      self s  shortest s   longest s   share";
    for (const auto& [name, row] : rows) {
        if (lines-- <= 0) {
            break;
        }
        constexpr const char* kFormat = " %8lld %11.6f %11.6f %11.6f %11.6f %6.1f%%";
        text += "\n" + Formatted(kFormat, padded(name), row, all > 0 ? 100 * row.self / all : 0);
    }
    return HCString(text);
}

HCString ZRProfileTable::ToCsv() const
{
    std::string text = "location,calls,total,self,shortest,longest\r\n";
    for (const auto& [name, row] : m_table->Rows()) {
        text += Formatted(",%lld,%.9f,%.9f,%.9f,%.9f\r\n", Quoted(name), row, 0);
    }
    return HCString(text);
}

HCString ZRProfileTable::ToStacks() const { return HCString(m_table->Stacks()); }
