// A client that stands between the library and its foundation and tells what the library asks of it while it is loaded
// and unloaded, and which of the library's texts stand at that moment. A test compares the output.

#include "hcbase/hcbase.h"
#include "zrlib/zrlib.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <new>

namespace {

/// The foundation's own function of that linker name.
template <typename Function> Function* Real(const char* name)
{
    return reinterpret_cast<Function*>(dlsym(RTLD_NEXT, name));
}

struct FileName : ZRMessageHandler {
    static constexpr const HCString* kText = &m_csFileName;
};

struct Text {
    const HCString* object;
    const char* text;
};

constexpr Text kTexts[] = {
    {FileName::kText, "zr_messages"},
    {&ZRText::ICON_FILENAME, "IconFileName"},
    {&ZRText::BITMAP_FILENAME, "BitmapFileName"},
    {&ZRText::PALETTE_NAME, "PaletteName"},
    {&ZRText::ORIGINAL_PATH_NAME, "OriginalPathName"},
    {&ZRText::FORCE_DROP_LOCATION, "ForceDropLocation"},
    {&ZRText::HTML, "HTML"},
    {&ZRText::PRIVATE_SYSTEM_PROPERTIES, "PrivateSystemProperties"},
};

/// How many of the texts stand. They lie inside their strings, and no string is asked before it is built.
int CountTexts()
{
    int count = 0;
    for (const Text& text : kTexts) {
        count += memmem(text.object, sizeof *text.object, text.text, std::strlen(text.text)) != nullptr ? 1 : 0;
    }
    return count;
}

bool g_isLive = false; // nothing is told while the client runs

void Tell(const char* what, const char* of = "", int number = -1)
{
    if (g_isLive) {
        return;
    }
    std::printf("%s%s%s", what, *of != 0 ? " " : "", of);
    if (number >= 0) {
        std::printf(" %d", number);
    }
    std::printf(", %d texts\n", CountTexts());
}

/// The number of a lock, in the order in which they were built.
int NumberOf(const void* lock)
{
    static const void* locks[16];
    int number = 0;
    while (locks[number] != nullptr && locks[number] != lock) {
        ++number;
    }
    locks[number] = lock;
    return number + 1;
}

const void* g_objectName;

void Release(void* memory)
{
    if (memory != nullptr) {
        if (memory == g_objectName) {
            Tell("name of a registered object deleted");
        }
    }
    std::free(memory);
}

} // namespace

HCThreadSync::HCThreadSync() noexcept
{
    Tell("lock built", "", NumberOf(this));
    Real<void(void*)>("_ZN12HCThreadSyncC1Ev")(this);
}

HCThreadSync::~HCThreadSync()
{
    Tell("lock gone", "", NumberOf(this));
    Real<void(void*)>("_ZN12HCThreadSyncD1Ev")(this);
}

unsigned int HCThread::GetCurrentThreadId() noexcept
{
    Tell("thread ID");
    return Real<unsigned int()>("_ZN8HCThread18GetCurrentThreadIdEv")();
}

char HCPreferenceSystem::GetBooleanValue(const char* key, char defaultValue)
{
    if (std::strcmp(key, "/Libraries/zrlib/Threading") == 0 || std::strcmp(key, "/Libraries/zrlib/SendToFile") == 0) {
        Tell("preference", std::strrchr(key, '/') + 1);
    }
    return Real<char(void*, const char*, char)>("_ZN18HCPreferenceSystem15GetBooleanValueEPKcc")(
        this, key, defaultValue);
}

HCTextHandle HFTextCreateEmbedded(const char* name, const HCTextRow* table, int reserved)
{
    Tell("text table", name);
    return Real<HCTextHandle(const char*, const HCTextRow*, int)>("HFTextCreateEmbedded")(name, table, reserved);
}

char HFTextRelease(HCTextHandle handle)
{
    Tell("text table released");
    return Real<char(HCTextHandle)>("HFTextRelease")(handle);
}

char HFTextGet(HCTextHandle handle, int code, const char** text)
{
    Tell(handle == 0 ? "text of no table" : "text", "", code);
    return Real<char(HCTextHandle, int, const char**)>("HFTextGet")(handle, code, text);
}

char HFVersionLoad(const char* name, int major, int minor, int revision, const char* date, const char* time)
{
    Tell("version", name);
    return Real<char(const char*, int, int, int, const char*, const char*)>("HFVersionLoad")(
        name, major, minor, revision, date, time);
}

void operator delete(void* memory) noexcept { Release(memory); }
void operator delete(void* memory, std::size_t) noexcept { Release(memory); }
void operator delete[](void* memory) noexcept { Release(memory); }
void operator delete[](void* memory, std::size_t) noexcept { Release(memory); }
void* operator new(std::size_t size)
{
    void* const memory = std::malloc(size);
    return memory != nullptr ? memory : throw std::bad_alloc();
}
void* operator new[](std::size_t size) { return operator new(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept { return std::malloc(size); }

int main()
{
    std::puts("live");
    g_isLive = true;
    ZRRegisterLibrary(0x1000, "a library");
    ZRRegisterObject(static_cast<int>(0xA04F1001), "an object whose name is too long to lie inside its string");
    char known = 0;
    g_objectName = ZRGetObjectName(static_cast<int>(0xA04F1001), &known);
    g_isLive = false;
    return 0;
}
