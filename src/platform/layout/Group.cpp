#include "platform/layout/Group.h"

#include "platform/sdf/SdfManager.h"

#include <stdexcept>

namespace vrk::layout {

Group::Group(sdf::ModelType type, unsigned id, std::string name) : SdfObject(type, id, std::move(name))
{
    if (!sdf::isGroup(type))
        throw std::invalid_argument("not a kind of group");
}

Group::~Group() = default;

void Group::getMembers(std::vector<sdf::SdfObject*>& members) const
{
    sdf::SdfManager::inst().appendKnown(memberIds, members);
}

} // namespace vrk::layout
