#pragma once

#include "platform/cam/TriangleSurface.h"
#include "platform/common/Export.h"

#include <limits>

namespace vrk::cam {

/// Boxes in boxes around the triangles of a surface, for how far places lie from it. Not installed.
///
/// Triangles lie in the order of a curve that fills space, four to a box, and the boxes are a heap: it is made in the time
/// of a sort.
class VRK_EXPORT SurfaceTree {
public:
    explicit SurfaceTree(const TriangleSurface& surface);

    /// The square of the distance to the nearest triangle, or of `limit` where that is nearer.
    double squaredDistance(const rob::Vec3d& place, double limit = std::numeric_limits<double>::infinity()) const
    {
        return search(place, limit * limit, 0);
    }
    /// Whether it lies nearer than `limit`; sooner told than how far it is.
    bool isWithin(const rob::Vec3d& place, double limit) const
    {
        return search(place, limit * limit, limit * limit) < limit * limit;
    }

private:
    struct Box {
        float low[3], high[3]; // rounded outwards

        double squaredDistance(const rob::Vec3d& place) const;
    };
    double search(const rob::Vec3d& place, double nearest, double enough) const;

    struct Corners {
        rob::Vec3d a, b, c;
    };

    static constexpr std::uint32_t leafSize = 4;

    std::vector<Corners> corners; // along the curve
    std::vector<Box> boxes;       // a heap from 1: the children of k are 2 k and 2 k + 1
    std::uint32_t firstLeaf = 1;
};

} // namespace vrk::cam
