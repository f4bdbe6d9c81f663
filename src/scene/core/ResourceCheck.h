#pragma once

namespace vrk::visual {

/// Makes sure that the resource zip can be read whole and holds every program that its material scripts name, since OGRE ends the
/// process for want of one. A zip that has not changed since it was found good is not read again. Needs no OGRE. Any thread.
/// @throws std::runtime_error naming the zip and the cause.
void checkResources();

/// When OGRE has read the resources: makes sure that the driver takes the materials of bodies. Render thread.
/// @throws std::runtime_error naming the zip and the material.
void checkMaterials();

} // namespace vrk::visual
