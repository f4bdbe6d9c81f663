#pragma once

#include "platform/common/Export.h"
#include "platform/common/ZipManager.h"

#include <filesystem>
#include <memory>
#include <string>

namespace vrk {

/// The bytes behind a URI. "resource://<entry>" is an entry of the resource zip; "file://" and "station://" URIs and
/// plain paths are files. Any thread.
/// @throws std::runtime_error naming the URI if it cannot be read.
VRK_EXPORT std::unique_ptr<common::ZipBuffer> ReadFileFromURI(const std::string& uri);

/// The file that a URI or a plain path names: "file://" is followed by a path, "station://" by a path relative to the
/// station's folder; anything else is a path as it stands. Percent escapes are resolved in URIs only.
VRK_EXPORT std::filesystem::path UriToFilePath(const std::string& uri);

/// The folder that "station://" URIs are relative to; the working directory until it is set.
VRK_EXPORT void SetStationFolder(const std::filesystem::path& folder);

} // namespace vrk
