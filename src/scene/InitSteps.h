#pragma once

namespace vrk::visual {

struct SceneSettings;

// What a start consists of; render thread.

/// OGRE with its window, and the resources.
/// @throws Ogre::Exception, std::filesystem::filesystem_error; then `abandonOgre` is to be called.
void startOgre(int width, int height);
/// Takes back what `startOgre` did, or a part of it: another start can be tried.
void abandonOgre();
/// The window that carries the context is not seen, and no frame is drawn to it.
void hideStartWindow();
/// Meshes, scene, handles and previews. What it throws leaves a part of them.
void buildScene(const SceneSettings& settings);

} // namespace vrk::visual
