// Operations on a string beside those on std::string.

#include "tests/fuzz/fuzz.h"
#include "zrlib/zrlib.h"

#include <algorithm>
#include <cstring>
#include <utility>

namespace {

using test::Require;

void ChangeString(FuzzedDataProvider& data)
{
    HCString string;
    std::string model;
    while (data.remaining_bytes() > 0) {
        const std::string text = test::TextFrom(data, 120);
        const int count = data.ConsumeIntegralInRange(-5, 200);
        const std::size_t place = std::min(model.size(), static_cast<std::size_t>(std::max(count, 0)));
        switch (data.ConsumeIntegralInRange(0, 5)) {
        case 0:
            string = text.c_str();
            model = text;
            break;
        case 1:
            string.Format("%s|%s|%d", static_cast<const char*>(string), text.c_str(), count);
            model += "|" + text + "|" + std::to_string(count);
            break;
        case 2:
            Require(string.Left(count) == model.substr(0, place).c_str(), "Left");
            model.resize(place);
            break;
        case 3:
            std::memcpy(string.GetBuffer(static_cast<int>(text.size())), text.c_str(), text.size() + 1);
            string.ReleaseBuffer();
            model = text;
            break;
        case 4:
            string = static_cast<const char*>(string) + place; // a piece of its own text
            model.erase(0, place);
            break;
        default:
            HCString moved(std::move(string));
            string = moved;
        }
        Require(string == model.c_str() && string.GetLength() == static_cast<int>(model.size()), "the text");
        Require((string.Compare(text.c_str()) < 0) == (model < text), "Compare");
        char buffer[101];
        const int copied = ZRStringToBuffer(buffer, data.ConsumeIntegralInRange(1, 100), string);
        Require(model.starts_with(buffer) && copied == static_cast<int>(std::strlen(buffer)), "ZRStringToBuffer");
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    FuzzedDataProvider data(bytes, size);
    ChangeString(data);
    return 0;
}
