#pragma once

#include "platform/common/Export.h"

#include <filesystem>
#include <span>
#include <string>

namespace vrk::station {

/// The kinds of files that can be brought into a station.
enum class FileKind { Other, Step, Iges, Brep, Stl, Obj, Scene, Urdf, Ply, Pcd, Xyz, Program, Station };

struct FileEnding {
    const char* text; ///< in small letters, with its dot
    FileKind kind;
};

/// All of them; those of one kind, and of kinds that are alike, stand together.
VRK_EXPORT std::span<const FileEnding> fileEndings();

/// What the file's name says it is, in whatever letters. The file is not looked at. Any thread.
VRK_EXPORT FileKind fileKindOf(const std::filesystem::path& file);

// Kinds that one importer reads

/// Shapes: CAD and meshes, which `ImportFile` reads.
VRK_EXPORT bool isShapeKind(FileKind kind);
VRK_EXPORT bool isPointCloudKind(FileKind kind);
/// Whether its files say what their numbers count: others are read in the unit that the user tells.
VRK_EXPORT bool hasUnitOfItsOwn(FileKind kind);
/// Meshes of other formats than STL, which `ImportFile` reads too; a PLY file may be one, or a point cloud.
VRK_EXPORT bool isMeshKind(FileKind kind);
/// Whether the file's ending is that of a shape: .step, .stp, .igs, .iges, .brep or .stl, in any case.
VRK_EXPORT bool isShapeFile(const std::filesystem::path& file);

/// The endings of the kinds that pass, as ".step, .stp, .brep".
VRK_EXPORT std::string endingsOf(bool (*isWanted)(FileKind));

} // namespace vrk::station
