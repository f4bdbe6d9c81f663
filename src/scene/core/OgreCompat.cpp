#include "scene/core/OgreCompat.h"

#include <Ogre.h>

#include <utility>

// The Debian build hides Ogre::GL3PlusPlugin; the plug-in's own entry point creates that object and installs it in the
// root that stands.
extern "C" void dllStartPlugin();

namespace vrk::visual {
namespace {

template <typename IsTaken>
std::string freeName(const std::string& wanted, IsTaken isTaken)
{
    if (!isTaken(wanted))
        return wanted;
    // One counter for all names: a rebuilt path would else try every number again for each of its nodes.
    static unsigned counter = 0;
    std::string name;
    do
        name = wanted + "#" + std::to_string(++counter);
    while (isTaken(name));
    return name;
}

/// OGRE gives its list of children only to be read.
struct ChildrenOf : Ogre::Node {
    using Ogre::Node::mChildren;
};

} // namespace

void installGL3Plus(Ogre::Root&)
{
    dllStartPlugin();
}

Ogre::SceneNode* createChildNode(Ogre::SceneNode& parent, const std::string& wanted)
{
    if (wanted.empty())
        return parent.createChildSceneNode();
    const Ogre::SceneManager& manager = *parent.getCreator();
    return parent.createChildSceneNode(
        freeName(wanted, [&](const std::string& name) { return manager.hasSceneNode(name); }));
}

Ogre::SceneNode* createLooseNode(Ogre::SceneManager& manager, const std::string& wanted)
{
    return manager.createSceneNode(
        freeName(wanted, [&](const std::string& name) { return manager.hasSceneNode(name); }));
}

std::size_t removeChildNode(Ogre::Node& parent, Ogre::Node& child, std::size_t place)
{
    // OGRE walks the list from its front, and fills the gap with the last child.
    constexpr std::size_t soonFound = 64; // places that it passes as quickly as it can be helped
    auto& children = parent.*(&ChildrenOf::mChildren);
    const bool isHelped = place >= soonFound && place < children.size() && children[place] == &child;
    if (isHelped)
        std::swap(children.front(), children[place]);
    parent.removeChild(&child);
    return isHelped ? 0 : place;
}

std::string freeObjectName(Ogre::SceneManager& manager, const std::string& wanted, const std::string& type)
{
    return freeName(wanted, [&](const std::string& name) { return manager.hasMovableObject(name, type); });
}

Ogre::MaterialPtr materialByName(const std::string& name)
{
    Ogre::MaterialPtr material = Ogre::MaterialManager::getSingleton().getByName(
        name, Ogre::ResourceGroupManager::AUTODETECT_RESOURCE_GROUP_NAME);
    if (!material)
        OGRE_EXCEPT(Ogre::Exception::ERR_ITEM_NOT_FOUND, "There is no material " + name, "materialByName");
    return material;
}

} // namespace vrk::visual
