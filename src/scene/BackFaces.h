#pragma once

#include <cstdint>
#include <unordered_map>

namespace Ogre {
class Material;
class Renderable;
class Technique;
} // namespace Ogre

namespace vrk::visual {

class ClosedMeshes;

/// Leaves out the faces that turn their backs to the eye where they cannot be seen: half of all that is filled, on a driver
/// that fills by the processor. Materials of bodies are two-sided, as those of surfaces have to be; each gets a
/// copy that is not, by whose technique a closed body is drawn.
///
/// Owner: whoever exchanges techniques as OGRE gathers what it draws. Thread: render thread.
class BackFaces {
public:
    /// Ahead of each picture. Until the first nothing is closed.
    void use(const ClosedMeshes& meshes) { closed = &meshes; }
    /// Whether it is the entity of a closed mesh.
    bool isClosed(const Ogre::Renderable& renderable) const;
    /// Its material's technique without back faces; null where back faces are seen, as through what is transparent.
    Ogre::Technique* techniqueOf(const Ogre::Renderable& renderable);
    /// The same of a material.
    Ogre::Technique* techniqueOf(const Ogre::Material& material);

private:
    const ClosedMeshes* closed = nullptr;
    std::unordered_map<std::uint64_t, Ogre::Technique*> made; // by the material's handle
};

} // namespace vrk::visual
