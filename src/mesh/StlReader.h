#pragma once

#include "mesh/Mesh.h"

#include <cstddef>
#include <span>
#include <string>

namespace vrk::visual {

/// The triangles of an STL file held in memory, binary or ascii. Any thread; touches no OGRE object.
///
/// It is binary if and only if its size is the one that its own count asks for; a binary file with bytes behind its last
/// triangle is read as text.
///
/// @param bytes  the whole file; little-endian where binary.
/// @return T triangles under an empty name: 3 T positions, 3 T normals, indices 0 to 3 T - 1; no vertex is shared.
///         Lengths and normals are the file's own, a zero normal included. A vertex that an ascii facet gives before its
///         normal has the normal (0, 0, 0).
/// @throws std::runtime_error "Bad STL File", "Error in reading normal", "Error in reading vertex".
Mesh parseStl(std::span<const std::byte> bytes);

/// The triangles of an STL file, under its path. A binary file is read in blocks and is never in memory as a whole.
///
/// @param path  a file, a "file" or "station" URI, or another URI that the platform can read.
/// @throws std::runtime_error the path of a file that cannot be opened; the failures of `parseStl`.
Mesh readStl(const std::string& path);

/// Whether the path goes to the platform's reader of URIs; "station" and "file" URIs are files.
bool isRemoteUri(const std::string& path);

} // namespace vrk::visual
