#pragma once

#include "mesh/Mesh.h"

#include <string>

namespace vrk::visual {

/// The triangles of a PLY file, under its path: with the normals of the file or those of its creases, and the colours of its
/// points where it has any. Any thread; touches no OGRE object.
///
/// @param path  a file, a "file" or "station" URI, or another URI that the platform can read.
/// @throws std::runtime_error the path of a file that cannot be opened; else the path, and in which line or byte it is
///         damaged.
Mesh readPly(const std::string& path);

} // namespace vrk::visual
