// A client that stands between the library and its foundation and tells what the library asks of it while it is loaded.
// A test compares the output.

#include "hcbase/hcbase.h"
#include "zrlib/zrlib.h"

#include <cstdio>
#include <dlfcn.h>

namespace {

/// Tells of a call of the foundation's own function of that linker name, and calls it.
template <typename Result = void, typename... Arguments>
Result Pass(const char* what, const char* name, Arguments... arguments)
{
    std::puts(what);
    return reinterpret_cast<Result (*)(Arguments...)>(dlsym(RTLD_NEXT, name))(arguments...);
}

} // namespace

HCThreadSync::HCThreadSync() noexcept { Pass("lock built", "_ZN12HCThreadSyncC1Ev", this); }

HCThreadSync::~HCThreadSync() { Pass("lock gone", "_ZN12HCThreadSyncD1Ev", this); }

unsigned int HCThread::GetCurrentThreadId() noexcept
{
    return Pass<unsigned int>("thread ID", "_ZN8HCThread18GetCurrentThreadIdEv");
}

HCPreferenceSystem::HCPreferenceSystem() noexcept { Pass("preferences", "_ZN18HCPreferenceSystemC1Ev", this); }

HCTextHandle HFTextCreateEmbedded(const char* name, const HCTextRow* table, int reserved)
{
    return Pass<HCTextHandle>(name, "HFTextCreateEmbedded", name, table, reserved);
}

char HFTextRelease(HCTextHandle handle) { return Pass<char>("texts released", "HFTextRelease", handle); }

char HFTextGet(HCTextHandle handle, int code, const char** text)
{
    return Pass<char>(handle == 0 ? "text of no table" : "text", "HFTextGet", handle, code, text);
}

int main()
{
    for (const HCString* const text :
        {&ZRText::ICON_FILENAME, &ZRText::BITMAP_FILENAME, &ZRText::PALETTE_NAME, &ZRText::ORIGINAL_PATH_NAME,
            &ZRText::FORCE_DROP_LOCATION, &ZRText::HTML, &ZRText::PRIVATE_SYSTEM_PROPERTIES}) {
        std::printf("%s ", static_cast<const char*>(*text));
    }
    std::puts("live");
    return 0;
}
