/// A plain model of the object registry, and random operations on both, which are to agree in every result.
#pragma once

#include "hcbase/hcbase.h"
#include "zrlib/zrlib.h"

#include <algorithm>
#include <cctype>
#include <initializer_list>
#include <iterator>
#include <map>
#include <set>
#include <string>
#include <utility>

namespace test {

/// A registry, and what it is to hold, kept without regard to speed. Random: gives any number below its argument.
template <typename Random> class RegistryBesideModel {
public:
    /// hasFewCodes: so that they meet often; otherwise all of them.
    RegistryBesideModel(Random random, bool hasFewCodes)
        : m_random(random)
        , m_isDense(hasFewCodes)
    {
    }

    /// One operation on both. Whether they agree.
    bool Step()
    {
        switch (m_random(8)) {
        case 0:
            return LookUp(AnyCode());
        case 1:
            return LookUpAt(static_cast<int>(m_random(static_cast<unsigned int>(m_objects.size()) + 3)) - 1);
        default:
            return Change(AnyCode());
        }
    }

private:
    using Refusals = std::initializer_list<std::pair<bool, int>>; // each with its error code

    static bool IsLibrary(int code) { return code >= 0x1000 && code <= 0xF000 && code % 0x1000 == 0; }
    static bool IsObject(int code) { return code == 0x1234 || (code >> 16 == -0x5FB1 && (code & 0xF000) != 0); }
    static bool HasForm(const std::string& text)
    {
        const auto fits = [](char wanted, unsigned char is) { return wanted == '-' ? is == '-' : std::isxdigit(is); };
        return text.size() >= 36 && std::equal(ZRClassID::Null, ZRClassID::Null + 36, text.begin(), fits);
    }

    /// Any code at all, or one of those that matter.
    int AnyCode()
    {
        const auto count = static_cast<unsigned int>(m_objects.size());
        if (count > 0 && m_random(4) == 0) {
            return std::next(m_objects.begin(), static_cast<int>(m_random(count)))->first;
        }
        const unsigned int number = m_isDense ? m_random(4) * 0x1000 + m_random(12) : m_random(0x10000);
        const unsigned int seldom[] = {m_random(0x10000) << 16 | number, number, number & 0xF000, 0x1234, 0xA04F1234};
        const unsigned int which = m_random(16);
        return static_cast<int>(which < std::size(seldom) ? seldom[which] : 0xA04F0000 + number);
    }

    /// One that is there, or any.
    std::string AnyClassID()
    {
        const auto holder = m_objects.find(AnyCode());
        if (holder != m_objects.end() && m_random(2) == 0) {
            return holder->second.GetClassID().ToString();
        }
        std::string id = ZRClassID::Null;
        for (unsigned int digits = m_isDense ? 1 : 4; digits > 0; --digits) {
            id[m_random(4) != 0 ? 36 - digits : 7] = "0123456789abcdefABCDEF"[m_random(22)];
        }
        if (m_random(8) == 0) {
            id[m_random(36)] = "0/:@G`g -\x7F\xC4"[m_random(11)]; // next to the digits and letters
        }
        if (m_random(8) == 0) {
            id.resize(m_random(45), "xX"[m_random(2)]);
        }
        return id;
    }

    static int TakeErrorCode()
    {
        HCError error;
        const int code = HFErrorGet(error) != 0 ? error.code : 0;
        HFErrorClear();
        return code;
    }

    /// Makes the change in the model too, unless it is to be refused.
    template <typename Change> static bool Agree(char result, Refusals refusals, Change change)
    {
        const auto applies = [](const auto& refusal) { return refusal.first; };
        const auto* const refusal = std::find_if(refusals.begin(), refusals.end(), applies);
        if (refusal != refusals.end()) {
            return result == 0 && TakeErrorCode() == refusal->second;
        }
        change();
        return result == 1 && TakeErrorCode() == 0;
    }

    bool Change(int code)
    {
        const int library = m_random(4) != 0 ? code & 0xF000 : code;
        const bool isKnown = m_libraries.count(library) != 0;
        const HCString name(std::string(m_random(60) * m_random(60), static_cast<char>('a' + m_random(26))).c_str());
        const HCString classID(AnyClassID().c_str());
        switch (m_random(5)) {
        case 0:
            return Agree(m_registry.RegisterLibrary(library, name), {{!IsLibrary(library), -65840}, {isKnown, -65838}},
                [&] { m_libraries.insert(library); });
        case 1:
            return Agree(m_registry.UnregisterLibrary(library), {{!IsLibrary(library), -65840}, {!isKnown, -65841}},
                [&] { m_libraries.erase(library); });
        case 2:
            return AgreeOnAdding(m_registry.RegisterObject(code, name), ZRObjectEntry(code, name, 0));
        case 3:
            return AgreeOnAdding(m_registry.RegisterObject(code, name, classID), ZRObjectEntry(code, name, classID, 0));
        default:
            return Agree(m_registry.UnregisterObject(code),
                {{!IsObject(code), -65843}, {m_objects.count(code) == 0, -65844}}, [&] { m_objects.erase(code); });
        }
    }

    bool AgreeOnAdding(char result, const ZRObjectEntry& object)
    {
        const int code = object.GetID();
        const HCString classID = object.GetClassID();
        const bool hasClassID = object.HasClassID() != 0;
        const bool needsLibrary = hasClassID || code >> 16 != 0;
        const bool isInUse = hasClassID && std::any_of(m_objects.begin(), m_objects.end(), [&](const auto& other) {
            return other.second.HasClassID() != 0 && other.second.GetClassID().CompareNoCase(classID) == 0;
        });
        return Agree(result,
            {{needsLibrary && !IsObject(code), -65843}, {!HasForm(classID.ToString()), -65845},
                {needsLibrary && m_libraries.count(code & 0xF000) == 0, -65839}, {m_objects.count(code) != 0, -65842},
                {isInUse, -65846}},
            [&] { m_objects.emplace(code, object); });
    }

    static ZRObjectEntry Content(const ZRObjectEntry* entry) { return entry != nullptr ? *entry : ZRObjectEntry(); }

    bool LookUp(int code)
    {
        const auto place = m_objects.find(code);
        const bool isAllPass = code == ZRObjectRegistry::ALL_PASS;
        const bool isFound = place != m_objects.end() && !isAllPass;
        const bool hasHighWord = code >> 16 == -0x5FB1;
        const int flaw = hasHighWord ? -65836 : -65837;
        const int error = code >> 16 == 0 || IsObject(code) ? 0 : flaw;
        ZRObjectEntry object;
        HCString name("?");
        HCString nameEx("?");
        if (isFound) {
            object = place->second;
            name = nameEx = object.GetName();
        } else if (!isAllPass) {
            const auto word = [](bool isValid) { return isValid ? "valid" : "invalid"; };
            name.Format("object with ID 0x%08X", static_cast<unsigned int>(code));
            nameEx.Format("irregular or unregistered %s, high word %s, object code %s", static_cast<const char*>(name),
                word(hasHighWord), word(IsObject(code)));
        }
        bool doAgree = true;
        const auto compare = [&doAgree](const auto& expected, const auto& result, int expectedError) {
            doAgree = doAgree && expected == result && TakeErrorCode() == expectedError;
        };
        char isKnown = 7;
        char isKnownEx = 7;
        char hasClassID = 7;
        compare(name, m_registry.GetObjectName(code, &isKnown), error);
        compare(nameEx, m_registry.GetObjectNameEx(code, &isKnownEx), 0);
        compare(object.GetClassID(), m_registry.GetObjectClassID(code, &hasClassID), error);
        compare(object.GetMirrorID(), m_registry.GetObjectMirror(code), error);
        const auto mirror = static_cast<int>(m_random(1000));
        compare(isFound, m_registry.SetObjectMirror(code, mirror) == 1, error);
        if (isFound) {
            object.SetMirrorID(mirror);
            place->second = object;
        }
        compare(object, Content(m_registry.GetObjectEntry(code, 1)), error);
        compare(m_objects.count(code) == 1, m_registry.ObjectIsKnown(code) == 1, 0);
        const int known = isAllPass ? 7 : int{isFound};
        return doAgree && isKnown == known && isKnownEx == known && hasClassID == object.HasClassID();
    }

    bool LookUpAt(int index) const
    {
        const auto count = static_cast<int>(m_objects.size());
        const bool isThere = index >= 0 && index < count;
        const ZRObjectEntry expected = isThere ? std::next(m_objects.begin(), index)->second : ZRObjectEntry();
        const char* const name = m_registry.GetObjectNameAt(index);
        return m_registry.GetLibraryCount() == static_cast<int>(m_libraries.size())
            && m_registry.GetObjectCount() == count && Content(m_registry.GetObjectEntryAt(index)) == expected
            && (isThere ? expected.GetName() == name : name == nullptr)
            && expected.GetClassID() == m_registry.GetObjectClassIDAt(index)
            && m_registry.GetObjectIDAt(index) == (isThere ? expected.GetID() : -1);
    }

    Random m_random;
    bool m_isDense;
    ZRObjectRegistry m_registry;
    std::set<int> m_libraries;
    std::map<int, ZRObjectEntry> m_objects;
};

} // namespace test
