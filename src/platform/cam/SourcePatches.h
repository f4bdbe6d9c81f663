#pragma once

#include "platform/cam/LinkedTriangles.h"

namespace vrk::cam {

/// A surface as it was, for places that are laid on it again. Not installed.
///
/// What is nearest is sought from a triangle that is known to be near, from neighbour to neighbour as long as it comes nearer:
/// in a thin wall a place does not end up on the other side, and it takes a tenth of a search among all of them.
class SourcePatches {
public:
    using Number = LinkedTriangles::Number;

    enum class Lines {
        Stop,  ///< what is sought does not leave the patch that lines enclose
        Cross, ///< but where an edge has not two triangles
    };

    /// @param places  of the vertices; copied.
    SourcePatches(const LinkedTriangles& triangles, const std::vector<rob::Vec3d>& places, Lines lines);

    struct Place {
        Number triangle;
        rob::Vec3d place;
    };
    Place nearest(const rob::Vec3d& place, Number from) const;
    /// Of a place from a triangle.
    double distance(Number triangle, const rob::Vec3d& place) const;
    /// How far one can go over a triangle before an edge; infinite for one who never crosses it.
    /// @param along  of unit length.
    double leaves(Number triangle, const rob::Vec3d& place, const rob::Vec3d& along) const;

private:
    struct Patch {
        std::array<rob::Vec3d, 3> corners;
        std::array<Number, 3> across; // each edge; none where there is an end
    };

    template <typename Visit>
    void forPatchesAt(Number triangle, Number corner, const Visit& visit) const;

    std::vector<Patch> patches;
};

} // namespace vrk::cam
