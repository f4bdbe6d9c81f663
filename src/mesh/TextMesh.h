#pragma once

#include "mesh/Mesh.h"

#include <memory>
#include <string>

namespace vrk::visual {

/// A text as flat triangles, named by the text itself: in the plane z = 0 and facing +z, the first baseline at y = 0,
/// growing to the right and downwards. A capital stands about 1 high.
///
/// A line feed starts a line 1.4 lower; a space is 0.4 wide; any other byte that is no printable ASCII character leaves
/// no trace. There is no kerning and no alignment: who wants a label centred uses the bounds of the mesh.
std::unique_ptr<Mesh> makeTextMesh(std::string text);

} // namespace vrk::visual
