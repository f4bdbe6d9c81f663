#include "files/UnitAdvice.h"

#include "platform/layout/PointCloud.h"
#include "scene/ShownCorners.h"

#include <fmt/format.h>

#include <algorithm>

namespace vrkview {
namespace {

constexpr float tiny = 100;   // model units
constexpr float large = 1000; // likewise

float greatestExtent(const vrk::visual::Box& box)
{
    const auto size = box.max - box.min;
    return box.isValid() ? std::max({size.x, size.y, size.z}) : 0;
}

vrk::visual::Box boxOf(const vrk::layout::PointCloud& cloud)
{
    vrk::visual::Box box;
    for (const vrk::rob::Posf& point : cloud.getPoints())
        box.addPoint(point);
    return box;
}

} // namespace

std::vector<std::string> unitAdvice(const Station& station, const std::string& advice)
{
    std::vector<std::string> lines;
    for (const auto& cloud : station.clouds) { // those of a station file were given their unit once

        if (cloud->getPoints().empty() || cloud->getFileUnit() != vrk::LengthUnit::Millimetre ||
            greatestExtent(boxOf(*cloud)) >= tiny)
            continue;
        if (greatestExtent(vrk::visual::BoxOfShownBodies()) <= large)
            break;
        lines.push_back(fmt::format("{}: this scan seems to be in metres: {}", cloud->getName(), advice));
    }
    return lines;
}

} // namespace vrkview
