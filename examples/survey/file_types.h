/// The types of file that a survey meets, kept in the registry of the process.
#pragma once

#include <map>
#include <string>

/// Registers the survey as a library and each type as an object of it, and takes all of it back at the end.
class FileTypes {
public:
    FileTypes();
    ~FileTypes();
    FileTypes(const FileTypes&) = delete;
    FileTypes& operator=(const FileTypes&) = delete;

    /// The object code of a type, which is registered when it is met for the first time. A library has 4096 codes;
    /// types beyond share one.
    int CodeOf(const std::string& type);

    /// The name under which a code is registered.
    static std::string NameOf(int code);

private:
    bool m_isRegistered; // the library code was free
    std::map<std::string, int> m_codes;
};
