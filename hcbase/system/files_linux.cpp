#include "hcbase/system/files.h"

#include "hcbase/records.h"
#include "hcbase/system/keep_errno.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <climits>
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
    explicit Descriptor(int descriptor = -1)
        : m_descriptor(descriptor)
    {
    }
    ~Descriptor() { Reset(-1); }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    int Get() const { return m_descriptor; }

    void Reset(int descriptor)
    {
        if (m_descriptor >= 0) {
            close(m_descriptor);
        }
        m_descriptor = descriptor;
    }

private:
    int m_descriptor;
};

/// Repeats a system call that a signal interrupted before it did anything.
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

constexpr int kFirstOwn = 3; // the descriptor after standard input, output and error

/// Whether one of the three standard descriptors may be closed, as in many daemons. A file that is opened then takes
/// its place, and receives what other code prints. One closed later is noticed by the next opening.
constinit std::atomic<bool> g_aStandardOneMayBeClosed{true}; // not checked yet

/// As open. Does not wait for the reader of a pipe, but does for the holder of a lease on a file.
int OpenPath(const char* path, int flags)
{
    constexpr mode_t kMode = 0666;
    flags |= O_CLOEXEC | O_NOCTTY;
    const int descriptor = Uninterrupted([=] { return open(path, flags | O_NONBLOCK, kMode); });
    return descriptor < 0 && errno == EWOULDBLOCK ? Uninterrupted([=] { return open(path, flags, kMode); })
                                                  : descriptor;
}

/// Occupies a closed standard descriptor with something that can be neither read nor written. The program may replace
/// it by a file of its own meanwhile, which is then left open.
class Filler {
public:
    Filler() = default;
    ~Filler()
    {
        if (m_descriptor >= 0 && (fcntl(m_descriptor, F_GETFL) & O_PATH) != 0) {
            close(m_descriptor);
        }
    }
    Filler(const Filler&) = delete;
    Filler& operator=(const Filler&) = delete;

    void Fill() { m_descriptor = open("/", O_PATH | O_CLOEXEC); }

private:
    int m_descriptor = -1;
};

/// Opens a file while the closed standard descriptors are occupied. By one thread at a time, so that none takes the
/// fillers of another for open descriptors.
int OpenBehindFillers(const char* path, int flags)
{
    constexpr auto kRelaxed = std::memory_order_relaxed;
    const LockGuard guard(g_recordsLock); // fork waits for it
    std::array<Filler, kFirstOwn> fillers;
    bool isClosed = false;
    for (int standard = 0; standard < kFirstOwn; ++standard) {
        if (fcntl(standard, F_GETFD) < 0) {
            isClosed = true;
            fillers[static_cast<std::size_t>(standard)].Fill();
        }
    }
    g_aStandardOneMayBeClosed.store(isClosed, kRelaxed);
    const int descriptor = OpenPath(path, flags);
    if (descriptor < 0 || descriptor >= kFirstOwn) {
        return descriptor;
    }
    const Descriptor standard(descriptor); // the program has closed one meanwhile
    g_aStandardOneMayBeClosed.store(true, kRelaxed);
    return fcntl(descriptor, F_DUPFD_CLOEXEC, kFirstOwn);
}

/// As OpenPath, with a descriptor after the three standard ones.
int Open(const char* path, int flags)
{
    if (!g_aStandardOneMayBeClosed.load(std::memory_order_relaxed)) {
        const int descriptor = OpenPath(path, flags);
        if (descriptor < 0 || descriptor >= kFirstOwn) {
            return descriptor;
        }
        close(descriptor);
    }
    return OpenBehindFillers(path, flags);
}

/// Opens the folder at a path that is longer than the system accepts, piece by piece.
int OpenLongPath(const char* path)
{
    Descriptor folder(open(*path == kSeparator ? "/" : ".", O_PATH | O_DIRECTORY | O_CLOEXEC));
    std::string rest(path + std::strspn(path, "/"));
    while (!rest.empty() && folder.Get() >= 0) {
        constexpr std::size_t kLongest = PATH_MAX - 1;
        const std::size_t end = rest.size() <= kLongest ? rest.size() : rest.rfind(kSeparator, kLongest);
        if (end == 0 || end == std::string::npos) {
            return -1;
        }
        const std::string piece = rest.substr(0, end);
        folder.Reset(openat(folder.Get(), piece.c_str(), O_PATH | O_CLOEXEC));
        rest.erase(0, std::min(rest.find_first_not_of(kSeparator, end), rest.size()));
    }
    return fcntl(folder.Get(), F_DUPFD_CLOEXEC, kFirstOwn);
}

/// Makes writes wait. True if they did not before.
bool LetWait(int descriptor)
{
    const int flags = fcntl(descriptor, F_GETFL);
    return flags >= 0 && (flags & O_NONBLOCK) != 0 && fcntl(descriptor, F_SETFL, flags & ~O_NONBLOCK) == 0;
}

bool IsOnDisk(int descriptor)
{
    struct stat status {};
    return fstat(descriptor, &status) != 0 || S_ISREG(status.st_mode);
}

/// Writes all pieces in one call, or in several when the reader of a pipe is slow. Returns how many bytes were written.
std::size_t Write(int descriptor, iovec* pieces, int count, std::size_t size)
{
    for (std::size_t total = 0;;) {
        const ssize_t written = Uninterrupted([=] {
            return count == 1 ? write(descriptor, pieces->iov_base, pieces->iov_len)
                              : writev(descriptor, pieces, count);
        });
        total += static_cast<std::size_t>(std::max<ssize_t>(written, 0));
        if (total == size) {
            return total;
        }
        if (written > 0 ? IsOnDisk(descriptor) : written == 0 || errno != EAGAIN || !LetWait(descriptor)) {
            return total; // the disk is full
        }
        for (auto done = static_cast<std::size_t>(std::max<ssize_t>(written, 0)); done > 0;) {
            const std::size_t step = std::min(done, pieces->iov_len);
            pieces->iov_base = static_cast<char*>(pieces->iov_base) + step;
            pieces->iov_len -= step;
            done -= step;
            if (pieces->iov_len == 0) {
                ++pieces;
                --count;
            }
        }
    }
}

} // namespace

const char* LastSeparator(const char* path) { return std::strrchr(path, kSeparator); }

bool GetFileInfo(const char* path, FileInfo& info)
{
    const KeepErrno keep;
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

bool RemoveFile(const char* path)
{
    const KeepErrno keep;
    return unlink(path) == 0;
}

bool GetDiskSpace(const char* path, DiskSpace& space)
{
    const KeepErrno keep;
    struct statvfs status {};
    if (statvfs(path, &status) != 0) {
        const Descriptor folder(errno == ENAMETOOLONG ? OpenLongPath(path) : -1);
        if (folder.Get() < 0 || fstatvfs(folder.Get(), &status) != 0) {
            return false;
        }
    }
    const std::uint64_t blockSize = status.f_frsize;
    space.available = blockSize * status.f_bavail;
    space.total = blockSize * status.f_blocks;
    space.free = blockSize * status.f_bfree;
    return true;
}

std::intptr_t OpenForAppending(const char* path, Opening opening)
{
    const KeepErrno keep;
    return Open(path, O_WRONLY | O_APPEND | (opening == Opening::kCreateIfMissing ? O_CREAT : 0));
}

LineResult WriteLine(std::intptr_t file, const char* text, std::size_t length, bool endsCutLine)
{
    const KeepErrno keep;
    const int descriptor = static_cast<int>(file);
    const std::size_t ending = endsCutLine ? 1 : 0;
    const std::size_t size = ending + length + 1;
    char line[512];
    std::size_t written = 0;
    if (size <= sizeof(line)) { // most lines: copying here costs less than gathering in the kernel
        line[0] = '\n';
        std::memcpy(line + ending, text, length);
        line[size - 1] = '\n';
        iovec whole{line, size};
        written = Write(descriptor, &whole, 1, size);
    } else {
        char lineEnding = '\n';
        iovec pieces[] = {{&lineEnding, ending}, {const_cast<char*>(text), length}, {&lineEnding, 1}};
        written = Write(descriptor, pieces, 3, size);
    }
    return ToLineResult(written, ending, size);
}

bool GetFileIdentity(std::intptr_t file, FileIdentity& identity, bool& isEmpty)
{
    const KeepErrno keep;
    struct stat status {};
    if (fstat(static_cast<int>(file), &status) != 0) {
        return false;
    }
    identity = {status.st_dev, status.st_ino};
    isEmpty = status.st_size == 0;
    return true;
}

bool CloseFile(std::intptr_t file)
{
    const KeepErrno keep;
    // Not repeated after EINTR: Linux has already closed the descriptor then.
    return close(static_cast<int>(file)) == 0 || errno == EINTR;
}

Reading ReadFile(const char* path, std::size_t limit, std::string& content)
{
    const KeepErrno keep;
    // A pipe without a writer is an empty file, and is not waited for.
    const Descriptor file(Open(path, O_RDONLY));
    if (file.Get() < 0) {
        const int error = errno;
        if (error == ENOENT || error == ENOTDIR) {
            return Reading::kMissing;
        }
        content = ReasonOf(error);
        return Reading::kFailed;
    }
    fcntl(file.Get(), F_SETFL, O_RDONLY); // a pipe with a writer is waited for
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
