#pragma once

#include "platform/geometry/StlFormat.h"

#include <filesystem>
#include <span>
#include <string>
#include <vector>

/// STL files as the import reads and writes them. Not installed.
namespace vrk::station {

using geometry::StlFacet;

/// Throws where the file holds no triangles that could be drawn.
/// @return whether the view reads it as it stands: binary with nothing behind the triangles, or ascii in small letters with
///         no solid whose name holds the word "facet"; and with the normals, without which faces have no light and shade.
/// @throws ImportError
bool checkStl(const std::filesystem::path& file);

/// The triangles of a binary or ascii file; the words of an ascii one may be in any case. Bytes behind the triangles of a
/// binary file are not read. A facet whose normal is left out, as 0 0 0, has that of its corners.
/// @throws ImportError
std::vector<StlFacet> readStlFacets(const std::filesystem::path& file);

/// The bytes of a binary file.
std::string binaryStl(std::span<const StlFacet> facets);

} // namespace vrk::station
