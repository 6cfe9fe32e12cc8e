/// ZRProfileTable: where the time went.
#pragma once

#include "hcbase/string.h"
#include "zrobservers/export.h"

#include <memory>

/// Adds up the timers of the process that feed states, by the location of the state, and turns the handler of profiler
/// states on while it exists. Only runs that end in that time count. Control characters in a location become blanks.
/// After 100,000 different nestings, new ones count as "(others)". A child of `fork` starts empty.
class ZR_OBSERVERS_API ZRProfileTable {
public:
    ZRProfileTable();
    ~ZRProfileTable();
    ZRProfileTable(const ZRProfileTable&) = delete;
    ZRProfileTable& operator=(const ZRProfileTable&) = delete;

    /// A table with a line for each location, that with the largest self time first: calls, total, self, shortest and
    /// longest in seconds, and the share of the sum of all self times. At most `lines` locations; the last line has no
    /// line ending. Empty when nothing was measured.
    [[nodiscard]] HCString ToText(int lines = 1000) const;

    /// The same as comma-separated values (RFC 4180), with a line of names first, seconds with nine decimals, and the
    /// share between 0 and 1.
    [[nodiscard]] HCString ToCsv() const;

    /// Collapsed stacks for flame graphs: "outer;inner 1234", the microseconds spent in that location itself, for each
    /// nesting of timers. A semicolon in a location becomes a colon.
    [[nodiscard]] HCString ToStacks() const;

private:
    class Table;

    std::unique_ptr<Table> m_table;
};
