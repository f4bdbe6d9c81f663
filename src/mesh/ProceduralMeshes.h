#pragma once

#include "mesh/Mesh.h"
#include "scene/math/Pose.h"

#include <memory>
#include <string>
#include <vector>

/// The shapes of which the gizmos are made: triangles by formula, in model units, without colours. None is registered or
/// uploaded.
///
/// The grids of cylinder, sphere and torus close with a column of vertices at the place of the first, and have two
/// triangles of no area at that seam in each ring.
namespace vrk::visual {

/// Along +z from the origin. The side is `height` high; the top cap, however, stands at half of that, where the heads of
/// the arrows cover it.
/// @param stacks, slices  rings along and columns around, 1 or more.
/// @throws std::overflow_error "0-length vector cannot be normalized." for no radius.
std::unique_ptr<Mesh> makeCylinder(std::string name, float radius, float height, int stacks, int slices);

/// Around the origin, with its poles on the y axis.
/// @throws std::overflow_error "0-length vector cannot be normalized." for no radius.
std::unique_ptr<Mesh> makeSphere(std::string name, float radius, int stacks, int slices);

/// A bent tube around the z axis, open at its ends: it starts on the +x axis and goes on towards +y.
/// @param sweep  radians.
/// @param major, minor  radius of the bend and of the tube.
/// @param stacks, slices  along the bend and around the tube; less than 3 counts as 3.
/// @throws std::overflow_error "0-length vector cannot be normalized." for a tube of no radius.
std::unique_ptr<Mesh> makeTorusSector(std::string name, float sweep, float major, float minor, int stacks, int slices);

/// The sector of a full turn.
std::unique_ptr<Mesh> makeTorus(std::string name, float major, float minor, int stacks, int slices);

/// Along +z from its base at the origin, meshed by Open CASCADE to a fixed deflection: a larger cone has more facets.
std::unique_ptr<Mesh> makeCone(std::string name, float radius, float height);

/// Each triangle with three vertices of its own and their normal, which is not normalised.
/// @throws std::out_of_range "invalid vector subscript" for an index past the end of `points`, or a number of indices
///         that is no multiple of three.
std::unique_ptr<Mesh> makeFlatMesh(std::string name, const std::vector<rob::PosTemplate<float>>& points,
                                   const std::vector<unsigned>& indices);

/// Adds `source`, moved by `pose`, to `target`. A pose that is next to none (shorter than 0.01 and each number of its
/// quaternion within 0.001) copies the coordinates bit for bit.
void append(Mesh& target, const Mesh& source, const rob::PoseTemplate<float>& pose);

} // namespace vrk::visual
