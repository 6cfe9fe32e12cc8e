#include "zrobservers/flight_recorder.h"

#include "crash.h"
#include "event_buffer.h"
#include "from_root.h"
#include "message_types.h"
#include "quietly.h"
#include "switch_guards.h"
#include "time_stamp.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <mutex>
#include <optional>
#include <string_view>
#include <vector>

namespace {

/// What is kept of a message.
struct Record {
    std::chrono::system_clock::time_point time;
    std::uint64_t thread;
    unsigned int forkGeneration;
    short type;
    short level;
    std::uint16_t placeLength;
    std::uint16_t textLength;
    char bytes[ZRFlightRecorder::kMostBytes]; // place, text

    /// Copies the beginning of a text, at most `most` bytes, without splitting a character.
    static std::uint16_t Copy(std::string_view text, char* to, std::size_t most) noexcept
    {
        std::size_t length = std::min(text.size(), most);
        while (length > 0 && length < text.size() && (static_cast<unsigned char>(text[length]) & 0xC0U) == 0x80) {
            --length;
        }
        std::memcpy(to, text.data(), length);
        return static_cast<std::uint16_t>(length);
    }
};

/// A place in the ring. Written by one thread at a time, and read at any moment by a thread that crashes.
struct Entry {
    std::atomic<std::uint64_t> version{0}; // twice the number of the message from 1 on; one less while it is written
    Record record;
};

/// Lines on their way to a file. Needs neither memory nor a lock.
class Lines {
public:
    explicit Lines(zrobservers::CrashFile& file) noexcept
        : m_file(file)
    {
    }

    Lines& Add(std::string_view text) noexcept
    {
        for (const char byte : text) {
            if (m_length == sizeof(m_buffer)) {
                Flush();
            }
            m_buffer[m_length++] = static_cast<unsigned char>(byte) < ' ' || byte == 0x7F ? ' ' : byte;
        }
        return *this;
    }
    Lines& Add(std::uint64_t number) noexcept
    {
        char digits[20];
        std::size_t first = sizeof(digits);
        do {
            digits[--first] = static_cast<char>('0' + number % 10);
            number /= 10;
        } while (number != 0);
        return Add(std::string_view(digits + first, sizeof(digits) - first));
    }
    void EndLine() noexcept
    {
        constexpr std::size_t kMostLine = ZRFlightRecorder::kMostBytes + 100;
        Add(" "); // makes room
        m_buffer[m_length - 1] = '\n';
        if (sizeof(m_buffer) - m_length < kMostLine) { // so that lines of several processes do not mix
            Flush();
        }
    }

    /// Whether all could be written.
    bool Flush() noexcept
    {
        m_isGood = m_isGood && m_file.Write(m_buffer, m_length);
        m_length = 0;
        return m_isGood;
    }

private:
    zrobservers::CrashFile& m_file;
    char m_buffer[2048]; // small, as a thread's own stack for signal handlers may be
    std::size_t m_length = 0;
    bool m_isGood = true;
};

} // namespace

class ZRFlightRecorder::Recorder {
public:
    Recorder(const HCString& path, const Options& options)
        : m_path(zrobservers::FromRoot(path))
        , m_options(options)
        , m_entries(static_cast<std::size_t>(std::clamp(options.count, 1, 1'000'000)))
        , m_file(m_path)
        , m_listener(*ZRGetMessageHandler(), zrobservers::Quietly(*this, &Recorder::Keep))
    {
        if (options.atCrash) {
            AddToCrashed();
        }
    }
    ~Recorder()
    {
        for (auto& recorder : s_atCrash) {
            if (Recorder* self = this; recorder.compare_exchange_strong(self, nullptr)) {
                zrobservers::RemoveCrashAction();
            }
        }
    }
    Recorder(const Recorder&) = delete;
    Recorder& operator=(const Recorder&) = delete;

    bool IsSound() const { return m_isSound; }

    bool Write(const char* reason)
    {
        int error = 0;
        {
            const std::lock_guard guard(m_lock);
            errno = 0;
            m_isSound = WriteNew(reason);
            error = errno;
        }
        if (!m_isSound && !m_isTold.exchange(true)) {
            HCString text;
            text.Format("%s: %s", m_path.c_str(), std::strerror(error));
            zrobservers::Tell(text, "ZRFlightRecorder");
        }
        return m_isSound;
    }

private:
    void Keep(const ZRObservedObjectEvent& event)
    {
        if (event.GetCode() != ZR_EVENT_MESSAGE) {
            return;
        }
        const ZRMsg& message = event.GetMsg();
        if (m_options.filter.Takes(message)) {
            const std::lock_guard guard(m_lock);
            KeepMessage(message);
        }
        if ((message.GetType() & m_options.types) != 0) {
            std::string reason = "a message of type ";
            Write((reason + zrobservers::NameOfType(message.GetType())).c_str());
        }
    }

    void KeepMessage(const ZRMsg& message)
    {
        const std::uint64_t number = m_count.load(std::memory_order_relaxed) + 1;
        Entry& entry = m_entries[number % m_entries.size()];
        // Acquire, so that the entry does not change before; release, which makes it a full barrier on arm64.
        entry.version.exchange(2 * number - 1, std::memory_order_acq_rel);
        Record& record = entry.record;
        record.time = std::chrono::system_clock::now();
        record.thread = zrobservers::ThreadId();
        record.forkGeneration = zrobservers::ForkGeneration();
        record.type = message.GetType();
        record.level = message.GetLevel();
        record.placeLength = Record::Copy(zrobservers::AsSent(message.GetLocation()), record.bytes, kMostBytes / 2);
        record.textLength = Record::Copy(
            zrobservers::AsSent(message.GetText()), record.bytes + record.placeLength, kMostBytes - record.placeLength);
        entry.version.store(2 * number, std::memory_order_release);
        m_count.store(number, std::memory_order_release);
    }

    /// The number before the first message that is still kept and not written yet.
    std::uint64_t FirstNew(std::uint64_t count) const noexcept
    {
        const std::uint64_t lost = count > m_entries.size() ? count - m_entries.size() : 0;
        return std::max(lost, m_written.load(std::memory_order_relaxed));
    }

    /// Does only what a signal handler may. False with errno set.
    bool WriteNew(const char* reason) noexcept
    {
        const std::uint64_t count = m_count.load(std::memory_order_acquire);
        std::uint64_t own = 0;
        for (std::uint64_t number = FirstNew(count) + 1; number <= count; ++number) {
            own += IsOwn(number) ? 1 : 0;
        }
        if (own == 0) {
            return true;
        }
        if (!m_file.Open()) {
            return false;
        }
        Lines lines(m_file);
        lines.Add("-- ").Add(own).Add(" messages, process ").Add(zrobservers::ProcessId()).Add(": ").Add(reason);
        lines.EndLine();
        for (std::uint64_t number = FirstNew(count) + 1; number <= count; ++number) {
            if (IsOwn(number)) {
                AddLine(lines, number);
            }
        }
        const bool isWritten = lines.Flush();
        m_file.Close();
        if (isWritten) {
            m_written.store(count, std::memory_order_relaxed);
        }
        return isWritten;
    }

    /// False for a message of a forked parent, and for one that is being overwritten.
    bool IsOwn(std::uint64_t number) const noexcept
    {
        const Entry& entry = m_entries[number % m_entries.size()];
        return entry.version.load(std::memory_order_acquire) == 2 * number
            && entry.record.forkGeneration == zrobservers::ForkGeneration();
    }

    /// Adds a message, unless another thread overwrites it meanwhile.
    void AddLine(Lines& lines, std::uint64_t number) noexcept
    {
        Entry& entry = m_entries[number % m_entries.size()];
        const Record record = entry.record;
        if (entry.version.fetch_add(0, std::memory_order_acq_rel) != 2 * number) { // a load could come before the copy
            return;
        }
        lines.Add(zrobservers::TimeStamp(record.time)).Add(" ").Add(record.thread).Add(" ");
        lines.Add(zrobservers::NameOfType(record.type)).Add(" ").Add(record.level < 0 ? "-" : "");
        lines.Add(static_cast<std::uint64_t>(record.level < 0 ? -record.level : record.level)).Add(" ");
        lines.Add({record.bytes, record.placeLength}).Add(": ");
        lines.Add({record.bytes + record.placeLength, record.textLength});
        lines.EndLine();
    }

    void AddToCrashed()
    {
        for (auto& recorder : s_atCrash) {
            if (Recorder* none = nullptr; recorder.compare_exchange_strong(none, this)) {
                m_guard.emplace();
                zrobservers::InstallCrashAction(WriteAllAtCrash);
                return;
            }
        }
    }

    static void WriteAllAtCrash(const char* reason)
    {
        for (auto& recorder : s_atCrash) {
            if (Recorder* const present = recorder.load(); present != nullptr) {
                present->WriteNew(reason);
            }
        }
    }

    static inline std::array<std::atomic<Recorder*>, 8> s_atCrash{};

    const std::string m_path;
    const Options m_options;
    HCThreadSync m_lock; // works in a forked child
    std::vector<Entry> m_entries; // a ring; message number n is at n modulo its size
    std::atomic<std::uint64_t> m_count{0}; // messages kept so far
    std::atomic<std::uint64_t> m_written{0}; // number of the last one written
    zrobservers::CrashFile m_file;
    std::atomic<bool> m_isSound{true};
    std::atomic<bool> m_isTold{false};
    std::optional<ThreadGuard> m_guard;
    const zrobservers::MessagesOn m_messagesOn;
    ZRListener m_listener; // last, so that it is destroyed first
};

ZRFlightRecorder::ZRFlightRecorder(const HCString& path)
    : ZRFlightRecorder(path, Options())
{
}

ZRFlightRecorder::ZRFlightRecorder(const HCString& path, const Options& options)
    : m_recorder(std::make_unique<Recorder>(path, options))
{
}

ZRFlightRecorder::~ZRFlightRecorder() = default;

bool ZRFlightRecorder::WriteNow() { return m_recorder->Write("asked for"); }

bool ZRFlightRecorder::IsOpen() const { return m_recorder->IsSound(); }

ZRFlightRecorder::ThreadGuard::ThreadGuard()
    : m_stack(zrobservers::AddCrashStack())
{
}

ZRFlightRecorder::ThreadGuard::~ThreadGuard() { zrobservers::RemoveCrashStack(m_stack); }
