#include "visual/SolidVisual.h"

#include "mesh/FaceColors.h"
#include "mesh/MeshManager.h"
#include "mesh/ShapeTriangles.h"
#include "platform/geometry/BodyColorTool.h"
#include "platform/geometry/ColorText.h"
#include "scene/core/SceneCore.h"
#include "scene/math/Trsf.h"
#include "visual/Entities.h"
#include "visual/Picking.h"
#include "visual/WireFrameVisual.h"

#include <Ogre.h>
#include <Standard_OutOfRange.hxx>
#include <TopExp.hxx>
#include <TopLoc_Location.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <limits>

namespace vrk::visual {
namespace {

constexpr const char* bareColor = "#ED1C24"; // of shapes that no model object stands behind
constexpr const char* copyMaterial = "TransBody";
constexpr float highlightGain = 0.2f;

bool isNearIdentity(const rob::PoseTemplate<float>& pose)
{
    constexpr float minLength = 0.01f;
    constexpr float minTurn = 0.001f;
    const auto& q = pose.orientation;
    return pose.position.length() < minLength && std::abs(q.w - 1.0f) < minTurn && std::abs(q.x) < minTurn &&
           std::abs(q.y) < minTurn && std::abs(q.z) < minTurn;
}

/// Render thread: the solids with marks, of which there are few. Solids share meshes, and so the marks on them.
std::vector<const SolidVisual*> solidsWithMarks;

/// Where the vertices of one face lie in the mesh that the solid has now.
/// @throws Standard_OutOfRange as `runOfFace`.
VertexRun runOfVisibleFace(const SolidVisual& solid, unsigned face)
{
    return runOfFace(
        solid.getFaceMap(), [&solid](unsigned each) { return solid.isFaceVisible(each); }, face);
}

/// The name of the mesh of a body. One that names no geometry has a mesh of its own, as a bare shape does.
std::string meshNameOf(sdf::SdfNode& node)
{
    std::string uri = sdf::textAt(*node.getElement(), "geometry/uri");
    return uri.empty() ? "Visual_" + std::to_string(node.getId()) : uri;
}

} // namespace

SolidVisual::SolidVisual(sdf::SdfNode* node, const TopoDS_Shape& shape, Visual* parent)
    : FacetVisual(node, parent), body(&dynamic_cast<layout::Body&>(*node))
{
    type = VisualType::Solid;
    body->setShape(shape);
    meshName = meshNameOf(*node); // which another shape may just have changed
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
    takeMarksOff();
    std::erase(solidsWithMarks, this);
    if (entity)
        destroyEntity();
    if (holdsMesh)
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
    visual->suitEdges(geometry::ParseColorText(geometry::BodyColorTool::GetBodyColor(node->getElement())));
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
    holdsMesh = true;
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
    return TrianglesOf(entity);
}

std::uint64_t SolidVisual::getVerticesNum()
{
    return VerticesOf(entity);
}

void SolidVisual::setVisible(bool nowVisible, bool recursive)
{
    BodyVisual::setVisible(nowVisible, recursive);
    if (!nowVisible || hiddenFaces.empty())
        return;
    takeMarksOff();
    hiddenFaces.clear();
    try {
        updateMesh();
    } catch (const NoTriangleMesh&) {
        return; // it had no entity before, with no face hidden
    }
    picking::updateShapeFaces(this);
}

void SolidVisual::resetColor()
{
    if (entity)
        MeshManager::ColorReset(this);
    suitEdges(geometry::ParseColorText(geometry::BodyColorTool::GetBodyColor(id)));
}

void SolidVisual::setBodyColor(const rob::ColorTemplate<float>& color, float)
{
    if (entity)
        MeshManager::SetColor(getCurrentMeshName(), color);
    suitEdges(color);
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

TopoDS_Face SolidVisual::getFaceInWorld(unsigned face) const
{
    const TopoDS_Face& local = TopoDS::Face(getFaceMap().FindKey(static_cast<int>(face)));
    const rob::PoseTemplate<float> pose = getWorldPose();
    if (isNearIdentity(pose))
        return local;
    return TopoDS::Face(local.Moved(TopLoc_Location(rob::toTrsf(rob::PoseTemplate<double>(pose)))));
}

unsigned SolidVisual::getFaceIndex(const TopoDS_Face& face) const
{
    return static_cast<unsigned>(getFaceMap().FindIndex(face));
}

void SolidVisual::checkFace(std::uint64_t face) const
{
    if (face > static_cast<std::uint64_t>(getFaceMap().Extent()))
        throw Standard_OutOfRange("NCollection_IndexedMap::FindKey");
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
    checkFace(face);
    const auto index = static_cast<unsigned>(face);
    takeMarksOff();
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
    // Counts a user of the new mesh. None is given back of a mesh with hidden faces: a set of faces that was shown once is
    // shown again without meshing, at the price that its mesh stays.
    MeshManager::Get()->loadShape(this, geometry::BodyColorTool::GetColorInfo(id));
    if (hiddenFaces.empty()) {
        if (holdsMesh || copied)
            MeshManager::Get()->removeOgreMesh(meshName); // counted already, or by what it was copied from
        else
            holdsMesh = true;
    }
    entity = makeEntity(getName(), getCurrentMeshName());
    entity->setVisible(visible);
    if (group != 0)
        entity->setRenderQueueGroup(group);
    // A selected solid looks normal until its layers are refreshed next, though it stays within the outline.
    resetAppearance();
    putMarksOn();
}

void SolidVisual::destroyEntity()
{
    visual::destroyEntity(*this, std::exchange(entity, nullptr));
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
    putOn(highlightMarks, face,
          rob::ColorTemplate<float>(color.r + highlightGain, color.g + highlightGain, color.b + highlightGain));
}

void SolidVisual::clearHighLightFace(unsigned face)
{
    highlightMarks.erase(face);
    setFaceColor(face, getFaceColor(face));
}

void SolidVisual::markFace(unsigned face, const std::string& text)
{
    checkFace(face);
    putOn(selectedMarks, face, geometry::ParseColorText(text));
}

void SolidVisual::clearSelectedFace(unsigned face)
{
    selectedMarks.erase(face);
    setFaceColor(face, getFaceColor(face));
}

void SolidVisual::putOn(Marks& marks, unsigned face, const rob::ColorTemplate<float>& color)
{
    const rob::ColorTemplate<float> plain = getFaceColor(face);
    setFaceColor(face, color);
    const VertexRun run = entity ? runOfVisibleFace(*this, face) : VertexRun();
    marks.insert_or_assign(face, Mark{color, plain, run.start, run.count});
    if (std::find(solidsWithMarks.begin(), solidsWithMarks.end(), this) == solidsWithMarks.end())
        solidsWithMarks.push_back(this);
}

void SolidVisual::putMarksOn()
{
    // A highlight is for a moment, and the mesh that is left takes it along.
    highlightMarks.clear();
    for (auto& [face, mark] : selectedMarks) {
        const VertexRun run = runOfVisibleFace(*this, face);
        mark.firstVertex = run.start;
        mark.vertexCount = run.count;
        writeRunColor(getCurrentMeshName(), run, mark.color);
    }
}

void SolidVisual::takeMarksOff() const
{
    if (!entity)
        return;
    takeOff(highlightMarks);
    takeOff(selectedMarks);
}

void SolidVisual::takeOff(const Marks& marks) const
{
    if (marks.empty())
        return;
    const std::string mesh = getCurrentMeshName();
    for (const auto& [face, mark] : marks) {
        rob::ColorTemplate<float> left = mark.plain;
        for (const SolidVisual* other : solidsWithMarks) {
            if (other == this || !other->entity || other->getCurrentMeshName() != mesh)
                continue;
            if (const auto same = other->selectedMarks.find(face); same != other->selectedMarks.end())
                left = same->second.color;
        }
        writeRunColor(mesh, {mark.firstVertex, mark.vertexCount}, left);
    }
}

void SolidVisual::clearSelectedFace(const TopoDS_Face& face)
{
    clearSelectedFace(getFaceIndex(face));
}

} // namespace vrk::visual
