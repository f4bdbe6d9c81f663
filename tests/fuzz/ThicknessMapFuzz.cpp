#include "platform/process/ThicknessMap.h"

#include "support/TempFolder.h"

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace {

using namespace vrk;

void require(bool condition)
{
    if (!condition)
        std::abort(); // what a fuzzer takes for a finding
}

} // namespace

/// Any file gives a thickness for each vertex of a skin, or a refusal of one line that names it.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const test::TempFolder folder;
    const std::string file = folder.write("map.ply", std::string(reinterpret_cast<const char*>(data), size)).string();
    for (std::size_t count = 0; count < 4; ++count)
        try {
            const std::vector<float> thickness = process::loadThicknessMap(file, std::vector<rob::Posf>(count), 1000);
            require(thickness.size() == count);
            for (const float value : thickness)
                require(std::isfinite(value) && value >= 0);
        } catch (const process::ThicknessMapError& error) {
            const std::string_view text = error.what();
            require(text.starts_with(file + ": ") && text.find('\n') == std::string_view::npos);
        }
    return 0;
}
