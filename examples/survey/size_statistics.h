/// Statistics of file sizes.
#pragma once

#include <cstdint>
#include <vector>

/// Mean, standard deviation and a logarithmic histogram of file sizes.
class SizeStatistics {
public:
    void Add(std::int64_t bytes) { m_sizes.push_back(bytes); }

    /// Sends them as messages; a no-op when no file was added.
    void Report() const;

private:
    void ReportMean() const;
    void ReportHistogram() const;

    std::vector<std::int64_t> m_sizes;
};
