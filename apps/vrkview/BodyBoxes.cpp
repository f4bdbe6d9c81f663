#include "BodyBoxes.h"

#include "scene/Scene.h"
#include "visual/Visual.h"

#include <Ogre.h>

namespace vrkview {
namespace {

using vrk::rob::Posf;
using vrk::visual::Visual;

void addCorners(const Visual& visual, std::vector<Posf>& corners)
{
    if (!visual.isVisible())
        return;
    if (visual.getType() == vrk::VisualType::Solid || visual.getType() == vrk::VisualType::Mesh) {
        const Ogre::AxisAlignedBox& box = visual.getSceneNode()->_getWorldAABB();
        if (box.isFinite())
            for (const Ogre::Vector3& corner : box.getAllCorners())
                corners.emplace_back(corner.x, corner.y, corner.z);
    }
    for (const Visual* child : visual.getChildren())
        addCorners(*child, corners);
}

} // namespace

std::vector<Posf> bodyCorners()
{
    const Visual& world = *vrk::visual::Scene::GetWorldVisual();
    world.getSceneNode()->_update(true, false); // the boxes are else those of the last frame
    std::vector<Posf> corners;
    addCorners(world, corners);
    return corners;
}

} // namespace vrkview
