#include "hcbase/version.h"

#include "hcbase/records.h"

#include <exception>
#include <map>
#include <string>
#include <string_view>
#include <utility>

namespace hcbase {

namespace {

using Versions = std::map<std::string, HCVersion, std::less<>>;

constinit Versions* g_versions HC_PT_GUARDED_BY(g_recordsLock) = nullptr; // made with the first record

} // namespace

void ReleaseVersions() noexcept { delete std::exchange(g_versions, nullptr); }

} // namespace hcbase

char HFVersionLoad(const char* name, int major, int minor, int revision, const char* date, const char* time)
{
    if (name == nullptr) {
        return 0;
    }
    try {
        const HCVersion version{major, minor, revision, date, time};
        const hcbase::LockGuard guard(hcbase::g_recordsLock);
        if (hcbase::g_recordsClosed) {
            return 0;
        }
        if (hcbase::g_versions == nullptr) {
            hcbase::g_versions = new hcbase::Versions;
        }
        hcbase::g_versions->insert_or_assign(name, version);
        return 1;
    } catch (const std::exception&) {
        return 0;
    }
}

char HFVersionGet(const char* name, HCVersion& version)
{
    if (name == nullptr) {
        return 0;
    }
    const hcbase::LockGuard guard(hcbase::g_recordsLock);
    if (hcbase::g_versions == nullptr) {
        return 0;
    }
    const auto found = hcbase::g_versions->find(std::string_view(name));
    if (found == hcbase::g_versions->end()) {
        return 0;
    }
    version = found->second;
    return 1;
}
