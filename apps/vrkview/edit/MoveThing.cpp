#include "edit/MoveThing.h"

#include "edit/ChangeIds.h"
#include "edit/ModelPlaces.h"

#include "platform/layout/Layout.h"
#include "platform/sdf/SdfManager.h"
#include "platform/sdf/SdfObject.h"
#include "scene/Scene.h"

#include <QObject>

#include <algorithm>
#include <mutex>

namespace vrkview {

using vrk::layout::Attachment;
using vrk::layout::Layout;
using vrk::rob::Posed;
using vrk::visual::Scene;

MoveThing::MoveThing(unsigned thing, const Posed& pose, int gesture)
    : Change(QObject::tr("Move %1").arg(nameOfThing(thing)), Touched::Nothing), thing(thing),
      before(poseOfThing(thing)), after(pose), gesture(gesture)
{
}

void MoveThing::place(const Posed& pose) const
{
    {
        const std::unique_lock lock(sdf::SdfManager::inst().mutex());
        std::vector<Attachment>& attachments = Layout::inst().attachments;
        const auto carried = std::ranges::find(attachments, thing, &Attachment::child);
        if (carried != attachments.end())
            carried->pose = pose;
        else if (auto* node = dynamic_cast<sdf::SdfNode*>(sdf::SdfManager::inst().find(thing)))
            node->setPose(pose);
    }
    if (Scene* scene = Scene::Get())
        scene->setVisualPose(thing, vrk::rob::Posef(pose));
}

int MoveThing::id() const
{
    return static_cast<int>(MergingChange::MoveThing);
}

bool MoveThing::mergeWith(const QUndoCommand* next)
{
    const auto& move = static_cast<const MoveThing&>(*next);
    if (gesture == 0 || move.gesture != gesture || move.thing != thing)
        return false;
    after = move.after;
    setObsolete(after == before); // back where it was: there is nothing to take back
    return true;
}

} // namespace vrkview
