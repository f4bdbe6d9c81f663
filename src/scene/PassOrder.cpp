#include "scene/PassOrder.h"

#include <OgreMaterial.h>
#include <OgreTechnique.h>

namespace vrk::visual {
namespace {

constexpr Ogre::uint32 bitsOfName = 14;

Ogre::uint32 shortHash(const std::string& name)
{
    const Ogre::uint32 hash = Ogre::FastHash(name.data(), name.size());
    return (hash ^ hash >> bitsOfName) & ((1u << bitsOfName) - 1);
}

} // namespace

Ogre::uint32 PassOrder::operator()(const Ogre::Pass* pass) const
{
    const Ogre::uint32 index = pass->getIndex();
    const Ogre::uint32 program = pass->hasFragmentProgram() ? shortHash(pass->getFragmentProgramName()) : 0;
    const Ogre::uint32 material = shortHash(pass->getParent()->getParent()->getName());
    return index << 2 * bitsOfName | program << bitsOfName | material;
}

} // namespace vrk::visual
