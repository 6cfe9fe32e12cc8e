// Every static object of the library with a dynamic initialiser, in the order of construction, on the loading thread.
// They are destroyed in reverse order at unload. No other file has one: flags and counters elsewhere are
// constant-initialised, so they are valid before the first line here runs and after the last object is destroyed.

#include "hcbase/string.h"
#include "hcbase/thread.h"
#include "hcbase/thread_sync.h"
#include "zrlib/frame/mode.h"
#include "zrlib/frame/seats.h"
#include "zrlib/frame/short_lock_guard.h"
#include "zrlib/messaging/message_handler.h"
#include "zrlib/observation/global_subject.h"
#include "zrlib/observation/observed_object.h"
#include "zrlib/observation/progress_texts.h"
#include "zrlib/platform/fork_hooks.h"
#include "zrlib/registry/process_registry.h"
#include "zrlib/selfcheck/test_observer.h"
#include "zrlib/startup/module.h"
#include "zrlib/sync/global_sync.h"
#include "zrlib/sync/process_lock_trail_handler.h"
#include "zrlib/sync/thread_sync.h"
#include "zrlib/utilities/text.h"

namespace {

// First, so that it outlives all others: what fork finds and leaves.
class ForkHooks {
public:
    ForkHooks() noexcept { zr::InstallForkHooks(Lock, Unlock, UnlockInChild); }
    ~ForkHooks()
    {
        if (!zr::Seats::IsAnyTaken()) {
            zr::Seats::Release();
        }
    }
    ForkHooks(const ForkHooks&) = delete;
    ForkHooks& operator=(const ForkHooks&) = delete;

private:
    static void Lock() { zr::ShortLockGuard::LockForFork(); }
    static void Unlock() { zr::ShortLockGuard::UnlockAfterFork(); }
    static void UnlockInChild()
    {
        zr::Seats::FreeThoseOfOthers();
        Unlock();
    }
};

const ForkHooks forkHooks;

// The subject of progress and of the threading switch. Its name stays empty, because the texts are not loaded yet.
zr::ModuleObject<ZRObservedObject> globalSubject;

zr::ModuleObject<HCString> progressTitle;
zr::ModuleObject<HCString> progressUpdateText;

} // namespace

constinit ZRObservedObject& g_GlobalSubject = globalSubject.object;

bool zr::GlobalSubjectHasGone() { return !globalSubject.IsAlive(); }

constinit HCString& g_csProgressTitle = progressTitle.object;
constinit HCString& g_csProgressUpdateText = progressUpdateText.object;

zr::ModuleObject<HCThreadSync> g_GlobalSync;

// Sends no message while it is constructed, so it does not matter that the log file has no name yet.
ZRModule g_Module;

zr::ModuleObject<ZRLockTrailHandler> g_LockTrailHandler;

// Destroyed before the module, and a thread in the middle of a message may still read it after that: the text is short
// enough to lie inside the string, whose storage stays.
const HCString ZRMessageHandler::m_csFileName("zr_messages");

namespace {

// Reads the switches a second time. The settings that the module derived from them stay.
const ZRMode g_Mode;

} // namespace

unsigned int ZRMode::m_main_thread = HCThread::GetCurrentThreadId();

// Empty. Its destructor releases what clients left registered.
zr::ModuleObject<ZRObjectRegistry> g_ObjectRegistry;

zr::ModuleObject<TestObserver> g_TestObserver;

const HCString ZRText::ICON_FILENAME("IconFileName");
const HCString ZRText::BITMAP_FILENAME("BitmapFileName");
const HCString ZRText::PALETTE_NAME("PaletteName");
const HCString ZRText::ORIGINAL_PATH_NAME("OriginalPathName");
const HCString ZRText::FORCE_DROP_LOCATION("ForceDropLocation");
const HCString ZRText::HTML("HTML");
const HCString ZRText::PRIVATE_SYSTEM_PROPERTIES("PrivateSystemProperties");

unsigned int ZRThreadSync::m_main_thread = HCThread::GetCurrentThreadId();
