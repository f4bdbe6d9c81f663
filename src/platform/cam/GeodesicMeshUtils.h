#pragma once

#include "platform/cam/TMesh.h"
#include "platform/common/Export.h"

#include <memory>

namespace camcore {

/// Meshes for what is reckoned along a surface: vrk::cam::remesh() on the mesh welded.
///
/// Thread: any, as long as nobody changes the source. Units: the mesh's own.
class VRK_EXPORT GeodesicMeshUtils {
public:
    /// A new mesh that covers the same surface with edges of about `length`.
    ///
    /// @param result  of a source without a triangle of area it has no vertex. It has triangle normals of the cross product
    ///                of (c - b) with (a - b), as long as it is, and unit normals for its vertices. Left as it was where
    ///                this throws.
    /// @throws std::invalid_argument  for no source, or a length that is not above 0 and finite.
    /// @throws std::length_error      where it would be more triangles than vrk::cam::remesh() makes.
    /// @throws std::out_of_range      for a triangle of a vertex that there is not.
    static void RemeshByEdgeLength(double length, const std::shared_ptr<cadcam::TMesh<double>>& source,
                                   std::shared_ptr<cadcam::TMesh<double>>& result);
};

} // namespace camcore
