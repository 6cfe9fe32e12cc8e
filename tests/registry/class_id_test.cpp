#include "zrlib/zrlib.h"

#include <cerrno>
#include <gtest/gtest.h>
#include <string>
#include <utility>

namespace {

// Which characters a class ID may have is tried by the model of the registry (registry_model.h).

TEST(ClassID, CarriesACode)
{
    EXPECT_EQ(ZRClassID::MakeInternalID(0x1234), "E30077A1-1C01-4472-9D8E-7EFF00001234");
    EXPECT_EQ(ZRClassID::MakeExternalID(static_cast<int>(0xA04F3006)), "E3015212-3C02-4498-9D8E-7EFFA04F3006");
    const std::pair<char, char (*)(const char*)> letters[] = {{'F', ZRClassID::IsFormat}, {'N', ZRClassID::IsNull},
        {'I', ZRClassID::IsInternal}, {'E', ZRClassID::IsExternal}};
    const struct {
        const char* id;
        const char* kinds; // F for the form of a class ID, N for null, I for internal, E for external
        unsigned int code;
    } rows[] = {
        {nullptr, "", 0},
        {"00000000-0000-0000-0000-000000000000 and more", "FN", 0xA04F0000},
        {"00000000-0000-0000-0000-000000000001", "F", 0xA04F0001},
        {"E30077A1-1C01-4472-9D8E-7EFF00001234", "FI", 0xA04F1234}, // a short code comes back as a full one
        {"E30077A1-1C01-4472-9D8E-7EFE33330009", "F", 0xA04F0009},
        {"E3015212-3C02-4498-9D8E-7EFFA04F3006", "FE", 0xA04F3006},
        {"E3015212-3C02-4498-9D8E-7EFEA04F3006", "F", 0xA04F3006},
        {"00000000-0000-0000-0000-0000A04", "", 0}, // ends where the number begins
        {"any thirty-two characters, and f", "", 0xA04F0000},
        {"E30077A1-1C01-4472-9D8E-7EFFA04F3006FF", "FI", 0xA04F0000 | 0x3006FF}, // digits behind belong to it
        {"E30077A1-1C01-4472-9D8E-7EFFA04F3006-FF", "FI", 0xA04F3006},
        {"E3015212-3C02-4498-9D8E-7EFFA04F3006123456789ABC", "FE", 0xFFFFFFFF}, // as far as 32 bits go
        {"E30077A1-1C01-4472-9D8E-7EFFA04F-001", "I", 0xFFFFFFFF},
        {"E3015212-3C02-4498-9D8E-7EFFA04F-FFFFFFFFFFFFFFFFF", "E", 0xA04F0000},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.id != nullptr ? row.id : "null");
        std::string kinds;
        for (const auto& [letter, isOfKind] : letters) {
            kinds.append(isOfKind(row.id) == 1 ? 1 : 0, letter);
        }
        errno = EINTR;
        EXPECT_EQ(kinds, row.kinds);
        const int code = static_cast<int>(row.code);
        EXPECT_EQ(ZRClassID::GetInternalID(row.id, 0), code);
        EXPECT_EQ(ZRClassID::GetExternalID(row.id, 0), code);
        EXPECT_EQ(ZRClassID::GetInternalID(row.id, 1), kinds == "FI" ? code : 0);
        EXPECT_EQ(ZRClassID::GetExternalID(row.id, 1), kinds == "FE" ? code : 0);
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
    const ZRObjectEntry entry(-1, "name", 77);
    EXPECT_EQ(entry.GetShortID(), 0xFFFF);
    EXPECT_EQ(entry.GetLibrary(), 0xF000);
    EXPECT_EQ(entry.GetMirrorID(), -1);
}

} // namespace
