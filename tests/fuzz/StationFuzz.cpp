#include "platform/layout/Part.h"
#include "platform/station/StationFile.h"
#include "platform/station/file/StationText.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

namespace {

void require(bool condition)
{
    if (!condition)
        std::abort(); // what a fuzzer takes for a finding
}

} // namespace

/// Any bytes give a station or a failure of one line that names the file.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace vrk::station;
    const std::filesystem::path file = "/fuzz/cell.station.json";
    const std::string text(reinterpret_cast<const char*>(data), size);
    try {
        const vrk::layout::StationContent content = parseStation(text, file, GeometryUse::Skip);
        for (const auto& part : content.parts)
            require(part->getId() != 0);
        const auto objects = content.objects();
        require(objects.size() <= size);
    } catch (const StationFileError& error) {
        const std::string what = error.what();
        require(what.starts_with("/fuzz/cell.station.json: /") && what.find('\n') == std::string::npos);
    }
    return 0;
}
