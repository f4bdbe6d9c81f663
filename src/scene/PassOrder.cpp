#include "scene/PassOrder.h"

#include <OgreMaterial.h>
#include <OgreTechnique.h>

namespace vrk::visual {
namespace {

constexpr Ogre::uint32 bitsOfName = 13;
constexpr Ogre::uint32 bitsOfRank = 2;

Ogre::uint32 shortHash(const std::string& name)
{
    const Ogre::uint32 hash = Ogre::FastHash(name.data(), name.size());
    return (hash ^ hash >> bitsOfName) & ((1u << bitsOfName) - 1);
}

/// Of lines in one place the later one is seen: paths over the seams that they follow, and states over all.
Ogre::uint32 rankOf(const std::string& material)
{
    if (material.ends_with("Highlighted"))
        return 3;
    if (material.ends_with("Selected"))
        return 2;
    return material.starts_with("Path") ? 1 : 0;
}

} // namespace

Ogre::uint32 PassOrder::operator()(const Ogre::Pass* pass) const
{
    const Ogre::uint32 index = pass->getIndex();
    const Ogre::uint32 program = pass->hasFragmentProgram() ? shortHash(pass->getFragmentProgramName()) : 0;
    const std::string& material = pass->getParent()->getParent()->getName();
    return ((index << bitsOfRank | rankOf(material)) << bitsOfName | program) << bitsOfName | shortHash(material);
}

} // namespace vrk::visual
