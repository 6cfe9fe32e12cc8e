#include "hcbase/system/files.h"

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <sys/statvfs.h>
#include <sys/uio.h>
#include <system_error>
#include <unistd.h>

namespace hcbase::system {

namespace {

class Descriptor {
public:
    explicit Descriptor(int descriptor)
        : m_descriptor(descriptor)
    {
    }
    ~Descriptor()
    {
        if (m_descriptor >= 0) {
            close(m_descriptor);
        }
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int Get() const { return m_descriptor; }

private:
    int m_descriptor;
};

/// Repeats a call of the system that a signal interrupted before it did anything.
template <typename Call> auto Uninterrupted(Call call)
{
    auto result = call();
    while (result < 0 && errno == EINTR) {
        result = call();
    }
    return result;
}

TimeStamp ToTimeStamp(const timespec& time) { return {time.tv_sec, static_cast<std::int32_t>(time.tv_nsec)}; }

std::string ReasonOf(int error) { return std::generic_category().message(error); }

} // namespace

const char* LastSeparator(const char* path) { return std::strrchr(path, kSeparator); }

bool GetFileInfo(const char* path, FileInfo& info)
{
    struct stat status {};
    if (stat(path, &status) != 0) {
        return false;
    }
    info.created = ToTimeStamp(status.st_ctim);
    info.modified = ToTimeStamp(status.st_mtim);
    info.accessed = ToTimeStamp(status.st_atim);
    info.size = status.st_size;
    info.isDirectory = S_ISDIR(status.st_mode);
    return true;
}

bool RemoveFile(const char* path) { return unlink(path) == 0; }

bool GetDiskSpace(const char* path, DiskSpace& space)
{
    struct statvfs status {};
    if (statvfs(path, &status) != 0) {
        return false;
    }
    const std::uint64_t blockSize = status.f_frsize;
    space.available = blockSize * status.f_bavail;
    space.total = blockSize * status.f_blocks;
    space.free = blockSize * status.f_bfree;
    return true;
}

std::intptr_t OpenForAppending(const char* path, Opening opening)
{
    const int flags = O_WRONLY | O_APPEND | O_CLOEXEC | O_NOCTTY | (opening == Opening::kCreateIfMissing ? O_CREAT : 0);
    return Uninterrupted([&] { return open(path, flags, 0666); });
}

bool WriteLine(std::intptr_t file, const char* text, std::size_t length)
{
    const int descriptor = static_cast<int>(file);
    char line[512];
    ssize_t written = 0;
    if (length < sizeof(line)) { // most lines: putting the pieces together costs less here than in the kernel
        std::memcpy(line, text, length);
        line[length] = '\n';
        written = Uninterrupted([&] { return write(descriptor, line, length + 1); });
    } else {
        line[0] = '\n';
        const iovec pieces[] = {{const_cast<char*>(text), length}, {line, 1}};
        written = Uninterrupted([&] { return writev(descriptor, pieces, 2); });
    }
    return written == static_cast<ssize_t>(length + 1);
}

bool CloseFile(std::intptr_t file)
{
    // Not repeated after EINTR: Linux has given the descriptor back by then.
    return close(static_cast<int>(file)) == 0 || errno == EINTR;
}

Reading ReadFile(const char* path, std::size_t limit, std::string& content)
{
    // A pipe that nobody writes to is an empty file, and not to be waited for.
    const Descriptor file(Uninterrupted([&] { return open(path, O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK); }));
    if (file.Get() < 0) {
        const int error = errno;
        if (error == ENOENT || error == ENOTDIR) {
            return Reading::kMissing;
        }
        content = ReasonOf(error);
        return Reading::kFailed;
    }
    fcntl(file.Get(), F_SETFL, O_RDONLY); // a pipe that somebody writes to is waited for
    constexpr std::size_t kStep = 4096;
    for (std::size_t size = 0;;) {
        content.resize(size + kStep);
        const ssize_t count = Uninterrupted([&] { return read(file.Get(), content.data() + size, kStep); });
        if (count < 0 || size + static_cast<std::size_t>(count) > limit) {
            content = ReasonOf(count < 0 ? errno : EFBIG);
            return Reading::kFailed;
        }
        size += static_cast<std::size_t>(count);
        if (count == 0) {
            content.resize(size);
            return Reading::kDone;
        }
    }
}

} // namespace hcbase::system
