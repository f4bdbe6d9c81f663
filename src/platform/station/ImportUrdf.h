#pragma once

#include "platform/station/Import.h"

namespace vrk::layout {
class Mechanism;
}

namespace vrk::station {

/// Whether the file's ending is ".urdf", in any case.
VRK_EXPORT bool isUrdfFile(const std::filesystem::path& file);

/// Reads a robot description. One with joints that move becomes a `layout::Manipulator`, another a `layout::Device`.
///
/// Lengths become millimetres. Each link becomes a link with a part for each of its visual shapes, or of its collision
/// shapes where it has none to see. STL and Collada meshes are kept in the geometry cache in the model's units; boxes,
/// cylinders and spheres become shapes there. A mesh "package://<name>/..." is looked for in the folder that is called so
/// or whose package.xml names the package, from the robot's own folder upwards, and beside each of these.
///
/// The wrist is at the link "tool0", else "flange", else at the one that most moving joints lead to; the controller's task
/// frame is at the link "base", else at the robot's own origin. The maker is known from
/// words in the robot's name, the file's name and the names of packages. Joints that mimic others follow them; where
/// there is nothing to follow, `AppLogger` is told, and they move by themselves. Planar and floating ones are fixed; `FileLogger`
/// is told.
///
/// The mechanism is complete but not yet in the station.
///
/// @throws ImportError
VRK_EXPORT std::shared_ptr<layout::Mechanism> ImportUrdf(const std::filesystem::path& file,
                                                         const Progress& progress = {});

} // namespace vrk::station
