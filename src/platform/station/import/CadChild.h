#pragma once

#include "platform/station/CadReader.h"
#include "platform/station/clouds/PlyMesh.h"
#include "platform/station/import/CadParts.h"
#include "platform/station/import/ReadScene.h"

/// Not installed.
namespace vrk::station {

/// As `readCad`, by the program that reads CAD files. Any thread, several at once.
///
/// The program tells on a pipe, line by line, how far it is, and writes the content into a file without a name in memory,
/// which goes with the last of both processes. While nothing comes, `progress` is called with what came last, so that what
/// it throws ends a reading that hangs.
/// @throws ImportError, also where the program is missing, dies or goes beyond a limit; whatever `progress` throws.
CadContent readInChild(const std::filesystem::path& file, CadRequest request, const Progress& progress);

/// As `readScene`, by the same program, or here where the settings say so.
PlyTriangles readTriangles(const std::filesystem::path& file, const Progress& progress,
                           SceneAxes axes = SceneAxes::ZUp);

} // namespace vrk::station
