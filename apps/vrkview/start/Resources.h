#pragma once

namespace vrkview {

/// Makes sure that the resource zip can be read whole and holds every program that its material scripts name, since a
/// start without them ends the process. Needs no started library.
/// @throws std::runtime_error naming the zip and the cause.
void checkResources();

/// After start-up: makes sure that the driver takes the materials of bodies.
/// @throws std::runtime_error naming the zip and the material.
void checkMaterials();

} // namespace vrkview
