#include "zrlib/platform/fork_hooks.h"

constinit std::atomic<std::uint32_t> zr::g_forkGeneration{0};
constinit std::atomic<std::uint32_t> zr::g_forkingThread{0};

void zr::InstallForkHooks(void (*)(), void (*)(), void (*)()) noexcept {} // there is no fork
