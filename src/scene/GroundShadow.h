#pragma once

#include <OgreMaterialManager.h>
#include <OgreTexture.h>

#include <cstdint>
#include <memory>
#include <vector>

namespace Ogre {
class AxisAlignedBox;
class Entity;
class ManualObject;
} // namespace Ogre

namespace vrk::visual {

struct HeightMap;
class SceneCore;

/// A soft shadow of the solids and meshes that are shown, on the level ground that the lowest of them stands on: the heights
/// of what is above the ground are drawn, by a camera that looks up, into a texture that the shadow is made of. It is drawn
/// behind everything but the background, which is right for whoever looks from above; from below it is not seen.
///
/// Owner: the scene's records. Thread: render thread.
class GroundShadow : public Ogre::MaterialManager::Listener {
public:
    explicit GroundShadow(SceneCore& core);
    ~GroundShadow() override;
    GroundShadow(const GroundShadow&) = delete;
    GroundShadow& operator=(const GroundShadow&) = delete;

    /// Of what is shown now. Costs next to nothing where nothing of it has changed.
    void take();
    void remove();

    /// The technique by which something throws a shadow.
    Ogre::Technique* handleSchemeNotFound(unsigned short schemeIndex, const Ogre::String& schemeName,
                                          Ogre::Material* material, unsigned short lodIndex,
                                          const Ogre::Renderable* renderable) override;

private:
    struct Eye;

    void make(const std::vector<Ogre::Entity*>& bodies, const Ogre::AxisAlignedBox& box);
    /// @param low, high  opposite corners of what the map is of, on the ground.
    void show(const HeightMap& map, const Ogre::Vector3& low, const Ogre::Vector3& high);

    SceneCore& core;
    std::unique_ptr<Eye> eye; // null until the first shadow
    Ogre::TexturePtr texture;
    std::unique_ptr<Ogre::ManualObject> ground;
    std::uint64_t taken = 0; // tells what the shadow is of; 0 for nothing
};

} // namespace vrk::visual
