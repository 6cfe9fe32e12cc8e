// Any text taken for a class ID, and any code made into one.

#include "tests/fuzz/fuzz.h"
#include "zrlib/zrlib.h"

#include <cctype>
#include <cstring>

namespace {

using test::Require;

bool HasForm(const std::string& text)
{
    bool has = text.size() >= 36;
    for (std::size_t place = 0; has && place < 36; ++place) {
        const bool isDash = place == 8 || place == 13 || place == 18 || place == 23;
        has = isDash ? text[place] == '-' : std::isxdigit(static_cast<unsigned char>(text[place])) != 0;
    }
    return has;
}

void TakeApart(const std::string& text)
{
    const char* const id = text.c_str();
    const bool isInternal = text.compare(0, 28, ZRClassID::Internal) == 0;
    const bool isExternal = text.compare(0, 28, ZRClassID::External) == 0;
    Require((ZRClassID::IsFormat(id) != 0) == HasForm(text), "IsFormat");
    Require((ZRClassID::IsNull(id) != 0) == (text.compare(0, 36, ZRClassID::Null) == 0), "IsNull");
    Require((ZRClassID::IsInternal(id) != 0) == isInternal, "IsInternal");
    Require((ZRClassID::IsExternal(id) != 0) == isExternal, "IsExternal");
    Require(ZRClassID::GetInternalID(id, 1) == 0 || (isInternal && HasForm(text)), "GetInternalID, checked");
    Require(ZRClassID::GetExternalID(id, 1) == 0 || (isExternal && HasForm(text)), "GetExternalID, checked");
    const auto unchecked = static_cast<std::uint32_t>(ZRClassID::GetInternalID(id, 0));
    Require(unchecked == 0 || (text.size() >= 32 && (unchecked & 0xA04F0000U) == 0xA04F0000U), "GetInternalID");
    ZRObjectRegistry registry;
    registry.RegisterLibrary(0x1000, "a library");
    const char isAdded = registry.RegisterObject(static_cast<int>(0xA04F1001), "an object", id);
    Require((isAdded != 0) == HasForm(text), "RegisterObject");
}

void GoThereAndBack(std::uint32_t code)
{
    const int expected = static_cast<int>(0xA04F0000U | (code & 0xFFFFU));
    const HCString internal = ZRClassID::MakeInternalID(static_cast<int>(code));
    const HCString external = ZRClassID::MakeExternalID(static_cast<int>(code));
    Require(HasForm(static_cast<const char*>(internal)), "form of an internal ID");
    Require(ZRClassID::GetInternalID(internal, 1) == expected, "code of an internal ID");
    Require(ZRClassID::GetExternalID(external, 1) == expected, "code of an external ID");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    FuzzedDataProvider data(bytes, size);
    GoThereAndBack(data.ConsumeIntegral<std::uint32_t>());
    std::string id = "E30077A1-1C01-4472-9D8E-7EFFA04F3006";
    for (int changes = data.ConsumeIntegralInRange(0, 3); changes > 0; --changes) {
        id[data.ConsumeIntegralInRange<std::size_t>(0, 35)] = data.ConsumeIntegralInRange<char>(1, 127);
    }
    TakeApart(id + test::TextFrom(data, 20));
    TakeApart(test::TextFrom(data, 100));
    return 0;
}
