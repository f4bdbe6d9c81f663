#include "scene/Scene.h"

#include "scene/core/Refused.h"
#include "scene/core/SceneCore.h"
#include "visual/CamMeshVisual.h"
#include "visual/PaintVisual.h"
#include "visual/VisualCast.h"

#include <algorithm>
#include <vector>

namespace vrk::visual {
namespace {

/// A visual and all below it, level after level; none for an id without a visual. A list, since what is done with them changes
/// the tree.
std::vector<Visual*> subtreeOf(unsigned id)
{
    std::vector<Visual*> found;
    if (!Scene::HasVisual(id))
        return found;
    found.push_back(Scene::GetVisual(id));
    for (std::size_t at = 0; at < found.size(); ++at)
        for (Visual* child : found[at]->getChildren())
            found.push_back(child);
    return found;
}

/// Null for a visual that is no paint.
PaintVisual* asPaint(Visual* visual)
{
    return visualCast<PaintVisual>(visual, VisualType::Paint);
}

PaintVisual* paintOn(const Visual& body)
{
    for (Visual* child : body.getChildren())
        if (PaintVisual* paint = asPaint(child))
            return paint;
    return nullptr;
}

} // namespace

void Scene::createPaintVisual(unsigned spray, unsigned id)
{
    addRenderTask([this, spray, id] { doCreatePaintVisual(spray, id); }, 0);
}

void Scene::doCreatePaintVisual(unsigned spray, unsigned id)
{
    for (Visual* visual : subtreeOf(id)) {
        if (visual->getType() != VisualType::Solid && visual->getType() != VisualType::Mesh)
            continue;
        if (PaintVisual* paint = paintOn(*visual))
            paint->addSprayRef(spray);
        else
            PaintVisual::Build(visual, spray);
    }
}

void Scene::removePaintVisual(unsigned spray, unsigned id)
{
    addRenderTask([this, spray, id] { doRemovePaintVisual(spray, id); }, 0);
}

void Scene::doRemovePaintVisual(unsigned spray, unsigned id)
{
    for (Visual* visual : subtreeOf(id)) {
        PaintVisual* paint = asPaint(visual);
        if (!paint)
            continue;
        if (paint->getSprayRefsCount() < 2)
            deleteVisual(paint);
        else
            paint->removeSprayRef(spray);
    }
}

void Scene::setPaintColor(unsigned id, float r, float g, float b)
{
    addRenderTask([this, id, r, g, b] { doSetPaintColor(id, r, g, b); }, 0);
}

void Scene::doSetPaintColor(unsigned id, float r, float g, float b)
{
    for (Visual* visual : subtreeOf(id))
        if (PaintVisual* paint = asPaint(visual))
            paint->setPaintColor(r, g, b);
}

void Scene::debugViewCamMesh(cadcam::TMesh<double>* mesh, unsigned parentId)
{
    refuseNull(mesh, "debugViewCamMesh", "a mesh");
    addRenderTask(
        [mesh, parentId] {
            CamMeshVisual::Build(parentId == 0 ? SceneCore::Get()->worldVisual : GetVisual(parentId), mesh);
        },
        0);
}

} // namespace vrk::visual
