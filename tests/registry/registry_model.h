/// A plain model of the object registry, and random operations on both, which are to agree in every result.
#pragma once

#include "hcbase/hcbase.h"
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

/// A registry and its model. Random: gives any number below its argument.
template <typename Random> class RegistryBesideModel {
public:
    /// hasFewCodes: so that they meet often; otherwise all of them.
    RegistryBesideModel(Random random, bool hasFewCodes)
        : m_random(random)
        , m_isDense(hasFewCodes)
    {
    }

    /// One operation on both. What they differ in; null when they agree.
    const char* Step() { return Below(3) != 0 ? Change() : LookUp(); }

    const char* CompareAll() const
    {
        bool isAgreed = m_registry.GetLibraryCount() == static_cast<int>(m_model.libraries.size())
            && m_registry.GetObjectCount() == static_cast<int>(m_model.objects.size());
        int index = 0;
        for (const auto& [code, object] : m_model.objects) {
            const ZRObjectEntry* const entry = m_registry.GetObjectEntryAt(index++);
            isAgreed = isAgreed && entry != nullptr && entry->GetID() == code && entry->GetName() == object.name.c_str()
                && (entry->HasClassID() != 0) == object.hasClassID && entry->GetMirrorID() == object.mirror;
        }
        return isAgreed ? nullptr : "the contents";
    }

private:
    unsigned int Below(unsigned int limit) { return m_random(limit); }

    /// Any code at all, or one of those that matter.
    int AnyCode()
    {
        const unsigned int number = m_isDense ? Below(4) * 0x1000 + Below(12) : Below(0x10000);
        switch (Below(16)) {
        case 0:
            return static_cast<int>(Below(0x10000) << 16 | Below(0x10000));
        case 1:
            return static_cast<int>(number);
        case 2:
            return static_cast<int>(number & 0xF000);
        case 3:
            return static_cast<int>(0x1234 + Below(2) * 0xA04F0000);
        default:
            return static_cast<int>(0xA04F0000 + number);
        }
    }

    std::string AnyClassID()
    {
        std::string id = "0000000a-0000-0000-0000-000000000000";
        for (unsigned int digits = m_isDense ? 1 : 4; digits > 0; --digits) {
            id[36 - digits] = "0123456789abcdefABCDEF"[Below(22)];
        }
        switch (Below(16)) {
        case 0:
            id[Below(36)] = "0-gG \xC4"[Below(6)];
            break;
        case 1:
            id += Below(2) != 0 ? "tail" : "TAIL";
            break;
        case 2:
            id.resize(Below(37));
            break;
        case 3:
            id[7] = 'A';
            break;
        default:
            break;
        }
        return id;
    }

    const char* Change()
    {
        const int code = AnyCode();
        const std::string name(Below(60), static_cast<char>('a' + Below(26)));
        const std::string classID = AnyClassID();
        int expected = 0;
        char result = 0;
        switch (Below(12)) {
        case 0:
        case 1: {
            const int library = Below(4) != 0 ? code & 0xF000 : code;
            expected = m_model.AddLibrary(library, name);
            result = m_registry.RegisterLibrary(library, name.c_str());
            break;
        }
        case 2: {
            const int library = Below(4) != 0 ? code & 0xF000 : code;
            expected = m_model.RemoveLibrary(library);
            result = m_registry.UnregisterLibrary(library);
            break;
        }
        case 3:
        case 4:
        case 5:
            expected = m_model.Add(code, name);
            result = m_registry.RegisterObject(code, name.c_str());
            break;
        case 6:
        case 7:
        case 8:
            expected = m_model.Add(code, name, classID);
            result = m_registry.RegisterObject(code, name.c_str(), classID.c_str());
            break;
        default:
            expected = m_model.Remove(code);
            result = m_registry.UnregisterObject(code);
        }
        HCError reported;
        const bool isAgreed =
            (HFErrorGet(reported) != 0 ? reported.code : 0) == expected && result == (expected == 0 ? 1 : 0);
        HFErrorClear();
        return isAgreed ? nullptr : "a change";
    }

    const char* LookUp()
    {
        const int code = AnyCode();
        const RegistryModel::Object* const object = m_model.Find(code);
        const ZRObjectEntry* const entry = m_registry.GetObjectEntry(code, 0);
        const int mirror = static_cast<int>(Below(1000));
        bool isAgreed = m_registry.ObjectIsKnown(code) == static_cast<char>(m_model.objects.count(code))
            && (entry != nullptr) == (object != nullptr)
            && m_registry.SetObjectMirror(code, mirror) == (object != nullptr ? 1 : 0);
        if (isAgreed && object != nullptr) {
            m_model.objects[code].mirror = mirror;
            isAgreed = m_registry.GetObjectName(code, nullptr) == object->name
                && entry->GetClassID() == (object->hasClassID ? object->classID.c_str() : ZRClassID::Null);
        }
        HFErrorClear();
        return isAgreed ? nullptr : "a lookup";
    }

    Random m_random;
    bool m_isDense;
    RegistryModel m_model;
    ZRObjectRegistry m_registry;
};

} // namespace test
