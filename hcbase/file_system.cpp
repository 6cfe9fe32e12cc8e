#include "hcbase/file_system.h"

#include "hcbase/system/environment.h"
#include "hcbase/system/files.h"

namespace {

HCTime ToTime(const hcbase::system::TimeStamp& stamp) { return {stamp.seconds, stamp.nanoseconds}; }

void StoreIfWanted(std::uint64_t* target, std::uint64_t value)
{
    if (target != nullptr) {
        *target = value;
    }
}

} // namespace

HCFileSystem::HCFileSystem() noexcept = default;

HCFileSystem::~HCFileSystem() = default;

HCString HCFileSystem::GetFileName(const HCString& path)
{
    const char* const separator = hcbase::system::LastSeparator(path);
    return separator != nullptr ? HCString(separator + 1) : path;
}

int HCFileSystem::GetFileStatus(const HCString& path, HCFileStatus& status)
{
    hcbase::system::FileInfo info{};
    if (!hcbase::system::GetFileInfo(path, info)) {
        return 0;
    }
    status.created = ToTime(info.created);
    status.modified = ToTime(info.modified);
    status.accessed = ToTime(info.accessed);
    status.size = info.size;
    status.isDirectory = info.isDirectory ? 1 : 0;
    return 1;
}

int HCFileSystem::DelFile(const HCString& path) { return hcbase::system::RemoveFile(path) ? 1 : 0; }

HCString HCFileSystem::GetCurDirectory(const HCString& /*path*/) { return hcbase::system::CurrentDirectory(); }

int HCFileSystem::GetDiskInfo(
    const char* path, std::uint64_t* availableBytes, std::uint64_t* totalBytes, std::uint64_t* freeBytes)
{
    hcbase::system::DiskSpace space{};
    if (path == nullptr || !hcbase::system::GetDiskSpace(path, space)) {
        return 0;
    }
    StoreIfWanted(availableBytes, space.available);
    StoreIfWanted(totalBytes, space.total);
    StoreIfWanted(freeBytes, space.free);
    return 1;
}
