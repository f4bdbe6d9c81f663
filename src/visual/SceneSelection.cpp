#include "scene/Scene.h"

#include "platform/sdf/SdfManager.h"
#include "platform/task/DataItem.h"
#include "platform/task/Task.h"
#include "scene/core/Refused.h"
#include "scene/core/SceneCore.h"
#include "visual/SelectedIds.h"
#include "visual/Visual.h"
#include "visual/VisualStateManager.h"

#include <shared_mutex>
#include <unordered_set>

namespace vrk::visual {
namespace {

/// What is shown selected in the place of an object that has no visual.
struct StandsFor {
    std::vector<unsigned> ids;
    unsigned robot = 0; // of a task
};

/// Of a task: its paths, then its tool data, work objects and joint targets, and its robot. Of an operation: its members.
/// Of anything else: nothing. The lock is given back before anybody looks further.
StandsFor whatStandsFor(unsigned id)
{
    StandsFor found;
    sdf::SdfManager& model = sdf::SdfManager::inst();
    const std::shared_lock lock(model.mutex());
    const sdf::SdfObject* object = model.find(id);
    if (const auto* task = dynamic_cast<const task::Task*>(object)) {
        found.ids = task->getPaths();
        for (const sdf::ModelType kind :
             {sdf::ModelType::ToolData, sdf::ModelType::WObjData, sdf::ModelType::JointTargetData})
            for (const auto& item : task->getDataItems())
                if (item->asType(kind))
                    found.ids.push_back(item->getId());
        found.robot = task->getManipulatorId();
    } else if (const auto* operation = dynamic_cast<const task::Operation*>(object)) {
        std::vector<sdf::SdfObject*> members;
        operation->getMembers(members);
        for (const sdf::SdfObject* member : members)
            found.ids.push_back(member->getId());
    }
    return found;
}

void showSelected(SceneCore& core, unsigned id, bool selected)
{
    Visual* visual = core.visuals.get(id);
    core.states->setLayer(visual, VisualStateLayer::Selected, selected, {});
    core.states->refreshWithParts(visual);
}

/// @param entered  the tasks and operations that were looked into: one may come back to itself by way of what it names.
void selectWhatStandsFor(SceneCore& core, unsigned id, std::unordered_set<unsigned>& entered)
{
    // An object without a visual of its own may stand for others, and a task in the end for its robot.
    while (id != 0 && !core.visuals.has(id)) {
        if (!entered.insert(id).second)
            return;
        const StandsFor others = whatStandsFor(id);
        for (const unsigned other : others.ids)
            selectWhatStandsFor(core, other, entered);
        id = others.robot;
    }
    if (id == 0)
        return;
    core.record<SelectedIds>().add(id);
    showSelected(core, id, true);
}

} // namespace

void Scene::setVisualSelected(unsigned id)
{
    clearHighlightedVisual();
    clearSelections();
    addRenderTask(
        [this, id] {
            doSelectVisual(id);
            setBorderHighlightEnabled(true); // nothing switches it off again: that is the application's to decide
        },
        0);
}

void Scene::setVisualSelected(Visual* visual)
{
    refuseNull(visual, "setVisualSelected", "a visual");
    setVisualSelected(visual->getId());
}

void Scene::setVisualsSelected(const std::vector<unsigned>& ids)
{
    clearHighlightedVisual();
    clearSelections();
    addRenderTask(
        [this, ids] {
            for (const unsigned id : ids)
                doSelectVisual(id);
        },
        0);
}

void Scene::doSelectVisual(unsigned id)
{
    std::unordered_set<unsigned> entered;
    selectWhatStandsFor(*core, id, entered);
}
void Scene::clearSelectedVisuals()
{
    core->owed.postWhatIsOwed();
    addRenderTask([this] { doClearSelectedVisuals(); }, 0);
}

void Scene::doClearSelectedVisuals()
{
    auto& selected = core->record<SelectedIds>();
    for (const unsigned id : selected.copy())
        if (HasVisual(id)) // else it died while it was selected
            showSelected(*core, id, false);
    selected.clear();
}

void Scene::clearSelections()
{
    clearSelectedFaces();
    clearSelectedVisuals();
}

bool Scene::isSelected(const Visual* visual) const
{
    const auto& selected = core->record<SelectedIds>();
    for (; visual && visual != core->worldVisual; visual = visual->getParent())
        if (selected.contains(visual->getId()))
            return true;
    return false;
}

const std::vector<unsigned>& Scene::getSelectedVisuals() const
{
    return core->record<SelectedIds>().live();
}

} // namespace vrk::visual
