#pragma once

#include "platform/common/Export.h"

#include <string>

namespace Ogre {
struct DriverVersion;
class Root;
} // namespace Ogre

namespace vrk::visual {

struct SceneSettings;

/// Brings the library up: OGRE with the OpenGL 3+ render system and a window of this size in pixels, the resources, the
/// meshes and the scene. Once a process, on the thread that renders from then on, after `vrk::selection::Init`.
///
/// A failure of OGRE before the meshes are made is logged and ends the process: there is nothing to go on with. Any later
/// failure is thrown to the caller as it is.
/// @throws std::filesystem::filesystem_error "temp_directory_path" where there is no place for OGRE's log.
VRK_EXPORT void Init(int width, int height, const SceneSettings& settings);

/// To be called once, at the end, on the render thread: the helper of previews ends. What was not created is passed over.
VRK_EXPORT void ReleaseResources();

/// Makes the render system of exactly this name the one to draw with. Where there is none it says so on standard output and
/// leaves the root as it is: OGRE itself then fails when it is initialised, which ends the start.
VRK_EXPORT void selectRenderer(Ogre::Root& root, const std::string& name);

/// Says on standard output that the driver is older than what the library is tried with: major version below 4, or minor
/// version below 5. Both are asked for, so that a 5.0 says so too.
VRK_EXPORT void reportDriverVersion(const Ogre::DriverVersion& version);

} // namespace vrk::visual
