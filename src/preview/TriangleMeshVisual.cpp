#include "preview/TriangleMeshVisual.h"

namespace vrk::visual {

TriangleMeshVisual::TriangleMeshVisual(Visual* parent) : LineVisual("previewed mesh", parent) {}

} // namespace vrk::visual
