#include "scene/Scene.h"

#include "visual/PointCloudVisual.h"

#include <algorithm>

namespace vrk::visual {

void Scene::selectPointCloud(const std::unordered_map<unsigned, std::vector<std::uint64_t>>& indicesOfClouds)
{
    // The clouds named here leave the list first: clearing what is selected would empty their points, and the new ones
    // replace the old anyway.
    std::erase_if(selectedVisuals, [&](unsigned id) { return indicesOfClouds.contains(id); });
    clearHighlightedVisual();
    clearSelections();
    addRenderTask([this, indicesOfClouds] { doSelectPointCloud(indicesOfClouds); }, 0);
}

void Scene::doSelectPointCloud(const std::unordered_map<unsigned, std::vector<std::uint64_t>>& indicesOfClouds)
{
    for (const auto& [id, indices] : indicesOfClouds) {
        dynamic_cast<PointCloudVisual&>(*GetVisual(id)).setSelectedIndices(indices);
        if (std::find(selectedVisuals.begin(), selectedVisuals.end(), id) == selectedVisuals.end())
            selectedVisuals.push_back(id);
    }
}

} // namespace vrk::visual
