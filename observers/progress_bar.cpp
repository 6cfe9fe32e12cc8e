#include "zrobservers/progress_bar.h"

#include "message_types.h"
#include "quietly.h"
#include "switch_guards.h"
#include "system.h"

#include <algorithm>
#include <chrono>
#include <mutex>
#include <string>
#include <string_view>

namespace {

constexpr int kMostWidth = 50; // of the bar itself
constexpr int kRest = 25; // most columns beside the bar
constexpr auto kLeastPause = std::chrono::milliseconds(100);

/// The number of rows that a text takes on a terminal; 0 if a line may not fit one row, or has control characters.
int RowsOf(std::string_view text, int columns)
{
    int rows = 1;
    int column = 0; // at most: no character of UTF-8 takes more columns than bytes
    for (const char byte : text) {
        const auto code = static_cast<unsigned char>(byte);
        if (byte == '\n') {
            ++rows;
            column = 0;
            continue;
        }
        const bool isControl = code < 0x20 || code == 0x7F;
        column += byte == '\t' ? 8 : 1;
        if (column >= columns || (isControl && byte != '\t')) {
            return 0;
        }
    }
    return rows;
}

/// "1:02:03", or "02:03" below an hour.
std::string ToText(std::chrono::seconds time)
{
    const long long all = time.count();
    char text[64];
    if (all >= 3600) {
        std::snprintf(text, sizeof(text), "%lld:%02lld:%02lld", all / 3600, all / 60 % 60, all % 60);
    } else {
        std::snprintf(text, sizeof(text), "%02lld:%02lld", all / 60, all % 60);
    }
    return text;
}

} // namespace

class ZRProgressBar::Bar {
public:
    explicit Bar(std::FILE* stream)
        : m_stream(stream)
    {
        using zrobservers::Quietly;
        m_progress = ZRListener(Quietly(*this, &Bar::OnProgress));
        m_messages = ZRListener(*ZRGetMessageHandler(), Quietly(*this, &Bar::OnMessage));
    }
    ~Bar()
    {
        m_messages = ZRListener();
        m_progress = ZRListener();
        Remove();
    }
    Bar(const Bar&) = delete;
    Bar& operator=(const Bar&) = delete;

private:
    using Clock = std::chrono::steady_clock;

    void OnProgress(const ZRObservedObjectEvent& event)
    {
        const std::lock_guard guard(m_lock);
        if (m_forkGeneration != zrobservers::ForkGeneration()) {
            return; // the bar is the parent's
        }
        switch (event.GetCode()) {
        case ZR_EVENT_PROGRESS_START:
            m_started = Clock::now();
            break;
        case ZR_EVENT_PROGRESS_UPDATE:
            if (Clock::now() - m_drawn >= kLeastPause) {
                Draw(event.GetCount());
            }
            break;
        case ZR_EVENT_PROGRESS_END:
            Remove();
            break;
        default:
            break;
        }
    }

    void Draw(int value)
    {
        const double span = static_cast<double>(ZRProgressGetRangeMax()) - ZRProgressGetRangeMin();
        const double part = span > 0 ? std::clamp((value - ZRProgressGetRangeMin()) / span, 0.0, 1.0) : 1;
        const int columns = zrobservers::SizeOfTerminal(m_stream).columns;
        const auto width = static_cast<std::size_t>(std::clamp(columns - kRest, 0, kMostWidth));
        std::string line = "[" + std::string(static_cast<std::size_t>(static_cast<double>(width) * part), '#');
        line.resize(width + 1, ' ');
        char percent[16];
        std::snprintf(percent, sizeof(percent), "] %3d%%", static_cast<int>(100 * part));
        line += percent;
        if (part > 0) {
            const std::chrono::duration<double> left = (Clock::now() - m_started) * ((1 - part) / part);
            line += " " + ToText(std::chrono::duration_cast<std::chrono::seconds>(left)) + " left";
        }
        line.resize(std::min(line.size(), static_cast<std::size_t>(std::max(columns - 1, 0))));
        std::fprintf(m_stream, "%s\x1b[K\r", line.c_str()); // erases the rest; the next line overwrites it
        std::fflush(m_stream);
        m_drawn = Clock::now();
        m_isDrawn = true;
    }

    void Remove()
    {
        if (m_isDrawn && m_forkGeneration == zrobservers::ForkGeneration()) {
            std::fputs("\x1b[K", m_stream);
            std::fflush(m_stream);
            m_isDrawn = false;
        }
    }

    /// A message on the console has just been written over the bar. What is left of the bar behind the first line is
    /// erased, for which that line is written again.
    void OnMessage(const ZRObservedObjectEvent& event)
    {
        const std::lock_guard guard(m_lock);
        const ZRMsg& message = event.GetMsg();
        if (event.GetCode() != ZR_EVENT_MESSAGE || !m_isDrawn || !m_isOnConsole
            || m_forkGeneration != zrobservers::ForkGeneration()
            || ZRMessageHandler::IsConsoleEnabled(message.GetType()) == 0) {
            return;
        }
        std::fflush(stdout); // the message, if the bar is on another stream
        std::string text = zrobservers::NameOfType(message.GetType());
        text.append(" - ").append(zrobservers::AsSent(message.GetText()));
        const auto size = zrobservers::SizeOfTerminal(m_stream);
        if (const int rows = RowsOf(text, size.columns); rows > 0 && rows < size.rows) {
            text.resize(std::min(text.size(), text.find('\n')));
            // up, write again, erase the rest, down
            std::fprintf(m_stream, "\x1b[%dA%s\x1b[K\x1b[%dB\r", rows, text.c_str(), rows);
            std::fflush(m_stream);
        }
        m_isDrawn = false;
    }

    std::FILE* m_stream; // not owned
    const bool m_isOnConsole = zrobservers::IsSameTerminal(m_stream, stdout); // where messages are written too
    const unsigned int m_forkGeneration = zrobservers::ForkGeneration();
    HCThreadSync m_lock; // no message is sent while it is held
    Clock::time_point m_started = Clock::now();
    Clock::time_point m_drawn; // when the bar was drawn last
    bool m_isDrawn = false; // whether the bar is on the terminal
    zrobservers::ProgressOn m_progressOn;
    // Two observers, so that progress does not delay a message.
    ZRListener m_progress;
    ZRListener m_messages;
};

ZRProgressBar::ZRProgressBar(std::FILE* stream)
    : m_bar(zrobservers::IsTerminal(stream) ? std::make_unique<Bar>(stream) : nullptr)
{
}

ZRProgressBar::~ZRProgressBar() = default;
