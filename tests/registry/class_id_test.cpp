#include "zrlib/zrlib.h"

#include <gtest/gtest.h>
#include <string>

namespace {

constexpr unsigned int kCode = 0xA04F3006;

int Code(unsigned int code) { return static_cast<int>(code); }

TEST(ClassID, TellsWhatATextIs)
{
    const struct {
        const char* id;
        int isNull;
        int isFormat;
        int isInternal;
        int isExternal;
    } rows[] = {
        {nullptr, 0, 0, 0, 0},
        {"", 0, 0, 0, 0},
        {"00000000-0000-0000-0000-000000000000", 1, 1, 0, 0},
        {"00000000-0000-0000-0000-000000000000 and more", 1, 1, 0, 0},
        {"00000000-0000-0000-0000-00000000000", 0, 0, 0, 0},
        {"E30077A1-1C01-4472-9D8E-7EFFA04F3006", 0, 1, 1, 0},
        {"E3015212-3C02-4498-9D8E-7EFFA04F3006", 0, 1, 0, 1},
        {"e30077a1-1c01-4472-9d8e-7effa04f3006", 0, 1, 0, 0},
        {"E30077A1-1C01-4472-9D8E-7EFFa04f3006", 0, 1, 1, 0},
        {"E30077A1-1C01-4472-9D8E-7EFF", 0, 0, 1, 0},
        {"E30077A1-1C01-4472-9D8E-7EFFA04F300G", 0, 0, 1, 0},
        {"E30077A1-1C01-4472-9D8E_7EFFA04F3006", 0, 0, 0, 0},
        {"E30077A11C01-4472-9D8E-7EFFA04F30060", 0, 0, 0, 0},
        {"E30077A1-1C01-4472-9D8E-7EF\xC3\xA9"
         "04F3006",
            0, 0, 0, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.id != nullptr ? row.id : "null");
        EXPECT_EQ(ZRClassID::IsNull(row.id), row.isNull);
        EXPECT_EQ(ZRClassID::IsFormat(row.id), row.isFormat);
        EXPECT_EQ(ZRClassID::IsInternal(row.id), row.isInternal);
        EXPECT_EQ(ZRClassID::IsExternal(row.id), row.isExternal);
    }
    for (const char wrong : {'/', ':', '@', 'G', '`', 'g', ' ', '\x7F'}) { // next to the digits and letters
        for (int place = 0; place < ZRClassID::Size; ++place) {
            std::string id = ZRClassID::Null;
            id[static_cast<std::size_t>(place)] = wrong;
            EXPECT_EQ(ZRClassID::IsFormat(id.c_str()), 0) << id;
        }
    }
}

TEST(ClassID, CarriesACode)
{
    const struct {
        unsigned int code;
        const char* digits;
        unsigned int codeRead;
    } rows[] = {
        {kCode, "A04F3006", kCode},
        {0x1234, "00001234", 0xA04F1234}, // a short code comes back as a full one
        {0, "00000000", 0xA04F0000},
        {0x33330009, "33330009", 0xA04F0009},
        {0xFFFFFFFF, "FFFFFFFF", 0xA04FFFFF},
    };
    for (const auto& row : rows) {
        const HCString internal = ZRClassID::MakeInternalID(Code(row.code));
        const HCString external = ZRClassID::MakeExternalID(Code(row.code));
        EXPECT_EQ(internal, (std::string("E30077A1-1C01-4472-9D8E-7EFF") + row.digits).c_str());
        EXPECT_EQ(external, (std::string("E3015212-3C02-4498-9D8E-7EFF") + row.digits).c_str());
        EXPECT_EQ(ZRClassID::GetInternalID(internal, 1), Code(row.codeRead));
        EXPECT_EQ(ZRClassID::GetExternalID(external, 1), Code(row.codeRead));
        EXPECT_EQ(ZRClassID::GetInternalID(external, 1), 0) << "the other prefix";
        EXPECT_EQ(ZRClassID::GetExternalID(internal, 1), 0);
        EXPECT_EQ(ZRClassID::GetInternalID(external, 0), Code(row.codeRead));
        EXPECT_EQ(ZRClassID::GetExternalID(internal, 0), Code(row.codeRead));
    }
}

TEST(ClassID, ReadsACodeFromAnyText)
{
    const struct {
        const char* id;
        int check;
        unsigned int code;
    } rows[] = {
        {nullptr, 1, 0},
        {nullptr, 0, 0},
        {"", 0, 0},
        {"too short for a number", 0, 0},
        {"00000000-0000-0000-0000-0000A04F3006", 1, 0}, // neither prefix
        {"00000000-0000-0000-0000-0000A04F3006", 0, kCode},
        {"E30077A1-1C01-4472-9D8E-7EFFA04F3006FF", 1, 0xA04F0000 | 0x3006FF}, // digits behind belong to it
        {"E30077A1-1C01-4472-9D8E-7EFFA04F3006-FF", 1, kCode},
        {"E30077A1-1C01-4472-9D8E-7EFFA04F3006123456789ABC", 1, 0xFFFFFFFF}, // as far as 32 bits go
        {"E30077A1-1C01-4472-9D8E-7EFFA04F-001", 1, 0},
        {"E30077A1-1C01-4472-9D8E-7EFFA04F-001", 0, 0xFFFFFFFF},
    };
    for (const auto& row : rows) {
        EXPECT_EQ(ZRClassID::GetInternalID(row.id, static_cast<char>(row.check)), Code(row.code))
            << (row.id != nullptr ? row.id : "null");
    }
}

TEST(ObjectEntry, TakesACodeApart)
{
    const struct {
        unsigned int code;
        int shortID;
        int library;
    } rows[] = {
        {kCode, 0x3006, 0x3000},
        {0x1001, 0x1001, 0x1000},
        {0, 0, 0},
        {0xFFFFFFFF, 0xFFFF, 0xF000},
    };
    for (const auto& row : rows) {
        const ZRObjectEntry entry(Code(row.code), "name", 77);
        EXPECT_EQ(entry.GetID(), Code(row.code));
        EXPECT_EQ(entry.GetShortID(), row.shortID);
        EXPECT_EQ(entry.GetLibrary(), row.library);
        EXPECT_EQ(entry.GetMirrorID(), Code(row.code));
        EXPECT_EQ(entry.HasClassID(), 0);
        EXPECT_EQ(entry.GetClassID(), ZRClassID::Null);
    }
    EXPECT_EQ(ZRObjectEntry::OBJECTBASE, Code(0xA04F0000));
    EXPECT_EQ(ZRObjectEntry::BASEMASK, Code(0xFFFF0000));
}

TEST(ObjectEntry, IsEqualWhenAllItsMembersAre)
{
    const ZRObjectEntry entry(1, "name", "class", 0);
    EXPECT_EQ(entry.HasClassID(), 1);
    EXPECT_EQ(entry.GetClassID(), "class") << "kept unchanged";
    ZRObjectEntry mirrored(entry);
    EXPECT_TRUE(mirrored == entry);
    mirrored.SetMirrorID(2);
    const ZRObjectEntry others[] = {
        {2, "name", "class", 0},
        {1, "Name", "class", 0},
        {1, "name", "Class", 0},
        {1, "name", "", 0},
        {1, "name", 0},
        ZRObjectEntry(),
        mirrored,
    };
    for (const ZRObjectEntry& other : others) {
        EXPECT_FALSE(other == entry);
        ZRObjectEntry assigned(other);
        assigned = entry;
        assigned = static_cast<const ZRObjectEntry&>(assigned);
        EXPECT_TRUE(assigned == entry);
    }
    EXPECT_FALSE(ZRObjectEntry(1, "name", "", 0) == ZRObjectEntry(1, "name", 0)) << "an empty class ID is one";
}

} // namespace
