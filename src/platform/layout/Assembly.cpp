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
