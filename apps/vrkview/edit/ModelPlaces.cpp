#include "edit/ModelPlaces.h"

#include "platform/layout/Assembly.h"
#include "platform/layout/Body.h"
#include "platform/layout/Frame.h"
#include "platform/layout/Layout.h"
#include "platform/layout/Mechanism.h"
#include "platform/layout/Part.h"
#include "platform/layout/PointCloud.h"
#include "platform/sdf/SdfManager.h"
#include "platform/sdf/SdfObject.h"
#include "platform/task/Instruction.h"

#include <QObject>

#include <algorithm>
#include <shared_mutex>
#include <unordered_set>

namespace vrkview {
namespace {

/// Under the model's lock.
void collectBodies(const sdf::SdfObject& object, std::vector<unsigned>& found)
{
    if (dynamic_cast<const vrk::layout::Body*>(&object))
        found.push_back(object.getId());
    for (const std::shared_ptr<sdf::SdfObject>& piece : object.getPieces())
        collectBodies(*piece, found);
}

using vrk::layout::Attachment;
using vrk::layout::Layout;
using vrk::rob::Posed;

// Below: under the model's lock.

const Attachment* attachmentOf(unsigned id)
{
    const std::vector<Attachment>& all = Layout::inst().attachments;
    const auto found = std::ranges::find(all, id, &Attachment::child);
    return found == all.end() ? nullptr : &*found;
}

struct Place {
    unsigned on = 0; // 0 for the world
    Posed pose;
};

Place placeOf(unsigned id)
{
    const sdf::SdfObject* object = sdf::SdfManager::inst().find(id);
    if (!object)
        return {};
    if (const Attachment* attachment = attachmentOf(id))
        return {attachment->parent, attachment->pose};
    const unsigned owner = object->getParentId();
    return {owner == sdf::SdfManager::stationId ? 0 : owner, object->getPose()};
}

/// Calls `visit` with the thing and what is above it, until it returns false. A ring ends where the model has no more
/// objects.
template <typename Visit>
void goUp(unsigned id, const Visit& visit)
{
    for (std::size_t steps = 0; id != 0 && steps <= sdf::SdfManager::inst().size(); ++steps) {
        const Place place = placeOf(id);
        if (!visit(id, place))
            return;
        id = place.on;
    }
}

Posed worldPose(unsigned id)
{
    Posed pose;
    goUp(id, [&pose](unsigned, const Place& place) {
        pose = place.pose * pose;
        return true;
    });
    return pose;
}

} // namespace

QString nameOfThing(unsigned id)
{
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    const sdf::SdfObject* object = sdf::SdfManager::inst().find(id);
    return object ? QString::fromStdString(object->getName()) : QString();
}

QString nameOfThings(const std::vector<unsigned>& ids)
{
    return ids.size() == 1 ? nameOfThing(ids.front()) : QObject::tr("%1 things").arg(ids.size());
}

Posed poseOfThing(unsigned id)
{
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    return placeOf(id).pose;
}

Posed worldPoseOfThing(unsigned id)
{
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    return worldPose(id);
}

Posed worldPoseOfBase(unsigned id)
{
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    return worldPose(placeOf(id).on);
}

std::optional<unsigned> carrierOf(unsigned id)
{
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    const Attachment* attachment = attachmentOf(id);
    return attachment ? std::optional(attachment->parent) : std::nullopt;
}

bool isBelow(unsigned id, unsigned top)
{
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    bool found = false;
    goUp(id, [&found, top](unsigned above, const Place&) {
        found = above == top;
        return !found;
    });
    return found;
}

std::vector<unsigned> topmostOf(const std::vector<unsigned>& ids)
{
    const std::unordered_set<unsigned> all(ids.begin(), ids.end());
    std::unordered_set<unsigned> known;
    std::vector<unsigned> topmost;
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    for (const unsigned id : ids) {
        bool hangsOnOne = false;
        goUp(id, [&](unsigned above, const Place&) {
            hangsOnOne = above != id && all.contains(above);
            return !hangsOnOne;
        });
        if (!hangsOnOne && known.insert(id).second)
            topmost.push_back(id);
    }
    return topmost;
}

bool canCarry(unsigned id)
{
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    const sdf::SdfObject* object = sdf::SdfManager::inst().find(id);
    if (!object)
        return false;
    switch (object->getModelType()) {
    case sdf::ModelType::Part:
    case sdf::ModelType::Assembly:
    case sdf::ModelType::Link:
    case sdf::ModelType::Wrist:
    case sdf::ModelType::Manipulator:
    case sdf::ModelType::Tool:
    case sdf::ModelType::Device:
        return true;
    default:
        return false;
    }
}

namespace {

/// The outermost of the assemblies around it; itself where it stands by itself, and 0 where it is a piece of anything else.
unsigned outermostOf(unsigned id)
{
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    const sdf::SdfManager& model = sdf::SdfManager::inst();
    const sdf::SdfObject* object = model.find(id);
    while (object && !object->isStandalone()) {
        object = dynamic_cast<const vrk::layout::Assembly*>(model.find(object->getParentId()));
        id = object ? object->getId() : 0;
    }
    return id;
}

} // namespace

bool isThingOfItsOwn(unsigned id)
{
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    const sdf::SdfObject* object = sdf::SdfManager::inst().find(id);
    if (!object || !object->isStandalone())
        return false;
    const Layout& layout = Layout::inst();
    const auto isIn = [id](const auto& list) {
        return std::ranges::find(list, id, [](const auto& one) { return one->getId(); }) != list.end();
    };
    switch (object->getModelType()) {
    case sdf::ModelType::Part:
        return isIn(layout.parts);
    case sdf::ModelType::Assembly:
        return isIn(layout.assemblies);
    case sdf::ModelType::Manipulator:
        return isIn(layout.manipulators);
    case sdf::ModelType::Tool:
        return isIn(layout.tools);
    case sdf::ModelType::Device:
        return isIn(layout.devices);
    case sdf::ModelType::PointCloud:
        return isIn(layout.pointclouds);
    case sdf::ModelType::Frame: // those of robots and tools belong to them
        return isIn(layout.frames);
    default:
        return false;
    }
}

bool isPlaced(unsigned id)
{
    return isThingOfItsOwn(outermostOf(id));
}

unsigned movedFor(unsigned id)
{
    if (isPlaced(id))
        return id;
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    const sdf::SdfObject* object = sdf::SdfManager::inst().find(id);
    if (const auto* wobj = dynamic_cast<const vrk::task::WObjDataItem*>(object))
        return wobj->hasFixedUFrame() ? id : 0;
    const auto* move = dynamic_cast<const vrk::task::MoveInst*>(object);
    return move && move->isRobTargetInst() ? move->getTargetItemId() : 0;
}

bool isTarget(unsigned id)
{
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    const sdf::SdfObject* object = sdf::SdfManager::inst().find(id);
    return object && object->getModelType() == sdf::ModelType::RobTargetData;
}

std::vector<unsigned> bodyIdsIn(const std::vector<unsigned>& things)
{
    std::vector<unsigned> found;
    {
        const std::shared_lock lock(sdf::SdfManager::inst().mutex());
        for (const unsigned id : things)
            if (const sdf::SdfObject* object = sdf::SdfManager::inst().find(id))
                collectBodies(*object, found);
    }
    std::ranges::sort(found);
    const auto [same, end] = std::ranges::unique(found);
    found.erase(same, end);
    return found;
}

} // namespace vrkview
