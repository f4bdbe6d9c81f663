#include "canvas/ProgramThings.h"

#include "platform/sdf/SdfManager.h"
#include "platform/task/Task.h"
#include "scene/Scene.h"

#include <shared_mutex>
#include <unordered_set>

namespace vrkview {

using vrk::visual::Scene;

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
        if (const auto* task = dynamic_cast<const vrk::task::Task*>(sdf::SdfManager::inst().find(id)))
            for (const unsigned path : task->getPaths())
                add(path);
    }
    return visuals;
}

} // namespace vrkview
