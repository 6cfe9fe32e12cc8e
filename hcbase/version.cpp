#include "hcbase/version.h"

#include "hcbase/records.h"

#include <algorithm>
#include <exception>
#include <string_view>
#include <utility>
#include <vector>

namespace hcbase {

namespace {

struct Record {
    HCString name;
    HCVersion version;
};

using Versions = std::vector<Record>; // a process has a handful of them

constinit Versions* g_versions HC_PT_GUARDED_BY(g_recordsLock) = nullptr; // created with the first record

/// The version of this library.
HCVersion OwnVersion() { return {HCBASE_VERSION, __DATE__, __TIME__}; }

/// The record of a name; null when there is none.
Record* FindRecord(const char* name) HC_REQUIRES(g_recordsLock)
{
    if (g_versions == nullptr) {
        return nullptr;
    }
    const auto hasName = [name](const Record& record) { return record.name == name; };
    const auto found = std::find_if(g_versions->begin(), g_versions->end(), hasName);
    return found != g_versions->end() ? &*found : nullptr;
}

} // namespace

void ReleaseVersions() noexcept { delete std::exchange(g_versions, nullptr); }

} // namespace hcbase

char HFVersionLoad(const char* name, int major, int minor, int revision, const char* date, const char* time)
{
    if (name == nullptr) {
        return 0;
    }
    try {
        HCVersion version{major, minor, revision, date, time};
        const hcbase::LockGuard guard(hcbase::g_recordsLock);
        if (hcbase::g_recordsClosed) {
            return 0;
        }
        if (hcbase::g_versions == nullptr) {
            hcbase::g_versions = new hcbase::Versions;
        }
        if (hcbase::Record* const record = hcbase::FindRecord(name)) {
            record->version = std::move(version);
        } else {
            hcbase::g_versions->push_back({name, std::move(version)});
        }
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
    try {
        const hcbase::LockGuard guard(hcbase::g_recordsLock);
        const hcbase::Record* const record = hcbase::FindRecord(name);
        const bool isOwn = record == nullptr && std::string_view(name) == "HCBASE";
        if (record == nullptr && !isOwn) {
            return 0;
        }
        HCVersion copy = isOwn ? hcbase::OwnVersion() : record->version;
        version = std::move(copy);
        return 1;
    } catch (const std::exception&) {
        return 0;
    }
}
