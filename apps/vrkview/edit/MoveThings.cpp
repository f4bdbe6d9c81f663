#include "edit/MoveThings.h"

#include "edit/ChangeIds.h"
#include "edit/ModelPlaces.h"

#include "platform/layout/Layout.h"
#include "platform/sdf/SdfManager.h"
#include "platform/sdf/SdfObject.h"
#include "platform/task/Instruction.h"
#include "platform/task/Path.h"
#include "platform/task/Task.h"
#include "scene/Scene.h"

#include <QObject>

#include <algorithm>
#include <mutex>
#include <shared_mutex>
#include <unordered_set>

namespace vrkview {
namespace {

using vrk::layout::Attachment;
using vrk::layout::Layout;
using vrk::rob::Posed;
using vrk::visual::Scene;
using Place = MoveThings::Place;

QString textFor(const std::vector<Place>& places)
{
    std::vector<unsigned> ids;
    for (const Place& place : places)
        ids.push_back(place.thing);
    return QObject::tr("Move %1").arg(nameOfThings(ids));
}

/// Under the model's unique lock.
void write(const Place& place)
{
    std::vector<Attachment>& attachments = Layout::inst().attachments;
    const auto carried = std::ranges::find(attachments, place.thing, &Attachment::child);
    if (carried != attachments.end())
        carried->pose = place.pose;
    else if (auto* node = dynamic_cast<sdf::SdfNode*>(sdf::SdfManager::inst().find(place.thing)))
        node->setPose(place.pose);
}

/// The moves whose way goes to, over or from one of these targets. Takes the model's lock, shared.
std::vector<unsigned> movesBy(const std::unordered_set<unsigned>& targets)
{
    std::vector<unsigned> moves;
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    for (const auto& task : Layout::inst().tasks)
        for (const auto& path : task->getOwnPaths()) {
            bool comesFromOne = false;
            for (const vrk::task::MoveInst* move : path->getMoveInstructions()) {
                const bool goesToOne = targets.contains(move->getTargetItemId());
                if (goesToOne || comesFromOne || targets.contains(move->getCircleItemId()))
                    moves.push_back(move->getId());
                comesFromOne = goesToOne;
            }
        }
    return moves;
}

} // namespace

MoveThings::MoveThings(std::vector<Place> places, int gesture)
    : Change(textFor(places), Touched::Nothing), after(std::move(places)), gesture(gesture)
{
    for (const Place& place : after)
        before.push_back({place.thing, poseOfThing(place.thing)});
}

MoveThings::MoveThings(unsigned thing, const Posed& pose, int gesture)
    : MoveThings(std::vector<Place>{{thing, pose}}, gesture)
{
}

void MoveThings::put(const std::vector<Place>& places)
{
    {
        const std::unique_lock lock(sdf::SdfManager::inst().mutex());
        std::ranges::for_each(places, write);
    }
    Scene* scene = Scene::Get();
    if (!scene)
        return;
    std::unordered_set<unsigned> targets;
    for (const Place& place : places)
        if (isTarget(place.thing))
            targets.insert(place.thing);
        else
            scene->setVisualPose(place.thing, vrk::rob::Posef(place.pose));
    if (targets.empty())
        return;
    // Several moves may go to one target, and each draws it.
    for (const unsigned move : movesBy(targets))
        if (Scene::HasVisual(move))
            scene->updateInstruction(move);
}

int MoveThings::id() const
{
    return static_cast<int>(MergingChange::MoveThings);
}

bool MoveThings::mergeWith(const QUndoCommand* next)
{
    const auto& move = static_cast<const MoveThings&>(*next);
    if (gesture == 0 || move.gesture != gesture ||
        !std::ranges::equal(move.after, after, {}, &Place::thing, &Place::thing))
        return false;
    after = move.after;
    setObsolete(after == before); // back where it was: there is nothing to take back
    return true;
}

} // namespace vrkview
