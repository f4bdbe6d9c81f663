#pragma once

#include "platform/station/Import.h"

#include <filesystem>

namespace vrk::station {

/// Radians, 35 degrees: as far as the light goes on across an edge where nobody says.
constexpr double usualSmoothAngle = 0.61;

/// The mesh of an STL or PLY file, with the same triangles and colours, shaded smoothly: across each edge that is bent by at most
/// the angle, as `geometry::addCreaseNormals` does. With an angle of 0 only what is flat is, and so each facet shows. The file
/// stays as it is; the other one, a PLY file, is kept by the geometry cache. For a body of the type "mesh". Any thread.
///
/// @param angle     radians, 0 to pi.
/// @param progress  as that of `ImportFile`; what it throws passes, and nothing was written then.
/// @throws ImportError for a file that cannot be read; std::invalid_argument for another angle.
VRK_EXPORT std::filesystem::path SmoothMeshFile(const std::filesystem::path& file, double angle,
                                                const Progress& progress = {});

/// Has the bodies of imported parts that are meshes drawn so. Bodies of shapes stay as they are. The parts must not yet be in the
/// station. A station that is saved keeps what came of it beside its file. Any thread.
/// @throws as above; the bodies that are done stay so.
VRK_EXPORT void SmoothMeshes(const std::vector<std::shared_ptr<layout::Part>>& parts, double angle,
                             const Progress& progress = {});

} // namespace vrk::station
