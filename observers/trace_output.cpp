// How the events of a trace get into its file.

#include "event_buffer.h"
#include "trace.h"

#include <cerrno>
#include <cstring>
#include <utility>

namespace {

/// "trace.json" becomes "trace.4711.json", and "trace.4711-2.json" with the number 2.
std::string WithProcess(const std::string& path, int number)
{
    const std::size_t name = path.find_last_of("/\\") + 1;
    const std::size_t dot = path.rfind('.');
    const std::size_t insertion = dot == std::string::npos || dot <= name ? path.size() : dot;
    return path.substr(0, insertion) + "." + std::to_string(zrobservers::ProcessId())
        + (number > 1 ? "-" + std::to_string(number) : "") + path.substr(insertion);
}

} // namespace

void ZRTraceFile::Trace::Flush()
{
    if (!IsOfThisProcess()) {
        return;
    }
    Write();
    TellFailure();
}

std::string ZRTraceFile::Trace::GetPath()
{
    const std::lock_guard guard(m_fileLock);
    return IsOfThisProcess() ? m_buffers->openPath : "";
}

void ZRTraceFile::Trace::Write()
{
    const std::lock_guard fileGuard(m_fileLock);
    zrobservers::JsonBuffer& text = m_buffers->written;
    {
        const std::lock_guard guard(m_lock);
        std::swap(text, m_buffers->collected);
    }
    if (text.GetSize() == 0) {
        return;
    }
    NoteWhether(OpenFile() && m_file.Write(text.GetString(), text.GetSize()));
    const bool isLarge = text.GetSize() > 4 * kFullBuffer; // one huge message must not keep its memory for ever
    text.Clear();
    if (isLarge) {
        text.ShrinkToFit();
    }
}

/// On failure errno says why.
void ZRTraceFile::Trace::NoteWhether(bool isWritten)
{
    m_isSound = isWritten;
    if (int none = 0; !isWritten) {
        m_failure.compare_exchange_strong(none, errno);
    }
}

/// No-op if it is open. The first object is the name of the process, so that all others follow a comma; when there is
/// no room for it, the file stays open and gets it later.
bool ZRTraceFile::Trace::OpenFile()
{
    if (!m_file.IsOpen()) {
        if (!OpenPath()) {
            return false;
        }
        m_hasBeenOpen = true;
        m_owesHeader = true;
    }
    if (!m_owesHeader) {
        return true;
    }
    zrobservers::JsonBuffer text;
    Object::Writer writer;
    {
        Object object(writer, text, "[\n");
        object.AddPlain("name", "process_name").AddPlain("ph", "M").Add("pid", static_cast<std::int64_t>(m_process));
        object.StartObject("args").Add("name", std::string_view(zrobservers::ProcessName())).EndObject();
    }
    m_owesHeader = !m_file.Write(text.GetString(), text.GetSize());
    return !m_owesHeader;
}

bool ZRTraceFile::Trace::OpenPath()
{
    m_buffers->openPath.clear();
    const bool isTheOnlyOne = m_start == Start::kNow && !m_isChild && !m_hasBeenOpen;
    // An existing file is kept: the trace of another process, or of this one before it became another program or closed
    // the file.
    constexpr int kMost = 1000;
    for (int number = m_isChild ? 1 : 0; number < kMost; ++number) {
        const std::string path = number == 0 ? m_path : WithProcess(m_path, number);
        if (m_file.Open(path, !isTheOnlyOne)) {
            m_buffers->openPath = path;
            return true;
        }
        if (isTheOnlyOne || errno != EEXIST) {
            return false;
        }
    }
    return false;
}

/// Reports once, and without a lock of the trace, as a message calls observers.
void ZRTraceFile::Trace::TellFailure()
{
    const int error = m_failure.load(std::memory_order_relaxed);
    if (error != 0 && !m_isTold.exchange(true)) {
        HCString text;
        text.Format("%s: %s", m_path.c_str(), std::strerror(error));
        zrobservers::Tell(text, "ZRTraceFile");
    }
}
