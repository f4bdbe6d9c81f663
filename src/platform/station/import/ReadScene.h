#pragma once

#include "platform/geometry/TriangleMesh.h"
#include "platform/station/import/ImportFormats.h"

/// Not installed.
namespace vrk::station {

enum class SceneAxes {
    ZUp,         ///< turned by what the file says of up
    AsTheyStand, ///< whichever axis the file calls up: robot descriptions take them so
};

/// What a piece without a colour has beside pieces that have one.
constexpr PointColor uncoloured{184, 184, 184};

/// The triangles of an OBJ, glTF, 3MF or Collada file as one mesh in millimetres, z upwards: with the colours of points or of
/// materials where the file has any, without textures, and with its normals or those of creases.
///
/// glTF and Collada say what they count and where up is; OBJ and 3MF are taken for millimetres, as they stand.
/// @throws ImportError; whatever `progress` throws.
geometry::TriangleMesh readScene(const std::filesystem::path& file, const Progress& progress,
                                 SceneAxes axes = SceneAxes::ZUp);

} // namespace vrk::station
