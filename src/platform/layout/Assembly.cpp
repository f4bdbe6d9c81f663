#include "platform/layout/Assembly.h"

#include "platform/layout/Part.h"

namespace vrk::layout {

PartContainer::~PartContainer() = default;

void PartContainer::addPart(std::shared_ptr<Part> part)
{
    addChild(*part);
    members.push_back(std::move(part));
}

void PartContainer::addAssembly(std::shared_ptr<Assembly> assembly)
{
    addChild(*assembly);
    members.push_back(std::move(assembly));
}

void PartContainer::removeMember(unsigned id)
{
    removeChild(id);
    std::erase_if(members, [id](const auto& member) { return member->getId() == id; });
}

void PartContainer::insertMember(std::size_t index, std::shared_ptr<sdf::SdfContainer> member)
{
    members.insert(members.begin() + static_cast<std::ptrdiff_t>(index), std::move(member));
    for (std::size_t i = index; i < members.size(); ++i) { // the children are in the same order
        removeChild(members[i]->getId());
        addChild(*members[i]);
    }
}

std::vector<std::shared_ptr<sdf::SdfObject>> PartContainer::getPieces() const
{
    return {members.begin(), members.end()};
}

Assembly::Assembly(unsigned id, std::string name) : PartContainer(sdf::ModelType::Assembly, id, std::move(name))
{
    setPose({});
}

Assembly::~Assembly() = default;

} // namespace vrk::layout
