#include "scene/Scene.h"

#include "scene/core/SceneCore.h"
#include "visual/PointCloudVisual.h"
#include "visual/SelectedIds.h"

namespace vrk::visual {
namespace {

void selectPoints(SelectedIds& selected,
                  const std::unordered_map<unsigned, std::vector<std::uint64_t>>& indicesOfClouds)
{
    for (const auto& [id, indices] : indicesOfClouds) {
        dynamic_cast<PointCloudVisual&>(*Scene::GetVisual(id)).setSelectedIndices(indices);
        selected.addOnce(id);
    }
}

} // namespace

void Scene::selectPointCloud(const std::unordered_map<unsigned, std::vector<std::uint64_t>>& indicesOfClouds)
{
    // The clouds named here leave the list first: clearing what is selected would empty their points, and the new ones
    // replace the old anyway.
    auto& selected = core->record<SelectedIds>();
    const std::vector<unsigned> replaced = selected.remove([&](unsigned id) { return indicesOfClouds.contains(id); });
    clearHighlightedVisual();
    clearSelections();
    // Should the new points not come, the old ones stand in no list.
    core->owed.post([&selected, indicesOfClouds] { selectPoints(selected, indicesOfClouds); },
                    [this, &selected, replaced] {
                        for (const unsigned id : replaced)
                            selected.addOnce(id);
                        doClearSelectedVisuals();
                    });
}

} // namespace vrk::visual
