#include "visual/Visual.h"

#include "platform/sdf/SdfManager.h"
#include "platform/sdf/SdfObject.h"
#include "scene/core/OgreCompat.h"
#include "scene/core/SceneCore.h"
#include "visual/Picking.h"
#include "visual/VisualStateManager.h"

#include <fmt/format.h>

#include <Ogre.h>

#include <algorithm>
#include <iostream>

namespace vrk::visual {
namespace {

// In the name of the frame that belongs to a part. It alone is left out of its owner's showing and hiding: the base frame
// of a mechanism and the frames of a tool go along with theirs.
constexpr const char* localFrameName = "Local Frame";

/// Whether `setVisible` of the parent passes over this child.
bool keepsOwnVisibility(const Visual& child)
{
    return child.isAttached() || child.isAnchored() || child.getName().find(localFrameName) != std::string::npos;
}

Ogre::SceneNode* nodeUnder(Visual* parent, const std::string& name)
{
    return createChildNode(*parent->getSceneNode(), name);
}

} // namespace

Visual* VisualChildren::Iterator::operator*() const
{
    return visualOf(**at);
}

void VisualChildren::Iterator::skipForeign()
{
    while (at != last && !visualOf(**at))
        ++at;
}

Visual* visualOf(const Ogre::Node& node)
{
    const Ogre::Any& bound = node.getUserObjectBindings().getUserAny();
    return bound.has_value() ? Ogre::any_cast<Visual*>(bound) : nullptr;
}

Visual::Visual(unsigned id, Ogre::SceneNode* node, bool ofRoot) : id(id), sceneNode(node)
{
    if (ofRoot)
        type = VisualType::World;
    bind();
}

Visual::Visual(Scene*)
    : Visual(sdf::SdfManager::GenerateTransientId(), SceneCore::Get()->sceneManager->getRootSceneNode(), true)
{
}

Visual::Visual(const std::string& name)
    : Visual(sdf::SdfManager::GenerateTransientId(), createLooseNode(*SceneCore::Get()->sceneManager, name), false)
{
}

Visual::Visual(const std::string& name, Visual* parent) : id(sdf::SdfManager::GenerateTransientId())
{
    sceneNode = nodeUnder(parent, name + std::to_string(id));
    bind();
}

Visual::Visual(unsigned id, const std::string& name, Visual* parent) : Visual(id, nodeUnder(parent, name), false) {}

Visual::Visual(unsigned id, Visual* parent) : Visual(id, nodeUnder(parent, {}), false) {}

Visual::Visual(Visual* parent) : Visual("Visual_", parent) {}

Visual::Visual(sdf::SdfNode* node, Visual* parent)
    : Visual(node->getId(), nodeUnder(parent, fmt::format("{}_{}", node->getName(), node->getId())), false)
{
    if (const auto pose = node->getElement()->get("pose"))
        setPose(rob::PoseTemplate<float>(pose->asPose()));
}

Visual::~Visual()
{
    if (sceneNode == sceneNode->getCreator()->getRootSceneNode())
        return; // OGRE's own. Known by the node, since anyone may call another visual a world
    leaveParentNode();
    sceneNode->getCreator()->destroySceneNode(sceneNode);
}

void Visual::bind()
{
    sceneNode->getUserObjectBindings().setUserAny(Ogre::Any(this));
    noteOrder();
}

/// To be called when the node has just become the last child of its parent.
void Visual::noteOrder()
{
    if (const Ogre::Node* parent = sceneNode->getParent())
        order = static_cast<std::uint32_t>(parent->getChildren().size() - 1);
}

/// Takes the node from its parent, if it has one. OGRE looks for it among all its siblings, from the first: of a million
/// targets that are removed one after the other each would cost a walk over those that are left.
void Visual::leaveParentNode()
{
    Ogre::Node* parent = sceneNode->getParent();
    if (!parent)
        return;
    const std::size_t first = removeChildNode(*parent, *sceneNode, order);
    // What stands elsewhere now
    const auto& siblings = parent->getChildren();
    for (const std::size_t place : {first, static_cast<std::size_t>(order)})
        if (place < siblings.size())
            if (Visual* const* moved = Ogre::any_cast<Visual*>(&siblings[place]->getUserObjectBindings().getUserAny()))
                (*moved)->order = static_cast<std::uint32_t>(place);
}

void Visual::update() {}

std::optional<Visual*> Visual::copy(Visual* parent)
{
    if (!isCopyable(type))
        return std::nullopt;
    auto* made = new Visual(getName() + "_Copied_", parent ? parent : SceneCore::Get()->worldVisual);
    made->type = type;
    made->becomeCopyOf(*this);
    return made;
}

void Visual::becomeCopyOf(Visual& source)
{
    // While it was built it had an id of its own: the names of its objects contain it.
    id = source.id;
    visible = true;
    copied = true;
    for (Visual* child : source.getChildren())
        child->copy(this);
    sceneNode->setOrientation(source.sceneNode->getOrientation());
    sceneNode->setPosition(source.sceneNode->getPosition());
    picking::markDirty(this);
}

template <typename Number>
Number Visual::sumOfChildren(Number (Visual::*count)())
{
    Number sum = 0;
    for (Visual* child : getChildren())
        if (!child->attached)
            sum += (child->*count)();
    return sum;
}

unsigned Visual::getBodiesNum()
{
    return sumOfChildren(&Visual::getBodiesNum);
}

unsigned Visual::getFacesNum()
{
    return sumOfChildren(&Visual::getFacesNum);
}

std::uint64_t Visual::getTrianglesNum()
{
    return sumOfChildren(&Visual::getTrianglesNum);
}

std::uint64_t Visual::getVerticesNum()
{
    return sumOfChildren(&Visual::getVerticesNum);
}

void Visual::setVisible(bool nowVisible, bool recursive)
{
    sceneNode->setVisible(nowVisible, false);
    if (recursive)
        for (Visual* child : getChildren())
            if (!keepsOwnVisibility(*child))
                child->setVisible(nowVisible, true);
    visible = nowVisible;
}

void Visual::setScale(double x, double y, double z)
{
    sceneNode->setScale(static_cast<float>(x), static_cast<float>(y), static_cast<float>(z));
}

void Visual::resetAppearance()
{
    if (!defaultMaterial.empty())
        useMaterial(defaultMaterial);
}

void Visual::setSelected()
{
    if (!selectedMaterial.empty())
        useMaterial(selectedMaterial);
}

void Visual::setHighlighted()
{
    if (!highlightMaterial.empty())
        useMaterial(highlightMaterial);
}

void Visual::clearHighlightOrSelect()
{
    resetAppearance();
}

const std::string& Visual::getName() const
{
    return sceneNode->getName();
}

Visual* Visual::getParent() const
{
    const Ogre::Node* parent = sceneNode->getParent();
    return parent ? visualOf(*parent) : nullptr;
}

bool Visual::isTopLevel() const
{
    const Ogre::Node* parent = sceneNode->getParent();
    return parent && parent == SceneCore::Get()->worldVisual->sceneNode;
}

VisualChildren Visual::getChildren() const
{
    const auto& nodes = sceneNode->getChildren();
    return {nodes.data(), nodes.data() + nodes.size()};
}

void Visual::attachTo(Visual* parent)
{
    if (sceneNode->getParent() == parent->sceneNode)
        return;
    for (const Ogre::Node* above = parent->sceneNode; above; above = above->getParent())
        if (above == sceneNode)
            return; // OGRE would walk such a ring for ever
    const bool wasInScene = sceneNode->isInSceneGraph();
    leaveParentNode();
    parent->sceneNode->addChild(sceneNode);
    noteOrder();
    if (sceneNode->isInSceneGraph() != wasInScene)
        tellSceneEnteredOrLeft();
    picking::markDirty(this);
}

void Visual::attachVisual(Visual* child)
{
    child->attachTo(this);
}

void Visual::detach()
{
    if (Visual* parent = getParent())
        parent->detachVisual(this);
}

void Visual::detachVisual(Visual* child)
{
    if (child->sceneNode->getParent() == sceneNode)
        child->leaveParentNode();
    child->tellSceneEnteredOrLeft();
}

void Visual::tellSceneEnteredOrLeft()
{
    sceneEnteredOrLeft();
    for (Visual* child : getChildren())
        child->tellSceneEnteredOrLeft();
}

void Visual::sceneEnteredOrLeft() {}

void Visual::attachObject(Ogre::MovableObject* object)
{
    sceneNode->attachObject(object);
}

void Visual::detachObject(Ogre::MovableObject* object)
{
    sceneNode->detachObject(object);
}

bool Visual::hasAttachedObject(const std::string& name) const
{
    const auto& objects = sceneNode->getAttachedObjects();
    return std::any_of(objects.begin(), objects.end(),
                       [&](const Ogre::MovableObject* object) { return object->getName() == name; });
}

void Visual::clearChildren()
{
    while (!sceneNode->getChildren().empty())
        Delete(visualOf(*sceneNode->getChildren().front()));
}

void Visual::clearCopiedChildren()
{
    while (!sceneNode->getChildren().empty()) {
        Visual* child = visualOf(*sceneNode->getChildren().front());
        child->clearCopiedChildren();
        delete child;
    }
}

void Visual::Delete(Visual* visual)
{
    SceneCore& core = *SceneCore::Get();
    core.visuals.tellDeleted(visual);
    // Also here, where it dies with a parent: a visual made later at this address must not inherit its looks.
    core.states->remove(visual);
    core.visuals.erase(visual->getId(), visual);
    visual->clearChildren();
    picking::removeCompoundObject(visual);
    delete visual;
}

void Visual::dump(unsigned level) const
{
    const std::string indent(4 * level, ' ');
    std::cout << indent << "Visual : " << getName() << " id: " << id << " type: " << static_cast<std::uint64_t>(type)
              << "\n";
    const VisualChildren children = getChildren();
    if (children.begin() == children.end())
        return;
    std::cout << indent << "  children:\n";
    for (const Visual* child : children)
        child->dump(level + 1);
}

void Visual::setPose(const rob::PoseTemplate<float>& pose)
{
    sceneNode->setPosition(toOgre(pose.position));
    sceneNode->setOrientation(toOgre(pose.orientation));
    picking::markDirty(this);
}

void Visual::setPosition(const rob::PosTemplate<float>& position)
{
    sceneNode->setPosition(toOgre(position));
    picking::markDirty(this);
}

void Visual::setPosition(float x, float y, float z)
{
    setPosition(rob::PosTemplate<float>(x, y, z));
}

void Visual::setRotation(const rob::RotationTemplate<float>& rotation)
{
    sceneNode->setOrientation(toOgre(rotation));
    picking::markDirty(this);
}

void Visual::setOrientation(const rob::OrientTemplate<double>& orientation)
{
    sceneNode->setOrientation(toOgre(rob::OrientTemplate<float>(orientation)));
    picking::markDirty(this);
}

void Visual::setWorldPose(const rob::PoseTemplate<float>& pose)
{
    sceneNode->_setDerivedPosition(toOgre(pose.position));
    sceneNode->_setDerivedOrientation(toOgre(pose.orientation));
    picking::markDirty(this);
}

void Visual::setWorldPosition(const rob::PosTemplate<float>& position)
{
    sceneNode->_setDerivedPosition(toOgre(position));
    picking::markDirty(this);
}

rob::PoseTemplate<float> Visual::getPose() const
{
    return {getPosition(), toRotation(sceneNode->getOrientation())};
}

rob::PosTemplate<float> Visual::getPosition() const
{
    return toPos(sceneNode->getPosition());
}

rob::PoseTemplate<float> Visual::getWorldPose() const
{
    return {getWorldPosition(), getWorldRotation()};
}

rob::PosTemplate<float> Visual::getWorldPosition() const
{
    return toPos(sceneNode->_getDerivedPosition());
}

rob::RotationTemplate<float> Visual::getWorldRotation() const
{
    return toRotation(sceneNode->_getDerivedOrientation());
}

void Visual::setMaterial(const std::string& defaultName, const std::string& selectedName,
                         const std::string& highlightName)
{
    defaultMaterial = defaultName;
    selectedMaterial = selectedName;
    highlightMaterial = highlightName;
    for (Visual* child : getChildren())
        child->setMaterial(defaultName, selectedName, highlightName);
    resetAppearance();
}

void Visual::useMaterial(const std::string& name)
{
    for (Ogre::MovableObject* object : sceneNode->getAttachedObjects()) {
        const Ogre::MaterialPtr material = Ogre::MaterialManager::getSingleton().getByName(
            name, Ogre::ResourceGroupManager::AUTODETECT_RESOURCE_GROUP_NAME);
        if (!material)
            continue;
        if (auto* entity = dynamic_cast<Ogre::Entity*>(object))
            entity->setMaterial(material);
        else if (auto* renderable = dynamic_cast<Ogre::SimpleRenderable*>(object))
            renderable->setMaterial(material);
    }
}

} // namespace vrk::visual
