#include "zrlib/zrlib.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <iterator>
#include <string>

namespace {

int Code(unsigned int code) { return static_cast<int>(code); }

// What texts are and what they carry is compared with a model too (registry_model.h).

TEST(ClassID, CarriesACode)
{
    EXPECT_EQ(ZRClassID::MakeInternalID(0x1234), "E30077A1-1C01-4472-9D8E-7EFF00001234");
    EXPECT_EQ(ZRClassID::MakeExternalID(Code(0xA04F3006)), "E3015212-3C02-4498-9D8E-7EFFA04F3006");
    EXPECT_EQ(ZRClassID::GetExternalID("E3015212-3C02-4498-9D8E-7EFFA04F3006", 1), Code(0xA04F3006));
    EXPECT_EQ(ZRClassID::IsNull("00000000-0000-0000-0000-000000000000"), 1);
    for (char (*const is)(const char*) :
        {ZRClassID::IsNull, ZRClassID::IsFormat, ZRClassID::IsInternal, ZRClassID::IsExternal}) {
        EXPECT_EQ(is(nullptr), 0);
    }
    const struct {
        const char* id;
        char check;
        unsigned int code;
    } rows[] = {
        {nullptr, 1, 0},
        {nullptr, 0, 0},
        {"E30077A1-1C01-4472-9D8E-7EFF00001234", 1, 0xA04F1234}, // a short code comes back as a full one
        {"E30077A1-1C01-4472-9D8E-7EFF33330009", 1, 0xA04F0009},
        {"00000000-0000-0000-0000-0000A04", 0, 0}, // ends where the number begins
        {"any thirty-two characters, and f", 0, 0xA04F0000},
        {"E30077A1-1C01-4472-9D8E-7EFFA04F3006FF", 1, 0xA04F0000 | 0x3006FF}, // digits behind belong to it
        {"E30077A1-1C01-4472-9D8E-7EFFA04F3006-FF", 1, 0xA04F3006},
        {"E30077A1-1C01-4472-9D8E-7EFFA04F3006123456789ABC", 1, 0xFFFFFFFF}, // as far as 32 bits go
        {"E30077A1-1C01-4472-9D8E-7EFFA04F-001", 0, 0xFFFFFFFF},
        {"E30077A1-1C01-4472-9D8E-7EFFA04F-FFFFFFFFFFFFFFFFF", 0, 0xA04F0000},
    };
    for (const auto& row : rows) {
        errno = EINTR;
        EXPECT_EQ(ZRClassID::GetInternalID(row.id, row.check), Code(row.code)) << (row.id != nullptr ? row.id : "null");
        EXPECT_EQ(errno, EINTR) << "the caller's";
    }
}

TEST(ObjectEntry, IsEqualWhenAllItsMembersAre)
{
    ZRObjectEntry mirrored(1, "name", "class", 0);
    mirrored.SetMirrorID(2);
    const ZRObjectEntry entries[] = {
        {1, "name", "class", 0},
        {2, "name", "class", 0},
        {1, "Name", "class", 0},
        {1, "name", "Class", 0},
        {1, "name", "", 0}, // an empty class ID is one
        {1, "name", 0},
        mirrored,
    };
    for (const ZRObjectEntry& entry : entries) {
        for (const ZRObjectEntry& other : entries) {
            EXPECT_EQ(entry == other, &entry == &other ? 1 : 0) << &entry - entries << " and " << &other - entries;
        }
    }
    const ZRObjectEntry entry(Code(0xFFFFFFFF), "name", 77);
    EXPECT_EQ(entry.GetShortID(), 0xFFFF);
    EXPECT_EQ(entry.GetLibrary(), 0xF000);
    EXPECT_EQ(entry.GetMirrorID(), -1);
}

} // namespace
