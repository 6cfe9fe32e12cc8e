#include "zrobservers/profile_table.h"

#include "quietly.h"
#include "switch_guards.h"
#include "system.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <iterator>
#include <limits>
#include <map>
#include <mutex>
#include <numeric>
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

/// A number with `decimals` decimals, right-aligned to a width. The same in every locale.
std::string Fixed(double number, int decimals, std::size_t width = 0)
{
    char digits[400]; // enough for the largest double
    const char* const end =
        std::to_chars(std::begin(digits), std::end(digits), number, std::chars_format::fixed, decimals).ptr;
    std::string text(static_cast<const char*>(digits), end);
    return text.size() < width ? std::string(width - text.size(), ' ') + text : text;
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

using Rows = std::vector<std::pair<std::string, Row>>;

double SumOfSelf(const Rows& rows)
{
    return std::accumulate(
        rows.begin(), rows.end(), 0.0, [](double sum, const auto& entry) { return sum + entry.second.self; });
}

} // namespace

class ZRProfileTable::Table {
public:
    Table() { m_timers = ZRListener(*ZRGetProfilerStateHandler(), zrobservers::Quietly(*this, &Table::OnTimer)); }
    ~Table()
    {
        m_timers = ZRListener();
        if (m_forkGeneration == zrobservers::ForkGeneration()) {
            delete m_data;
        }
    }
    Table(const Table&) = delete;
    Table& operator=(const Table&) = delete;

    /// The locations, that with the largest self time first.
    ::Rows GetRows() const
    {
        const Data data = Copy();
        std::map<std::string, Row> rows;
        for (const auto& [stack, node] : data.nodes) {
            Row& row = rows[stack.substr(stack.rfind(kSeparator) + 1)];
            row.calls += node.calls;
            row.total += node.total;
            row.self += data.SelfOf(stack, node);
            row.shortest = std::min(row.shortest, node.shortest);
            row.longest = std::max(row.longest, node.longest);
        }
        ::Rows sorted(rows.begin(), rows.end());
        std::stable_sort(sorted.begin(), sorted.end(),
            [](const auto& left, const auto& right) { return left.second.self > right.second.self; });
        return sorted;
    }

    std::string Stacks() const
    {
        const Data data = Copy();
        std::string text;
        for (const auto& [stack, node] : std::map<std::string, Row>(data.nodes.begin(), data.nodes.end())) {
            const auto microseconds = std::llround(data.SelfOf(stack, node) * 1e6);
            if (microseconds > 0) {
                text += stack + " " + std::to_string(microseconds) + "\n";
            }
        }
        return text;
    }

private:
    static constexpr char kSeparator = ';';

    /// A forked child leaves all of it untouched, as another thread may have been in the middle of changing it.
    struct Data {
        std::unordered_map<std::string, Row> nodes; // by stack; self stays 0
        std::unordered_map<std::string, double> inner; // seconds of the timers directly inside a stack

        /// The time of a location less that of the timers directly inside it. A timer that is still running has none
        /// yet.
        double SelfOf(const std::string& stack, const Row& node) const
        {
            const auto found = inner.find(stack);
            return std::max(0.0, node.total - (found != inner.end() ? found->second : 0));
        }
    };

    /// The key for runs that end in this location: the locations of all enclosing timers, and its own.
    static std::string StackOf(const HCString& location)
    {
        constexpr int kMostly = 32;
        std::array<ZRProfilerState*, kMostly> few;
        std::vector<ZRProfilerState*> many;
        ZRProfilerState** around = few.data();
        const int depth = ZRProfiler::GetEnclosing(around, kMostly);
        if (depth > kMostly) {
            many.resize(static_cast<std::size_t>(depth));
            around = many.data();
            ZRProfiler::GetEnclosing(around, depth);
        }
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
        std::replace_if(
            text.begin(), text.end(), [](char character) { return static_cast<unsigned char>(character) < ' '; }, ' ');
        return text;
    }

    /// The entry of the key, or that of all others when there are very many.
    template <typename Map> static auto& EntryOf(Map& map, const std::string& key)
    {
        constexpr std::size_t kMost = 100'000;
        const auto found = map.find(key);
        return found != map.end() ? found->second : map[map.size() < kMost ? key : "(others)"];
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
        if (m_forkGeneration != zrobservers::ForkGeneration()) {
            m_data = new Data; // what there is was measured by the parent
            m_forkGeneration = zrobservers::ForkGeneration();
        }
        Row& node = EntryOf(m_data->nodes, stack);
        ++node.calls;
        node.total += seconds;
        node.shortest = std::min(node.shortest, seconds);
        node.longest = std::max(node.longest, seconds);
        if (const std::size_t end = stack.rfind(kSeparator); end != std::string::npos) {
            EntryOf(m_data->inner, stack.substr(0, end)) += seconds;
        }
    }

    /// A copy of the data; empty in a forked child that has measured nothing. Evaluating it needs no lock.
    Data Copy() const
    {
        const std::lock_guard guard(m_lock);
        return m_forkGeneration == zrobservers::ForkGeneration() ? *m_data : Data();
    }

    mutable HCThreadSync m_lock; // works in a forked child
    Data* m_data = new Data; // owned
    unsigned int m_forkGeneration = zrobservers::ForkGeneration(); // of the process that has measured
    zrobservers::ProfilerOn m_profilerOn;
    ZRListener m_timers; // last, so that it is destroyed first
};

ZRProfileTable::ZRProfileTable()
    : m_table(std::make_unique<Table>())
{
}

ZRProfileTable::~ZRProfileTable() = default;

HCString ZRProfileTable::ToText(int lines) const
{
    const auto rows = m_table->GetRows();
    if (rows.empty()) {
        return {};
    }
    const double all = SumOfSelf(rows);
    std::size_t width = 8;
    for (const auto& [name, row] : rows) {
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
        const std::string calls = std::to_string(row.calls);
        text += "\n" + padded(name) + std::string(calls.size() < 9 ? 9 - calls.size() : 1, ' ') + calls;
        for (const double seconds : {row.total, row.self, row.shortest, row.longest}) {
            text += " " + Fixed(seconds, 6, 11);
        }
        text += " " + Fixed(all > 0 ? 100 * row.self / all : 0, 1, 6) + "%";
    }
    return HCString(text);
}

HCString ZRProfileTable::ToCsv() const
{
    const auto rows = m_table->GetRows();
    const double all = SumOfSelf(rows);
    std::string text = "location,calls,total,self,shortest,longest,share\r\n";
    for (const auto& [name, row] : rows) {
        text += Quoted(name) + "," + std::to_string(row.calls);
        for (const double number : {row.total, row.self, row.shortest, row.longest, all > 0 ? row.self / all : 0}) {
            text += "," + Fixed(number, 9);
        }
        text += "\r\n";
    }
    return HCString(text);
}

HCString ZRProfileTable::ToStacks() const { return HCString(m_table->Stacks()); }
