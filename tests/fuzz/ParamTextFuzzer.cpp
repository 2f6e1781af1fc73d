// Texts as parameters, through every conversion.

#include <cmath>
#include <cstdlib>

#include "framework/Param.h"
#include "tests/fuzz/FuzzInput.h"

namespace Quorvane::Fuzz {
namespace {

void ConvertAll(const Param& param) {
    Try([&] { param.ToInt(); });
    Try([&] { param.ToFloat(); });
    Try([&] { param.ToDouble(); });
    Try([&] { param.ToString(); });
    Try([&] { param.ToIntVec(); });
    Try([&] { param.ToFloatVec(); });
    Try([&] { param.ToDoubleVec(); });
    Try([&] { param.ToStringVec(); });
    param.ArraySize();
}

/// The text of a number is a number again, nearly the same.
void CheckRoundTrip(double value) {
    if (!std::isfinite(value)) return;
    const double again = Param(Param(value).ToString()).ToDouble();
    if (std::abs(again - value) > 1e-6 + 1e-12 * std::abs(value)) std::abort();
}

}  // namespace
}  // namespace Quorvane::Fuzz

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace Quorvane;
    using namespace Quorvane::Fuzz;
    FuzzInput input(data, size);
    Param param;
    for (int changes = 1 + input.Byte() % 3; changes > 0; --changes) {
        switch (input.Byte() % 8) {
            case 0: param.Set(input.Bits<int>()); break;
            case 1: param.Set(input.Bits<float>()); break;
            case 2: {
                const auto value = input.Bits<double>();
                CheckRoundTrip(value);
                param.Set(value);
                break;
            }
            case 3: param.Set(std::vector<int>{input.Bits<int>(), input.Bits<int>()}); break;
            case 4: param.Set(std::vector<float>{input.Coordinate()}); break;
            case 5: param.Set(input.Numbers(4)); break;
            case 6: {
                std::vector<std::string> texts(input.Byte() % 4);
                for (std::string& text : texts) text = input.Text(12);
                param.Set(texts);
                break;
            }
            default: param.Set(input.Rest());
        }
        const Param copy(param);
        ConvertAll(copy);
    }
    return 0;
}
