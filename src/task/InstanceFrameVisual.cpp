#include "task/InstanceFrameVisual.h"

#include "scene/core/OgreCompat.h"
#include "scene/core/SceneCore.h"
#include "selection/VisualSelection.h"
#include "task/PathMoves.h"
#include "visual/FrameVisual.h" // SizeOf
#include "visual/Picking.h"
#include "visual/RenderGroups.h"

#include <Ogre.h>

namespace vrk::visual {
namespace {

// Too short to be seen, and not 0: the size of what is picked and culled is read from the instance.
constexpr float hiddenAxis = 0.01f;

/// The mesh has axes of unit length.
Ogre::Vector3 scaleOf(unsigned size)
{
    const auto length = static_cast<float>(size);
    if (SceneCore::Get()->settings.drawTargetZAxisOnly)
        return {hiddenAxis, hiddenAxis, length};
    return Ogre::Vector3(length);
}

} // namespace

InstanceFrameVisual::InstanceFrameVisual(Visual* parent, unsigned id, const std::string& name, VisualType givenType,
                                         std::string material)
    : Visual(id, name, parent)
{
    type = givenType;
    entity = makeEntity("VRK_FrameInstanceManager", material);
    showOnly(entity); // OGRE reuses instances, and this one may have been hidden in its former life
}

InstanceFrameVisual::~InstanceFrameVisual()
{
    if (keeper)
        keeper->forgetPart(this);
    picking::removeObject(this);
    for (Ogre::InstancedEntity* each : {entity, highlightEntity, selectedEntity})
        if (each)
            each->_getOwner()->removeInstancedEntity(each);
}

Ogre::InstancedEntity* InstanceFrameVisual::makeEntity(const std::string& manager, const std::string& material)
{
    materialByName(material); // for its failure: the batch would take null, and crash on it
    Ogre::InstancedEntity* made = SceneCore::Get()->instanceManagers.get(manager)->createInstancedEntity(material);
    made->setScale(scaleOf(FrameVisual::SizeOf(type)), true);
    made->_getOwner()->setRenderQueueGroup(renderGroup::lines);
    attachObject(made);
    return made;
}

void InstanceFrameVisual::showOnly(Ogre::InstancedEntity* wanted)
{
    shown = wanted;
    // An instance is drawn wherever its node hangs, even if that is nowhere.
    const bool isSeen = visible && sceneNode->isInSceneGraph();
    for (Ogre::InstancedEntity* each : {entity, highlightEntity, selectedEntity})
        if (each)
            each->setVisible(isSeen && each == wanted);
}

void InstanceFrameVisual::sceneEnteredOrLeft()
{
    showOnly(shown);
}

float InstanceFrameVisual::getFrameSize() const
{
    return entity->getScale().z;
}

void InstanceFrameVisual::setFrameSize(unsigned size)
{
    for (Ogre::InstancedEntity* each : {entity, highlightEntity, selectedEntity})
        if (each)
            each->setScale(scaleOf(size), true);
    selection::VisualSelection* service = selection::VisualSelection::Get();
    if (!service || !service->hasVisual(this))
        return;
    // What is hidden stays out of picking.
    const bool isEnabled = service->isEnabled(this);
    const bool isDetectable = service->isDetectable(this);
    service->removeCompoundObject(this);
    service->addFrameVisual(this);
    service->setObjectEnabled(this, isEnabled);
    service->setDetectable(this, isDetectable);
}

void InstanceFrameVisual::updateEntity(bool)
{
    setFrameSize(FrameVisual::SizeOf(type));
}

void InstanceFrameVisual::setVisible(bool nowVisible, bool recursive)
{
    Visual::setVisible(nowVisible, recursive); // all instances at once
    if (nowVisible)
        showOnly(entity);
}

void InstanceFrameVisual::resetAppearance()
{
    showOnly(entity);
}

// The looks below are of the size that the scene has for the type, which a size of this frame alone does not change.

void InstanceFrameVisual::setSelected()
{
    if (!selectedEntity)
        selectedEntity = makeEntity("InstanceRobTargetSelected", "InstanceRobTargetSelected");
    showOnly(selectedEntity);
}

void InstanceFrameVisual::setHighlighted()
{
    if (!highlightEntity)
        highlightEntity = makeEntity("InstanceRobTargetHighlight", "InstanceRobTargetHighlight");
    showOnly(highlightEntity);
}

void InstanceFrameVisual::clearHighlightOrSelect()
{
    setVisible(visible, false);
}

void InstanceFrameVisual::showLookOfWhole()
{
    if (keeper)
        showLook(*this, keeper->getLook());
}

} // namespace vrk::visual
