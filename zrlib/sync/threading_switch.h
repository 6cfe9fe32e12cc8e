/// The threading switch. Not exported.
#pragma once

#include <atomic>

extern std::atomic<char> g_bThreadingEnabled;
