#include "scene/SmallEdges.h"

#include "scene/core/OgreCompat.h"
#include "visual/DynamicLines.h"

#include <Ogre.h>

#include <algorithm>
#include <cmath>
#include <typeinfo>

namespace vrk::visual {

void SmallEdges::use(const Ogre::Viewport& viewport)
{
    const Ogre::Camera& camera = *viewport.getCamera();
    const auto rows = static_cast<float>(viewport.getActualHeight());
    view = camera.getViewMatrix();
    isPerspective = camera.getProjectionType() == Ogre::PT_PERSPECTIVE;
    pixelsOfUnit = std::abs(camera.getProjectionMatrix()[1][1]) * rows / std::max(1.0f, rows / 1080.0f);
    seen.clear();
}

bool SmallEdges::isUnseen(const Ogre::Renderable& renderable, const Ogre::Technique& technique)
{
    // Asked for each of all that is drawn: a cast would take ten times as long.
    if (typeid(renderable) != typeid(DynamicLines))
        return false;
    const float least = seenFrom(technique);
    if (least <= 0)
        return false;
    const auto& lines = static_cast<const DynamicLines&>(renderable);
    const Box& bounds = lines.getBounds();
    const Ogre::SceneNode* node = lines.getParentSceneNode();
    if (!bounds.isValid() || !node)
        return false;
    const rob::Vec3Template<float> half = (bounds.max - bounds.min) * 0.5f;
    const Ogre::Affine3& toWorld = node->_getFullTransform();
    const float radius = half.length();
    const float distance = isPerspective ? -(view * (toWorld * toOgre(bounds.min + half))).z : 1.0f;
    if (distance <= radius)
        return false;
    const float scale = Ogre::Vector3(toWorld[0][0], toWorld[1][0], toWorld[2][0]).length();
    constexpr float rounding = 0.999f; // the driver reckons in another order
    return radius * scale * pixelsOfUnit < least * rounding * distance;
}

/// 0 where edges are drawn whatever their size.
float SmallEdges::seenFrom(const Ogre::Technique& technique)
{
    const auto [found, isNew] = seen.try_emplace(&technique, 0.0f);
    if (!isNew || technique.getNumPasses() == 0 || !technique.getPass(0)->hasGeometryProgram())
        return found->second;
    const Ogre::GpuProgramParametersSharedPtr& parameters = technique.getPass(0)->getGeometryProgramParameters();
    if (const auto* constant = parameters->_findNamedConstantDefinition("seenFrom"))
        found->second = *parameters->getFloatPointer(constant->physicalIndex);
    return found->second;
}

} // namespace vrk::visual
