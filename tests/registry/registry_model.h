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

/// What belongs to the first condition that holds; 0 or null when none does.
template <typename Value> Value FirstOf(std::initializer_list<std::pair<bool, Value>> pairs)
{
    const auto first = std::find_if(pairs.begin(), pairs.end(), [](const auto& pair) { return pair.first; });
    return first != pairs.end() ? first->second : Value{};
}

/// A registry, and what it is to hold, kept without regard to speed. Random: gives any number below its argument.
template <typename Random> class RegistryBesideModel {
public:
    /// hasFewCodes: so that they meet often; otherwise all of them.
    RegistryBesideModel(Random random, bool hasFewCodes)
        : m_random(random)
        , m_isDense(hasFewCodes)
    {
    }

    /// One operation on both. What they differ in; null when they agree.
    const char* Step()
    {
        switch (m_random(8)) {
        case 0:
            return LookUp(AnyCode());
        case 1:
            return LookUpAt(static_cast<int>(m_random(60)) - 2);
        case 2:
            return ReadClassID(AnyClassID());
        default:
            return Change(AnyCode());
        }
    }

    const char* CompareAll() const
    {
        const char* difference = nullptr;
        for (int index = -1; difference == nullptr && index <= static_cast<int>(m_objects.size()); ++index) {
            difference = LookUpAt(index);
        }
        return difference;
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
        if (m_random(4) == 0) {
            id.replace(0, 28, m_random(2) != 0 ? ZRClassID::Internal : ZRClassID::External);
        }
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
    template <typename Change> static const char* Compare(char result, Refusals refusals, Change change)
    {
        const int expected = FirstOf(refusals);
        if (expected == 0) {
            change();
        }
        return result == (expected == 0 ? 1 : 0) && TakeErrorCode() == expected ? nullptr : "a change";
    }

    const char* Change(int code)
    {
        const int library = m_random(4) != 0 ? code & 0xF000 : code;
        const bool isKnown = m_libraries.count(library) != 0;
        const HCString name(std::string(m_random(60) * m_random(60), static_cast<char>('a' + m_random(26))).c_str());
        const HCString classID(AnyClassID().c_str());
        switch (m_random(5)) {
        case 0:
            return Compare(m_registry.RegisterLibrary(library, name),
                {{!IsLibrary(library), -65840}, {isKnown, -65838}}, [&] { m_libraries.insert(library); });
        case 1:
            return Compare(m_registry.UnregisterLibrary(library), {{!IsLibrary(library), -65840}, {!isKnown, -65841}},
                [&] { m_libraries.erase(library); });
        case 2:
            return CompareAdded(m_registry.RegisterObject(code, name), ZRObjectEntry(code, name, 0));
        case 3:
            return CompareAdded(m_registry.RegisterObject(code, name, classID), ZRObjectEntry(code, name, classID, 0));
        default:
            return Compare(m_registry.UnregisterObject(code),
                {{!IsObject(code), -65843}, {m_objects.count(code) == 0, -65844}}, [&] { m_objects.erase(code); });
        }
    }

    const char* CompareAdded(char result, const ZRObjectEntry& object)
    {
        const int code = object.GetID();
        const HCString classID = object.GetClassID();
        const bool hasClassID = object.HasClassID() != 0;
        const bool needsLibrary = hasClassID || code >> 16 != 0;
        const bool isInUse = hasClassID && std::any_of(m_objects.begin(), m_objects.end(), [&](const auto& other) {
            return other.second.HasClassID() != 0 && other.second.GetClassID().CompareNoCase(classID) == 0;
        });
        return Compare(result,
            {{needsLibrary && !IsObject(code), -65843}, {!HasForm(classID.ToString()), -65845},
                {needsLibrary && m_libraries.count(code & 0xF000) == 0, -65839}, {m_objects.count(code) != 0, -65842},
                {isInUse, -65846}},
            [&] { m_objects.emplace(code, object); });
    }

    const char* LookUp(int code)
    {
        const auto found = m_objects.find(code);
        const bool isFound = found != m_objects.end() && code != 0x1234;
        ZRObjectEntry expected = isFound ? found->second : ZRObjectEntry();
        const int flaw = code >> 16 == -0x5FB1 ? -65836 : -65837;
        const int expectedError = code >> 16 == 0 || IsObject(code) ? 0 : flaw;
        bool areReported = true;
        const auto reported = [&](auto result) {
            areReported = TakeErrorCode() == expectedError && areReported;
            return result;
        };
        char isKnown = 7;
        char hasClassID = 7;
        const char* const name = reported(m_registry.GetObjectName(code, &isKnown));
        const char* const classID = reported(m_registry.GetObjectClassID(code, &hasClassID));
        const bool hasMirror = reported(m_registry.GetObjectMirror(code)) == expected.GetMirrorID();
        expected.SetMirrorID(static_cast<int>(m_random(1000)));
        const char isSet = reported(m_registry.SetObjectMirror(code, expected.GetMirrorID()));
        const ZRObjectEntry* const entry = reported(m_registry.GetObjectEntry(code, 1));
        if (isFound) {
            found->second = expected;
        }
        return FirstOf<const char*>({{!areReported, "the reports of lookups"},
            {m_registry.ObjectIsKnown(code) != static_cast<char>(m_objects.count(code)), "ObjectIsKnown"},
            {code != 0x1234 && isKnown != (isFound ? 1 : 0), "whether GetObjectName knows it"},
            {isFound && expected.GetName() != name, "GetObjectName"}, {!hasMirror, "GetObjectMirror"},
            {expected.GetClassID() != classID || expected.HasClassID() != hasClassID, "GetObjectClassID"},
            {isSet != (isFound ? 1 : 0), "SetObjectMirror"},
            {isFound ? entry == nullptr || *entry != expected : entry != nullptr, "GetObjectEntry"}});
    }

    const char* LookUpAt(int index) const
    {
        const int count = static_cast<int>(m_objects.size());
        const bool isThere = index >= 0 && index < count;
        const auto place = std::next(m_objects.begin(), isThere ? index : 0);
        const ZRObjectEntry expected = isThere ? place->second : ZRObjectEntry();
        const ZRObjectEntry* const entry = m_registry.GetObjectEntryAt(index);
        const char* const name = m_registry.GetObjectNameAt(index);
        return FirstOf<const char*>(
            {{m_registry.GetLibraryCount() != static_cast<int>(m_libraries.size()), "GetLibraryCount"},
                {m_registry.GetObjectCount() != count, "GetObjectCount"},
                {isThere ? entry == nullptr || *entry != expected : entry != nullptr, "GetObjectEntryAt"},
                {isThere ? expected.GetName() != name : name != nullptr, "GetObjectNameAt"},
                {expected.GetClassID() != m_registry.GetObjectClassIDAt(index), "GetObjectClassIDAt"},
                {m_registry.GetObjectIDAt(index) != (isThere ? expected.GetID() : -1), "GetObjectIDAt"}});
    }

    const char* ReadClassID(const std::string& text) const
    {
        const char* const id = text.c_str();
        const bool hasForm = HasForm(text);
        const bool isInternal = text.starts_with(ZRClassID::Internal);
        const bool isExternal = text.starts_with(ZRClassID::External);
        const int code = ZRClassID::GetInternalID(id, 0);
        return FirstOf<const char*>({{ZRClassID::IsFormat(id) != (hasForm ? 1 : 0), "IsFormat"},
            {ZRClassID::IsNull(id) != (text.starts_with(ZRClassID::Null) ? 1 : 0), "IsNull"},
            {ZRClassID::IsInternal(id) != (isInternal ? 1 : 0), "IsInternal"},
            {ZRClassID::IsExternal(id) != (isExternal ? 1 : 0), "IsExternal"},
            {ZRClassID::GetInternalID(id, 1) != (hasForm && isInternal ? code : 0), "GetInternalID"},
            {ZRClassID::GetExternalID(id, 1) != (hasForm && isExternal ? code : 0), "GetExternalID"},
            {text.size() < 32 ? code != 0 : (code & ZRObjectEntry::OBJECTBASE) != ZRObjectEntry::OBJECTBASE,
                "the high word"}});
    }

    Random m_random;
    bool m_isDense;
    ZRObjectRegistry m_registry;
    std::set<int> m_libraries;
    std::map<int, ZRObjectEntry> m_objects;
};

} // namespace test
