#pragma once

#include "platform/common/Export.h"
#include "scene/math/Vec.h"

#include <filesystem>
#include <stdexcept>
#include <vector>

namespace vrk::process {

/// A file of a map that cannot be read or written, or is of another body. The text is one line that names file and cause.
class VRK_EXPORT ThicknessMapError : public std::runtime_error {
public:
    ThicknessMapError(const std::filesystem::path& file, const std::string& cause);
};

/// How thick a coat lies on the vertices of a skin.
struct ThicknessMap {
    std::vector<rob::Posf> vertices; ///< model units, in the body's frame
    std::vector<float> thickness;    ///< model units; one for each vertex
    std::vector<unsigned> indices;   ///< three for each triangle
};

/// Writes a PLY file (binary, little-endian): the skin, with the property "thickness" of its vertices, as other programs show
/// it by colour. A file of that name is replaced as a whole or not at all. Any thread.
/// @throws ThicknessMapError
VRK_EXPORT void saveThicknessMap(const std::filesystem::path& file, const ThicknessMap& map);

/// Reads the thickness from a PLY file of any form, one for each vertex of a skin. Any thread.
/// @param vertices  of the skin, which must be those of the file, in its order, within `tolerance`.
/// @throws ThicknessMapError, also for a value that is below 0 or not finite.
VRK_EXPORT std::vector<float> loadThicknessMap(const std::filesystem::path& file,
                                               const std::vector<rob::Posf>& vertices, float tolerance);

} // namespace vrk::process
