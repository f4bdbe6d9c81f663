#include "station/WObjVisual.h"

#include "platform/sdf/SdfManager.h"
#include "platform/task/DataItem.h"
#include "scene/core/SceneCore.h"
#include "station/ParentVisual.h"
#include "visual/FrameVisual.h"
#include "visual/Picking.h"
#include "visual/VisualCast.h"

namespace vrk::visual {
namespace {

/// Unlike other owners, that of a work object must have a visual, unless it is the world.
Visual* ownerVisual(const task::WObjDataItem& item)
{
    const unsigned owner = item.getParentId();
    Visual* found = resolveParent(owner);
    return found == SceneCore::Get()->worldVisual && !isWorldId(owner) ? SceneCore::Get()->visuals.get(owner) : found;
}

} // namespace

WObjVisual::WObjVisual(Visual* parent, task::WObjDataItem& item)
    : Visual("__WOBJ_" + std::to_string(item.getId()), parent), item(&item)
{
    id = item.getId();
    type = VisualType::WObj;
    anchored = true;
    SceneCore::Get()->visuals.enter(this);
    const std::string label = std::to_string(item.getId());
    // Not registered: nothing in the model has its id, and who means the user frame names the group.
    userFrame = new FrameVisual(this, sdf::SdfManager::GenerateTransientId(), "uframe" + label, VisualType::UserFrame);
    auto* objectFrame =
        new FrameVisual(userFrame, item.getObjectFrame()->getId(), "oframe" + label, VisualType::ObjectFrame);
    SceneCore::Get()->visuals.enter(objectFrame);
    if (item.hasFixedUFrame())
        setPose(rob::PoseTemplate<float>(item.getPose()));
    placeObjectFrame();
}

void WObjVisual::Build(Visual* parent, sdf::SdfNode* node)
{
    const auto* visual = new WObjVisual(parent, dynamic_cast<task::WObjDataItem&>(*node));
    picking::addLineVisual(visual->userFrame);
    picking::addLineVisual(visual->getObjectFrame());
}

// Looked up each time: it is registered, and so whoever knows its id can remove it.
FrameVisual* WObjVisual::getObjectFrame() const
{
    for (Visual* child : userFrame->getChildren())
        if (auto* frame = visualCast<FrameVisual>(child, VisualType::ObjectFrame))
            return frame;
    return nullptr;
}

template <typename Call>
void WObjVisual::forFrames(const Call& call)
{
    call(*userFrame);
    if (FrameVisual* objectFrame = getObjectFrame())
        call(*objectFrame);
}

void WObjVisual::placeObjectFrame()
{
    if (FrameVisual* objectFrame = getObjectFrame())
        objectFrame->setPose(rob::PoseTemplate<float>(item->getObjectFrame()->getPose()));
}

void WObjVisual::update()
{
    attachTo(ownerVisual(*item));
    setPose(rob::PoseTemplate<float>(item->getPose()));
    placeObjectFrame();
    forFrames([](Visual& frame) { picking::markDirty(&frame); });
}

void WObjVisual::resetAppearance()
{
    forFrames([](Visual& frame) { frame.resetAppearance(); });
}

void WObjVisual::setSelected()
{
    forFrames([](Visual& frame) { frame.setSelected(); });
}

void WObjVisual::setHighlighted()
{
    forFrames([](Visual& frame) { frame.setHighlighted(); });
}

} // namespace vrk::visual
