#include "zrlib/platform/process_end.h"

#define WIN32_LEAN_AND_MEAN
#include <windows.h>

// Exported by ntdll.dll; the headers that declare it are in the driver kit.
extern "C" __declspec(dllimport) BOOLEAN NTAPI RtlDllShutdownInProgress();

bool zr::OtherThreadsAreGone() noexcept { return RtlDllShutdownInProgress() != 0; }
