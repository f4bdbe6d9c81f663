#include "scene/Scene.h"

#include "platform/sdf/SdfObject.h"
#include "scene/core/SceneCore.h"
#include "visual/SolidVisual.h"
#include "visual/VisualCast.h"

#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>

#include <algorithm>

namespace vrk::visual {
namespace {

constexpr const char* baseFaceColor = "#10C279";
constexpr const char* sideFaceColor = "#0D8DDF";

SolidVisual& solidOf(unsigned id)
{
    return dynamic_cast<SolidVisual&>(*Scene::GetVisual(id));
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
    auto* solid = visualCast<SolidVisual>(GetVisual(id), VisualType::Solid);
    if (!solid)
        return;
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
    auto* solid = visualCast<SolidVisual>(GetVisual(id), VisualType::Solid);
    if (solid && std::erase(selectedFaces, FaceOfSolid(solid, face)) > 0)
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
    return solidOf(id).getFaceInWorld(face);
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
