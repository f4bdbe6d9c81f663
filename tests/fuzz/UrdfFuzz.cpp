#include "platform/layout/Mechanism.h"
#include "platform/station/ImportUrdf.h"
#include "support/TempFolder.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

namespace {

void require(bool condition)
{
    if (!condition)
        std::abort(); // what a fuzzer takes for a finding
}

} // namespace

/// Any bytes give a mechanism of finite poses or a failure of one line that names a file.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    static const vrk::test::TempFolder folder;
    static const bool isCacheSet = setenv("XDG_CACHE_HOME", folder.path().c_str(), 1) == 0;
    require(isCacheSet);
    const std::filesystem::path file = folder.write("robot.urdf", {reinterpret_cast<const char*>(data), size});
    try {
        const auto robot = vrk::station::ImportUrdf(file);
        require(!robot->getLinks().empty());
        for (const auto& link : robot->getLinks())
            require(link->getPose().position.isFinite());
    } catch (const vrk::station::ImportError& error) {
        const std::string_view what = error.what();
        require(what.starts_with(folder.path().string()) && what.find('\n') == std::string_view::npos);
    }
    return 0;
}
