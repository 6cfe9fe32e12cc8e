/// A plain model of the object registry, to compare it with.
#pragma once

#include "zrlib/zrlib.h"

#include <algorithm>
#include <cctype>
#include <map>
#include <string>

namespace test {

/// What a registry accepts, told without regard to speed. Each operation gives the error code, 0 when it is accepted.
struct RegistryModel {
    struct Object {
        std::string name;
        std::string classID;
        bool hasClassID;
        int mirror;
    };

    int AddLibrary(int code, const std::string& name)
    {
        return !IsLibrary(code) ? -65840 : !libraries.emplace(code, name).second ? -65838 : 0;
    }

    int RemoveLibrary(int code) { return !IsLibrary(code) ? -65840 : libraries.erase(code) == 0 ? -65841 : 0; }

    int Add(int code, const std::string& name)
    {
        if ((code >> 16) != 0 && !IsObject(code)) {
            return -65843;
        }
        if ((code >> 16) != 0 && libraries.count(code & 0xF000) == 0) {
            return -65839;
        }
        return !objects.emplace(code, Object{name, "", false, code}).second ? -65842 : 0;
    }

    int Add(int code, const std::string& name, const std::string& classID)
    {
        const auto isHolder = [&](const auto& other) {
            return other.second.hasClassID && Small(other.second.classID) == Small(classID);
        };
        if (!IsObject(code)) {
            return -65843;
        }
        if (ZRClassID::IsFormat(classID.c_str()) == 0) {
            return -65845;
        }
        if (libraries.count(code & 0xF000) == 0) {
            return -65839;
        }
        if (objects.count(code) != 0) {
            return -65842;
        }
        if (std::any_of(objects.begin(), objects.end(), isHolder)) {
            return -65846;
        }
        objects[code] = {name, classID, true, code};
        return 0;
    }

    int Remove(int code) { return !IsObject(code) ? -65843 : objects.erase(code) == 0 ? -65844 : 0; }

    const Object* Find(int code) const
    {
        const auto found = objects.find(code);
        return code != 0x1234 && found != objects.end() ? &found->second : nullptr;
    }

    static bool IsLibrary(int code) { return code >= 0x1000 && code <= 0xF000 && code % 0x1000 == 0; }
    static bool IsObject(int code)
    {
        const auto bits = static_cast<unsigned int>(code);
        return code == 0x1234 || (bits >= 0xA04F1000 && bits <= 0xA04FFFFF);
    }
    static std::string Small(std::string text)
    {
        for (char& character : text) {
            character = static_cast<char>(std::tolower(static_cast<unsigned char>(character)));
        }
        return text;
    }

    std::map<int, std::string> libraries;
    std::map<int, Object> objects;
};

} // namespace test
