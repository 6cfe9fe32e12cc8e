#include "hcbase/system/wait.h"

#include "hcbase/system/windows.h"

namespace hcbase::system {

void WaitWhileEqual(std::atomic<std::uint32_t>& word, std::uint32_t value) noexcept
{
    WaitOnAddress(&word, &value, sizeof(value), INFINITE);
}

void WakeOne(std::atomic<std::uint32_t>& word) noexcept { WakeByAddressSingle(&word); }

} // namespace hcbase::system
