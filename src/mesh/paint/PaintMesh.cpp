#include "mesh/paint/PaintMesh.h"

namespace vrk::visual {

void PaintMesh::setColor(unsigned vertex, const Color& color)
{
    colorTable[vertex] = color;
    changedColorIndexes.push_back(vertex);
}

} // namespace vrk::visual
