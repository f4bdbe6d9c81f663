#include "canvas/ProgramParts.h"

#include "canvas/Visibility.h"

#include "platform/layout/Layout.h"
#include "platform/sdf/SdfManager.h"
#include "platform/task/Task.h"
#include "scene/Scene.h"
#include "visual/VisualStateManager.h"

#include <array>
#include <shared_mutex>
#include <vector>

namespace vrkview {
namespace {

using vrk::visual::Scene;

constexpr std::array names = {
    ProgramPartName{ProgramPart::Targets, "targets"}, ProgramPartName{ProgramPart::Arrows, "arrows"},
    ProgramPartName{ProgramPart::Lines, "lines"}, ProgramPartName{ProgramPart::ZAxesOnly, "z-axes-only"}};

std::array<bool, names.size()> drawnParts = {true, true, true, false}; // of the one scene

std::vector<unsigned> allPaths()
{
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    std::vector<unsigned> ids;
    for (const auto& task : vrk::layout::Layout::inst().tasks)
        ids.insert(ids.end(), task->getPaths().begin(), task->getPaths().end());
    return ids;
}

/// What is new looks as what it belongs to: selected, or hidden.
void followLooks()
{
    Scene& scene = *Scene::Get();
    scene.addRenderTask(
        [&scene] {
            for (const unsigned id : scene.getSelectedVisuals())
                if (Scene::HasVisual(id))
                    Scene::GetStateManager()->refresh(Scene::GetVisual(id));
        },
        0);
    hideWhatModelHides();
}

} // namespace

std::span<const ProgramPartName> allProgramParts()
{
    return names;
}

bool isDrawn(ProgramPart part)
{
    return drawnParts[static_cast<std::size_t>(part)];
}

void draw(ProgramPart part, bool drawn)
{
    if (isDrawn(part) == drawn)
        return;
    drawnParts[static_cast<std::size_t>(part)] = drawn;
    Scene* scene = Scene::Get();
    if (!scene)
        return; // it starts so
    switch (part) {
    case ProgramPart::Targets:
        scene->setDrawTargetVisual(drawn);
        break;
    case ProgramPart::Arrows:
        scene->setDrawPathArrow(drawn);
        if (drawn)
            scene->updatePaths(
                allPaths()); // it draws arrows to postures and between work objects, too, where no line is
        break;
    case ProgramPart::Lines:
        scene->setDrawSegVisual(drawn);
        break;
    case ProgramPart::ZAxesOnly:
        scene->setDrawTargetZAxisOnly(drawn);
        return;
    }
    followLooks();
}

} // namespace vrkview
