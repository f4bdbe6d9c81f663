#pragma once

#include "platform/common/Export.h"
#include "scene/math/Pose.h"
#include "selection/region/RegionQuery.h"
#include "selection/region/ScreenRegion.h"

#include <span>

namespace vrk::selection {

/// A number that goes evenly with the place: a x + b y + c z + d.
struct Evenly {
    double a = 0, b = 0, c = 0, d = 0;

    double at(const rob::PosTemplate<double>& p) const { return a * p.x + b * p.y + c * p.z + d; }
    Evenly operator+(const Evenly& o) const { return {a + o.a, b + o.b, c + o.c, d + o.d}; }
    Evenly operator-(const Evenly& o) const { return {a - o.a, b - o.b, c - o.c, d - o.d}; }
    Evenly operator*(double s) const { return {a * s, b * s, c * s, d * s}; }
    bool operator==(const Evenly&) const = default;
};

/// How a view shows the coordinates of one object, in double precision.
///
/// Thread: any, as a value.
struct VRK_EXPORT ObjectInView {
    /// @param pose   of the object in the world. @param scale  of its coordinates, before the pose.
    ObjectInView(const RegionView& view, const rob::PoseTemplate<double>& pose, const rob::Vec3Template<double>& scale);
    /// Of a part whose coordinates `pose` maps to those of the object.
    ObjectInView ofPart(const rob::PoseTemplate<double>& pose) const;

    Evenly x, y, w;   ///< pixels are x / w and y / w, where w is above 0
    Evenly depth;     ///< along the direction in which the eye looks
    Evenly nearPlane; ///< how far behind the plane where drawing begins, in no unit; below 0 nothing is drawn
};

/// What a region and its window of depth hold of one object.
///
/// Thread: any. The region must outlive it.
class VRK_EXPORT RegionTest {
public:
    using Coverage = ScreenRegion::Coverage;

    RegionTest(const RegionQuery& query, const ScreenRegion& region, const ObjectInView& object);
    /// The same for a part.
    RegionTest ofPart(const rob::PoseTemplate<double>& pose) const;

    const ObjectInView& getView() const { return view; }

    /// Of a box. Partial where it is not sure.
    Coverage classify(const rob::Posd& min, const rob::Posd& max) const;
    Coverage classify(const rob::PosTemplate<float>& min, const rob::PosTemplate<float>& max) const
    {
        return classify(rob::Posd(min), rob::Posd(max));
    }
    bool holds(const rob::Posd& place) const;
    /// Writes the numbers of those places that are inside, for up to as many as there are places. Returns how many.
    std::size_t select(std::span<const rob::PosTemplate<float>> places, std::span<const unsigned> numbers,
                       unsigned* out) const;
    /// Of a triangle, a segment or a place.
    bool touches(std::span<const rob::Posd> corners) const;
    bool holdsAll(std::span<const rob::Posd> corners) const;

private:
    using Four = double __attribute__((vector_size(32)));

    bool holdsInRectangle(const rob::Posd& place) const;
    bool isInWindow(double w, double depth) const
    {
        return w > 0 && depth > 0 && depth >= nearest && depth <= farthest;
    }

    const ScreenRegion* region;
    ObjectInView view;
    double nearest, farthest;
    // Each is at least 0 within: left, right, top and bottom, then before the eye twice, and the two ends of the window.
    // Side by side, so that a place is held against four of them at once.
    Evenly planes[8];
    Four sides[4], ends[4];
};

} // namespace vrk::selection
