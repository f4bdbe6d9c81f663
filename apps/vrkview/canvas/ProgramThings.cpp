#include "canvas/ProgramThings.h"

#include "edit/ModelPlaces.h"

#include "platform/sdf/SdfManager.h"
#include "platform/task/Instruction.h"
#include "platform/task/Path.h"
#include "platform/task/Task.h"
#include "scene/Scene.h"

#include <shared_mutex>
#include <unordered_map>
#include <unordered_set>
#include <utility>

namespace vrkview {

using namespace vrk::task;
using vrk::visual::Scene;

namespace {

/// Under the model's lock.
std::vector<const MoveInst*> movesOf(const sdf::SdfObject* object)
{
    std::vector<const MoveInst*> moves;
    const auto add = [&moves](const Path& path) {
        moves.insert(moves.end(), path.getMoveInstructions().begin(), path.getMoveInstructions().end());
    };
    if (const auto* task = dynamic_cast<const Task*>(object))
        for (const auto& path : task->getOwnPaths())
            add(*path);
    else if (const auto* path = dynamic_cast<const Path*>(object))
        add(*path);
    else if (const auto* move = dynamic_cast<const MoveInst*>(object))
        moves.push_back(move);
    return moves;
}

} // namespace

bool isOfProgram(unsigned id)
{
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    const sdf::SdfObject* object = sdf::SdfManager::inst().find(id);
    if (!object)
        return false;
    switch (object->getModelType()) {
    case sdf::ModelType::Task:
    case sdf::ModelType::Path:
    case sdf::ModelType::MoveInst:
    case sdf::ModelType::CircularMoveInst:
    case sdf::ModelType::DashedMoveInst:
    case sdf::ModelType::PlainInst:
        return true;
    default:
        return false;
    }
}

std::vector<unsigned> visualsOf(const std::vector<unsigned>& ids)
{
    std::vector<unsigned> visuals;
    std::unordered_set<unsigned> known;
    const auto add = [&](unsigned id) {
        if (Scene::HasVisual(id) && known.insert(id).second)
            visuals.push_back(id);
    };
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    for (const unsigned id : ids) {
        add(id);
        if (const auto* task = dynamic_cast<const Task*>(sdf::SdfManager::inst().find(id)))
            for (const unsigned path : task->getPaths())
                add(path);
    }
    return visuals;
}

vrk::visual::Box boxOfTargets(unsigned id)
{
    std::vector<std::pair<unsigned, vrk::rob::Posd>> places; // each on its owner
    {
        const std::shared_lock lock(sdf::SdfManager::inst().mutex());
        for (const MoveInst* move : movesOf(sdf::SdfManager::inst().find(id)))
            for (const auto& item : {move->getTargetItem(), move->getCircleItem()})
                if (item)
                    places.emplace_back(item->getOwnerId(), item->getPose().position);
    }
    std::unordered_map<unsigned, vrk::rob::Posed> owners;
    vrk::visual::Box box;
    for (const auto& [owner, place] : places) {
        const auto [known, isNew] = owners.try_emplace(owner);
        if (isNew)
            known->second = worldPoseOfThing(owner);
        const vrk::rob::Posd inWorld = known->second * place;
        box.addPoint(vrk::rob::Posf(static_cast<float>(inWorld.x), static_cast<float>(inWorld.y),
                                    static_cast<float>(inWorld.z)));
    }
    return box;
}

} // namespace vrkview
