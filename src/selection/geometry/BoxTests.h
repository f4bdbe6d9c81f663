#pragma once

#include "selection/geometry/Box.h"
#include "selection/geometry/Math.h"
#include "selection/geometry/Ray.h"

#include <cmath>
#include <cstddef>
#include <cstring>
#include <limits>
#include <type_traits>

namespace vrk::selection {

/// What the tests of a line and a ray against boxes share: the slabs of the three axes, side by side in one register (the
/// slab method of Kay and Kajiya, "Ray Tracing Complex Scenes", 1986).
///
/// Made once for a query, since what it prepares does not depend on the box. It divides by the direction each time
/// rather than multiplying by a reciprocal, whose rounding would move the border.
class SlabTest {
protected:
    using Float4 = float __attribute__((vector_size(16)));
    using Int4 = int __attribute__((vector_size(16)));

    struct Slabs {
        Float4 t1, t2; // where the line meets the lower and the upper planes
    };

    SlabTest(const rob::PosTemplate<float>& start, const rob::DirTemplate<float>& d, float length)
        : origin{start.x, start.y, start.z, 0}, direction{d.x, d.y, d.z, 1}, positive(direction > 0.0f), length(length)
    {
        for (unsigned axis = 0; axis < 3; ++axis) {
            parallel[axis] = std::abs(direction[axis]) < Math::epsilon ? -1 : 0;
            if (parallel[axis] != 0)
                direction[axis] = 1;
        }
        anyParallel = (parallel[0] | parallel[1] | parallel[2]) != 0;
    }

    Slabs slabs(const visual::Box& box) const
    {
        return {(lower(box) - origin) / direction, (upper(box) - origin) / direction};
    }

    static constexpr float missed = std::numeric_limits<float>::infinity();

    /// Cuts [0, length] down to what lies between the near and the far planes. Where that begins, or `missed` if nothing
    /// is left.
    float entry(const visual::Box& box, Float4 near, Float4 far) const
    {
        if (anyParallel) {
            const Float4 a = lower(box), b = upper(box);
            const Int4 outside = parallel & ((origin < (a < b ? a : b)) | (origin > (a < b ? b : a)));
            if ((outside[0] | outside[1] | outside[2]) != 0)
                return missed;
            near = parallel ? Float4{} : near;
            far = parallel ? Float4{length, length, length, length} : far;
        }
        float tmin = 0;
        float tmax = length;
        for (unsigned axis = 0; axis < 3; ++axis) {
            tmin = near[axis] > tmin ? near[axis] : tmin;
            tmax = far[axis] < tmax ? far[axis] : tmax;
        }
        return tmin > tmax ? missed : tmin;
    }
    bool leavesSome(const visual::Box& box, Float4 near, Float4 far) const { return entry(box, near, far) != missed; }

    Float4 origin;
    Float4 direction; // 1 on the parallel axes
    Int4 positive;    // masks: all bits or none
    Int4 parallel{};
    float length;
    bool anyParallel;

private:
    // One unaligned load each. The fourth number is the neighbour of the corner, and nobody looks at it.
    static_assert(std::is_standard_layout_v<visual::Box> && offsetof(visual::Box, min) == 0 &&
                  offsetof(visual::Box, max) == 12 && offsetof(visual::Box, center) == 24);
    static Float4 lower(const visual::Box& box) { return load(reinterpret_cast<const char*>(&box)); }
    static Float4 upper(const visual::Box& box) { return load(reinterpret_cast<const char*>(&box) + 12); }
    static Float4 load(const char* from)
    {
        Float4 v;
        std::memcpy(&v, from, sizeof v);
        return v;
    }
};

/// Box::intersect(LineTemplate) for many boxes.
class LineBoxTest : SlabTest {
public:
    /// @throws std::overflow_error "0-length vector cannot be normalized." if the line has no length.
    explicit LineBoxTest(const rob::LineTemplate<float>& line)
        : SlabTest(line.start, line.getDirection(), line.getLength())
    {
    }
    bool operator()(const visual::Box& box) const
    {
        const auto [t1, t2] = slabs(box);
        return leavesSome(box, t1 > t2 ? t2 : t1, t1 > t2 ? t1 : t2);
    }
    bool pointsUp(unsigned axis) const { return positive[axis] != 0; }
};

/// Box::intersect(Ray) for many boxes.
class RayBoxTest : SlabTest {
public:
    explicit RayBoxTest(const visual::Ray& ray) : SlabTest(ray.origin, ray.direction, ray.length) {}
    bool operator()(const visual::Box& box) const
    {
        const auto [t1, t2] = slabs(box);
        return leavesSome(box, positive ? t1 : t2, positive ? t2 : t1);
    }
    /// The distance at which the ray enters the box, 0 from inside; infinite where it misses.
    float entry(const visual::Box& box) const
    {
        const auto [t1, t2] = slabs(box);
        return SlabTest::entry(box, positive ? t1 : t2, positive ? t2 : t1);
    }
    bool pointsUp(unsigned axis) const { return positive[axis] != 0; }
};

} // namespace vrk::selection
