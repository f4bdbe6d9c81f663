#include "scene/Scene.h"

#include "platform/common/Checks.h"
#include "platform/common/Logger.h"
#include "platform/sdf/SdfManager.h"
#include "preview/PolylineVisual.h"
#include "preview/PreviewCurve.h"
#include "preview/PreviewLists.h"
#include "preview/TriangleMeshVisual.h"
#include "scene/core/Refused.h"
#include "scene/core/SceneCore.h"
#include "scene/math/Trsf.h"
#include "task/RobtargetVisual.h"
#include "visual/DynamicLines.h"
#include "visual/EdgeVisual.h"
#include "visual/MeshVisual.h"
#include "visual/PointsVisual.h"
#include "visual/RenderGroups.h"
#include "visual/SolidVisual.h"
#include "visual/VisualCast.h"

#include <BRepTools_WireExplorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>
#include <TopoDS_Wire.hxx>
#include <fmt/format.h>

#include <memory>
#include <utility>

namespace vrk::visual {
namespace {

constexpr const char* material = "PreviewCurve";
const EdgeMaterials edgeMaterials{material, material, material};
constexpr const char* nameOfEdge = "_previewed_edge_";

/// An edge among the previewed curves; null for one without polygon. Its place is `pose` alone: a location that the edge
/// has counts no more.
EdgeVisual* showEdge(SceneCore& core, const std::string& prefix, const TopoDS_Edge& edge, const rob::Posef& pose)
{
    EdgeVisual* visual =
        EdgeVisual::Build(core.worldVisual, prefix, edge, edgeMaterials, EdgeOrigin::Curve).value_or(nullptr);
    if (!visual)
        return nullptr;
    visual->setPose(pose);
    visual->setRenderGroup(renderGroup::handles);
    core.record<PreviewCurves>().add(visual);
    return visual;
}

/// The edges of a wire among the previewed curves, each named by a number that counts all edges, drawn or not.
/// @return the first one that is drawn; null without.
EdgeVisual* showWire(SceneCore& core, const TopoDS_Wire& wire, const rob::Posef& pose, unsigned& number)
{
    EdgeVisual* first = nullptr;
    if (wire.IsNull())
        return first;
    for (BRepTools_WireExplorer walk(wire); walk.More(); walk.Next()) {
        EdgeVisual* visual = showEdge(core, fmt::format("previewed_edge_{}", number++), walk.Current(), pose);
        if (!first)
            first = visual;
    }
    return first;
}

/// @throws common::BadOptionalAccess where no solid has this id.
SolidVisual* solidOf(const SceneCore& core, unsigned id)
{
    Visual* visual = core.visuals.has(id) ? core.visuals.get(id) : nullptr;
    if (auto* solid = visualCast<SolidVisual>(visual, VisualType::Solid))
        return solid;
    throw common::BadOptionalAccess();
}

void showFaces(SceneCore& core, const std::vector<TopoDS_Face>& faces, unsigned id)
{
    SolidVisual* solid = solidOf(core, id);
    for (const TopoDS_Face& face : faces) {
        if (face.IsNull())
            AppLogger::inst()->warn("a face is not previewed: it is empty");
        else
            core.record<PreviewFaces>().add(SolidVisual::Build(solid, face, "PreviewFace"));
    }
}

void setArrowScale(Visual& arrow, double level)
{
    const double scale = level / 5.0;
    arrow.setScale(scale, scale, scale);
}

/// All curves of a list as one visual, which begins with an arrow.
void addDirectedCurves(SceneCore& core, unsigned baseId, const geometry::PointList& list, const rob::Vec3f& direction,
                       const unsigned* givenId)
{
    const rob::Posef base = baseId == 0 ? rob::Posef() : core.visuals.get(baseId)->getWorldPose();
    auto* curve = new PreviewCurve(core.name, core.worldVisual);
    core.record<PreviewCurves>().add(curve); // before what may fail: nobody else could take it away again
    for (const std::vector<rob::Posf>& points : list)
        curve->addStrip(points);
    curve->setPose(base);
    curve->update();
    curve->setMaterial(material, material, material);
    if (list.empty() || list.front().empty()) {
        AppLogger::inst()->warn("a previewed curve has no arrow: it has no point");
    } else {
        // The point is mapped once more by the pose that the arrow inherits: callers give lists of the world with id 0, or
        // of a visual that stands at the origin.
        curve->addArrow(base * list.front().front(), direction);
        setArrowScale(*curve->getArrow(), core.settings.arrowSizeLevel);
    }
    if (givenId)
        curve->setIdentifier(*givenId);
}

void addPolyline(SceneCore& core, const std::vector<rob::Posf>& points, unsigned parentId, bool arrow)
{
    Visual* parent = parentId == 0 ? core.worldVisual : core.visuals.get(parentId);
    core.record<Polylines>().add(PolylineVisual::Build(parent, points, arrow));
}

} // namespace

void Scene::previewEdge(const TopoDS_Edge& edge, const rob::Posef& pose)
{
    refuseUnbounded(pose, "previewEdge");
    addRenderTask([this, edge, pose] { showEdge(*core, nameOfEdge, edge, pose); }, 0);
}

void Scene::previewEdges(std::vector<TopoDS_Edge>* edges, const rob::Posef& pose)
{
    refuseNull(edges, "previewEdges", "edges");
    refuseUnbounded(pose, "previewEdges");
    addRenderTask(
        [this, edges, pose] {
            core->record<PreviewCurves>().deleteAll();
            for (const TopoDS_Edge& edge : *edges)
                showEdge(*core, nameOfEdge, edge, pose);
        },
        0);
}

void Scene::previewWire(const TopoDS_Wire& wire, const rob::Posef& pose)
{
    refuseUnbounded(pose, "previewWire");
    addRenderTask(
        [this, wire, pose] {
            core->record<PreviewCurves>().deleteAll();
            unsigned number = 0;
            showWire(*core, wire, pose, number);
        },
        0);
}

void Scene::previewCurves(std::vector<TopoDS_Wire>* wires, const rob::Posef& pose)
{
    refuseNull(wires, "previewCurves", "wires");
    refuseUnbounded(pose, "previewCurves");
    addRenderTask(
        [this, wires, pose] {
            core->record<PreviewCurves>().deleteAll();
            unsigned number = 0;
            for (const TopoDS_Wire& wire : *wires)
                if (EdgeVisual* first = showWire(*core, wire, pose, number))
                    first->addArrow(false);
        },
        0);
}

void Scene::addPreviewCurves(unsigned id, geometry::PointList* list)
{
    refuseNull(list, "addPreviewCurves", "a list");
    addRenderTask(
        [this, id, owned = std::shared_ptr<geometry::PointList>(list)] {
            const rob::Posef base = GetVisual(id)->getWorldPose();
            for (unsigned n = 0; n < owned->size(); ++n) {
                auto* curve = new PreviewCurve(fmt::format("previewed_curve_{}_{}", id, n), core->worldVisual);
                curve->addStrip((*owned)[n]);
                curve->setPose(base);
                curve->update();
                curve->setMaterial(material, material, material);
                core->record<PreviewCurves>().add(curve);
            }
        },
        0);
}

void Scene::addPreviewCurvesWithDirection(unsigned id, geometry::PointList* list, const rob::Vec3f& direction)
{
    refuseNull(list, "addPreviewCurvesWithDirection", "a list");
    addRenderTask([this, id, owned = std::shared_ptr<geometry::PointList>(list),
                   direction] { addDirectedCurves(*core, id, *owned, direction, nullptr); },
                  0);
}

void Scene::addPreviewCurvesWithDirection(unsigned id, geometry::PointList* list, const rob::Vec3f& direction,
                                          unsigned curveId)
{
    refuseNull(list, "addPreviewCurvesWithDirection", "a list");
    addRenderTask([this, id, owned = std::shared_ptr<geometry::PointList>(list), direction,
                   curveId] { addDirectedCurves(*core, id, *owned, direction, &curveId); },
                  0);
}

void Scene::removePreviewCurve(unsigned id)
{
    addRenderTask([this, id] { core->record<PreviewCurves>().deleteFirst(id); }, 0);
}

void Scene::removePreviewCurves()
{
    addRenderTask([this] { core->record<PreviewCurves>().deleteAll(); }, 0);
}

void Scene::setArrowSizeLevel(unsigned level)
{
    addRenderTask(
        [this, level] {
            core->settings.arrowSizeLevel = static_cast<std::int32_t>(level);
            for (const Visual* curve : core->record<PreviewCurves>().all())
                for (Visual* child : curve->getChildren())
                    if (child->getName().starts_with("mfg_arrow"))
                        setArrowScale(*child, level);
        },
        0);
}

void Scene::previewFace(const TopoDS_Face& face, unsigned id)
{
    removePreviewFaces();
    addRenderTask([this, face, id] { showFaces(*core, {face}, id); }, 0);
}

void Scene::previewFaces(std::vector<TopoDS_Face> faces, unsigned id)
{
    removePreviewFaces();
    addRenderTask([this, faces = std::move(faces), id] { showFaces(*core, faces, id); }, 0);
}

void Scene::removePreviewFaces()
{
    addRenderTask([this] { core->record<PreviewFaces>().deleteAll(); }, 0);
}

void Scene::previewPoints(std::vector<gp_Pnt>* points, unsigned id, const rob::Colorf& color)
{
    refuseNull(points, "previewPoints", "points");
    addRenderTask(
        [this, points, id, color] {
            Visual* parent = GetVisual(id);
            std::vector<rob::Posf> narrowed;
            narrowed.reserve(points->size());
            for (const gp_Pnt& point : *points)
                narrowed.push_back(rob::toPosf(point));
            auto* visual = new PointsVisual(parent, narrowed);
            visual->setColor(color, 1.0f);
            core->record<PreviewedPoints>().add(visual);
        },
        0);
}

void Scene::previewTargets(const std::vector<rob::Posef>& poses)
{
    for (const rob::Posef& pose : poses)
        refuseUnbounded(pose, "previewTargets");
    addRenderTask(
        [this, poses] {
            auto& list = core->record<PreviewedPoints>();
            list.deleteAll();
            for (const rob::Posef& pose : poses) {
                auto* target = new RobtargetVisual(core->worldVisual, sdf::SdfManager::GenerateTransientId());
                target->setPose(pose);
                target->preview();
                list.add(target);
            }
        },
        0);
}

void Scene::removePreviewedPoints()
{
    addRenderTask([this] { core->record<PreviewedPoints>().deleteAll(); }, 0);
}

void Scene::previewTriangleMesh(std::vector<std::pair<rob::Posf, rob::Posf>>* segments, unsigned id)
{
    refuseNull(segments, "previewTriangleMesh", "segments");
    addRenderTask(
        [segments, id] {
            auto* visual = new TriangleMeshVisual(GetVisual(id));
            DynamicLines* line = visual->createDynamicLine(RenderOpType::Lines);
            for (const auto& [from, to] : *segments) {
                line->addPoint(from.x, from.y, from.z);
                line->addPoint(to.x, to.y, to.z);
            }
            visual->update();
            visual->setMaterial(material, material, material);
        },
        0);
}

void Scene::drawPolyline(const std::vector<rob::Posf>& points, unsigned parentId, bool arrow)
{
    addRenderTask([this, points, parentId, arrow] { addPolyline(*core, points, parentId, arrow); }, 0);
}

void Scene::drawPolylines(const std::vector<std::vector<rob::Posf>>& lines, unsigned parentId, bool arrow)
{
    addRenderTask(
        [this, lines, parentId, arrow] {
            for (const std::vector<rob::Posf>& points : lines)
                addPolyline(*core, points, parentId, arrow);
        },
        0);
}

void Scene::removePolylines()
{
    addRenderTask([this] { core->record<Polylines>().deleteAll(); }, 0);
}

} // namespace vrk::visual
