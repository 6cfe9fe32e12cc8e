#include "zrobservers/filter.h"

#include "zrlib/zrlib.h"

#include <algorithm>
#include <charconv>
#include <optional>
#include <string_view>

namespace {

/// Whether a text matches a pattern with "*" and "?". Goes back to the last "*" only, so it takes at most the product
/// of the two lengths.
bool Fits(const char* text, const char* pattern) noexcept
{
    const char* star = nullptr; // the last one; what it matches ends at `end`
    const char* end = nullptr;
    while (*text != '\0') {
        if (*pattern == '*') {
            star = pattern++;
            end = text;
        } else if (*pattern == '?' || *pattern == *text) {
            ++pattern;
            ++text;
        } else if (star != nullptr) {
            pattern = star + 1;
            text = ++end;
        } else {
            return false;
        }
    }
    while (*pattern == '*') {
        ++pattern;
    }
    return *pattern == '\0';
}

/// The rest of a word after `start`; null when the word does not begin so.
const char* After(const HCString& word, std::string_view start)
{
    return word.View().substr(0, start.size()) == start ? word.begin() + start.size() : nullptr;
}

std::optional<short> ReadLevel(const char* text)
{
    short level = 0;
    const char* const end = text + std::string_view(text).size();
    const auto [rest, error] = std::from_chars(text, end, level);
    return error == std::errc() && rest == end ? std::optional(level) : std::nullopt;
}

} // namespace

ZRFilter::ZRFilter(const HCString& text)
{
    std::string_view rest = text.View();
    while (!rest.empty()) {
        const HCString word(rest.substr(0, rest.find(' ')));
        rest.remove_prefix(std::min(rest.size(), word.View().size() + 1));
        if (word.GetLength() != 0 && !Read(word)) {
            m_isGood = false;
            HCString report;
            report.Format("filter: not understood: %s", static_cast<const char*>(word));
            ZRError(report, "ZRFilter", 1);
        }
    }
}

bool ZRFilter::Read(const HCString& word)
{
    if (const char* const unwanted = After(word, "place!="); unwanted != nullptr) {
        m_unwanted.Append(HCString(unwanted));
        return true;
    }
    if (const char* const wanted = After(word, "place="); wanted != nullptr) {
        m_wanted.Append(HCString(wanted));
        return true;
    }
    static constexpr struct {
        std::string_view start;
        bool isLeast;
        bool isMost;
    } kRanges[] = {{"level<=", false, true}, {"level>=", true, false}, {"level=", true, true}};
    for (const auto& range : kRanges) {
        if (const char* const number = After(word, range.start); number != nullptr) {
            const std::optional<short> level = ReadLevel(number);
            m_leastLevel = level && range.isLeast ? std::max(m_leastLevel, *level) : m_leastLevel;
            m_mostLevel = level && range.isMost ? std::min(m_mostLevel, *level) : m_mostLevel;
            return level.has_value();
        }
    }
    return ReadTypes(word);
}

bool ZRFilter::ReadTypes(const HCString& word)
{
    static constexpr struct {
        std::string_view name;
        short type;
    } kTypes[] = {{"out", ZR_MSG_OUT}, {"warn", ZR_MSG_WARN}, {"error", ZR_MSG_ERROR}, {"trace", ZR_MSG_TRACE}};
    int types = 0;
    std::string_view rest = word.View();
    while (!rest.empty()) {
        const std::string_view name = rest.substr(0, rest.find(','));
        const auto* const row =
            std::find_if(std::begin(kTypes), std::end(kTypes), [name](const auto& type) { return type.name == name; });
        if (row == std::end(kTypes)) {
            return false;
        }
        types |= row->type;
        rest.remove_prefix(std::min(rest.size(), name.size() + 1));
    }
    m_types = static_cast<short>(m_types & types); // all bits are set at first
    return true;
}

bool ZRFilter::Takes(const ZRMsg& message) const noexcept
{
    return (m_types == -1 || (message.GetType() & m_types) != 0) && message.GetLevel() >= m_leastLevel
        && message.GetLevel() <= m_mostLevel && TakesPlace(message.GetLocation());
}

bool ZRFilter::Takes(const ZRObservedObjectEvent& event) const
{
    switch (event.GetCode()) {
    case ZR_EVENT_MESSAGE:
        return Takes(event.GetMsg());
    case ZR_EVENT_PROFILER_STATE:
        return TakesPlace(event.GetProfilerState().GetLocation());
    default:
        return true;
    }
}

bool ZRFilter::FitsPlace(const char* place) const noexcept
{
    const auto fits = [place](const HCString& pattern) { return Fits(place, pattern); };
    return std::none_of(m_unwanted.begin(), m_unwanted.end(), fits)
        && (m_wanted.GetSize() == 0 || std::any_of(m_wanted.begin(), m_wanted.end(), fits));
}
