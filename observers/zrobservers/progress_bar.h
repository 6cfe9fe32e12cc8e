/// ZRProgressBar: progress on a terminal.
#pragma once

#include "zrobservers/export.h"

#include <cstdio>
#include <memory>

/// Draws the progress of the process on one line, at most ten times a second, with the remaining time. Messages on the
/// console scroll above it. Writes nothing to anything but a terminal. Progress is on while the object exists
/// (ZRProgressEnable), if there is a terminal.
class ZR_OBSERVERS_API ZRProgressBar {
public:
    /// stream: stdout or stderr; not owned.
    explicit ZRProgressBar(std::FILE* stream = stdout);

    /// Removes the bar from the terminal.
    ~ZRProgressBar();
    ZRProgressBar(const ZRProgressBar&) = delete;
    ZRProgressBar& operator=(const ZRProgressBar&) = delete;

private:
    class Bar;

    std::unique_ptr<Bar> m_bar; // null when there is no terminal
};
