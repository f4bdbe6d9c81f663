#include "scene/Scene.h"

#include "platform/common/Checks.h"
#include "platform/common/Logger.h"
#include "preview/marks/PreviewedMarks.h"
#include "scene/core/Refused.h"
#include "scene/core/SceneCore.h"

namespace vrk::visual {
namespace {

constexpr unsigned dashesOfAFrame = 3;

FrameVisual& previewedFrame(SceneCore& core, unsigned id)
{
    return *common::checkedAt(core.record<PreviewedFrames>().byId, id);
}

} // namespace

void Scene::createPreviewedFrameVisual(unsigned id, bool single)
{
    addRenderTask(
        [this, id, single] {
            // One that had the id stays where it is, without one.
            core->record<PreviewedFrames>().byId[id] =
                FrameVisual::Build(core->worldVisual, single ? 1 : dashesOfAFrame);
        },
        0);
}

void Scene::setPreviewedFrameVisible(unsigned id, const rob::Posed& pose)
{
    refuseUnbounded(pose, "setPreviewedFrameVisible");
    addRenderTask(
        [this, id, pose] {
            FrameVisual& frame = previewedFrame(*core, id);
            frame.setWorldPose(rob::Posef(pose));
            frame.setVisible(true, false);
        },
        0);
}

void Scene::setPreviewedFrameInvisible(unsigned id)
{
    addRenderTask([this, id] { previewedFrame(*core, id).setVisible(false, false); }, 0);
}

void Scene::removePreviewedFrameVisual(unsigned id)
{
    addRenderTask([this, id] { doRemovePreviewedFrameVisual(id); }, 0);
}

void Scene::doRemovePreviewedFrameVisual(unsigned id)
{
    deleteVisual(&previewedFrame(*core, id)); // which leaves the record as it dies
}

void Scene::createPreviewedJointVisual()
{
    addRenderTask(
        [this] {
            auto* joint = new PreviewedJointVisual(core->worldVisual);
            joint->setVisible(false, true);
            core->record<PreviewedJoint>().set(joint); // one from before stays where it is
        },
        0);
}

void Scene::setPreviewedJointVisible(const rob::Posd& from, const rob::Posd& to)
{
    addRenderTask(
        [this, from, to] {
            auto& joint = core->record<PreviewedJoint>();
            if (!joint) {
                AppLogger::inst()->warn("the axis of a joint is not previewed: it was not created");
                return;
            }
            joint->set(rob::Posf(from), rob::Posf(to));
            joint->setVisible(true, true);
        },
        0);
}

void Scene::setPreviewedJointInvisible()
{
    addRenderTask(
        [this] {
            if (auto& joint = core->record<PreviewedJoint>())
                joint->setVisible(false, true);
        },
        0);
}

void Scene::removePreviewedJointVisual()
{
    if (core->record<PreviewedJoint>())
        addRenderTask([this] { doRemovePreviewedJointVisual(); }, 0);
}

void Scene::doRemovePreviewedJointVisual()
{
    if (Visual* joint = core->record<PreviewedJoint>().take())
        deleteVisual(joint);
}

void Scene::removeAllPositionVisuals()
{
    addRenderTask(
        [this] {
            auto& frames = core->record<PreviewedFrames>().byId;
            while (!frames.empty())
                doRemovePreviewedFrameVisual(frames.begin()->first);
            doRemovePreviewedJointVisual();
        },
        0);
}

} // namespace vrk::visual
