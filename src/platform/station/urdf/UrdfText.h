#pragma once

#include <urdf_world/types.h>

#include <filesystem>
#include <string>

/// The text of robot descriptions. Not installed.
namespace vrk::station {

/// A description whose joints form one tree over all links. Any thread.
/// @param file  for the failures' texts.
/// @throws ImportError
urdf::ModelInterfaceSharedPtr parseUrdfText(const std::string& text, const std::filesystem::path& file);

} // namespace vrk::station
