#pragma once

#include "scene/math/Pose.h"
#include "selection/pick/PickCamera.h"
#include "selection/pick/PickMatrix.h"

class gp_Trsf;

namespace vrk::selection {

/// Where an object's own coordinates lie in the world, in double precision. The quaternion of a pose is brought to unit
/// length first: in single precision it is that only nearly, and lengths would be off by as much.
class ObjectPlace {
public:
    explicit ObjectPlace(const rob::PoseTemplate<float>& pose,
                         const rob::Vec3Template<float>& scale = rob::Vec3Template<float>(1, 1, 1));
    /// This place's parent coordinates of what `inner` places in it.
    ObjectPlace operator*(const ObjectPlace& inner) const;
    /// Of a shape's location: a turn and a move.
    static ObjectPlace Of(const gp_Trsf& location);

    rob::Posd toWorld(const rob::Posd& p) const
    {
        const ClipPoint moved = applied(out, p);
        return {moved.x, moved.y, moved.z};
    }
    /// With a direction that is as much shorter or longer as the object is drawn larger or smaller, so that parameters
    /// along the ray stay distances in the world.
    PickRay toLocal(const PickRay& ray) const;
    const PickMatrix& getToWorld() const { return out; }
    const PickMatrix& getToLocal() const { return in; }
    /// The largest number of local units that a unit of the world can be.
    double getLocalUnits() const { return localUnits; }

private:
    ObjectPlace() = default;

    PickMatrix out{};
    PickMatrix in{};
    double localUnits = 1;
};

} // namespace vrk::selection
