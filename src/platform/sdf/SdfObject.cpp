#include "platform/sdf/SdfObject.h"

#include "platform/sdf/SdfManager.h"

#include <algorithm>

namespace sdf {

SdfObject::SdfObject(ModelType type, unsigned id, std::string name) : type(type), id(id), name(std::move(name)) {}

SdfObject::~SdfObject() = default;

void SdfObject::getMembers(std::vector<SdfObject*>&) const {}

SdfNode::SdfNode(ModelType type, unsigned id, std::string name) : SdfNode(type, id, name, Element::Create(name)) {}

SdfNode::SdfNode(ModelType type, unsigned id, std::string name, std::shared_ptr<Element> element)
    : SdfObject(type, id, std::move(name)), element(std::move(element))
{
}

SdfNode::~SdfNode() = default;

vrk::rob::Posed SdfNode::getPose() const
{
    const std::shared_ptr<Element> pose = element->get("pose");
    return pose ? pose->asPose() : vrk::rob::Posed();
}

void SdfNode::setPose(const vrk::rob::Posed& pose)
{
    element->touch("pose")->set(pose);
}

SdfContainer::~SdfContainer() = default;

std::vector<SdfObject*> SdfContainer::getChildren() const
{
    std::vector<SdfObject*> children;
    getMembers(children);
    return children;
}

void SdfContainer::addChild(SdfObject& child)
{
    childIds.push_back(child.getId());
    child.setParentId(getId());
    child.piece = true;
}

void SdfContainer::removeChild(unsigned childId)
{
    std::erase(childIds, childId);
}

void SdfContainer::getMembers(std::vector<SdfObject*>& members) const
{
    SdfManager::inst().appendKnown(childIds, members);
}

} // namespace sdf
