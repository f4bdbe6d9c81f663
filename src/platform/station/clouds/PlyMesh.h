#pragma once

#include "platform/geometry/TriangleMesh.h"
#include "platform/station/clouds/CloudFormats.h"

/// PLY files with faces. Not installed.
namespace vrk::station {

/// What a PLY file holds of points and faces.
struct PlyContent {
    Cloud cloud;
    std::vector<std::uint64_t> dropped; ///< the numbers in the file of points that were not finite, ascending
    std::vector<unsigned> indices;      ///< three for each triangle, numbers of points in the file
};

struct PlyElement;

/// Which property of an element names the corners of faces; none where it is no element of faces.
std::optional<std::size_t> facesOf(const PlyElement& element);

/// @throws CloudFault, also where a face names a point that is not there.
PlyContent parsePlyWithFaces(std::string_view bytes, const Progress& progress = {}, double scale = 1);

/// Whether the header says that there are faces. False where there is none that can be read. Any thread.
VRK_EXPORT bool holdsFaces(std::string_view bytes);

/// The triangles of a file, with normals: those of the file where it has one for each point, else those of its creases.
struct PlyTriangles {
    geometry::TriangleMesh mesh; ///< relative to `origin`
    rob::Posd origin;            ///< (0, 0, 0) unless the points lie too far out for single precision
    std::uint64_t leftOut = 0;   ///< triangles at a point that is not finite
};
/// @param scale  model units in one of the file's.
/// @throws CloudFault
VRK_EXPORT PlyTriangles parsePlyMesh(std::string_view bytes, const Progress& progress = {}, double scale = 1);

/// Binary, little-endian, as `parsePlyMesh` reads it.
VRK_EXPORT std::string plyOf(const geometry::TriangleMesh& mesh);

} // namespace vrk::station
