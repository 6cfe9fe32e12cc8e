/// TestObserver: counts messages. Not exported.
#pragma once

#include "zrlib/frame/module_lease.h"
#include "zrlib/frame/relaxed.h"
#include "zrlib/observation/object_observer.h"

/// There is one, which counts whenever it is attached and is never reset.
class TestObserver : public ZRObjectObserver {
public:
    void OnEvent(ZRObservedObjectEvent* event) override;

    // By type. Written under the lock of the observer only.
    zr::Relaxed<int> m_nOutCount;
    zr::Relaxed<int> m_nWarnCount;
    zr::Relaxed<int> m_nErrorCount;
    zr::Relaxed<int> m_nTraceCount;
};

extern zr::ModuleObject<TestObserver> g_TestObserver;
