#include "zrlib/startup/module.h"

#include "hcbase/version.h"
#include "zrlib/frame/mode.h"
#include "zrlib/frame/module_lease.h"
#include "zrlib/frame/text_table.h"
#include "zrlib/frame/texts.h"
#include "zrlib/messaging/message_functions.h"
#include "zrlib/messaging/message_handler.h"
#include "zrlib/observation/global_subject.h"
#include "zrlib/platform/process_end.h"
#include "zrlib/profiling/profiler_state_handler.h"
#include "zrlib/sync/process_lock_trail_handler.h"

#include <cstddef>
#include <new>
#include <thread>

constinit std::atomic<bool> zr::g_moduleIsAlive{false};

namespace {

// Memory for the two handlers, which are constructed and destroyed by hand.
alignas(ZRMessageHandler) constinit std::byte g_messageHandler[sizeof(ZRMessageHandler)]{};
alignas(ZRProfilerStateHandler) constinit std::byte g_profilerStateHandler[sizeof(ZRProfilerStateHandler)]{};

// Their fate. A thread that was inside the library when the module was destroyed may use them for ever.
enum class Handlers : char { kNotYetDecided, kStay, kGone };
constinit std::atomic<Handlers> g_handlers{Handlers::kNotYetDecided};
constinit std::atomic<std::uint32_t> g_endsIn{UINT32_MAX}; // fork generation of the process in which the module ends

bool HandlersHaveGone()
{
    if (zr::g_moduleIsAlive) {
        return false;
    }
    // In a child forked before the decision they stay.
    while (g_handlers == Handlers::kNotYetDecided && g_endsIn == zr::ForkGeneration()) {
        std::this_thread::yield();
    }
    return g_handlers == Handlers::kGone;
}

} // namespace

ZRMessageHandler* ZRGetMessageHandler() { return ZRGetModule()->m_pMessageHandler; }

ZRProfilerStateHandler* ZRGetProfilerStateHandler() { return ZRGetModule()->m_pProfilerStateHandler; }

bool zr::HasGone(const ZRObservedObject& subject)
{
    if (&subject == ZRGetMessageHandler() || &subject == ZRGetProfilerStateHandler()) {
        return HandlersHaveGone();
    }
    return (&subject == &g_GlobalSubject && GlobalSubjectHasGone())
        || (&subject == &g_LockTrailHandler.object && !g_LockTrailHandler.IsAlive());
}

const char* zr::FindText(int code) noexcept
{
    const char* text = nullptr;
    HFTextGet(ZRGetModule()->m_hText, code, &text);
    return text;
}

ZRModule::ZRModule()
    : m_hText(HFTextCreateEmbedded("ZRLib", ZRTextTable, 0)) // first: the handlers take their names from the table
    , m_pMode(nullptr)
    , m_pMessageHandler(nullptr)
    , m_pProfilerStateHandler(nullptr)
{
    HFVersionLoad("ZRLIB", 2, 90, 10, __DATE__, __TIME__);
    m_pMessageHandler = new (g_messageHandler) ZRMessageHandler;
    m_pProfilerStateHandler = new (g_profilerStateHandler) ZRProfilerStateHandler;
    m_pMode = new (std::nothrow) ZRMode;
    zr::g_moduleIsAlive = true; // applying the switches sends an event
    if (m_pMode != nullptr) {
        ApplySwitches();
    }
}

void ZRModule::ApplySwitches()
{
    if (!ZRMode::IsOutEnabled() && !ZRMode::IsWarnEnabled() && !ZRMode::IsErrorEnabled() && !ZRMode::IsTraceEnabled()) {
        return;
    }
    ZRSetMessagesEnabled(1);
    ZRSetOutEnabled(ZRMode::IsOutEnabled());
    ZRSetWarnEnabled(ZRMode::IsWarnEnabled());
    ZRSetErrorEnabled(ZRMode::IsErrorEnabled());
    ZRSetTraceEnabled(ZRMode::IsTraceEnabled());

    int destinations = 0;
    destinations |= ZRMode::SendToConsole() ? ZR_DEST_CONSOLE : 0;
    destinations |= ZRMode::SendToMsgView() ? ZR_DEST_MSGVIEW : 0;
    destinations |= ZRMode::SendToDebugger() ? ZR_DEST_DEBUGGER : 0;
    destinations |= ZRMode::SendToFile() ? ZR_DEST_FILE : 0;
    ZRSetAllFlags(static_cast<short>(destinations));
}

ZRModule::~ZRModule()
{
    g_endsIn = zr::ForkGeneration();
    zr::g_moduleIsAlive = false;
    const bool isInUse = zr::Seats::IsAnyTaken();
    g_handlers = isInUse ? Handlers::kStay : Handlers::kGone;
    if (!zr::OtherThreadsAreGone()) {
        HFTextRelease(m_hText);
        delete m_pMode;
    }
    if (!isInUse) {
        m_pMessageHandler->~ZRMessageHandler();
        m_pProfilerStateHandler->~ZRProfilerStateHandler();
    }
}
