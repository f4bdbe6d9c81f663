#include "platform/geometry/ColorText.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <stdexcept>
#include <string_view>

namespace {

void require(bool condition)
{
    if (!condition)
        std::abort(); // what a fuzzer takes for a finding
}

bool isChannel(float value)
{
    return value >= -15.0f / 255 && value <= 1; // a sign leaves one digit
}

} // namespace

/// Any bytes give a colour or one of the parser's own failures.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    try {
        const vrk::rob::Colorf color = vrk::geometry::ParseColorText(text);
        require(size >= 6);
        require(isChannel(color.r) && isChannel(color.g) && isChannel(color.b));
    } catch (const std::invalid_argument& error) {
        require(error.what() == std::string_view("invalid stoi argument"));
    } catch (const std::out_of_range&) {
        require(size < 5);
    }
    return 0;
}
