// A client that stands between the library and its foundation and tells what the library asks of it while it is loaded
// and unloaded, and how many of the library's texts stand at that moment. A test compares the output.

#include "hcbase/hcbase.h"
#include "zrlib/zrlib.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <dlfcn.h>

namespace {

struct FileName : ZRMessageHandler {
    static constexpr const HCString* kText = &m_csFileName;
};

constexpr const HCString* kTexts[] = {FileName::kText, &ZRText::ICON_FILENAME, &ZRText::BITMAP_FILENAME,
    &ZRText::PALETTE_NAME, &ZRText::ORIGINAL_PATH_NAME, &ZRText::FORCE_DROP_LOCATION, &ZRText::HTML,
    &ZRText::PRIVATE_SYSTEM_PROPERTIES};

/// A text that is not built yet is nothing but zeros; it must not be asked.
bool Stands(const HCString* text)
{
    static constexpr char kZeros[sizeof *text]{};
    return std::memcmp(static_cast<const void*>(text), kZeros, sizeof *text) != 0;
}

void Tell(const char* what)
{
    std::printf("%s, %d texts\n", what, static_cast<int>(std::count_if(std::begin(kTexts), std::end(kTexts), Stands)));
}

/// Calls the foundation's own function of that linker name.
template <typename Result = void, typename... Arguments> Result Real(const char* name, Arguments... arguments)
{
    return reinterpret_cast<Result (*)(Arguments...)>(dlsym(RTLD_NEXT, name))(arguments...);
}

} // namespace

HCThreadSync::HCThreadSync() noexcept
{
    Tell("lock built");
    Real("_ZN12HCThreadSyncC1Ev", this);
}

HCThreadSync::~HCThreadSync()
{
    Tell("lock gone");
    Real("_ZN12HCThreadSyncD1Ev", this);
}

unsigned int HCThread::GetCurrentThreadId() noexcept
{
    Tell("thread ID");
    return Real<unsigned int>("_ZN8HCThread18GetCurrentThreadIdEv");
}

char HCPreferenceSystem::GetBooleanValue(const char* key, char defaultValue)
{
    if (std::strcmp(key, "/Libraries/zrlib/SendToFile") == 0) {
        Tell("last preference");
    }
    return Real<char>("_ZN18HCPreferenceSystem15GetBooleanValueEPKcc", this, key, defaultValue);
}

HCTextHandle HFTextCreateEmbedded(const char* name, const HCTextRow* table, int reserved)
{
    Tell(name);
    return Real<HCTextHandle>("HFTextCreateEmbedded", name, table, reserved);
}

char HFTextRelease(HCTextHandle handle)
{
    Tell("text table released");
    return Real<char>("HFTextRelease", handle);
}

char HFTextGet(HCTextHandle handle, int code, const char** text)
{
    Tell(handle == 0 ? "text of no table" : "text");
    return Real<char>("HFTextGet", handle, code, text);
}

int main()
{
    std::puts("live");
    return 0;
}
