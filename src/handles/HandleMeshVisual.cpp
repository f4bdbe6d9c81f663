#include "handles/HandleMeshVisual.h"

namespace vrk::visual {

HandleMeshVisual::HandleMeshVisual(const std::string& name, Visual* parent) : MeshVisual(name, parent) {}

void HandleMeshVisual::clearHighlightOrSelect()
{
    Visual::clearHighlightOrSelect();
}

void HandleMeshVisual::setSelected()
{
    Visual::setSelected();
}

} // namespace vrk::visual
