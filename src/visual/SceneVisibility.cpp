#include "scene/Scene.h"

#include "platform/sdf/SdfManager.h"
#include "platform/sdf/SdfObject.h"
#include "visual/Picking.h"
#include "visual/Visual.h"

#include <shared_mutex>

namespace vrk::visual {
namespace {

struct ModelLookUp {
    bool known = false;
    bool group = false;
    std::vector<unsigned> members; // of a group
};

ModelLookUp lookUp(unsigned id)
{
    sdf::SdfManager& model = sdf::SdfManager::inst();
    const std::shared_lock lock(model.mutex());
    const sdf::SdfObject* object = model.find(id);
    if (!object)
        return {};
    ModelLookUp found{true, sdf::isGroup(object->getModelType()), {}};
    if (found.group) {
        std::vector<sdf::SdfObject*> members;
        object->getMembers(members);
        for (const sdf::SdfObject* member : members)
            found.members.push_back(member->getId());
    }
    return found;
}

} // namespace

void Scene::setVisualVisible(unsigned id, bool visible)
{
    std::unordered_set<unsigned> entered;
    setVisualVisible(id, visible, entered);
}

/// @param entered  the groups that were looked into: one may hold itself.
void Scene::setVisualVisible(unsigned id, bool visible, std::unordered_set<unsigned>& entered)
{
    // The lock is given back before the members are visited: a thread must not take it shared twice.
    const ModelLookUp found = lookUp(id);
    if (!found.known)
        return;
    if (found.group) {
        if (!entered.insert(id).second)
            return;
        clearSelections();
        for (const unsigned member : found.members)
            setVisualVisible(member, visible, entered);
        return;
    }
    addRenderTask([this, id, visible] { doSetVisualVisible(id, visible); }, 0);
}

void Scene::doSetVisualVisible(unsigned id, bool visible)
{
    if (!HasVisual(id)) // it may have been removed since the post
        return;
    Visual* visual = GetVisual(id);
    visual->setVisible(visible, true);
    // What cannot be seen cannot be picked. Of a compound this reaches all descendants, also what is attached to it and
    // stays visible by itself.
    if (isCompound(visual->getType()))
        picking::setCompoundObjectEnabled(visual, visible);
    else
        picking::setObjectEnabled(visual, visible);
}

} // namespace vrk::visual
