#include "tests/support/allocations.h"
#include "tests/support/messages.h"

#include <algorithm>
#include <numeric>
#include <random>
#include <set>
#include <string>
#include <vector>

namespace {

using test::TakeError;

constexpr const char* kIDOne = "11111111-AbCd-1111-1111-111111111111";
constexpr const char* kIDOneOtherCase = "11111111-aBcD-1111-1111-111111111111";

int Code(unsigned int code) { return static_cast<int>(code); }

/// What is accepted and found is compared with a model (registry_model.h); here are the texts and what a model does not
/// show.
class ObjectRegistry : public test::Messages {
protected:
    ObjectRegistry()
    {
        EXPECT_EQ(m_registry.RegisterLibrary(0x1000, "100% first"), 1);
        EXPECT_EQ(m_registry.RegisterLibrary(0xF000, ""), 1);
        EXPECT_EQ(m_registry.RegisterObject(Code(0xA04F1001), "one"), 1);
        EXPECT_EQ(m_registry.RegisterObject(Code(0xA04FF002), "two", kIDOne), 1);
        EXPECT_EQ(m_registry.RegisterObject(ZRObjectRegistry::ALL_PASS, "all"), 1);
    }

    template <typename Action> static std::string Printed(Action action)
    {
        ZRSetAllFlags(ZR_DEST_CONSOLE);
        std::string text = Console(action);
        ZRSetAllFlags(0);
        return text;
    }

    std::string Dump() const
    {
        return Printed([&] { m_registry.DumpOut(); });
    }

    ZRObjectRegistry m_registry;
};

TEST_F(ObjectRegistry, ReportsWhatItRefuses)
{
    const auto errorOf = [](char result) {
        EXPECT_EQ(result, 0);
        return TakeError();
    };
    EXPECT_EQ(errorOf(m_registry.RegisterLibrary(0x1000, "n")),
        "-65838 Library 0x00001000 already registered as 100% first ZRObjectRegistry::RegisterLibrary 0");
    EXPECT_EQ(errorOf(m_registry.UnregisterLibrary(0x2000)),
        "-65841 Library 0x00002000 not found ZRObjectRegistry::UnregisterLibrary 0");
    EXPECT_EQ(errorOf(m_registry.RegisterObject(Code(0xA04F5001), "n")),
        "-65839 Library 0x00005000 is not registered ZRObjectRegistry::RegisterObject<id,name> 0");
    EXPECT_EQ(errorOf(m_registry.RegisterObject(Code(0xA04F5001), "n", static_cast<const char*>(nullptr))),
        "-65845 Invalid class ID  specified for object 0xA04F5001 ZRObjectRegistry::RegisterObject<id,name,class> 0");
    EXPECT_EQ(errorOf(m_registry.UnregisterObject(Code(0xA04F1FFF))),
        "-65844 Object 0xA04F1FFF not found ZRObjectRegistry::UnregisterObject 0");
    EXPECT_EQ(errorOf(m_registry.SetObjectMirror(Code(0xA04F0010), 5)),
        "-65836 Invalid library nibble in object code 0xA04F0010 ZRObjectRegistry::IsValidObjectCode 0");
    EXPECT_EQ(Printed([&] { m_registry.RegisterObject(0, "n", kIDOne); }), "ERROR - Invalid object code 0x00000000\n");
    EXPECT_EQ(Printed([&] { m_registry.RegisterObject(Code(0xA04F1002), "n", kIDOneOtherCase); }),
        "ERROR - Class ID 11111111-aBcD-1111-1111-111111111111 already being used by two\n"
        "ERROR - Duplicate class ID 11111111-aBcD-1111-1111-111111111111 specified for object 0xA04F1002\n");
}

TEST_F(ObjectRegistry, DumpsWhatIsThere)
{
    const std::string head = "OUT - Object registry dump >>>\nOUT -    ";
    const std::string one = "OUT -    Object type 0x00001001 - one, Short 0x1001, Library 0x00001000\n";
    m_registry.Release();
    EXPECT_EQ(Dump(), head + "Registry is empty...\n");
    m_registry.RegisterLibrary(0x2000, "a library");
    EXPECT_EQ(Dump(), head + "Library type 0x00002000 - a library\nOUT -    No objects in registry...\n");
    m_registry.UnregisterLibrary(0x2000);
    m_registry.RegisterObject(0x1001, "one");
    EXPECT_EQ(Dump(), head + "No libraries in registry...\n" + one);
}

TEST_F(ObjectRegistry, HasTextsForUnknownCodes)
{
    const struct {
        unsigned int code;
        const char* name;
        const char* nameEx;
        char isKnown;
    } rows[] = {
        {0xA04F1001, "one", "one", 1},
        {0x1234, "?", "?", 7}, // left alone
        {0x2002, "object with ID 0x00002002", "0x00002002, high word invalid, object code invalid", 0},
        {0xA04F1002, "object with ID 0xA04F1002", "0xA04F1002, high word valid, object code valid", 0},
        {0xA04F0010, "object with ID 0xA04F0010", "0xA04F0010, high word valid, object code invalid", 0},
        {0xFFFFFFFF, "object with ID 0xFFFFFFFF", "0xFFFFFFFF, high word invalid, object code invalid", 0},
    };
    for (const auto& row : rows) {
        const int code = Code(row.code);
        char isKnown = 7;
        EXPECT_STREQ(m_registry.GetObjectName(code, &isKnown), row.name);
        EXPECT_EQ(isKnown, row.isKnown) << row.name;
        HFErrorClear();
        isKnown = 7;
        const std::string prefix = row.isKnown != 0 ? "" : "irregular or unregistered object with ID ";
        EXPECT_EQ(m_registry.GetObjectNameEx(code, &isKnown), prefix + row.nameEx);
        EXPECT_EQ(isKnown, row.isKnown) << row.nameEx;
        EXPECT_EQ(TakeError(), "none") << row.nameEx;
    }
    const char* const text = m_registry.GetObjectName(1, nullptr);
    m_registry.GetObjectNameEx(2, nullptr);
    EXPECT_STREQ(text, "object with ID 0x00000001") << "each function has a buffer of its own";
    EXPECT_EQ(ZRObjectRegistry().GetObjectName(3, nullptr), text) << "and all registries share it";
    EXPECT_STREQ(m_registry.GetObjectClassID(4, nullptr), ZRClassID::Null);
}

TEST_F(ObjectRegistry, HoldsEveryCode)
{
    m_registry.Release();
    for (int library = 0x1000; library <= 0xF000; library += 0x1000) {
        EXPECT_EQ(m_registry.RegisterLibrary(library, "a library"), 1);
    }
    std::vector<int> codes(0xF000);
    std::iota(codes.begin(), codes.end(), Code(0xA04F1000));
    codes.resize(0x1F000);
    std::iota(codes.begin() + 0xF000, codes.end(), 0);
    std::shuffle(codes.begin(), codes.end(), std::minstd_rand(3));
    const std::set<int> few(codes.begin(), codes.begin() + 3000); // with gaps of any size between
    std::string dump;
    for (const int code : few) {
        HCString line;
        line.Format(
            "OUT -    Object type 0x%08X - n, Short 0x%04X, Library 0x%08X\n", code, code & 0xFFFF, code & 0xF000);
        dump += line;
    }
    for (std::size_t place = 0; place < codes.size(); ++place) {
        EXPECT_TRUE(place != few.size() || Dump().ends_with(dump)) << "in the order of the codes";
        ASSERT_EQ(m_registry.RegisterObject(codes[place], "n"), 1) << codes[place];
    }
    for (const int code : codes) {
        ASSERT_TRUE(code >= 0 || m_registry.UnregisterObject(code) == 1) << code;
    }
    EXPECT_EQ(m_registry.GetObjectCount(), 0x10000);
    EXPECT_EQ(m_registry.GetObjectIDAt(0x4321), 0x4321);
}

TEST_F(ObjectRegistry, CopiesOwnTheirEntries)
{
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
    const auto addWithSameID = [&] { return m_registry.RegisterObject(Code(0xA04F1003), "three", kIDOneOtherCase); };
    EXPECT_EQ(addWithSameID(), 0) << "class IDs are known too";
    EXPECT_EQ(m_registry.UnregisterObject(Code(0xA04FF002)), 1);
    EXPECT_EQ(addWithSameID(), 1);
}

#if !defined(_WIN32)
TEST_F(ObjectRegistry, AddsNothingWithoutMemory)
{
    m_registry.Release();
    m_registry.RegisterLibrary(0x2000, "a library");
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
    }
}

TEST_F(ObjectRegistry, KeepsNothingOfWhatHasGone)
{
    for (const bool isReleased : {false, true}) {
        long allocations = 0;
        for (int round = 0; round < 200; ++round) {
            const long before = test::AllocationCount();
            if (isReleased) {
                m_registry.Release();
                m_registry.RegisterLibrary(0x1000, "a library");
            } else {
                m_registry.UnregisterObject(Code(0xA04F1002)); // not there the first time
            }
            EXPECT_EQ(m_registry.RegisterObject(Code(0xA04F1002), "three", ZRClassID::Null), 1);
            EXPECT_TRUE(round < 2 || test::AllocationCount() - before == allocations) << "as many in each round";
            allocations = test::AllocationCount() - before;
        }
    }
}
#endif

TEST_F(ObjectRegistry, OfTheProcessIsReachedByFunctions)
{
    constexpr int kTwo = static_cast<int>(0xA04F3002);
    constexpr int kSix = static_cast<int>(0xA04F3006);
    {
        ZRRegistration library(0x3000, "a library");
        EXPECT_TRUE(library.Add(kSix, "six"));
        EXPECT_TRUE(library.Add(kTwo, "two", kIDOne));
        char isKnown = 7;
        char isFound = 7;
        EXPECT_EQ(ZRSetObjectMirror(kTwo, 5), 1);
        EXPECT_EQ(ZRGetObjectMirror(kTwo), 5);
        EXPECT_EQ(ZRObjectIsKnown(kTwo), 1);
        EXPECT_EQ(ZRGetRegisteredObjectCount(), 2);
        EXPECT_EQ(ZRGetRegisteredObjectID(0), kTwo);
        EXPECT_STREQ(ZRGetRegisteredObjectName(1), "six");
        EXPECT_STREQ(ZRGetRegisteredObjectClassID(0), kIDOne);
        EXPECT_STREQ(ZRGetObjectClassID(kTwo, &isFound), kIDOne);
        EXPECT_STREQ(ZRGetObjectName(kSix, &isKnown), "six");
        EXPECT_EQ(isKnown, isFound);
        EXPECT_STREQ(ZRGetObjectNameEx(kSix + 1, &isKnown),
            "irregular or unregistered object with ID 0xA04F3007, high word valid, object code valid");
        EXPECT_EQ(isKnown, 0);
        EXPECT_NE(Printed([] { ZRDumpRegistry(); }).find("Object type 0xA04F3006 - six"), std::string::npos);
    }
    EXPECT_EQ(ZRGetRegisteredObjectCount(), 0);
}

} // namespace
