#pragma once

#include "selection/geometry/Box.h"
#include "selection/geometry/Float4.h"
#include "selection/pick/PickLens.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <type_traits>

namespace vrk::selection {

/// Whether a beam can have anything in common with a box, for many boxes: the slabs of the three axes side by side (Kay and
/// Kajiya, "Ray Tracing Complex Scenes", 1986), each as much wider as the beam is at the far side of the box.
///
/// It is asked in single precision and lets pass more than the beam meets, never less. A ray that is square to an axis is
/// no case of its own: along that axis it goes so little that it leaves no slab, and enters none that it starts beside.
class BeamBoxTest {
public:
    /// @param ray         in the coordinates of the boxes; its direction may be of any length.
    /// @param localUnits  of these, for one that the beam is told in.
    BeamBoxTest(const PickRay& ray, const PickBeam& beam, double localUnits)
    {
        const rob::Vec3d& d = ray.direction;
        const double largest = std::max({std::abs(d.x), std::abs(d.y), std::abs(d.z)});
        const double farthest = std::max({std::abs(ray.origin.x), std::abs(ray.origin.y), std::abs(ray.origin.z)});
        for (unsigned axis = 0; axis < 3; ++axis) {
            origin[axis] = static_cast<float>(ray.origin[axis]);
            const double least = 1e-12 * largest;
            const double along = std::abs(d[axis]) < least ? std::copysign(least, d[axis]) : d[axis];
            reciprocal[axis] = static_cast<float>(1 / along);
            depthOf[axis] = static_cast<float>(d[axis] / d.squaredLength());
        }
        start = static_cast<float>(beam.start * localUnits + rounding * farthest);
        growth = static_cast<float>(beam.growth * localUnits + rounding * std::sqrt(d.squaredLength()));
        before = -2 * start / static_cast<float>(largest);
    }

    /// The parameter of the ray from which on the box may have something in common with the beam; infinite where it has
    /// nothing.
    float entry(const visual::Box& box) const
    {
        const Float4 low = load(box, 0) - origin, high = load(box, sizeof box.min) - origin;
        const Float4 farDepths = largerOf(low * depthOf, high * depthOf);
        const float depth = farDepths[0] + farDepths[1] + farDepths[2];
        const float radius = start + growth * std::max(depth, 0.0f) +
                             relative * std::max({high[0] - low[0], high[1] - low[1], high[2] - low[2]});
        const Float4 a = (low - radius) * reciprocal, b = (high + radius) * reciprocal;
        const Float4 near = smallerOf(a, b), far = largerOf(a, b);
        const float from = std::max({near[0], near[1], near[2], before});
        const float to = std::min({far[0], far[1], far[2]});
        return from <= to ? from : std::numeric_limits<float>::infinity();
    }
    bool pointsUp(unsigned axis) const { return reciprocal[axis] > 0; }

private:
    /// Of the corners of boxes, and of the ray in single precision.
    static constexpr double rounding = 4e-6;
    static constexpr float relative = 2e-6f;

    // The fourth number is the neighbour of the corner, and nobody looks at it.
    static_assert(std::is_standard_layout_v<visual::Box> && offsetof(visual::Box, min) == 0 &&
                  offsetof(visual::Box, max) == 12 && offsetof(visual::Box, center) == 24);
    static Float4 load(const visual::Box& box, std::size_t offset)
    {
        Float4 v;
        std::memcpy(&v, reinterpret_cast<const char*>(&box) + offset, sizeof v);
        return v;
    }

    Float4 origin{};
    Float4 reciprocal{};
    Float4 depthOf{}; // the parameter of the ray beside a place, by its coordinates
    float start;
    float growth;
    float before;
};

} // namespace vrk::selection
