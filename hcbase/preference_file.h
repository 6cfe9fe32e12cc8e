/// PreferenceFile: the content of a preference file. Not exported.
#pragma once

#include "hcbase/preference_system.h"
#include "hcbase/string.h"

#include <memory>
#include <string_view>

namespace hcbase {

/// The entries of one TOML file. Each fault in it is reported once (complaints.h).
class PreferenceFile {
public:
    /// Parses the content of the file. If it cannot be parsed, there are no entries. Throws std::bad_alloc.
    PreferenceFile(const HCString& path, std::string_view content);
    ~PreferenceFile();
    PreferenceFile(const PreferenceFile&) = delete;
    PreferenceFile& operator=(const PreferenceFile&) = delete;

    /// As HCPreferenceSystem::GetBooleanValue. Throws std::bad_alloc.
    char GetBoolean(std::string_view key, char defaultValue) const;

    /// Whether the file could be parsed.
    bool IsParsed() const;

    /// As HCPreferenceSystem::GetKeys. Throws std::bad_alloc.
    HCArray<HCPreferenceKey> GetKeys() const;

private:
    struct Entries;

    static std::unique_ptr<const Entries> Parse(const HCString& path, std::string_view content);

    const std::unique_ptr<const Entries> m_entries;
};

} // namespace hcbase
