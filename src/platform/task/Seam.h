#pragma once

#include "platform/task/EdgeMfgShape.h"

#include <TopoDS_Shape.hxx>

#include <memory>
#include <string>
#include <vector>

/// Runs along the edges of a body. Edges are named by their numbers, from 1, as `TopExp::MapShapes` counts those of the
/// body's shape. Any thread, while nobody changes the shape.
///
/// What cannot be done is refused with a `std::invalid_argument` whose text names the edge and tells the cause.
namespace vrk::task {

/// Where the tool points at a place of an edge, by the outward normals of its faces there.
enum class ToolSide {
    Between, ///< halfway between the two
    Left,    ///< along that of the face to the left of the direction of travel, seen from outside
    Right,
};

struct SeamOptions {
    ToolSide side = ToolSide::Between;
    double chordTolerance = 0.1; ///< model units; straight lines between the vectors stay so near to the edge
};

/// The edges that go on from one without a corner, it among them, in order. Where several go on, the one that shares more
/// faces with the last is taken, then the one with the smallest angle.
/// @param angleTolerance  radians by which the tangents of two edges may differ where they meet.
VRK_EXPORT std::vector<unsigned> TangentChain(const TopoDS_Shape& shape, unsigned edge, double angleTolerance);

/// The run along these edges, which are put into the order in which they follow each other. An open run goes from the edge
/// that is given earlier towards the one that is given later; a single edge, and a closed run of which that does not tell,
/// by rising parameters of the first one.
///
/// Each edge has vectors at its ends and wherever the chord or the turning of the faces asks for one. An edge of a single
/// face takes that face's normal for `Left` and `Right` alike, and has nothing to halve; where a face meets itself, as at the
/// seam of a cylinder, both normals are the same. Where a normal is not defined, as at the tip of a cone, it is that of a
/// place near by.
/// @param body  the id of the body that has the shape.
VRK_EXPORT std::shared_ptr<EdgeMfgShape> MakeSeam(unsigned id, const std::string& name, const TopoDS_Shape& shape,
                                                  unsigned body, const std::vector<unsigned>& edges,
                                                  const SeamOptions& options = {});

} // namespace vrk::task
