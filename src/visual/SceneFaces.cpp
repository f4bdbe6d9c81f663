#include "scene/Scene.h"

#include "platform/sdf/SdfObject.h"
#include "scene/core/Refused.h"
#include "scene/core/SceneCore.h"
#include "visual/SolidVisual.h"
#include "visual/VisualCast.h"

#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>

#include <algorithm>
#include <utility>
#include <vector>

namespace vrk::visual {
namespace {

constexpr const char* baseFaceColor = "#10C279";
constexpr const char* sideFaceColor = "#0D8DDF";

using FaceOfSolid = std::pair<SolidVisual*, unsigned>;

/// The faces that are marked. Read and written where the scene's operations are called.
struct MarkedFaces {
    explicit MarkedFaces(SceneCore& core)
    {
        core.visuals.whenDeleted([this](const Visual* dying) {
            const auto isOfIt = [dying](const FaceOfSolid& face) { return face.first == dying; };
            if (isOfIt(highlighted))
                highlighted = {};
            std::erase_if(selected, isOfIt);
        });
    }

    bool isSelected(const FaceOfSolid& face) const
    {
        return std::find(selected.begin(), selected.end(), face) != selected.end();
    }

    FaceOfSolid highlighted{};
    std::vector<FaceOfSolid> selected; ///< in the order of selection
};

SolidVisual& solidOf(unsigned id)
{
    return dynamic_cast<SolidVisual&>(*Scene::GetVisual(id));
}

} // namespace

bool Scene::faceIsSelected(SolidVisual* visual, unsigned face) const
{
    return core->record<MarkedFaces>().isSelected({visual, face});
}

void Scene::highlightFace(SolidVisual* visual, unsigned face)
{
    refuseNull(visual, "highlightFace", "a solid");
    auto& marked = core->record<MarkedFaces>();
    if (marked.highlighted == FaceOfSolid(visual, face))
        return;
    visual->checkFace(face); // a number that stands in a record would fail at each later use
    clearHighlightedVisual();
    if (marked.isSelected({visual, face}))
        return; // its selection colour stays
    marked.highlighted = {visual, face};
    addVisualTask(visual, [visual, face] { visual->highLightFace(face); });
}

void Scene::clearHighlightedFace()
{
    core->owed.postWhatIsOwed();
    const auto [visual, face] = std::exchange(core->record<MarkedFaces>().highlighted, {});
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
    core->record<MarkedFaces>().selected.emplace_back(solid, face);
    addVisualTask(solid, [solid, face, color] { solid->markFace(face, color); });
}

void Scene::clearSelectedFace(unsigned id, unsigned face)
{
    clearHighlightedVisual();
    auto* solid = visualCast<SolidVisual>(GetVisual(id), VisualType::Solid);
    if (solid && std::erase(core->record<MarkedFaces>().selected, FaceOfSolid(solid, face)) > 0)
        addEndOfLook(solid, [solid, face] { solid->clearSelectedFace(face); });
}

void Scene::clearSelectedFaces()
{
    core->owed.postWhatIsOwed();
    for (const auto& [visual, face] : std::exchange(core->record<MarkedFaces>().selected, {}))
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
    refuseNull(node, "updateSolidVisual", "a body");
    const unsigned id = node->getId();
    if (!HasVisual(id) || !dynamic_cast<SolidVisual*>(GetVisual(id)))
        return;
    addRenderTask(
        [this, node, shape] {
            const Visual* old = GetVisual(node->getId());
            Visual* parent = old->getParent();
            const std::function<void()> drawBands = keepBands(*old);
            doRemoveVisual(node->getId());
            SolidVisual::Build(parent, node, shape);
            drawBands(); // they are none of the body's state, but things of their own that hang on its visual
        },
        0);
}

} // namespace vrk::visual
