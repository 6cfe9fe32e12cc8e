/// HCTextIo: a text file that grows line by line.
#pragma once

#include "hcbase/export.h"
#include "hcbase/string.h"

#include <cstdint>

/// A text file at one path. Lines are always written at the current end of the file, so that several processes can
/// write one file and no line is torn or lost, unless the disk is full: then a line may be cut short, and the next one
/// that this process writes there begins on a line of its own. Child processes do not inherit the open file, and it
/// never takes the place of a standard stream that is closed.
///
/// Threads: one object is used by one thread at a time.
class HC_API HCTextIo {
public:
    /// Does not open the file.
    explicit HCTextIo(const HCString& path);
    explicit HCTextIo(HCString&& path) noexcept;

    /// Closes the file if it is open.
    virtual ~HCTextIo();

    HCTextIo(const HCTextIo&) = delete;
    HCTextIo& operator=(const HCTextIo&) = delete;

    /// Mode 3 opens the file for writing and creates it when there is none; it keeps what another process has written
    /// meanwhile. Mode 5 opens an existing file for appending. 1 on success; 0 when the system refuses, for a pipe that
    /// nobody reads, for any other mode, and when the object's file is open already.
    virtual char Open(int mode);

    /// Writes the text and one line ending in one system call. 1 when all of it was written; 0 otherwise, and when the
    /// file is not open. Null counts as the empty text.
    virtual char WriteString(const char* text);

    /// Closes the file. 1 on success, 0 when it is not open or the system reports a failure; it is closed in any case.
    virtual char Close();

private:
    HCString m_path;
    std::intptr_t m_file;
};
