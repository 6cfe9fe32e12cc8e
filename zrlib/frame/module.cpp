#include "zrlib/frame/module.h"

#include "hcbase/version.h"
#include "zrlib/frame/mode.h"
#include "zrlib/frame/text_table.h"
#include "zrlib/messaging/message_functions.h"
#include "zrlib/messaging/message_handler.h"
#include "zrlib/profiling/profiler_state_handler.h"

#include <new>

constinit std::atomic<bool> ZRModuleUse::s_stands{false};
constinit std::atomic<int> ZRModuleUse::s_users{0};

ZRModule::ZRModule()
    : m_hText(HFTextCreateEmbedded("ZRLib", ZRTextTable, 0)) // first: the handlers take their names from the table
    , m_pMode(nullptr)
    , m_pMessageHandler(nullptr)
    , m_pProfilerStateHandler(nullptr)
{
    HFVersionLoad("ZRLIB", 2, 90, 10, __DATE__, __TIME__);
    m_pMessageHandler = new (std::nothrow) ZRMessageHandler;
    m_pProfilerStateHandler = new (std::nothrow) ZRProfilerStateHandler;
    m_pMode = new (std::nothrow) ZRMode;
    ZRModuleUse::s_stands = true; // applying the switches sends an event
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
    ZRModuleUse::s_stands = false;
    HFTextRelease(m_hText);
    delete m_pMode;
    if (ZRModuleUse::s_users == 0) {
        delete m_pMessageHandler;
        delete m_pProfilerStateHandler;
    }
}
