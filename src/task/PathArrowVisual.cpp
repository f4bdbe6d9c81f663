#include "task/PathArrowVisual.h"

#include "scene/core/OgreCompat.h"
#include "scene/core/SceneCore.h"
#include "task/PathParts.h"
#include "task/PathSegments.h"
#include "visual/RenderGroups.h"

#include "platform/sdf/SdfManager.h"

#include <Ogre.h>
#include <OgreInstancedEntity.h>

namespace vrk::visual {
namespace {

Ogre::InstancedEntity* makeEntity()
{
    constexpr const char* material = "InstanceArrow";
    materialByName(material); // for its failure: the batch would take null, and crash on it
    Ogre::InstancedEntity* made =
        SceneCore::Get()->instanceManagers.get("InstancePathArrow")->createInstancedEntity(material);
    made->_getOwner()->setRenderQueueGroup(renderGroup::lines);
    return made;
}

} // namespace

PathArrowVisual::PathArrowVisual(Visual* parent, PartKeeper* keeper, const PathArrow& arrow)
    : Visual(sdf::SdfManager::GenerateTransientId(), parent), keeper(keeper), entity(makeEntity())
{
    // OGRE reuses instances: this one may have been small, or hidden, in its former life.
    setScale(arrow.scale, arrow.scale, arrow.scale);
    attachObject(entity);
    sceneEnteredOrLeft();
    constexpr rob::DirTemplate<float> meshDirection(0, 0, 1);
    setPose({arrow.position, rob::RotationTemplate<float>::From2Dirs(meshDirection, arrow.direction)});
}

PathArrowVisual::~PathArrowVisual()
{
    if (keeper)
        keeper->forgetPart(this);
    entity->_getOwner()->removeInstancedEntity(entity);
}

void PathArrowVisual::setScale(double x, double y, double z)
{
    entity->setScale({static_cast<float>(x), static_cast<float>(y), static_cast<float>(z)}, true);
}

void PathArrowVisual::setVisible(bool nowVisible, bool)
{
    visible = nowVisible;
    sceneEnteredOrLeft();
}

void PathArrowVisual::sceneEnteredOrLeft()
{
    // An instance is drawn wherever its node hangs, even if that is nowhere.
    entity->setVisible(visible && sceneNode->isInSceneGraph());
}

} // namespace vrk::visual
