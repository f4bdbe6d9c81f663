#pragma once

#include "mesh/paint/PaintMesh.h"
#include "platform/cam/TMesh.h"

#include <memory>
#include <string>

namespace vrk::visual {

/// How long the edges of a skin are, for a body whose longest side has this extent. Model units.
double paintEdgeLength(double extent);

/// The skin of an even mesh, all of it transparent. Its normals are those of `even`'s triangles, each vertex the mean of its
/// own. Any thread; touches no OGRE object.
std::unique_ptr<PaintMesh> makePaintSkin(std::string name, const cadcam::TMesh<double>& even);

} // namespace vrk::visual
