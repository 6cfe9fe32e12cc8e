#include "hcbase/text_io.h"

#include "hcbase/system/files.h"

#include <cstring>

using namespace hcbase;

namespace {

constexpr int kModeCreate = 3;
constexpr int kModeAppend = 5;

} // namespace

HCTextIo::HCTextIo(const HCString& path)
    : m_path(path)
    , m_file(system::kNoFile)
{
}

HCTextIo::~HCTextIo() { HCTextIo::Close(); }

char HCTextIo::Open(int mode)
{
    if (m_file != system::kNoFile || (mode != kModeCreate && mode != kModeAppend)) {
        return 0;
    }
    m_file = system::OpenForAppending(
        m_path, mode == kModeCreate ? system::Opening::kCreateIfMissing : system::Opening::kExistingOnly);
    return m_file != system::kNoFile ? 1 : 0;
}

char HCTextIo::WriteString(const char* text)
{
    const char* const line = text != nullptr ? text : "";
    return m_file != system::kNoFile && system::WriteLine(m_file, line, std::strlen(line)) ? 1 : 0;
}

char HCTextIo::Close()
{
    if (m_file == system::kNoFile) {
        return 0;
    }
    const bool isClosed = system::CloseFile(m_file);
    m_file = system::kNoFile;
    return isClosed ? 1 : 0;
}
