#include "mesh/Mesh.h"

namespace vrk::visual {

const Box& Mesh::getBounds()
{
    if (!boundsValid) {
        bounds.addPoints(vertices);
        boundsValid = true;
    }
    return bounds;
}

} // namespace vrk::visual
