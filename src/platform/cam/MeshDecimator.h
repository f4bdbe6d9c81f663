#pragma once

#include "platform/cam/TMesh.h"
#include "platform/common/Export.h"

#include <cstddef>

namespace OpenMeshUtils {

/// Makes meshes coarser: vrk::cam::simplify() on the mesh welded.
///
/// Thread: any, as long as nobody changes the mesh. Units: the mesh's own.
///
/// Equal vertices are one in the result, and vertices of no triangle are left out. It has triangle normals of the cross
/// product of (c - b) with (a - b), as long as it is, and unit normals for its vertices. Lists are shared with no other mesh.
class VRK_EXPORT MeshDecimator {
public:
    /// The fewest triangles that lie within a distance of the mesh, and the mesh of them. A tolerance of infinity is no limit.
    ///
    /// @param keepsSharp  edges of more than 60 degrees keep their lines too. Borders and edges that more than two triangles
    ///                    share do so always.
    /// @throws std::invalid_argument  for a tolerance that is negative or not a number.
    /// @throws std::out_of_range      for a triangle of a vertex that there is not.
    template <typename T>
    static cadcam::TMesh<T> DecimateMesh(const cadcam::TMesh<T>& mesh, double tolerance, bool keepsSharp);

    /// So many triangles, or as few more as can be reached; how far they lie from the mesh is not limited.
    ///
    /// @param keepsSharp  as above.
    /// @throws std::out_of_range  as above.
    template <typename T>
    static cadcam::TMesh<T> DecimateMeshToCount(const cadcam::TMesh<T>& mesh, std::size_t triangles, bool keepsSharp);
};

extern template VRK_EXPORT cadcam::TMesh<double> MeshDecimator::DecimateMesh(const cadcam::TMesh<double>&, double,
                                                                             bool);
extern template VRK_EXPORT cadcam::TMesh<double> MeshDecimator::DecimateMeshToCount(const cadcam::TMesh<double>&,
                                                                                    std::size_t, bool);

} // namespace OpenMeshUtils
