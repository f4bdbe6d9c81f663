#include "scene/Scene.h"

#include "scene/core/SceneCore.h"
#include "visual/PointCloudVisual.h"
#include "visual/SelectedIds.h"

namespace vrk::visual {

void Scene::selectPointCloud(const std::unordered_map<unsigned, std::vector<std::uint64_t>>& indicesOfClouds)
{
    // The clouds named here leave the list first: clearing what is selected would empty their points, and the new ones
    // replace the old anyway.
    const std::vector<unsigned> replaced =
        selectedVisuals->remove([&](unsigned id) { return indicesOfClouds.contains(id); });
    clearHighlightedVisual();
    clearSelections();
    // Should the new points not come, the old ones stand in no list.
    core->owed.post([this, indicesOfClouds] { doSelectPointCloud(indicesOfClouds); },
                    [this, replaced] {
                        for (const unsigned id : replaced)
                            selectedVisuals->addOnce(id);
                        doClearSelectedVisuals();
                    });
}

void Scene::doSelectPointCloud(const std::unordered_map<unsigned, std::vector<std::uint64_t>>& indicesOfClouds)
{
    for (const auto& [id, indices] : indicesOfClouds) {
        dynamic_cast<PointCloudVisual&>(*GetVisual(id)).setSelectedIndices(indices);
        selectedVisuals->addOnce(id);
    }
}

} // namespace vrk::visual
