#include "size_statistics.h"

#include <algorithm>
#include <string>
#include <zrlib/zrlib.h>

namespace {

constexpr double kStep = 0.5; // of the decimal logarithm: two bars for a power of ten

HCString Bytes(double size) { return ZRFormat::KMGT(static_cast<std::int64_t>(size), ZRFormat::BYTES, 2); }

} // namespace

void SizeStatistics::Report() const
{
    if (!m_sizes.empty()) {
        ReportMean();
        ReportHistogram();
    }
}

void SizeStatistics::ReportMean() const
{
    const auto count = static_cast<double>(m_sizes.size());
    double sum = 0;
    for (const std::int64_t size : m_sizes) {
        sum += static_cast<double>(size);
    }
    const double mean = ZRMath::Divide(sum, count);
    double squares = 0;
    for (const std::int64_t size : m_sizes) {
        const double difference = static_cast<double>(size) - mean;
        squares += difference * difference;
    }
    if (m_sizes.size() < 2) {
        ZR_OUT("Sizes: %s", static_cast<const char*>(Bytes(mean)));
        return;
    }
    // Each call clears the error of the one before, so check after each.
    const double variance = ZRMath::Divide(squares, count - 1);
    bool isKnown = ZRMath::NoError() != 0;
    const double deviation = ZRMath::Sqrt(variance);
    isKnown = isKnown && ZRMath::NoError() != 0;
    ZR_OUT("Sizes: mean %s, standard deviation %s", static_cast<const char*>(Bytes(mean)),
        isKnown ? static_cast<const char*>(Bytes(deviation)) : "unknown");
}

void SizeStatistics::ReportHistogram() const
{
    std::vector<double> logarithms;
    for (const std::int64_t size : m_sizes) {
        const double logarithm = ZRMath::Log10(static_cast<double>(std::max<std::int64_t>(size, 1))); // empty: with 1
        if (ZRMath::NoError() != 0) {
            logarithms.push_back(logarithm);
        }
    }
    std::sort(logarithms.begin(), logarithms.end());
    const double first = ZRMath::TicBelow(logarithms.front(), kStep);
    const double last = ZRMath::TicAbove(logarithms.back(), kStep);
    const int bars = static_cast<int>(ZRMath::Divide(last - first, kStep)) + 1;
    auto begin = logarithms.cbegin();
    for (int place = 0; place < bars; ++place) {
        const double mark = first + place * kStep;
        const auto end = std::lower_bound(begin, logarithms.cend(), mark + kStep);
        const auto count = static_cast<std::size_t>(end - begin);
        begin = end;
        constexpr std::size_t kWidest = 50;
        const std::size_t bar = (count * kWidest + logarithms.size() - 1) / logarithms.size();
        if (count != 0) {
            ZR_OUT("from %10s %6d %s", static_cast<const char*>(Bytes(ZRMath::Exp10(mark))), static_cast<int>(count),
                std::string(bar, '#').c_str());
        }
    }
}
