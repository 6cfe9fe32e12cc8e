/// TimeStamp: times as text. Not exported.
#pragma once

#include <chrono>
#include <cstddef>
#include <string_view>

namespace zrobservers {

/// An instant in UTC as in RFC 3339, to the microsecond. Needs neither memory nor a lock, so a signal handler may use
/// it.
class TimeStamp {
public:
    explicit TimeStamp(std::chrono::system_clock::time_point time) noexcept
    {
        using namespace std::chrono;
        const auto day = floor<days>(time);
        const year_month_day date(day);
        const auto inDay = duration_cast<microseconds>(time - day).count();
        constexpr std::int64_t kSecond = 1'000'000;
        const auto second = static_cast<int>(inDay / kSecond);
        Put(0, 4, static_cast<int>(date.year()));
        Put(5, 2, static_cast<int>(static_cast<unsigned int>(date.month())));
        Put(8, 2, static_cast<int>(static_cast<unsigned int>(date.day())));
        Put(11, 2, second / 3600);
        Put(14, 2, second / 60 % 60);
        Put(17, 2, second % 60);
        Put(20, 6, static_cast<int>(inDay % kSecond));
    }
    operator const char*() const noexcept { return m_text; }
    operator std::string_view() const noexcept { return {m_text, sizeof(m_text) - 1}; }

private:
    void Put(std::size_t offset, std::size_t digits, int number) noexcept
    {
        for (std::size_t digit = offset + digits; digit-- > offset; number /= 10) {
            m_text[digit] = static_cast<char>('0' + number % 10);
        }
    }

    char m_text[sizeof("2026-11-23T20:15:02.123456Z")] = "0000-00-00T00:00:00.000000Z";
};

} // namespace zrobservers
