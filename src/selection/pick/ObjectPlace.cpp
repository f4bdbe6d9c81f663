#include "selection/pick/ObjectPlace.h"

#include <gp_Trsf.hxx>

#include <algorithm>
#include <cmath>

namespace vrk::selection {

ObjectPlace::ObjectPlace(const rob::PoseTemplate<float>& pose, const rob::Vec3Template<float>& scale)
{
    const rob::Rotationd rotation = rob::Rotationd(rob::Orientd(pose.orientation)).normalized();
    const rob::Vec3d axes[3] = {rotation * rob::Vec3d(1, 0, 0), rotation * rob::Vec3d(0, 1, 0),
                                rotation * rob::Vec3d(0, 0, 1)};
    const rob::Posd position(pose.position);
    for (unsigned axis = 0; axis < 3; ++axis) {
        const double factor = scale[axis];
        for (unsigned row = 0; row < 3; ++row) {
            out[4 * row + axis] = axes[axis][row] * factor;
            in[4 * axis + row] = axes[axis][row] / factor;
        }
        in[4 * axis + 3] = -axes[axis].dot(position) / factor;
        out[4 * axis + 3] = position[axis];
        localUnits = axis == 0 ? 1 / std::abs(factor) : std::max(localUnits, 1 / std::abs(factor));
    }
    out[15] = in[15] = 1;
}

ObjectPlace ObjectPlace::operator*(const ObjectPlace& inner) const
{
    ObjectPlace both;
    both.out = product(out, inner.out);
    both.in = product(inner.in, in);
    both.localUnits = localUnits * inner.localUnits;
    return both;
}

ObjectPlace ObjectPlace::Of(const gp_Trsf& location)
{
    ObjectPlace place;
    const gp_Trsf back = location.Inverted();
    for (int row = 0; row < 3; ++row)
        for (int column = 0; column < 4; ++column) {
            const auto at = static_cast<std::size_t>(4 * row + column);
            place.out[at] = location.Value(row + 1, column + 1);
            place.in[at] = back.Value(row + 1, column + 1);
        }
    place.out[15] = place.in[15] = 1;
    place.localUnits = 1 / std::abs(location.ScaleFactor());
    return place;
}

PickRay ObjectPlace::toLocal(const PickRay& ray) const
{
    const ClipPoint origin = applied(in, ray.origin);
    const rob::Vec3d& d = ray.direction;
    return {{origin.x, origin.y, origin.z},
            {in[0] * d.x + in[1] * d.y + in[2] * d.z, in[4] * d.x + in[5] * d.y + in[6] * d.z,
             in[8] * d.x + in[9] * d.y + in[10] * d.z}};
}

} // namespace vrk::selection
