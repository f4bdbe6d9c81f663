#pragma once

#include "platform/cam/SurfaceLines.h"

namespace vrk::cam {

/// The lines of a surface as they were found, for places that go along them. Not installed.
class SourceLines {
public:
    using Number = LinkedTriangles::Number;

    SourceLines(const LinkedTriangles& triangles, const std::vector<Role>& roles,
                const std::vector<rob::Vec3d>& places);

    /// A segment with this end: of a vertex on a line one of its two; none where there is none.
    Number segmentAt(Number vertex) const
    {
        return firsts[vertex] == firsts[vertex + 1] ? LinkedTriangles::none : at[firsts[vertex]];
    }
    Number segmentBetween(Number a, Number b) const;

    struct Place {
        Number segment;
        rob::Vec3d place;
    };
    /// The place of a line that is nearest to another one, sought from one of its segments both ways as far as it comes
    /// nearer, and never past a corner.
    Place nearest(const rob::Vec3d& place, Number segment) const;

private:
    Number beyond(Number segment, Number end) const;
    Place on(Number segment, const rob::Vec3d& place) const;

    const std::vector<Role> roles;
    const std::vector<rob::Vec3d> places;
    std::vector<std::array<Number, 2>> segments;
    std::vector<Number> firsts; // of each vertex in `at`, and the end
    std::vector<Number> at;     // segments of vertices
};

} // namespace vrk::cam
