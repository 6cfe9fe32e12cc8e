// Numbers of bytes as text beside the C library's own formatting, and operations on a string beside those on
// std::string.

#include "tests/fuzz/fuzz.h"
#include "zrlib/zrlib.h"

#include <climits>
#include <cstring>
#include <vector>

namespace {

using test::Require;
using test::TextFrom;

void ShortenBytes(FuzzedDataProvider& data)
{
    const auto value = data.ConsumeIntegral<std::int64_t>();
    const int precision = data.ConsumeIntegralInRange(-5, 400);
    const std::string unit = TextFrom(data, 60);
    const std::string scaled = TextFrom(data, 60);
    const HCString text = ZRFormat::KMGT(value, unit.c_str(), scaled.c_str(), precision);
    std::string expected;
    if (value < 1000) {
        expected = std::to_string(value) + " " + unit;
    } else {
        constexpr struct {
            std::int64_t limit;
            double divisor;
            char letter;
        } kScales[] = {{std::int64_t{1} << 20, 1024.0, 'K'}, {std::int64_t{1} << 30, 1048576.0, 'M'},
            {std::int64_t{1} << 40, 1073741824.0, 'G'}, {std::int64_t{1} << 50, 1099511627776.0, 'T'},
            {INT64_MAX, 1e15, '?'}};
        const auto* scale = kScales;
        while (value >= scale->limit && scale->letter != '?') {
            ++scale;
        }
        std::vector<char> buffer(1000);
        const double scaledValue = static_cast<double>(value) / scale->divisor;
        std::snprintf(
            buffer.data(), buffer.size(), "%.*f %c", precision > 0 ? precision : 0, scaledValue, scale->letter);
        expected = buffer.data() + scaled;
    }
    Require(text == expected.c_str(), "KMGT");
}

void ChangeString(FuzzedDataProvider& data)
{
    HCString string;
    std::string model;
    for (int steps = 0; steps < 20 && data.remaining_bytes() > 0; ++steps) {
        const std::string text = TextFrom(data, 120);
        switch (data.ConsumeIntegralInRange(0, 8)) {
        case 0:
            string = text.c_str();
            model = text;
            break;
        case 1:
            string.Format("%s|%s|%d", static_cast<const char*>(string), text.c_str(), steps);
            model += "|" + text + "|" + std::to_string(steps);
            break;
        case 2: {
            const int count = data.ConsumeIntegralInRange(-5, 200);
            const HCString left = string.Left(count);
            model = model.substr(0, static_cast<std::size_t>(count > 0 ? count : 0));
            Require(left == model.c_str(), "Left");
            break;
        }
        case 3: {
            char* const buffer = string.GetBuffer(static_cast<int>(text.size()));
            std::memcpy(buffer, text.c_str(), text.size() + 1);
            string.ReleaseBuffer(-1);
            model = text;
            break;
        }
        case 4: { // a piece of its own text
            const std::size_t from = data.ConsumeIntegralInRange<std::size_t>(0, model.size());
            string = static_cast<const char*>(string) + from;
            model.erase(0, from);
            break;
        }
        case 5: {
            HCString moved(static_cast<HCString&&>(string));
            Require(string.GetLength() == 0, "moved from");
            string = moved;
            break;
        }
        case 6:
            string = HCString(text.c_str());
            model = text;
            break;
        case 7:
            Require((string.Compare(text.c_str()) < 0) == (std::strcmp(model.c_str(), text.c_str()) < 0), "Compare");
            break;
        default:
            string.Empty();
            model.clear();
        }
        Require(string == model.c_str() && string.GetLength() == static_cast<int>(model.size()), "the text");
        std::vector<char> buffer(static_cast<std::size_t>(data.ConsumeIntegralInRange(1, 100)), 'x');
        const int copied = ZRStringToBuffer(buffer.data(), static_cast<int>(buffer.size()), string);
        Require(model.compare(0, buffer.size() - 1, buffer.data()) == 0
                && copied == static_cast<int>(std::strlen(buffer.data())),
            "ZRStringToBuffer");
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size)
{
    FuzzedDataProvider data(bytes, size);
    ShortenBytes(data);
    ChangeString(data);
    return 0;
}
