#include "selection/SelectableObject.h"

#include "selection/geometry/BVHBuilder.h"
#include "visual/Visual.h"

#include <OgreSceneNode.h>

namespace vrk::selection {

SelectableObject::~SelectableObject()
{
    if (isBorrower)
        primitives.clear();
}

void SelectableObject::intersectRayWithin(Result& result, const visual::Ray& ray, float) const
{
    intersectRay(result, ray);
}

bool SelectableObject::beginUpdate()
{
    if (!worldDirty)
        return false;
    if (!built)
        buildParts();
    return true;
}

void SelectableObject::buildParts()
{
    try {
        buildPrimitives();
    } catch (...) {
        for (BVHPrimitive* primitive : primitives)
            delete primitive;
        primitives.clear();
        throw;
    }
    built = true;
}

void SelectableObject::takePose(const rob::PoseTemplate<float>& pose)
{
    worldPose = pose;
    inverseWorldPose = pose.inverse();
    if (const Ogre::SceneNode* node = visual->getSceneNode()) {
        const Ogre::Vector3& scale = node->_getDerivedScale();
        worldScale = {scale.x, scale.y, scale.z};
    }
}

void SelectableObject::updateFromHierarchy()
{
    if (!beginUpdate())
        return;
    takePose(visual->getWorldPose());
    const visual::Box parts = partsBox();
    // Without parts there is no box, and the scene's hierarchy leaves the object out.
    box = parts.isValid() ? parts.transformed(worldPose) : visual::Box();
    worldDirty = false;
}

void SelectableObject::buildHierarchy()
{
    bvh = BVHBuilder(this).build();
}

void SelectableObject::borrowParts(const PrimitiveContainer& all)
{
    isBorrower = true;
    primitives = all.primitives;
    bvh.root = all.bvh.root;
    bvh.arena.reset(); // the nodes are not its own
}

void SelectableObject::finish(Result& result) const
{
    if (!result.hit)
        return;
    result.visual = visual;
    result.position = worldPose * result.position;
}

} // namespace vrk::selection
