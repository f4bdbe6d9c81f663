#include "selection/geometry/Result.h"

#include <utility>

namespace vrk::selection {

Result::Result(Result&& o) noexcept
{
    *this = std::move(o);
}

Result& Result::operator=(Result&& o) noexcept
{
    valid = o.valid;
    hit = o.hit;
    distance = o.distance;
    std::swap(edge, o.edge);
    std::swap(face, o.face);
    std::swap(shape, o.shape);
    visual = o.visual;
    position = o.position;
    localPosition = o.localPosition;
    pose = o.pose;
    pointIndex = o.pointIndex;
    return *this;
}

} // namespace vrk::selection
