/// ZRModule: the object that ties the library together. Not exported, and known to this folder only.
/// Folder startup: constructs all static objects of the library, in order.
#pragma once

#include "hcbase/text_table.h"

class ZRMessageHandler;
class ZRMode;
class ZRProfilerStateHandler;

/// There is one, in static storage (startup.cpp). Its fields are zero before it is constructed, do not change while the
/// library is loaded, and keep their values after it is destroyed.
class ZRModule {
public:
    ZRModule();
    ~ZRModule();
    ZRModule(const ZRModule&) = delete;
    ZRModule& operator=(const ZRModule&) = delete;

    HCTextHandle m_hText; // of ZRTextTable
    ZRMode* m_pMode; // owned

    // The handlers of the process. They are in static storage, so late callers still find their memory.

    ZRMessageHandler* m_pMessageHandler;
    ZRProfilerStateHandler* m_pProfilerStateHandler;

private:
    void ApplySwitches();
};

extern ZRModule g_Module;

/// Never null, and valid before the module is constructed.
inline ZRModule* ZRGetModule() { return &g_Module; }
