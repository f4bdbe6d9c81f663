#include "visual/MeshVisual.h"

#include "mesh/MeshManager.h"
#include "platform/geometry/BodyColorTool.h"
#include "platform/geometry/ColorText.h"
#include "platform/geometry/MeshEdges.h"
#include "platform/layout/Body.h"
#include "platform/sdf/SdfManager.h"
#include "scene/core/ClosedMeshes.h"
#include "scene/core/SceneCore.h"
#include "visual/Entities.h"
#include "visual/Picking.h"
#include "visual/RenderGroups.h"
#include "visual/VisualCast.h"
#include "visual/WireFrameVisual.h"

#include <Ogre.h>

#include <utility>
#include <vector>

namespace vrk::visual {
namespace {

constexpr const char* copyMaterial = "TransBody";
constexpr std::size_t colorParameter = 0; // the materials' shaders read the colour here

constexpr const char* pointColorMaterial = "Body"; // reads the colours of the vertices
constexpr const char* coverMaterial = "MeshBody";

bool hasOwnColor(const layout::Body& body)
{
    return !sdf::textAt(*body.getElement(), "visual/color").empty();
}

/// A list, since what is done with them may change the tree.
std::vector<WireFrameVisual*> edgesOn(const Visual& body)
{
    std::vector<WireFrameVisual*> found;
    for (Visual* child : body.getChildren())
        if (auto* edges = visualCast<WireFrameVisual>(child, VisualType::WireFrame))
            found.push_back(edges);
    return found;
}

} // namespace

MeshVisual::MeshVisual(Visual* parent, sdf::SdfNode* node) : FacetVisual(node, parent)
{
    type = VisualType::Mesh;
}

MeshVisual::MeshVisual(const std::string& name, Visual* parent) : FacetVisual(name, parent)
{
    type = VisualType::Mesh;
}

MeshVisual::~MeshVisual()
{
    detachEntity();
    if (!mesh)
        return;
    // The first of those that draw a mesh ends it. What is registered under its name after that is another's.
    MeshManager& manager = *MeshManager::Get();
    if (!copied && manager.getMesh(meshName) == mesh)
        manager.deleteMesh(mesh);
    MeshManager::releaseMesh(mesh);
}

void MeshVisual::Build(Visual* parent, sdf::SdfNode* node)
{
    auto& body = dynamic_cast<layout::Body&>(*node);
    auto* visual = new MeshVisual(parent, node);
    SceneCore::Get()->visuals.enter(visual);
    visual->attachMesh(body.getGeometryUri());
    visual->setColor(geometry::BodyColorTool::GetBodyColor(node->getElement()));
    const std::string base = body.getMaterialName();
    visual->setMaterial(base, base + "Selected", base + "Highlighted");
    if (visual->hasPointColors() && base == pointColorMaterial && hasOwnColor(body))
        visual->useLookOf(coverMaterial);
    const std::shared_ptr<sdf::Element> owner = node->getElement()->getParent();
    picking::addMeshVisual(visual, owner && sdf::boolAt(*owner, "detectable"), false);
}

MeshVisual* MeshVisual::BuildArrow(Visual* parent, const rob::PosTemplate<float>& position,
                                   const rob::DirTemplate<float>& direction)
{
    auto* visual = new MeshVisual(arrowMesh, parent);
    visual->becomeArrow(position, direction, arrowColor);
    return visual;
}

void MeshVisual::becomeArrow(const rob::PosTemplate<float>& position, const rob::DirTemplate<float>& direction,
                             const std::string& color)
{
    attachMesh(arrowMesh)->setRenderQueueGroup(renderGroup::lines);
    setMaterial("Axis", "Axis", "Axis");
    setColor(color);
    setRotation(rob::RotationTemplate<float>::From2Dirs({0, 0, 1}, direction));
    setPosition(position);
}

Ogre::Entity* MeshVisual::attachMesh(const std::string& name)
{
    if (!mesh)
        meshName = name; // also of a file that cannot be read
    MeshManager& manager = *MeshManager::Get();
    Mesh* found = manager.getGlobalMesh(name);
    if (!found)
        found = manager.hasMesh(name)    ? manager.getMesh(name)
                : name.ends_with(".ply") ? manager.loadPly(name)
                                         : manager.loadStl(name);
    detachMesh();
    meshName = name;
    entity = makeEntity(std::to_string(id) + name, name);
    MeshManager::holdMesh(found);
    if (Mesh* before = std::exchange(mesh, found))
        MeshManager::releaseMesh(before);
    return entity;
}

void MeshVisual::detachMesh()
{
    detachEntity();
    removeEdges();
}

void MeshVisual::detachEntity()
{
    if (entity)
        destroyEntity(*this, std::exchange(entity, nullptr));
}

bool MeshVisual::setEdges(const std::shared_ptr<const geometry::MeshEdges>& edges)
{
    if (!entity || edges->vertices != mesh->vertices.size() || edges->triangles != mesh->indices.size() / 3)
        return false;
    if (edges->isClosed)
        SceneCore::Get()->record<ClosedMeshes>().add(entity->getMesh()->getHandle());
    if (edges->points.empty())
        return false;
    removeEdges();
    WireFrameVisual::Build(this, edges)->setVisible(visible, false);
    if (const Ogre::SubEntity& part = *entity->getSubEntity(0); part.hasCustomParameter(colorParameter)) {
        const Ogre::Vector4& color = part.getCustomParameter(colorParameter);
        suitEdges({color.x, color.y, color.z});
    }
    return true;
}

void MeshVisual::removeEdges()
{
    for (Visual* edges : edgesOn(*this))
        Delete(edges);
}

std::optional<Visual*> MeshVisual::copy(Visual* parent)
{
    auto* made = new MeshVisual(getName(), parent ? parent : SceneCore::Get()->worldVisual);
    made->copied = true; // the mesh stays the source's
    if (entity)
        made->attachMesh(meshName);
    made->becomeCopyOf(*this);
    made->setMaterial(copyMaterial, copyMaterial, copyMaterial);
    return made;
}

unsigned MeshVisual::getBodiesNum()
{
    return entity ? 1 : 0;
}

unsigned MeshVisual::getFacesNum()
{
    return entity ? 1 : 0;
}

std::uint64_t MeshVisual::getTrianglesNum()
{
    return TrianglesOf(entity);
}

std::uint64_t MeshVisual::getVerticesNum()
{
    return VerticesOf(entity);
}

void MeshVisual::resetColor()
{
    setColor(geometry::BodyColorTool::GetBodyColor(id));
    if (!hasPointColors() || defaultMaterial != coverMaterial)
        return;
    const auto body = std::dynamic_pointer_cast<layout::Body>(sdf::Share(id));
    if (body && body->getMaterialName() == pointColorMaterial && !hasOwnColor(*body))
        useLookOf(pointColorMaterial);
}

void MeshVisual::setBodyColor(const rob::ColorTemplate<float>& color, float alpha)
{
    setColor(color, alpha);
    if (hasPointColors() && defaultMaterial == pointColorMaterial)
        useLookOf(coverMaterial);
}

bool MeshVisual::hasPointColors() const
{
    return mesh && !mesh->colors.empty();
}

void MeshVisual::useLookOf(const char* material)
{
    const std::string base = material;
    setMaterial(base, base + "Selected", base + "Highlighted");
    for (WireFrameVisual* edges : edgesOn(*this))
        edges->useOwnMaterial();
}

const std::string& MeshVisual::getMeshName() const
{
    return mesh ? mesh->name : meshName; // of a file that could not be read there is but the name
}

void MeshVisual::setColor(const rob::ColorTemplate<float>& color, float alpha)
{
    if (!entity)
        return;
    for (Ogre::SubEntity* part : entity->getSubEntities())
        part->setCustomParameter(colorParameter, Ogre::Vector4(color.r, color.g, color.b, alpha));
    suitEdges(color);
}

void MeshVisual::setColor(const std::string& text)
{
    setColor(geometry::ParseColorText(text), 1.0f);
}

} // namespace vrk::visual
