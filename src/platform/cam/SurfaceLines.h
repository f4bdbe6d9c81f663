#pragma once

#include "platform/cam/LinkedTriangles.h"

namespace vrk::cam {

/// What a vertex may do. Not installed.
enum class Role : std::uint8_t {
    Free,
    OnLine, ///< moves along the line that it is on: a border, a sharp edge, or one of several sheets
    Corner, ///< stays
};

/// Marks the edges that stay as they are: borders, those of more than two triangles or of two that do not run against each
/// other, and those at which normals differ by more than `sharp`, in radians. Not installed.
/// @return of each vertex. One with two lines is on them, unless they bend by more than that.
std::vector<Role> findLines(LinkedTriangles& triangles, const std::vector<rob::Vec3d>& places, double sharp);

} // namespace vrk::cam
