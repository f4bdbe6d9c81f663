#include "scene/Scene.h"

#include "platform/common/Checks.h"
#include "platform/common/Logger.h"
#include "preview/PreviewLists.h"
#include "preview/annotation/DimensionVisual.h"
#include "preview/annotation/WorkEnvelopeVisuals.h"
#include "scene/core/OgreCompat.h"
#include "scene/core/SceneCore.h"
#include "scene/math/Shapes.h"
#include "station/ManipulatorVisual.h"
#include "visual/VisualCast.h"

#include <fmt/format.h>

#include <algorithm>

namespace vrk::visual {
namespace {

/// @throws common::BadOptionalAccess for a visual that is no arm.
ManipulatorVisual& manipulatorOf(Visual* visual)
{
    if (auto* manipulator = visualCast<ManipulatorVisual>(visual, VisualType::Manipulator))
        return *manipulator;
    throw common::BadOptionalAccess();
}

/// @throws common::BadOptionalAccess where no arm has this id.
ManipulatorVisual& manipulatorOf(const SceneCore& core, unsigned id)
{
    return manipulatorOf(core.visuals.has(id) ? core.visuals.get(id) : nullptr);
}

} // namespace

void Scene::createDistanceVisual(const rob::Posd& a, const rob::Posd& b)
{
    addRenderTask(
        [this, a, b] {
            core->record<DimensionVisuals>().add(new DimensionVisual(core->worldVisual, rob::Posf(a), rob::Posf(b)));
        },
        0);
}

void Scene::createAngleVisual(const rob::Posd& apex, const rob::Posd& b, const rob::Posd& c, double angle)
{
    addRenderTask([this, apex, b, c, angle] { doCreateAngleVisual(apex, b, c, angle); }, 0);
}

void Scene::doCreateAngleVisual(const rob::Posd& apex, const rob::Posd& b, const rob::Posd& c, double angle)
{
    core->record<DimensionVisuals>().add(
        new DimensionVisual(core->worldVisual, rob::Posf(apex), rob::Posf(b), rob::Posf(c), angle));
}

void Scene::createDiameterVisual(const rob::TPCircle& circle)
{
    addRenderTask(
        [this, circle] { core->record<DimensionVisuals>().add(new DimensionVisual(core->worldVisual, circle)); }, 0);
}

void Scene::removeDimensionVisual()
{
    addRenderTask([this] { doRemoveDimensionVisual(); }, 0);
}

void Scene::doRemoveDimensionVisual()
{
    core->record<DimensionVisuals>().deleteAll();
}

void Scene::addWorkEnvelopeVisual(unsigned manipulatorId, unsigned frameId, const std::vector<rob::Posd>& points,
                                  const std::vector<rob::Dird>& normals, float from, float to)
{
    addRenderTask([this, manipulatorId, frameId, points, normals, from,
                   to] { doAddWorkEnvelopeVisual(manipulatorId, frameId, points, normals, from, to); },
                  0);
}

void Scene::doAddWorkEnvelopeVisual(unsigned manipulatorId, unsigned frameId, const std::vector<rob::Posd>& points,
                                    const std::vector<rob::Dird>& normals, float from, float to)
{
    if (!HasVisual(frameId))
        return;
    Visual* frame = GetVisual(frameId);
    ManipulatorVisual& manipulator = manipulatorOf(GetVisual(manipulatorId));
    const bool canBeDrawn = std::ranges::all_of(points, [](const rob::Posd& p) { return fitsBox(rob::Posf(p)); });
    if (normals.size() != points.size() || !canBeDrawn) {
        AppLogger::inst()->warn("a reach is not shown: it needs finite points, and one normal for each");
        return;
    }
    const std::string base = fmt::format("work_envelope_{}", manipulatorId);
    auto* surface = new WorkEnvelope3DVisual(base + "_3d", &manipulator);
    surface->setSurface(points, normals, from, to);
    auto* curve = new WorkEnvelope2DVisual(base + "_2d", frame);
    curve->setCurve(points);
    // A pair from before stays in the scene, and nobody knows it any more.
    manipulator.setEnvelope2D(curve);
    manipulator.setEnvelope3D(surface);
}

void Scene::updateWorkEnvelopeVisual(unsigned manipulatorId, bool show2D, bool show3D)
{
    addRenderTask(
        [this, manipulatorId, show2D, show3D] {
            const ManipulatorVisual& manipulator = manipulatorOf(*core, manipulatorId);
            if (Visual* curve = manipulator.getEnvelope2D())
                curve->setVisible(show2D, true);
            if (Visual* surface = manipulator.getEnvelope3D())
                surface->setVisible(show3D, true);
        },
        0);
}

void Scene::removeWorkEnvelopeVisual(unsigned manipulatorId)
{
    addRenderTask(
        [this, manipulatorId] {
            ManipulatorVisual& manipulator = manipulatorOf(*core, manipulatorId);
            // Each leaves the pair as it dies.
            if (Visual* curve = manipulator.getEnvelope2D())
                deleteVisual(curve);
            if (Visual* surface = manipulator.getEnvelope3D())
                deleteVisual(surface);
        },
        0);
}

} // namespace vrk::visual
