#pragma once

#include "platform/cam/TriangleSurface.h"

#include <limits>

namespace vrk::cam {

/// The point of a triangle that is nearest to a place (Ericson, "Real-Time Collision Detection", 2005, 5.1.5). Not installed.
rob::Vec3d nearestOn(const rob::Vec3d& a, const rob::Vec3d& b, const rob::Vec3d& c, const rob::Vec3d& place);

/// Boxes in boxes around the triangles of a surface, for how far places lie from it. Not installed.
///
/// Triangles lie in the order of a curve that fills space, four to a box, and the boxes are a heap: it is made in the time
/// of a sort.
class SurfaceTree {
public:
    static constexpr std::uint32_t none = 0xFFFFFFFF;

    struct Nearest {
        double square = std::numeric_limits<double>::infinity(); ///< of the distance
        std::uint32_t triangle = none;                           ///< none where nothing is nearer than was asked for
        rob::Vec3d place;
    };

    explicit SurfaceTree(const TriangleSurface& surface);

    /// The square of the distance to the nearest triangle, or of `limit` where that is nearer.
    double squaredDistance(const rob::Vec3d& place, double limit = std::numeric_limits<double>::infinity()) const;
    /// Among the triangles whose front is on the side that `up` shows to, and that are nearer than the root of `square`.
    Nearest nearestFacing(const rob::Vec3d& place, const rob::Vec3d& up, double square) const;

private:
    struct Box {
        float low[3], high[3]; // rounded outwards

        double squaredDistance(const rob::Vec3d& place) const;
    };
    struct Corners {
        rob::Vec3d a, b, c;
    };

    template <typename Counts>
    Nearest search(const rob::Vec3d& place, double square, const Counts& counts) const;

    static constexpr std::uint32_t leafSize = 4;

    std::vector<std::uint32_t> order; // of triangles
    std::vector<Corners> corners;     // in that order
    std::vector<Box> boxes;           // a heap from 1: the children of k are 2 k and 2 k + 1
    std::uint32_t firstLeaf = 1;
};

} // namespace vrk::cam
