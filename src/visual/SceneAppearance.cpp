#include "scene/Scene.h"

#include "visual/FacetVisual.h"

namespace vrk::visual {
namespace {

bool isFacetVisual(const Visual& visual)
{
    return visual.getType() == VisualType::Solid || visual.getType() == VisualType::Mesh;
}

} // namespace

void Scene::resetColor(unsigned id)
{
    addRenderTask([this, id] { doResetColor(GetVisual(id)); }, 0);
}

void Scene::resetColor(Visual* visual)
{
    addRenderTask([this, visual] { doResetColor(visual); }, 0);
}

void Scene::doResetColor(Visual* visual)
{
    if (isFacetVisual(*visual)) {
        static_cast<FacetVisual*>(visual)->resetColor();
        return;
    }
    // Direct children only: an assembly, whose bodies lie deeper, keeps its colours.
    for (Visual* child : visual->getChildren())
        if (isFacetVisual(*child))
            static_cast<FacetVisual*>(child)->resetColor();
}

} // namespace vrk::visual
