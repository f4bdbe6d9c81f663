#include "scene/Scene.h"

#include "visual/PointCloudVisual.h"

namespace vrk::visual {

void Scene::addPointCloud(sdf::SdfNode* node)
{
    addRenderTask([node] { PointCloudVisual::Build(GetWorldVisual(), node); }, 0);
}

} // namespace vrk::visual
