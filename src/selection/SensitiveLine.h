#pragma once

#include "selection/geometry/BVHPrimitive.h"

namespace vrk::selection {

/// How near a ray must pass to a line.
constexpr float linePixels = 5.0f;      ///< from the camera's view
constexpr float lineWithoutView = 5.0f; ///< units

/// A line section, hit by a ray that passes within five pixels of it.
///
/// Its box has room for five pixels at 10000 units from the camera, as the view was when it was made: a ray farther away
/// does not reach it, however large five pixels are there.
///
/// Thread: the query reads the camera; render thread, or while it is idle.
class VRK_EXPORT SensitiveLine : public BVHPrimitive {
public:
    SensitiveLine(const rob::PosTemplate<float>& start, const rob::PosTemplate<float>& end);

    /// The distance is that of the nearest point less half the tolerance, so that a line that lies on a face, or a little
    /// behind it, is nearer than the face.
    void intersectRay(Result& result, const visual::Ray& ray) const override;

    const rob::PosTemplate<float>& getStart() const { return start; }
    const rob::PosTemplate<float>& getEnd() const { return end; }

private:
    rob::PosTemplate<float> start;
    rob::PosTemplate<float> end;
};

} // namespace vrk::selection
