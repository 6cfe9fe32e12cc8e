#include "tests/support/messages.h"
#include "tests/support/allocations.h"

#include <algorithm>
#include <climits>
#include <random>
#include <string>
#include <vector>

namespace {

constexpr const char* kIDOne = "11111111-AbCd-1111-1111-111111111111";
constexpr const char* kIDOneOtherCase = "11111111-aBcD-1111-1111-111111111111";
constexpr const char* kIDTwo = "22222222-2222-2222-2222-222222222222";

int Code(unsigned int code) { return static_cast<int>(code); }

/// Messages go to the console.
class ObjectRegistry : public test::Messages {
protected:
    ObjectRegistry() { ZRSetAllFlags(ZR_DEST_CONSOLE); }

    std::string Dump() const
    {
        return Console([&] { m_registry.DumpOut(); });
    }

    void AddLibraries()
    {
        for (const int library : {0x1000, 0x2000, 0xF000}) {
            EXPECT_EQ(m_registry.RegisterLibrary(library, "a library"), 1);
        }
    }

    ZRObjectRegistry m_registry;
};

TEST_F(ObjectRegistry, AcceptsAndRefusesWithReports)
{
    enum Operation { kAddLibrary, kRemoveLibrary, kAdd, kAddWithClassID, kRemove };
    const struct {
        Operation operation;
        unsigned int code;
        const char* name;
        const char* classID;
        std::vector<std::string> reports; // none when the operation is accepted
        int error;
        const char* location;
    } rows[] = {
        // clang-format off
        {kAddLibrary, 0, "n", "", {"Invalid library code 0x00000000"}, -65840, "RegisterLibrary"},
        {kAddLibrary, 0x1001, "n", "", {"Invalid library code 0x00001001"}, -65840, "RegisterLibrary"},
        {kAddLibrary, 0x100, "n", "", {"Invalid library code 0x00000100"}, -65840, "RegisterLibrary"},
        {kAddLibrary, 0x11000, "n", "", {"Invalid library code 0x00011000"}, -65840, "RegisterLibrary"},
        {kAddLibrary, 0x80001000, "n", "", {"Invalid library code 0x80001000"}, -65840, "RegisterLibrary"},
        {kRemoveLibrary, 0x1001, "", "", {"Invalid library code 0x00001001"}, -65840, "UnregisterLibrary"},
        {kRemoveLibrary, 0x1000, "", "", {"Library 0x00001000 not found"}, -65841, "UnregisterLibrary"},
        {kAddLibrary, 0x1000, "100% first", "", {}, 0, ""},
        {kAddLibrary, 0x1000, "second", "", {"Library 0x00001000 already registered as 100% first"}, -65838, "RegisterLibrary"},
        {kAddLibrary, 0xF000, "", "", {}, 0, ""},
        {kAdd, 0xA04F5001, "n", "", {"Library 0x00005000 is not registered"}, -65839, "RegisterObject<id,name>"},
        {kAdd, 0xA04F0010, "n", "", {"Invalid library nibble in object code 0xA04F0010", "Invalid object code 0xA04F0010"}, -65843, "RegisterObject<id,name>"},
        {kAdd, 0x33330009, "n", "", {"Invalid high word in object code 0x33330009", "Invalid object code 0x33330009"}, -65843, "RegisterObject<id,name>"},
        {kAdd, 0xA04F1001, "one", "", {}, 0, ""},
        {kAdd, 0xA04F1001, "n", "", {"Object 0xA04F1001 already registered as one"}, -65842, "RegisterObject<id,name>"},
        {kAdd, 0x1001, "short", "", {}, 0, ""},
        {kAdd, 0, "", "", {}, 0, ""},
        {kAdd, 0, "n", "", {"Object 0x00000000 already registered as "}, -65842, "RegisterObject<id,name>"},
        {kAdd, 0x1234, "all", "", {}, 0, ""},
        {kAdd, 0x1234, "n", "", {"Object 0x00001234 already registered as all"}, -65842, "RegisterObject<id,name>"},
        {kAddWithClassID, 0, "n", kIDOne, {"Invalid object code 0x00000000"}, -65843, "RegisterObject<id,name,class>"},
        {kAddWithClassID, 0x1001, "n", "bad", {"Invalid high word in object code 0x00001001", "Invalid object code 0x00001001"}, -65843, "RegisterObject<id,name,class>"},
        {kAddWithClassID, 0xA04F5001, "n", "bad", {"Invalid class ID bad specified for object 0xA04F5001"}, -65845, "RegisterObject<id,name,class>"},
        {kAddWithClassID, 0xA04F5001, "n", kIDOne, {"Library 0x00005000 is not registered"}, -65839, "RegisterObject<id,name,class>"},
        {kAddWithClassID, 0xA04F1002, "two", kIDOne, {}, 0, ""},
        {kAddWithClassID, 0xA04F1001, "n", kIDOne, {"Object 0xA04F1001 already registered as one"}, -65842, "RegisterObject<id,name,class>"},
        {kAddWithClassID, 0xA04FF003, "n", kIDOneOtherCase,
            {"Class ID 11111111-aBcD-1111-1111-111111111111 already being used by two",
             "Duplicate class ID 11111111-aBcD-1111-1111-111111111111 specified for object 0xA04FF003"},
            -65846, "RegisterObject<id,name,class>"},
        {kAddWithClassID, 0xA04FF003, "null", ZRClassID::Null, {}, 0, ""},
        {kAddWithClassID, 0xA04FF004, "n", ZRClassID::Null,
            {"Class ID 00000000-0000-0000-0000-000000000000 already being used by null",
             "Duplicate class ID 00000000-0000-0000-0000-000000000000 specified for object 0xA04FF004"},
            -65846, "RegisterObject<id,name,class>"},
        {kAddWithClassID, 0x1234, "n", kIDTwo, {"Object 0x00001234 already registered as all"}, -65842, "RegisterObject<id,name,class>"},
        {kRemove, 0x1001, "", "", {"Invalid high word in object code 0x00001001", "Invalid object code 0x00001001"}, -65843, "UnregisterObject"},
        {kRemove, 0xA04F1FFF, "", "", {"Object 0xA04F1FFF not found"}, -65844, "UnregisterObject"},
        {kRemove, 0x1234, "", "", {}, 0, ""},
        {kRemove, 0x1234, "", "", {"Object 0x00001234 not found"}, -65844, "UnregisterObject"},
        {kAddWithClassID, 0x1234, "all again", kIDTwo, {}, 0, ""},
        {kRemoveLibrary, 0x1000, "", "", {}, 0, ""},
        {kAdd, 0xA04F1003, "n", "", {"Library 0x00001000 is not registered"}, -65839, "RegisterObject<id,name>"},
        {kAddLibrary, 0x1000, "another name", "", {}, 0, ""},
        {kRemove, 0xA04F1002, "", "", {}, 0, ""},
        {kAddWithClassID, 0xA04F1003, "three", kIDOneOtherCase, {}, 0, ""},
        // clang-format on
    };
    for (const auto& row : rows) {
        HCString what;
        what.Format("operation %d code 0x%08X class ID %s", row.operation, row.code, row.classID);
        SCOPED_TRACE(static_cast<const char*>(what));
        const std::string before = Dump();
        const int code = Code(row.code);
        char result = 0;
        std::string expected;
        for (const std::string& report : row.reports) {
            expected += "ERROR - " + report + "\n";
        }
        EXPECT_EQ(Console([&] {
            switch (row.operation) {
            case kAddLibrary:
                result = m_registry.RegisterLibrary(code, row.name);
                break;
            case kRemoveLibrary:
                result = m_registry.UnregisterLibrary(code);
                break;
            case kAdd:
                result = m_registry.RegisterObject(code, row.name);
                break;
            case kAddWithClassID:
                result = m_registry.RegisterObject(code, row.name, row.classID);
                break;
            case kRemove:
                result = m_registry.UnregisterObject(code);
                break;
            }
        }),
            expected);
        EXPECT_EQ(result, row.reports.empty() ? 1 : 0);
        EXPECT_EQ(Dump() == before, !row.reports.empty()) << "refused: nothing changes";
        EXPECT_EQ(test::TakeError(),
            row.reports.empty()
                ? "none"
                : std::to_string(row.error) + " " + row.reports.back() + " ZRObjectRegistry::" + row.location + " 0");
    }
    EXPECT_EQ(Dump(),
        "OUT - Object registry dump >>>\n"
        "OUT -    Library type 0x00001000 - another name\n"
        "OUT -    Library type 0x0000F000 - \n"
        "OUT -    Object type 0xA04F1001 - one, Short 0x1001, Library 0x00001000\n"
        "OUT -    Object type 0xA04F1003 - three, Short 0x1003, Library 0x00001000\n"
        "OUT -    Object type 0xA04FF003 - null, Short 0xF003, Library 0x0000F000\n"
        "OUT -    Object type 0x00000000 - , Short 0x0000, Library 0x00000000\n"
        "OUT -    Object type 0x00001001 - short, Short 0x1001, Library 0x00001000\n"
        "OUT -    Object type 0x00001234 - all again, Short 0x1234, Library 0x00001000\n");
    m_registry.Release();
    EXPECT_EQ(m_registry.GetObjectCount() + m_registry.GetLibraryCount(), 0);
    EXPECT_EQ(Dump(), "OUT - Object registry dump >>>\nOUT -    Registry is empty...\n");
    EXPECT_EQ(m_registry.RegisterObject(0x1001, "short"), 1);
    EXPECT_EQ(Dump(),
        "OUT - Object registry dump >>>\n"
        "OUT -    No libraries in registry...\n"
        "OUT -    Object type 0x00001001 - short, Short 0x1001, Library 0x00001000\n");
    m_registry.Release();
    EXPECT_EQ(m_registry.RegisterLibrary(0x2000, "a library"), 1);
    EXPECT_EQ(Dump(),
        "OUT - Object registry dump >>>\n"
        "OUT -    Library type 0x00002000 - a library\n"
        "OUT -    No objects in registry...\n");
}

TEST_F(ObjectRegistry, LooksUpByCode)
{
    AddLibraries();
    m_registry.RegisterObject(Code(0xA04F1001), "plain");
    m_registry.RegisterObject(Code(0xA04F2002), "classy", kIDOne);
    m_registry.RegisterObject(Code(0xA04F2003), "null class", ZRClassID::Null);
    m_registry.RegisterObject(0x1001, "short");
    m_registry.RegisterObject(0, "zero");
    m_registry.RegisterObject(ZRObjectRegistry::ALL_PASS, "never found");
    const auto unknown = [](const char* code, const char* highWord, const char* whole) {
        return std::string("irregular or unregistered object with ID ") + code + ", high word " + highWord
            + ", object code " + whole;
    };
    const char untouched = 7;
    const struct {
        unsigned int code;
        std::string name;
        std::string nameEx;
        char known;
        const char* classID;
        char hasClassID;
        char isKnown;
        const char* report; // of a malformed code
    } rows[] = {
        // clang-format off
        {0xA04F1001, "plain", "plain", 1, ZRClassID::Null, 0, 1, ""},
        {0xA04F2002, "classy", "classy", 1, kIDOne, 1, 1, ""},
        {0xA04F2003, "null class", "null class", 1, ZRClassID::Null, 1, 1, ""},
        {0x1001, "short", "short", 1, ZRClassID::Null, 0, 1, ""},
        {0, "zero", "zero", 1, ZRClassID::Null, 0, 1, ""},
        {0x1234, "?", "?", untouched, ZRClassID::Null, 0, 1, ""},
        {0x2002, "object with ID 0x00002002", unknown("0x00002002", "invalid", "invalid"), 0, ZRClassID::Null, 0, 0, ""},
        {0xA04F1002, "object with ID 0xA04F1002", unknown("0xA04F1002", "valid", "valid"), 0, ZRClassID::Null, 0, 0, ""},
        {0xA04F1234, "object with ID 0xA04F1234", unknown("0xA04F1234", "valid", "valid"), 0, ZRClassID::Null, 0, 0, ""},
        {0xA04F0010, "object with ID 0xA04F0010", unknown("0xA04F0010", "valid", "invalid"), 0, ZRClassID::Null, 0, 0,
            "ERROR - Invalid library nibble in object code 0xA04F0010\n"},
        {0x33330009, "object with ID 0x33330009", unknown("0x33330009", "invalid", "invalid"), 0, ZRClassID::Null, 0, 0,
            "ERROR - Invalid high word in object code 0x33330009\n"},
        {0xFFFFFFFF, "object with ID 0xFFFFFFFF", unknown("0xFFFFFFFF", "invalid", "invalid"), 0, ZRClassID::Null, 0, 0,
            "ERROR - Invalid high word in object code 0xFFFFFFFF\n"},
        // clang-format on
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const int code = Code(row.code);
        char known = untouched;
        EXPECT_EQ(Console([&] { EXPECT_EQ(m_registry.GetObjectName(code, &known), row.name); }), row.report);
        EXPECT_EQ(known, row.known);
        known = untouched;
        EXPECT_EQ(Console([&] { EXPECT_EQ(m_registry.GetObjectNameEx(code, &known), row.nameEx); }), "");
        EXPECT_EQ(known, row.known);
        char found = untouched;
        EXPECT_EQ(Console([&] { EXPECT_STREQ(m_registry.GetObjectClassID(code, &found), row.classID); }), row.report);
        EXPECT_EQ(found, row.hasClassID);
        EXPECT_EQ(m_registry.ObjectIsKnown(code), row.isKnown);

        const bool hasEntry = row.known == 1;
        EXPECT_EQ(Console([&] { EXPECT_EQ(m_registry.GetObjectEntry(code, 1) != nullptr, hasEntry); }), row.report);
        EXPECT_EQ(Console([&] { EXPECT_EQ(m_registry.GetObjectEntry(code, 0) != nullptr, hasEntry); }), "");
        EXPECT_EQ(Console([&] { EXPECT_EQ(m_registry.GetObjectMirror(code), hasEntry ? code : 0); }), row.report);
        EXPECT_EQ(Console([&] { EXPECT_EQ(m_registry.SetObjectMirror(code, 5), hasEntry ? 1 : 0); }), row.report);
        Console([&] { EXPECT_EQ(m_registry.GetObjectMirror(code), hasEntry ? 5 : 0); });
        Console([&] {
            m_registry.GetObjectName(code, nullptr);
            m_registry.GetObjectNameEx(code, nullptr);
            m_registry.GetObjectClassID(code, nullptr);
        });
    }
    const char* const text = m_registry.GetObjectName(1, nullptr);
    m_registry.GetObjectNameEx(2, nullptr);
    EXPECT_STREQ(text, "object with ID 0x00000001") << "each function has a buffer of its own";
    EXPECT_EQ(ZRObjectRegistry().GetObjectName(3, nullptr), text) << "and all registries share it";
}

TEST_F(ObjectRegistry, LooksUpByPosition)
{
    for (const int index : {INT_MIN, -1, 0, 1, INT_MAX}) {
        EXPECT_EQ(m_registry.GetObjectEntryAt(index), nullptr);
        EXPECT_EQ(m_registry.GetObjectNameAt(index), nullptr);
        EXPECT_STREQ(m_registry.GetObjectClassIDAt(index), ZRClassID::Null);
        EXPECT_EQ(m_registry.GetObjectIDAt(index), -1);
    }
    AddLibraries();
    const int codes[] = {Code(0xA04F1001), Code(0xA04F1010), Code(0xA04F2003), Code(0xA04FFFFF), 0, 2, 0x1234, 0xFFFF};
    const int count = static_cast<int>(std::size(codes));
    for (const int place : {6, 3, 7, 0, 4, 2, 5, 1}) {
        HCString name;
        name.Format("%08X", static_cast<unsigned int>(codes[place]));
        EXPECT_EQ(m_registry.RegisterObject(codes[place], name), 1);
    }
    for (const int jump : {1, count - 1, 3, 5}) { // upwards, downwards and about
        for (int step = 0, index = 0; step < count; ++step, index = (index + jump) % count) {
            EXPECT_EQ(m_registry.GetObjectIDAt(index), codes[index]);
            EXPECT_EQ(m_registry.GetObjectEntryAt(index)->GetName(), m_registry.GetObjectNameAt(index));
        }
    }
    EXPECT_EQ(m_registry.GetObjectEntryAt(count), nullptr);
    EXPECT_EQ(m_registry.GetObjectIDAt(2), codes[2]);
    m_registry.UnregisterObject(codes[0]);
    EXPECT_EQ(m_registry.GetObjectIDAt(2), codes[3]);
    m_registry.RegisterObject(codes[0], "back", kIDOne);
    EXPECT_EQ(m_registry.GetObjectIDAt(2), codes[2]);
    EXPECT_STREQ(m_registry.GetObjectClassIDAt(0), kIDOne);
    EXPECT_STREQ(m_registry.GetObjectNameAt(0), "back");
}

TEST_F(ObjectRegistry, HoldsEveryCode)
{
    std::vector<int> codes;
    for (int nibble = 0x1000; nibble <= 0xF000; nibble += 0x1000) {
        m_registry.RegisterLibrary(nibble, "a library");
    }
    for (int number = 0; number <= 0xFFFF; ++number) {
        codes.push_back(number);
        if (number >= 0x1000) {
            codes.push_back(Code(0xA04F0000) + number);
        }
    }
    std::vector<int> inOrder = codes;
    std::sort(inOrder.begin(), inOrder.end());
    std::shuffle(codes.begin(), codes.end(), std::minstd_rand(3));
    for (const int code : codes) {
        ASSERT_EQ(m_registry.RegisterObject(code, "n"), 1);
    }
    std::vector<int> found;
    for (int index = 0; index < m_registry.GetObjectCount(); ++index) {
        found.push_back(m_registry.GetObjectIDAt(index));
    }
    EXPECT_EQ(found, inOrder);
    for (const int code : codes) {
        ASSERT_TRUE(code >= 0 || m_registry.UnregisterObject(code) == 1);
    }
    EXPECT_EQ(m_registry.GetObjectCount(), 0x10000);
    EXPECT_EQ(m_registry.GetObjectIDAt(0x4321), 0x4321);
}

TEST_F(ObjectRegistry, CopiesOwnTheirEntries)
{
    AddLibraries();
    m_registry.RegisterObject(Code(0xA04F1001), "one", kIDOne);
    m_registry.RegisterObject(ZRObjectRegistry::ALL_PASS, "all");
    m_registry.SetObjectMirror(Code(0xA04F1001), 42);
    const std::string before = Dump();
    {
        const ZRObjectRegistry original(m_registry);
        m_registry.Release();
        m_registry.RegisterObject(7, "lost by the assignment");
        m_registry = original;
    }
    m_registry = static_cast<const ZRObjectRegistry&>(m_registry);
    EXPECT_EQ(Dump(), before);
    EXPECT_EQ(m_registry.GetObjectMirror(Code(0xA04F1001)), 42);
    EXPECT_STREQ(m_registry.GetObjectClassID(Code(0xA04F1001), nullptr), kIDOne);
    Console([&] {
        EXPECT_EQ(m_registry.RegisterObject(Code(0xA04F2002), "two", kIDOneOtherCase), 0) << "class IDs are known too";
    });
    EXPECT_EQ(m_registry.UnregisterObject(Code(0xA04F1001)), 1);
    EXPECT_EQ(m_registry.RegisterObject(Code(0xA04F2002), "two", kIDOneOtherCase), 1);
}

TEST_F(ObjectRegistry, TakesTextsOfAnyKind)
{
    AddLibraries();
    const std::string huge(1 << 20, 'n');
    const std::string longID = kIDOne + huge;
    ASSERT_EQ(m_registry.RegisterObject(Code(0xA04F1001), huge.c_str(), longID.c_str()), 1);
    EXPECT_EQ(m_registry.GetObjectName(Code(0xA04F1001), nullptr), huge);
    EXPECT_EQ(m_registry.GetObjectClassID(Code(0xA04F1001), nullptr), longID);
    EXPECT_EQ(m_registry.RegisterObject(Code(0xA04F1002), "n", kIDOne), 1) << "another text, so another class ID";
    Console([&] {
        EXPECT_EQ(m_registry.RegisterObject(Code(0xA04F1003), "n", (kIDOneOtherCase + huge).c_str()), 0);
        EXPECT_EQ(m_registry.RegisterObject(Code(0xA04F1003), "n", huge.c_str()), 0);
        EXPECT_EQ(m_registry.RegisterObject(Code(0xA04F1003), "n", static_cast<const char*>(nullptr)), 0);
    });
    EXPECT_EQ(test::TakeError(),
        "-65845 Invalid class ID  specified for object 0xA04F1003 ZRObjectRegistry::RegisterObject<id,name,class> 0");
}

#if !defined(_WIN32)
TEST_F(ObjectRegistry, AddsNothingWithoutMemory)
{
    AddLibraries();
    const HCString longName(std::string(100, 'n').c_str());
    for (int number = 0; number < 40; ++number) { // each of its tables grows in the course of it
        const int code = Code(0xA04F2000) + number * 31;
        const HCString classID = ZRClassID::MakeExternalID(code);
        char isAdded = 0;
        for (long allocations = 0; isAdded == 0; ++allocations) {
            const std::string before = Dump();
            {
                const test::FailingHeap heap(allocations);
                isAdded = m_registry.RegisterObject(code, longName, classID);
            }
            EXPECT_EQ(Dump() == before, isAdded == 0);
            EXPECT_EQ(m_registry.ObjectIsKnown(code), isAdded);
        }
        const test::FailingHeap heap(0);
        EXPECT_EQ(m_registry.RegisterObject(code, longName), 0) << "refused, if without a report";
        EXPECT_EQ(m_registry.GetObjectCount(), number + 1);
    }
}
#endif

TEST_F(ObjectRegistry, OfTheProcessIsReachedByFunctions)
{
    EXPECT_EQ(ZRGetRegisteredObjectCount(), 0);
    EXPECT_EQ(ZRRegisterLibrary(0x3000, "LIB"), 1);
    EXPECT_EQ(ZRRegisterObject(Code(0xA04F3006), "GROZNY"), 1);
    EXPECT_EQ(ZRRegisterFactoryObject(Code(0xA04F3002), "BILL", kIDOne), 1);
    EXPECT_EQ(ZRGetRegisteredObjectCount(), 2);
    EXPECT_STREQ(ZRGetRegisteredObjectName(1), "GROZNY");
    EXPECT_EQ(ZRGetRegisteredObjectID(0), Code(0xA04F3002));
    EXPECT_STREQ(ZRGetRegisteredObjectClassID(0), kIDOne);
    char flag = 7;
    EXPECT_STREQ(ZRGetObjectName(Code(0xA04F3006), &flag), "GROZNY");
    EXPECT_EQ(flag, 1);
    EXPECT_STREQ(ZRGetObjectNameEx(Code(0xA04F3007), &flag),
        "irregular or unregistered object with ID 0xA04F3007, high word valid, object code valid");
    EXPECT_EQ(flag, 0);
    EXPECT_STREQ(ZRGetObjectClassID(Code(0xA04F3002), &flag), kIDOne);
    EXPECT_EQ(flag, 1);
    EXPECT_EQ(ZRObjectIsKnown(Code(0xA04F3002)), 1);
    EXPECT_EQ(ZRSetObjectMirror(Code(0xA04F3002), 5), 1);
    EXPECT_EQ(ZRGetObjectMirror(Code(0xA04F3002)), 5);
    EXPECT_EQ(Console([] { ZRDumpRegistry(); }),
        "OUT - Object registry dump >>>\n"
        "OUT -    Library type 0x00003000 - LIB\n"
        "OUT -    Object type 0xA04F3002 - BILL, Short 0x3002, Library 0x00003000\n"
        "OUT -    Object type 0xA04F3006 - GROZNY, Short 0x3006, Library 0x00003000\n");
    EXPECT_EQ(ZRUnregisterObject(Code(0xA04F3002)), 1);
    EXPECT_EQ(ZRUnregisterObject(Code(0xA04F3006)), 1);
    EXPECT_EQ(ZRUnregisterLibrary(0x3000), 1);
    EXPECT_EQ(ZRGetRegisteredObjectCount(), 0);
}

} // namespace
