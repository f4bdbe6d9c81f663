#include "scene/BackFaces.h"

#include "scene/SchemeTechnique.h"
#include "scene/core/ClosedMeshes.h"

#include <Ogre.h>

#include <typeinfo>

namespace vrk::visual {
namespace {

bool isTwoSided(const Ogre::Technique& technique)
{
    for (const Ogre::Pass* pass : technique.getPasses())
        if (pass->getCullingMode() != Ogre::CULL_NONE)
            return false;
    return true;
}

Ogre::Technique* makeCulling(const Ogre::Material& material)
{
    const std::string name = material.getName() + "/WithoutBackFaces";
    auto& materials = Ogre::MaterialManager::getSingleton();
    if (const Ogre::MaterialPtr old = materials.getByName(name)) // of one that had this name before
        materials.remove(old);
    const Ogre::MaterialPtr culling = material.clone(name);
    culling->setCullingMode(Ogre::CULL_CLOCKWISE);
    culling->load();
    return culling->getSupportedTechniques().empty() ? nullptr : culling->getSupportedTechniques().front();
}

} // namespace

bool BackFaces::isClosed(const Ogre::Renderable& renderable) const
{
    // Asked for each of all that is drawn: a cast would take ten times as long.
    if (!closed || typeid(renderable) != typeid(Ogre::SubEntity))
        return false;
    return closed->has(static_cast<const Ogre::SubEntity&>(renderable).getParent()->getMesh()->getHandle());
}

Ogre::Technique* BackFaces::techniqueOf(const Ogre::Renderable& renderable)
{
    const Ogre::MaterialPtr& material = renderable.getMaterial();
    return material ? techniqueOf(*material) : nullptr;
}

Ogre::Technique* BackFaces::techniqueOf(const Ogre::Material& material)
{
    const auto [found, isNew] = made.try_emplace(material.getHandle(), nullptr);
    if (isNew && !material.getSupportedTechniques().empty()) {
        const Ogre::Technique& first = *material.getSupportedTechniques().front();
        if (!isSeenThrough(first) && isTwoSided(first))
            found->second = makeCulling(material);
    }
    return found->second;
}

} // namespace vrk::visual
