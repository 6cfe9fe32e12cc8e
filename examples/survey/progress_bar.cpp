#include "progress_bar.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

namespace {

constexpr int kWidth = 50; // of the bar itself
constexpr int kLineWidth = kWidth + 7; // with brackets and percent
constexpr auto kLeastPause = std::chrono::milliseconds(100);

/// How many columns a text takes, which is in UTF-8, if each character takes one.
int ColumnsOf(const HCString& text)
{
    const std::string_view bytes(text);
    const auto isFirst = [](char byte) { return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U; };
    return static_cast<int>(std::count_if(bytes.begin(), bytes.end(), isFirst));
}

int PercentOf(int value)
{
    constexpr double kAll = 100;
    const double span = static_cast<double>(ZRProgressGetRangeMax()) - ZRProgressGetRangeMin();
    const double part = span > 0 ? (static_cast<double>(value) - ZRProgressGetRangeMin()) / span : 1;
    return static_cast<int>(kAll * std::clamp(part, 0.0, 1.0));
}

} // namespace

ProgressBar::ProgressBar()
{
    ZRAttachObserver(this);
    ZRGetMessageHandler()->AttachObserver(this, 1);
}

ProgressBar::~ProgressBar()
{
    ZRGetMessageHandler()->DetachObserver(this, 1);
    ZRDetachObserver(this);
    Remove();
}

void ProgressBar::OnEvent(ZRObservedObjectEvent* event)
{
    switch (event->GetCode()) {
    case ZR_EVENT_PROGRESS_UPDATE:
        if (std::chrono::steady_clock::now() - m_drawn >= kLeastPause) {
            Draw(PercentOf(event->GetCount()));
        }
        break;
    case ZR_EVENT_PROGRESS_END:
        Remove();
        break;
    case ZR_EVENT_MESSAGE:
        RemoveBehind(event->GetMsg());
        break;
    default:
        break;
    }
}

void ProgressBar::Draw(int percent)
{
    constexpr int kAll = 100;
    const auto filled = static_cast<std::size_t>(kWidth * percent / kAll);
    std::string bar(filled, '#');
    bar.resize(kWidth, ' ');
    std::printf("[%s] %3d%%\r", bar.c_str(), percent); // the next line is written over it
    std::fflush(stdout);
    m_drawn = std::chrono::steady_clock::now();
    m_isShown = true;
}

void ProgressBar::Remove()
{
    if (m_isShown) {
        std::fputs("\x1b[K", stdout); // erases the line from the cursor on
        std::fflush(stdout);
        m_isShown = false;
    }
}

/// A message has just been written over the bar; takes away what shows behind it.
void ProgressBar::RemoveBehind(const ZRMsg& message)
{
    if (!m_isShown || ZRMessageHandler::IsConsoleEnabled(message.GetType()) == 0) {
        return;
    }
    const char* const word = message.IsOut() ? "OUT"
        : message.IsWarn()                   ? "WARNING"
        : message.IsError()                  ? "ERROR"
                                             : "TRACE";
    const int length = static_cast<int>(std::strlen(word)) + 3 + ColumnsOf(message.GetText());
    if (length < kLineWidth) {
        std::printf("\x1b[A\x1b[%dC\x1b[K\n", length); // up, behind the text, erase, down
    }
    m_isShown = false;
}
