#include "visual/PaintVisual.h"

#include "mesh/MeshManager.h"
#include "mesh/paint/PaintMesh.h"
#include "mesh/paint/PaintSkin.h"
#include "scene/core/SceneCore.h"
#include "visual/Entities.h"
#include "visual/FacetVisual.h"
#include "visual/Picking.h"

#include <Ogre.h>

#include <algorithm>
#include <utility>

namespace vrk::visual {
namespace {

constexpr const char* paintMaterial = "Spray";
constexpr const char* mapMaterial = "SprayThickness";
constexpr std::size_t skinParameter = 1; // the materials' shaders read it here
// How much nearer the skin is drawn than it lies, as a part of the length of its edges: so far an edge cuts into a body that
// bends by 35 degrees in its middle.
constexpr float liftOfEdge = 0.15f;

constexpr float opaque = 255; // kept on this scale, though the other three are given from 0 to 1

} // namespace

PaintVisual::PaintVisual(Visual* parent, unsigned spray) : Visual("paint", parent), sprayRefs{spray}
{
    type = VisualType::Paint;
}

PaintVisual::~PaintVisual()
{
    if (entity)
        destroyEntity(*this, std::exchange(entity, nullptr));
    if (mesh && !copied)
        MeshManager::Get()->deleteMesh(mesh);
}

void PaintVisual::Build(Visual* parent, unsigned spray)
{
    auto* body = dynamic_cast<FacetVisual*>(parent);
    MeshManager& manager = *MeshManager::Get();
    PaintMesh* mesh = body ? manager.createPaintMesh(body) : nullptr;
    if (!mesh)
        return;
    auto* visual = new PaintVisual(parent, spray);
    SceneCore::Get()->visuals.enter(visual);
    manager.addPaintMesh(mesh);
    visual->mesh = mesh;
    visual->entity = attachEntity(*visual, mesh->name, mesh->name);
    if (const Ogre::Entity* drawn = body->getEntity()) // which may be selected
        visual->entity->setRenderQueueGroup(drawn->getRenderQueueGroup());
    visual->setSkinParameter(0, 0, 0);
    visual->setMaterial(paintMaterial, "", "");
    picking::addMeshVisual(visual, false, false);
}

/// The rest of what the materials read with the lift.
void PaintVisual::setSkinParameter(float low, float high, float most)
{
    const Box& bounds = mesh->getBounds();
    const float extent = std::max({bounds.getExtent(0), bounds.getExtent(1), bounds.getExtent(2)});
    const float lift = liftOfEdge * static_cast<float>(paintEdgeLength(extent));
    for (Ogre::SubEntity* part : entity->getSubEntities())
        part->setCustomParameter(skinParameter, Ogre::Vector4(lift, low, high, most));
}

void PaintVisual::setVisible(bool nowVisible, bool recursive)
{
    Visual::setVisible(nowVisible, recursive);
    picking::setObjectEnabled(this, nowVisible);
}

void PaintVisual::removeSprayRef(unsigned spray)
{
    std::erase(sprayRefs, spray);
}

void PaintVisual::setPaintColor(float r, float g, float b)
{
    paintColor = {r, g, b, opaque};
}

void PaintVisual::reset()
{
    for (unsigned vertex = 0; vertex < mesh->colorTable.size(); ++vertex) {
        Color color = mesh->color(vertex);
        color.a = 0;
        mesh->setColor(vertex, color);
    }
    MeshManager::Get()->updatePaintMeshColor(mesh);
}

void PaintVisual::showThickness(float low, float high, float most)
{
    setSkinParameter(low, high, most);
    setMaterial(mapMaterial, "", "");
}

void PaintVisual::setThickness(std::span<const float> parts, std::span<const unsigned> vertices)
{
    constexpr float covered = 0.05f; // of what is wanted: from there on the body is not seen through
    for (const unsigned vertex : vertices) {
        const float part = parts[vertex];
        mesh->setColor(vertex, {part, 0, 0, std::min(part / covered, 1.0f)});
    }
    MeshManager::Get()->uploadPaintColors(mesh);
}

void PaintVisual::showPaint()
{
    setMaterial(paintMaterial, "", "");
}

} // namespace vrk::visual
