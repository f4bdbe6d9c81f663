#include "edit/Attaching.h"

#include "edit/ModelPlaces.h"

#include "platform/sdf/SdfManager.h"
#include "platform/sdf/SdfObject.h"
#include "scene/Scene.h"

#include <QObject>

#include <algorithm>
#include <mutex>
#include <shared_mutex>

namespace vrkview {
namespace {

using vrk::layout::Attachment;
using vrk::layout::Layout;
using vrk::rob::Posed;
using vrk::visual::Scene;

/// What a thing lies on while nothing carries it; 0 for the world.
unsigned ownerOf(unsigned id)
{
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    const sdf::SdfObject* object = sdf::SdfManager::inst().find(id);
    return object && object->getParentId() != sdf::SdfManager::stationId ? object->getParentId() : 0;
}

Posed poseOn(unsigned base, unsigned thing)
{
    const Posed world = worldPoseOfThing(thing);
    return base == 0 ? world : worldPoseOfThing(base).inverse() * world;
}

} // namespace

AttachmentChange::AttachmentChange(const QString& text, unsigned thing, unsigned carrier)
    : Change(text, Touched::Things), thing(thing), isOther(carrierOf(thing).value_or(0) != carrier), before(read()),
      after(before)
{
    if (carrier == 0) {
        after.attachment.reset();
        after.ownPose = poseOn(ownerOf(thing), thing);
        return;
    }
    after.attachment = {thing, carrier, poseOn(carrier, thing)};
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    after.position = Layout::inst().attachments.size() - (before.attachment ? 1 : 0); // the last one
}

AttachmentChange::State AttachmentChange::read() const
{
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    State state;
    const std::vector<Attachment>& all = Layout::inst().attachments;
    const auto found = std::ranges::find(all, thing, &Attachment::child);
    if (found != all.end()) {
        state.attachment = *found;
        state.position = static_cast<std::size_t>(found - all.begin());
    }
    if (const sdf::SdfObject* object = sdf::SdfManager::inst().find(thing))
        state.ownPose = object->getPose();
    return state;
}

void AttachmentChange::put(const State& state) const
{
    unsigned oldCarrier = 0;
    {
        const std::unique_lock lock(sdf::SdfManager::inst().mutex());
        std::vector<Attachment>& all = Layout::inst().attachments;
        if (const auto old = std::ranges::find(all, thing, &Attachment::child); old != all.end()) {
            oldCarrier = old->parent;
            all.erase(old);
        }
        if (state.attachment)
            all.insert(all.begin() + static_cast<std::ptrdiff_t>(state.position), *state.attachment);
        if (auto* node = dynamic_cast<sdf::SdfNode*>(sdf::SdfManager::inst().find(thing)))
            node->setPose(state.ownPose);
    }
    Scene* scene = Scene::Get();
    if (!scene || !Scene::HasVisual(thing))
        return;
    if (state.attachment) {
        scene->addAttachment(thing, state.attachment->parent, state.attachment->pose);
    } else {
        const unsigned owner = ownerOf(thing);
        scene->deleteAttachment(thing, oldCarrier, Scene::HasVisual(owner) ? owner : 0, state.ownPose);
    }
    scene->processMsgs(); // the tree of the station is read from the scene
}

AttachThing::AttachThing(unsigned thing, unsigned carrier)
    : AttachmentChange(QObject::tr("Attach %1 to %2").arg(nameOfThing(thing), nameOfThing(carrier)), thing, carrier)
{
}

bool AttachThing::IsPossible(unsigned thing, unsigned carrier)
{
    return isThingOfItsOwn(thing) && canCarry(carrier) && !isBelow(carrier, thing);
}

DetachThing::DetachThing(unsigned thing) : AttachmentChange(QObject::tr("Detach %1").arg(nameOfThing(thing)), thing, 0)
{
}

} // namespace vrkview
