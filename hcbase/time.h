/// HCTime: an instant.
#pragma once

#include "hcbase/export.h"

#include <cstdint>

/// An instant of Coordinated Universal Time; default-constructed, it is 1970-01-01 00:00.
class HC_API HCTime {
public:
    HCTime() noexcept = default;
    HCTime(std::int64_t seconds, std::int32_t nanoseconds) noexcept
        : m_seconds(seconds)
        , m_nanoseconds(nanoseconds)
    {
    }
    HCTime(const HCTime&) noexcept = default;
    HCTime& operator=(const HCTime&) noexcept = default;
    virtual ~HCTime();

    /// Whole seconds since 1970-01-01 00:00, negative before it.
    [[nodiscard]] std::int64_t GetSeconds() const noexcept { return m_seconds; }

    /// Nanoseconds beyond the whole seconds, 0 to 999,999,999.
    [[nodiscard]] std::int32_t GetNanoseconds() const noexcept { return m_nanoseconds; }

private:
    std::int64_t m_seconds = 0;
    std::int32_t m_nanoseconds = 0;
};
