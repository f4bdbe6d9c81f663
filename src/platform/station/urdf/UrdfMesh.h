#pragma once

#include "scene/math/Vec.h"

#include <filesystem>
#include <string>
#include <vector>

/// The shapes of robot descriptions, brought into the geometry cache. Not installed.
namespace vrk::station {

/// A file that the view reads, or that the import of shapes reads.
struct CachedShape {
    std::filesystem::path file;
    std::string fileType; // as of a body
    std::string color;    // a colour text, empty where the source has none
};

/// An STL or Collada mesh in model units. A Collada file gives one for each of its colours.
/// @param scale  model units per metre, in Collada files, or per unit of STL files, along each axis.
/// @throws ImportError naming the mesh.
std::vector<CachedShape> cachedMesh(const std::filesystem::path& mesh, const rob::Vec3d& scale);

// Solids about their centre, in model units; a cylinder along z.
CachedShape cachedBox(const rob::Vec3d& size);
CachedShape cachedCylinder(double radius, double length);
CachedShape cachedSphere(double radius);

} // namespace vrk::station
