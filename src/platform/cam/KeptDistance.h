#pragma once

#include "platform/cam/LinkedTriangles.h"
#include "platform/cam/SourcePatches.h"
#include "platform/cam/SurfaceTree.h"

#include <memory>
#include <stop_token>
#include <utility>

namespace vrk::cam {

/// Holds a surface that is made coarser within a distance of what it was. Not installed.
///
/// Seen from one triangle the other surface rises and falls in straight pieces, so that both are farthest from each other at a
/// vertex of either, or where their edges cross. At each step vertices and middles of the surface as it was are looked at, and
/// the new edges all along; at the end, all triangles of the result all over, and
/// the edges of the surface all along.
class KeptDistance {
public:
    using Number = LinkedTriangles::Number;

    struct Source;

    /// @param limit  held at each step; below the tolerance, for what lies between the places.
    KeptDistance(std::shared_ptr<const Source> source, double tolerance, double limit);

    /// Whether it holds where the triangles of two vertices become those of one, at a place.
    bool isKept(const LinkedTriangles& triangles, const std::vector<rob::Vec3d>& places, Number kept, Number gone,
                const rob::Vec3d& place);
    /// What isKept() does before it asks about anything but the place; for what is known to be kept.
    bool look(const LinkedTriangles& triangles, const std::vector<rob::Vec3d>& places, Number kept, Number gone,
              const rob::Vec3d& place);
    /// What was looked at last is done.
    void move();

    /// The vertices of the surface as it was near which the tolerance is not held.
    /// @return some of them where it was stopped.
    std::vector<Number> verticesBeyond(const LinkedTriangles& triangles, const std::vector<rob::Vec3d>& places,
                                       const std::stop_token& stop) const;

private:
    struct Corners {
        rob::Vec3d a, b, c;

        double squaredDistance(const rob::Vec3d& place) const;
    };

    /// A surface, for what is near it.
    struct Side {
        SourcePatches patches;
        SurfaceTree tree;

        Side(const LinkedTriangles& triangles, const std::vector<rob::Vec3d>& places, const TriangleSurface& surface)
            : patches(triangles, places, SourcePatches::Lines::Cross), tree(surface)
        {
        }
        /// @param hint  a triangle that is near, and then the nearest that was found from it.
        bool isWithin(const rob::Vec3d& place, double limit, Number& hint) const;
        bool isEdgeWithin(const rob::Vec3d& from, const rob::Vec3d& to, double limit, Number hint) const;
        bool isTriangleWithin(const Corners& of, double limit, Number hint, unsigned cuts) const;
    };

    bool isPointWithin(Number point, Number likely) const;

    std::shared_ptr<const Source> source;
    double tolerance, limit;

    // Points of the surface, each of which the triangle knows that is nearest to it
    std::vector<rob::Vec3d> points; // its vertices, and then the middles of its triangles
    std::vector<Number> next;       // of the same triangle
    std::vector<Number> first;      // of each triangle
    std::vector<Number> hints;      // of each vertex: a triangle of the surface as it was that is near
    std::vector<bool> isTouched;    // triangles that are not as they were
    // What was looked at last
    Number vertex = LinkedTriangles::none, hint = LinkedTriangles::none; // that is kept, and its hint
    std::vector<Corners> corners;                                        // of the triangles that there would be
    std::vector<Number> numbers; // of these, and then of those that would be gone
    std::vector<Number> moved;   // points
};

/// The surface as it was.
struct KeptDistance::Source {
    TriangleSurface surface;
    Side side;

    /// @param triangles  of the surface, where no one is gone.
    Source(const LinkedTriangles& triangles, TriangleSurface surface);
};

} // namespace vrk::cam
