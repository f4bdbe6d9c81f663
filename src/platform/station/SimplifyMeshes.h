#pragma once

#include "platform/station/Import.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>

namespace vrk::station {

/// What became of a mesh that was made coarser.
struct SimplifiedMesh {
    std::string body;
    std::size_t before = 0; ///< triangles
    std::size_t after = 0;  ///< as many where it stays as it is
    double tolerance = 0;   ///< model units
};

/// Makes the meshes of imported parts coarser: each body that an STL file holds is drawn from a file with fewer triangles, which
/// the geometry cache keeps. The parts must not yet be in the station. Meshes of fewer than 64 triangles, and those that come
/// out no simpler, stay as they are. Any thread.
///
/// @param tolerance  how far a mesh and its coarser form may lie apart, model units; empty for a thousandth of the mesh's
///                   greatest extent, from 0.02 to 1.
/// @param progress   as that of `ImportFile`; what it throws leaves the bodies that are done coarser, and the others as they were.
/// @return one for each such body, in the order of the parts.
/// @throws ImportError for a file that can no longer be read; std::invalid_argument for a tolerance that is negative or not
///         a number.
VRK_EXPORT std::vector<SimplifiedMesh> SimplifyMeshes(const std::vector<std::shared_ptr<layout::Part>>& parts,
                                                      std::optional<double> tolerance, const Progress& progress = {});

/// A mesh and its coarser form, each a file.
struct CoarserMesh {
    std::filesystem::path file; ///< the source itself where that is as simple as it gets
    std::size_t before = 0;     ///< triangles
    std::size_t after = 0;
    double tolerance = 0; ///< model units
};

/// The same of one STL file, which stays as it is: a body that is in the station is given the other file by whoever owns it. Any
/// thread.
/// @throws as above; then nothing was written.
VRK_EXPORT CoarserMesh SimplifyMeshFile(const std::filesystem::path& file, std::optional<double> tolerance,
                                        const Progress& progress = {});

} // namespace vrk::station
