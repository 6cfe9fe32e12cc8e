/// The file types of a survey, kept in the registry of the process.
#pragma once

#include <map>
#include <string>
#include <zrlib/zrlib.h>

/// Registers the survey as a library and each type as an object of it. The destructor unregisters all.
class FileTypes {
public:
    FileTypes();

    /// The object code of a type, which is registered at its first use. A library has 4096 codes; further types share
    /// one.
    int CodeOf(const std::string& type);

    /// The name under which a code is registered.
    static const char* NameOf(int code);

private:
    ZRRegistration m_registration;
    std::map<std::string, int> m_codes;
};
