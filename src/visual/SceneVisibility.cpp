#include "scene/Scene.h"

#include "platform/sdf/SdfManager.h"
#include "platform/sdf/SdfObject.h"
#include "visual/Picking.h"
#include "visual/Visual.h"

#include <shared_mutex>
#include <unordered_set>

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
    std::unordered_set<unsigned> entered; // the groups that were looked into: one may hold itself
    const auto show = [this, visible, &entered](const auto& self, unsigned one) -> void {
        // The lock is given back before the members are visited: a thread must not take it shared twice.
        const ModelLookUp found = lookUp(one);
        if (!found.known)
            return;
        if (!found.group) {
            addRenderTask([this, one, visible] { doSetVisualVisible(one, visible); }, 0);
            return;
        }
        if (!entered.insert(one).second)
            return;
        clearSelections();
        for (const unsigned member : found.members)
            self(self, member);
    };
    show(show, id);
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
