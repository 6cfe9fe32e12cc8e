#include "zrlib/sync/global_thread_sync.h"

#include "zrlib/sync/global_sync.h"

constinit std::atomic<char> ZRGlobalThreadSync::m_bVerbose{0};
constinit std::atomic<double> ZRGlobalThreadSync::m_dWarningThreshold{1.0};

ZRGlobalThreadSync::~ZRGlobalThreadSync() = default;

char ZRGlobalThreadSync::Lock(const char* /*location*/)
{
    const zr::ModuleLease lease(zr::Runs::kOwnCodeOnly);
    return g_GlobalSync.IsAlive() ? g_GlobalSync.object.lock() : char{0};
}

char ZRGlobalThreadSync::Unlock(const char* /*location*/)
{
    const zr::ModuleLease lease(zr::Runs::kOwnCodeOnly);
    return g_GlobalSync.IsAlive() ? g_GlobalSync.object.unlock() : char{0};
}

char ZRGlobalThreadSync::GetVerbose() { return m_bVerbose.load(std::memory_order_relaxed); }

void ZRGlobalThreadSync::SetVerbose(char verbose) { m_bVerbose.store(verbose, std::memory_order_relaxed); }

double ZRGlobalThreadSync::GetWarningThreshold() { return m_dWarningThreshold.load(std::memory_order_relaxed); }

void ZRGlobalThreadSync::SetWarningThreshold(double seconds)
{
    m_dWarningThreshold.store(seconds, std::memory_order_relaxed);
}
