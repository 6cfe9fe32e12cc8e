/// How large files are.
#pragma once

#include <cstdint>
#include <vector>

/// Mean and deviation of the sizes of files, and a histogram of them on a logarithmic scale.
class SizeStatistics {
public:
    void Add(std::int64_t bytes) { m_sizes.push_back(bytes); }

    /// Sends them as messages; nothing when no file was added.
    void Report() const;

private:
    void ReportMean() const;
    void ReportHistogram() const;

    std::vector<std::int64_t> m_sizes;
};
