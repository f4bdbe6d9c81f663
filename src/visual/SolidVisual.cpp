#include "visual/SolidVisual.h"

#include "mesh/MeshManager.h"
#include "platform/geometry/BodyColorTool.h"
#include "platform/geometry/ColorText.h"
#include "scene/core/SceneCore.h"
#include "visual/Picking.h"
#include "visual/WireFrameVisual.h"

#include <Ogre.h>
#include <TopExp.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>

#include <algorithm>
#include <iostream>
#include <limits>

namespace vrk::visual {
namespace {

constexpr const char* bareColor = "#ED1C24"; // of shapes that no model object stands behind
constexpr const char* copyMaterial = "TransBody";
constexpr float highlightGain = 0.2f;

} // namespace

SolidVisual::SolidVisual(sdf::SdfNode* node, const TopoDS_Shape& shape, Visual* parent)
    : FacetVisual(node, parent), body(&dynamic_cast<layout::Body&>(*node))
{
    type = VisualType::Solid;
    body->setShape(shape);
    meshName = sdf::textAt(*node->getElement(), "geometry/uri"); // which another shape may just have changed
}

SolidVisual::SolidVisual(const TopoDS_Shape& shape, Visual* parent)
    : FacetVisual(parent), meshName(getName()), shape(shape)
{
    type = VisualType::Solid;
}

SolidVisual::SolidVisual(const std::string& name, const TopoDS_Shape& shape, Visual* parent)
    : FacetVisual(name, parent), meshName(getName()), shape(shape)
{
    type = VisualType::Solid;
}

SolidVisual::~SolidVisual()
{
    if (!entity)
        return;
    destroyEntity();
    if (!copied)
        MeshManager::Get()->removeOgreMesh(meshName);
}

SolidVisual* SolidVisual::Build(Visual* parent, const TopoDS_Shape& shape, const std::string& material)
{
    auto* visual = new SolidVisual(shape, parent);
    visual->load(false);
    visual->setMaterial(material, {}, {});
    return visual;
}

void SolidVisual::Build(Visual* parent, sdf::SdfNode* node, const TopoDS_Shape& shape)
{
    auto* visual = new SolidVisual(node, shape, parent);
    visual->load(true);
    if (visual->entity) {
        const std::shared_ptr<sdf::Element> element = node->getElement();
        std::string base = sdf::textAt(*element, "visual/material/name");
        if (base.empty())
            base = "Body";
        visual->setMaterial(base, base + "Selected", base + "Highlighted");
        const std::shared_ptr<sdf::Element> owner = element->getParent();
        picking::addShape(shape, visual, owner && sdf::boolAt(*owner, "detectable"));
    } else {
        std::cout << "no mesh: " << visual->getName() << std::endl;
    }
    // Last: the material names of the solid are not those of its edges.
    WireFrameVisual::Build(visual, shape);
}

void SolidVisual::Build(Visual* parent, const TopoDS_Shape& shape, const std::string& base, const std::string& selected,
                        const std::string& highlighted)
{
    auto* visual = new SolidVisual(shape, parent);
    visual->load(false);
    // Also without triangles, unlike a body of the station: there is then nothing to draw and nothing to hit.
    visual->setMaterial(base, selected, highlighted);
    picking::addShape(shape, visual, false);
    WireFrameVisual::Build(visual, shape);
}

void SolidVisual::load(bool withModelColors)
{
    SceneCore::Get()->visuals.enter(this);
    try {
        if (withModelColors)
            MeshManager::Get()->loadShape(this);
        else
            MeshManager::Get()->loadShape(this, ColorInfo{bareColor, {}});
    } catch (const NoTriangleMesh&) {
        return; // the visual stays, without an entity
    }
    entity = makeEntity(getName(), getCurrentMeshName());
}

std::optional<Visual*> SolidVisual::copy(Visual* parent)
{
    auto* made = new SolidVisual(getName(), getShape(), parent ? parent : SceneCore::Get()->worldVisual);
    made->copied = true; // from here on: should the entity fail, the shared mesh is not the copy's to give back
    if (entity)
        made->attachEntity(meshName);
    made->becomeCopyOf(*this);
    made->setMaterial(copyMaterial, copyMaterial, copyMaterial);
    return made;
}

unsigned SolidVisual::getBodiesNum()
{
    return entity ? 1 : 0;
}

unsigned SolidVisual::getFacesNum()
{
    return static_cast<unsigned>(getFaceMap().Extent());
}

std::uint64_t SolidVisual::getTrianglesNum()
{
    return trianglesOf(entity);
}

std::uint64_t SolidVisual::getVerticesNum()
{
    return verticesOf(entity);
}

void SolidVisual::setVisible(bool nowVisible, bool recursive)
{
    BodyVisual::setVisible(nowVisible, recursive);
    if (!nowVisible || hiddenFaces.empty())
        return;
    hiddenFaces.clear();
    updateMesh();
    picking::updateShapeFaces(this);
}

void SolidVisual::resetColor()
{
    if (entity)
        MeshManager::ColorReset(this);
}

void SolidVisual::setBodyColor(const rob::ColorTemplate<float>& color, float)
{
    if (entity)
        MeshManager::SetColor(getCurrentMeshName(), color);
}

const TopoDS_Shape& SolidVisual::getShape() const
{
    return body ? body->getShape() : shape;
}

const layout::FaceMap& SolidVisual::getFaceMap() const
{
    if (body)
        return body->getFaceMap();
    if (faceMap.IsEmpty() && !shape.IsNull())
        TopExp::MapShapes(shape, TopAbs_FACE, faceMap);
    return faceMap;
}

TopoDS_Face SolidVisual::getFace(int index) const
{
    const TopoDS_Shape& entry = getFaceMap().FindKey(index);
    return entry.ShapeType() == TopAbs_FACE ? TopoDS::Face(entry) : TopoDS_Face();
}

unsigned SolidVisual::getFaceIndex(const TopoDS_Face& face) const
{
    return static_cast<unsigned>(getFaceMap().FindIndex(face));
}

std::string SolidVisual::getCurrentMeshName() const
{
    std::string name = meshName;
    for (const unsigned face : hiddenFaces)
        name.append("_").append(std::to_string(face));
    return name;
}

bool SolidVisual::isFaceVisible(std::uint64_t face) const
{
    if (hiddenFaces.empty() || face > std::numeric_limits<unsigned>::max())
        return true;
    return std::find(hiddenFaces.begin(), hiddenFaces.end(), static_cast<unsigned>(face)) == hiddenFaces.end();
}

void SolidVisual::setFaceVisible(std::uint64_t face, bool faceVisible)
{
    const auto index = static_cast<unsigned>(face);
    // While the face still has its run in the buffer: a highlight would else come back with it.
    setFaceColor(index, getFaceColor(index));
    if (faceVisible)
        std::erase(hiddenFaces, index);
    else if (isFaceVisible(index))
        hiddenFaces.push_back(index);
    updateMesh();
}

void SolidVisual::attachEntity(const std::string& mesh)
{
    meshName = mesh;
    entity = makeEntity(std::to_string(id) + mesh, mesh);
}

void SolidVisual::updateMesh()
{
    std::uint8_t group = 0;
    if (entity) {
        group = entity->getRenderQueueGroup();
        destroyEntity();
    }
    // Counts a user of the new mesh and gives none back of the old one: a set of faces that was shown once is shown again
    // without meshing, at the price that its mesh stays.
    MeshManager::Get()->loadShape(this, geometry::BodyColorTool::GetColorInfo(id));
    entity = makeEntity(getName(), getCurrentMeshName());
    entity->setVisible(visible);
    if (group != 0)
        entity->setRenderQueueGroup(group);
    // A selected solid looks normal until its layers are refreshed next, though it stays within the outline.
    resetAppearance();
}

void SolidVisual::destroyEntity()
{
    detachObject(entity);
    sceneNode->getCreator()->destroyEntity(std::exchange(entity, nullptr));
}

void SolidVisual::setFaceColor(unsigned face, const rob::ColorTemplate<float>& color)
{
    if (entity)
        MeshManager::SetFaceColor(this, face, color);
}

void SolidVisual::setFaceColor(unsigned face, const std::string& text)
{
    setFaceColor(face, geometry::ParseColorText(text));
}

rob::ColorTemplate<float> SolidVisual::getFaceColor(unsigned face) const
{
    return geometry::ParseColorText(geometry::BodyColorTool::GetFaceColor(id, face));
}

void SolidVisual::highLightFace(unsigned face)
{
    // Not held to 1: a face that is bright already still grows brighter under the lights.
    const rob::ColorTemplate<float> color = getFaceColor(face);
    setFaceColor(face,
                 rob::ColorTemplate<float>(color.r + highlightGain, color.g + highlightGain, color.b + highlightGain));
}

void SolidVisual::clearHighLightFace(unsigned face)
{
    setFaceColor(face, getFaceColor(face));
}

void SolidVisual::clearSelectedFace(unsigned face)
{
    setFaceColor(face, getFaceColor(face));
}

void SolidVisual::clearSelectedFace(const TopoDS_Face& face)
{
    clearSelectedFace(getFaceIndex(face));
}

} // namespace vrk::visual
