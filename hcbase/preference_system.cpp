#include "hcbase/preference_system.h"

#include "hcbase/complaints.h"
#include "hcbase/filename.h"
#include "hcbase/preference_file.h"
#include "hcbase/system/environment.h"
#include "hcbase/system/files.h"

#include <new>
#include <optional>
#include <string>

using namespace hcbase;

namespace {

constexpr std::size_t kLargestFile = std::size_t{16} * 1024 * 1024;

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

} // namespace

struct HCPreferenceSystem::Store {
    const HCString path = PathOfPreferences();
    std::optional<PreferenceFile> file; // empty when there is none that can be read
    bool isReadable = true;

    Store()
    {
        std::string content;
        switch (system::ReadFile(path, kLargestFile, content)) {
        case system::Reading::kDone:
            file.emplace(path, content);
            break;
        case system::Reading::kMissing:
            break;
        case system::Reading::kFailed:
            isReadable = false;
            WarnOnce(std::string(path), "cannot be read: " + content);
            break;
        }
    }
};

HCPreferenceSystem::HCPreferenceSystem() noexcept
    : m_store(nullptr)
{
}

HCPreferenceSystem::~HCPreferenceSystem() { delete m_store; }

HCPreferenceSystem::Store& HCPreferenceSystem::GetStore()
{
    if (m_store == nullptr) {
        m_store = new Store;
    }
    return *m_store;
}

char HCPreferenceSystem::GetBooleanValue(const char* key, char defaultValue)
{
    if (key == nullptr) {
        return defaultValue;
    }
    try {
        const Store& store = GetStore();
        return store.file ? store.file->GetBoolean(key, defaultValue) : defaultValue;
    } catch (const std::bad_alloc&) {
        system::WriteErrorLine("hcbase: no memory for the preferences");
        return defaultValue;
    }
}

HCString HCPreferenceSystem::GetPath() const { return m_store != nullptr ? m_store->path : PathOfPreferences(); }

char HCPreferenceSystem::IsSound()
{
    const Store& store = GetStore();
    return store.isReadable && (!store.file || store.file->IsParsed()) ? 1 : 0;
}

HCArray<HCPreferenceKey> HCPreferenceSystem::GetKeys()
{
    const Store& store = GetStore();
    return store.file ? store.file->GetKeys() : HCArray<HCPreferenceKey>();
}
