#include "hcbase/preference_system.h"

#include "hcbase/filename.h"
#include "hcbase/records.h"
#include "hcbase/system/environment.h"
#include "hcbase/system/files.h"

#include <algorithm>
#include <exception>
#include <set>
#include <string>
#include <string_view>
#include <utility>

#define TOML_EXCEPTIONS 0
#define TOML_ENABLE_FORMATTERS 0
#include <toml++/toml.h>

namespace hcbase {

namespace {

constexpr std::size_t kLargestFile = std::size_t{16} * 1024 * 1024;

using Complaints = std::set<std::string>;

constinit Complaints* g_complaints HC_PT_GUARDED_BY(g_recordsLock) = nullptr; // made with the first complaint

bool IsNews(const std::string& complaint)
{
    const LockGuard guard(g_recordsLock);
    if (g_recordsClosed) {
        return true;
    }
    if (g_complaints == nullptr) {
        g_complaints = new Complaints;
    }
    return g_complaints->insert(complaint).second;
}

/// The same file is read more than once while a library loads; its faults are told once.
void Complain(const std::string& place, std::string_view reason)
{
    std::string complaint = "hcbase: " + place + ": ";
    complaint.append(reason);
    std::replace_if(
        complaint.begin(), complaint.end(), [](char character) { return character == '\n' || character == '\r'; }, ' ');
    if (IsNews(complaint)) {
        system::WriteErrorLine(complaint.c_str());
    }
}

HCString PathOfPreferences()
{
    HCString configured = system::Environment("HCBASE_PREFERENCES");
    if (configured.GetLength() > 0) {
        return configured;
    }
    const HCString directory = system::SettingsDirectory();
    return directory.GetLength() > 0 ? HFBuildFilename(HFBuildFilename(directory, "hcbase", ""), "preferences", "toml")
                                     : directory;
}

/// Place of the first byte that is not UTF-8 (RFC 3629); the length of the text when all of it is.
std::size_t EndOfUtf8(std::string_view text)
{
    const auto byteAt = [text](std::size_t place) {
        return place < text.size() ? static_cast<unsigned char>(text[place]) : 0U;
    };
    std::size_t place = 0;
    while (place < text.size()) {
        const unsigned lead = byteAt(place);
        const std::size_t length = lead < 0x80 ? 1
            : lead < 0xC2                      ? 0
            : lead < 0xE0                      ? 2
            : lead < 0xF0                      ? 3
            : lead < 0xF5                      ? 4
                                               : 0;
        // The second byte also rules out overlong forms, surrogates and what lies beyond U+10FFFF.
        const unsigned least = lead == 0xE0 ? 0xA0 : lead == 0xF0 ? 0x90 : 0x80;
        const unsigned most = lead == 0xED ? 0x9F : lead == 0xF4 ? 0x8F : 0xBF;
        bool isGood = length == 1 || (length > 1 && byteAt(place + 1) >= least && byteAt(place + 1) <= most);
        for (std::size_t follower = 2; isGood && follower < length; ++follower) {
            isGood = (byteAt(place + follower) & 0xC0U) == 0x80;
        }
        if (!isGood) {
            break;
        }
        place += length;
    }
    return place;
}

std::string_view NameOf(toml::node_type type)
{
    switch (type) {
    case toml::node_type::table:
        return "a table";
    case toml::node_type::array:
        return "an array";
    case toml::node_type::string:
        return "a text";
    case toml::node_type::integer:
        return "an integer";
    case toml::node_type::floating_point:
        return "a floating-point number";
    case toml::node_type::boolean:
        return "a boolean";
    default:
        return "a date or time";
    }
}

} // namespace

void ReleaseComplaints() noexcept { delete std::exchange(g_complaints, nullptr); }

} // namespace hcbase

using namespace hcbase;

struct HCPreferenceSystem::Store {
    HCString path = PathOfPreferences();
    toml::table root;

    Store()
    {
        std::string content;
        const system::Reading reading = system::ReadFile(path, kLargestFile, content);
        if (reading == system::Reading::kFailed) {
            Complain(std::string(path), "cannot be read: " + content);
        }
        if (reading != system::Reading::kDone) {
            return;
        }
        const std::size_t good = EndOfUtf8(content);
        if (good < content.size()) { // the parser would name the line to which it has read ahead
            const auto end = content.begin() + static_cast<std::ptrdiff_t>(good);
            Complain(PlaceAt(1 + std::count(content.begin(), end, '\n')), "not UTF-8");
            return;
        }
        toml::parse_result parsed = toml::parse(content);
        if (parsed) {
            root = std::move(parsed).table();
        } else {
            Complain(PlaceAt(parsed.error().source().begin.line), parsed.error().description());
        }
    }

    std::string PlaceAt(std::int64_t line) const { return std::string(path) + ":" + std::to_string(line); }

    const toml::node* Find(std::string_view key) const
    {
        const toml::node* node = &root;
        while (node != nullptr && !key.empty()) {
            const std::size_t length = std::min(key.find('/'), key.size());
            if (length > 0) {
                const toml::table* const table = node->as_table();
                node = table != nullptr ? table->get(key.substr(0, length)) : nullptr;
            }
            key.remove_prefix(std::min(length + 1, key.size()));
        }
        return node != &root ? node : nullptr;
    }
};

HCPreferenceSystem::HCPreferenceSystem() noexcept
    : m_store(nullptr)
{
}

HCPreferenceSystem::~HCPreferenceSystem() { delete m_store; }

char HCPreferenceSystem::GetBooleanValue(const char* key, char defaultValue)
{
    if (key == nullptr) {
        return defaultValue;
    }
    if (m_store == nullptr) {
        m_store = new Store;
    }
    const toml::node* const node = m_store->Find(key);
    if (node == nullptr) {
        return defaultValue;
    }
    const toml::value<bool>* const value = node->as_boolean();
    if (value == nullptr) {
        std::string reason(key);
        reason.append(" is ").append(NameOf(node->type())).append(" where true or false belongs");
        Complain(m_store->PlaceAt(node->source().begin.line), reason);
        return defaultValue;
    }
    return value->get() ? 1 : 0;
}
