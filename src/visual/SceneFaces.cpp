#include "scene/Scene.h"

#include "platform/sdf/SdfObject.h"
#include "scene/core/SceneCore.h"
#include "scene/math/Trsf.h"
#include "visual/SolidVisual.h"

#include <TopLoc_Location.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>

#include <algorithm>
#include <cmath>

namespace vrk::visual {
namespace {

constexpr const char* baseFaceColor = "#10C279";
constexpr const char* sideFaceColor = "#0D8DDF";

SolidVisual& solidOf(unsigned id)
{
    return dynamic_cast<SolidVisual&>(*Scene::GetVisual(id));
}

bool isNearIdentity(const rob::PoseTemplate<float>& pose)
{
    constexpr float minLength = 0.01f;
    constexpr float minTurn = 0.001f;
    const auto& q = pose.orientation;
    return pose.position.length() < minLength && std::abs(q.w - 1.0f) < minTurn && std::abs(q.x) < minTurn &&
           std::abs(q.y) < minTurn && std::abs(q.z) < minTurn;
}

} // namespace

bool Scene::faceIsSelected(SolidVisual* visual, unsigned face) const
{
    return std::find(selectedFaces.begin(), selectedFaces.end(), FaceOfSolid(visual, face)) != selectedFaces.end();
}

void Scene::highlightFace(SolidVisual* visual, unsigned face)
{
    if (highlightedFace == FaceOfSolid(visual, face))
        return;
    visual->checkFace(face); // a number that stands in a record would fail at each later use
    clearHighlightedVisual();
    if (faceIsSelected(visual, face))
        return; // its selection colour stays
    highlightedFace = {visual, face};
    addVisualTask(visual, [visual, face] { visual->highLightFace(face); });
}

void Scene::clearHighlightedFace()
{
    core->owed.postWhatIsOwed();
    const auto [visual, face] = std::exchange(highlightedFace, {});
    if (visual)
        addEndOfLook(visual, [visual = visual, face = face] { visual->clearHighLightFace(face); });
}

void Scene::selectBaseFace(unsigned id, unsigned face)
{
    selectFace(id, face, baseFaceColor);
}

void Scene::selectSideFace(unsigned id, unsigned face)
{
    selectFace(id, face, sideFaceColor);
}

void Scene::selectFace(unsigned id, unsigned face, const char* color)
{
    Visual* visual = GetVisual(id);
    if (visual->getType() != VisualType::Solid)
        return;
    auto* solid = static_cast<SolidVisual*>(visual);
    if (faceIsSelected(solid, face))
        return; // a face keeps the first of the two marks
    solid->checkFace(face);
    clearHighlightedVisual();
    selectedFaces.emplace_back(solid, face);
    addVisualTask(solid, [solid, face, color] { solid->markFace(face, color); });
}

void Scene::clearSelectedFace(unsigned id, unsigned face)
{
    clearHighlightedVisual();
    Visual* visual = GetVisual(id);
    if (visual->getType() != VisualType::Solid)
        return;
    auto* solid = static_cast<SolidVisual*>(visual);
    if (std::erase(selectedFaces, FaceOfSolid(solid, face)) > 0)
        addEndOfLook(solid, [solid, face] { solid->clearSelectedFace(face); });
}

void Scene::clearSelectedFaces()
{
    core->owed.postWhatIsOwed();
    for (const auto& [visual, face] : std::exchange(selectedFaces, {}))
        addEndOfLook(visual, [visual = visual, face = face] { visual->clearSelectedFace(face); });
}

const TopoDS_Face& Scene::GetBodyFace(unsigned id, unsigned face)
{
    return TopoDS::Face(solidOf(id).getFaceMap().FindKey(static_cast<int>(face)));
}

TopoDS_Face Scene::GetBodyFaceInWorld(unsigned id, unsigned face)
{
    const TopoDS_Face& local = GetBodyFace(id, face);
    const rob::PoseTemplate<float> pose = solidOf(id).getWorldPose();
    if (isNearIdentity(pose))
        return local;
    return TopoDS::Face(local.Moved(TopLoc_Location(rob::toTrsf(rob::PoseTemplate<double>(pose)))));
}

void Scene::updateSolidVisual(sdf::SdfNode* node, const TopoDS_Shape& shape)
{
    const unsigned id = node->getId();
    if (!HasVisual(id) || !dynamic_cast<SolidVisual*>(GetVisual(id)))
        return;
    addRenderTask(
        [this, node, shape] {
            Visual* parent = GetVisual(node->getId())->getParent();
            doRemoveVisual(node->getId());
            SolidVisual::Build(parent, node, shape);
        },
        0);
}

} // namespace vrk::visual
