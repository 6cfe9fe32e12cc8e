#include "hcbase/time.h"

HCTime::HCTime() noexcept = default;

HCTime::HCTime(std::int64_t seconds, std::int32_t nanoseconds) noexcept : m_seconds(seconds), m_nanoseconds(nanoseconds)
{
}

HCTime::~HCTime() = default;
