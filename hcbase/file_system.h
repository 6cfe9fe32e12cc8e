/// HCFileSystem: queries to the file system.
#pragma once

#include "hcbase/export.h"
#include "hcbase/file_status.h"
#include "hcbase/string.h"

#include <cstdint>

/// Has no state; one object may be used by several threads at once. Paths are UTF-8. Nothing is reported: an operation
/// that fails returns 0 or an empty text.
class HC_API HCFileSystem {
public:
    HCFileSystem() noexcept;
    virtual ~HCFileSystem();

    /// The part of `path` behind the last directory separator; all of it when there is none.
    [[nodiscard]] HCString GetFileName(const HCString& path);

    /// 1 when the file, or the directory, exists; `status` is then filled, otherwise unchanged. Follows links, so a
    /// dangling one does not exist.
    static int GetFileStatus(const HCString& path, HCFileStatus& status);

    /// Deletes a file, not a directory. 1 on success.
    int DelFile(const HCString& path);

    /// The current directory of the process. `path` is reserved; pass an empty text.
    [[nodiscard]] HCString GetCurDirectory(const HCString& path);

    /// Sizes in bytes of the disk that holds `path`: what the calling account may still write, the whole disk, and what
    /// is free on it. Each pointer may be null. 1 on success; otherwise, and for a null `path`, returns 0 and stores
    /// nothing.
    int GetDiskInfo(
        const char* path, std::uint64_t* availableBytes, std::uint64_t* totalBytes, std::uint64_t* freeBytes);
};
