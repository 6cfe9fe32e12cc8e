#include "tests/registry/registry_model.h"
#include "tests/support/allocations.h"
#include "tests/support/messages.h"

#include <algorithm>
#include <random>
#include <string>

namespace {

constexpr const char* kIDOne = "11111111-AbCd-1111-1111-111111111111";
constexpr const char* kIDOneOtherCase = "11111111-aBcD-1111-1111-111111111111";

int Code(unsigned int code) { return static_cast<int>(code); }

class ObjectRegistry : public test::Messages {
protected:
    ObjectRegistry()
    {
        ZRSetOutFlags(ZR_DEST_CONSOLE);
        EXPECT_EQ(m_registry.RegisterLibrary(0x1000, "100%s"), 1);
        EXPECT_EQ(m_registry.RegisterLibrary(0xF000, ""), 1);
        EXPECT_EQ(m_registry.RegisterObject(Code(0xA04F1001), "one"), 1);
        EXPECT_EQ(m_registry.RegisterObject(Code(0xA04FF002), "two", kIDOne), 1);
        EXPECT_EQ(m_registry.RegisterObject(ZRObjectRegistry::ALL_PASS, "all"), 1);
    }

    static std::string Dump(const ZRObjectRegistry& registry)
    {
        return Console([&registry] { registry.DumpOut(); });
    }

    ZRObjectRegistry m_registry;
};

TEST_F(ObjectRegistry, AgreesWithItsModel)
{
    std::minstd_rand engine(12345);
    const auto random = [&engine](unsigned int limit) { return static_cast<unsigned int>(engine() % limit); };
    for (int turn = 0; turn < 12; ++turn) {
        test::RegistryBesideModel both(random, turn % 2 == 0);
        for (int step = 0; step < 3000; ++step) {
            ASSERT_TRUE(both.Step()) << "turn " << turn << " step " << step;
        }
    }
}

// The others are for what the model does not show.

TEST_F(ObjectRegistry, ReportsWhatItRefuses)
{
    const auto refuses = [](char result, const std::string& text, const std::string& place) {
        EXPECT_EQ(result, 0) << text;
        EXPECT_EQ(test::TakeError(), text + " ZRObjectRegistry::" + place + " 0");
    };
    const int free = Code(0xA04F5001);
    refuses(m_registry.RegisterLibrary(0x1000, "n"), "-65838 Library 0x00001000 already registered as 100%s",
        "RegisterLibrary");
    refuses(m_registry.UnregisterLibrary(0x2000), "-65841 Library 0x00002000 not found", "UnregisterLibrary");
    refuses(
        m_registry.RegisterObject(free, "n"), "-65839 Library 0x00005000 is not registered", "RegisterObject<id,name>");
    refuses(m_registry.RegisterObject(free, "n", static_cast<const char*>(nullptr)),
        "-65845 Invalid class ID  specified for object 0xA04F5001", "RegisterObject<id,name,class>");
    refuses(m_registry.UnregisterObject(free), "-65844 Object 0xA04F5001 not found", "UnregisterObject");
    refuses(m_registry.SetObjectMirror(Code(0xA04F0010), 5), "-65836 Invalid library nibble in object code 0xA04F0010",
        "IsValidObjectCode");
    ZRSetErrorFlags(ZR_DEST_CONSOLE);
    EXPECT_EQ(Console([&] { m_registry.RegisterObject(0, "n", kIDOne); }), "ERROR - Invalid object code 0x00000000\n");
    EXPECT_EQ(Console([&] { m_registry.RegisterObject(Code(0xA04F1002), "n", kIDOneOtherCase); }),
        "ERROR - Class ID 11111111-aBcD-1111-1111-111111111111 already being used by two\n"
        "ERROR - Duplicate class ID 11111111-aBcD-1111-1111-111111111111 specified for object 0xA04F1002\n");
}

TEST_F(ObjectRegistry, DumpsWhatIsThere)
{
    const std::string head = "OUT - Object registry dump >>>\nOUT -    ";
    ZRObjectRegistry registry;
    EXPECT_EQ(Dump(registry), head + "Registry is empty...\n");
    registry.RegisterLibrary(0x2000, "a library");
    EXPECT_EQ(Dump(registry), head + "Library type 0x00002000 - a library\nOUT -    No objects in registry...\n");
    registry.UnregisterLibrary(0x2000);
    registry.RegisterObject(0x1001, "one");
    EXPECT_EQ(Dump(registry),
        head + "No libraries in registry...\n"
            + "OUT -    Object type 0x00001001 - one, Short 0x1001, Library 0x00001000\n");
}

TEST_F(ObjectRegistry, DumpsInTheOrderOfTheCodes)
{
    std::minstd_rand random(3);
    for (int round = 0; round < 3000; ++round) {
        const auto number = static_cast<unsigned int>(random()); // with gaps of any size between
        const int code = Code((number % 2 == 0 ? 0xA04F1000 : 0xA04FF000) + number / 2 % 0x1000);
        if (m_registry.RegisterObject(code, "n") == 0) {
            m_registry.UnregisterObject(code);
        }
    }
    const std::vector<std::string> lines = test::Lines(Dump(m_registry));
    const auto objects =
        std::ranges::find_if(lines, [](const std::string& line) { return line.starts_with("OUT -    Object"); });
    EXPECT_GT(lines.end() - objects, 1000);
    EXPECT_TRUE(std::is_sorted(objects, lines.end() - 1)) << "the last is the code of 32 bits that fits all";
}

TEST_F(ObjectRegistry, CopiesOwnTheirEntries)
{
    m_registry.SetObjectMirror(Code(0xA04F1001), 42);
    const std::string before = Dump(m_registry);
    {
        const ZRObjectRegistry original(m_registry);
        m_registry.Release();
        m_registry.RegisterObject(7, "lost by the assignment");
        m_registry = original;
    }
    EXPECT_EQ(Dump(m_registry), before);
    EXPECT_EQ(m_registry.GetObjectMirror(Code(0xA04F1001)), 42);
    const auto addWithSameID = [&] { return m_registry.RegisterObject(Code(0xA04F1003), "three", kIDOneOtherCase); };
    EXPECT_EQ(addWithSameID(), 0) << "class IDs are known too";
    EXPECT_EQ(m_registry.UnregisterObject(Code(0xA04FF002)), 1);
    EXPECT_EQ(addWithSameID(), 1);
}

#if !defined(_WIN32)
TEST_F(ObjectRegistry, AddsNothingWithoutMemory)
{
    const HCString longName(std::string(100, 'n').c_str());
    for (int number = 0; number < 40; ++number) { // each of its tables grows in the course of it
        const int code = Code(0xA04F1002) + number * 31;
        const HCString classID = ZRClassID::MakeExternalID(code);
        char isAdded = 0;
        for (long allocations = 0; isAdded == 0; ++allocations) {
            const std::string before = Dump(m_registry);
            {
                const test::FailingHeap heap(allocations);
                isAdded = m_registry.RegisterObject(code, longName, classID);
            }
            EXPECT_EQ(Dump(m_registry) == before, isAdded == 0);
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
    ZRRegistration library(0x3000, "a library");
    EXPECT_TRUE(library.Add(static_cast<int>(0xA04F3006), "six"));
    EXPECT_TRUE(library.Add(kTwo, "two", kIDOne));
    EXPECT_EQ(ZRSetObjectMirror(kTwo, 5), 1);
    EXPECT_EQ(ZRGetObjectMirror(kTwo), 5);
    EXPECT_EQ(ZRGetRegisteredObjectCount(), 2);
    EXPECT_EQ(ZRGetRegisteredObjectID(0), kTwo);
    EXPECT_STREQ(ZRGetRegisteredObjectName(1), "six");
    EXPECT_STREQ(ZRGetRegisteredObjectClassID(0), kIDOne);
    const char* const text = ZRGetObjectName(1, nullptr);
    EXPECT_STREQ(ZRGetObjectNameEx(kTwo, nullptr), "two");
    EXPECT_STREQ(text, "object with ID 0x00000001") << "each function has a buffer of its own";
}

} // namespace
