#include "platform/station/FileKinds.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <string_view>

namespace vrk::station {
namespace {

constexpr std::array<FileEnding, 19> endings{{{".step", FileKind::Step},
                                              {".stp", FileKind::Step},
                                              {".igs", FileKind::Iges},
                                              {".iges", FileKind::Iges},
                                              {".brep", FileKind::Brep},
                                              {".stl", FileKind::Stl},
                                              {".obj", FileKind::Obj},
                                              {".gltf", FileKind::Scene},
                                              {".glb", FileKind::Scene},
                                              {".3mf", FileKind::Scene},
                                              {".dae", FileKind::Scene},
                                              {".urdf", FileKind::Urdf},
                                              {".ply", FileKind::Ply},
                                              {".pcd", FileKind::Pcd},
                                              {".xyz", FileKind::Xyz},
                                              {".mod", FileKind::Program},
                                              {".src", FileKind::Program},
                                              {".ls", FileKind::Program},
                                              {".station.json", FileKind::Station}}};

} // namespace

std::span<const FileEnding> fileEndings()
{
    return endings;
}

FileKind fileKindOf(const std::filesystem::path& file)
{
    std::string name = file.filename().string();
    std::ranges::transform(name, name.begin(), [](unsigned char c) { return std::tolower(c); });
    for (const FileEnding& ending : endings) {
        const std::string_view text = ending.text;
        // A name that is nothing but an ending is that of a hidden file without one; that of a station has two dots.
        const bool isEnding = name.size() > text.size() || ending.kind == FileKind::Station;
        if (isEnding && name.ends_with(text))
            return ending.kind;
    }
    return FileKind::Other;
}

bool isShapeKind(FileKind kind)
{
    return kind == FileKind::Step || kind == FileKind::Iges || kind == FileKind::Brep || kind == FileKind::Stl;
}

bool isPointCloudKind(FileKind kind)
{
    return kind == FileKind::Ply || kind == FileKind::Pcd || kind == FileKind::Xyz;
}

bool isMeshKind(FileKind kind)
{
    return kind == FileKind::Obj || kind == FileKind::Scene || kind == FileKind::Ply;
}

bool hasUnitOfItsOwn(FileKind kind)
{
    return kind == FileKind::Scene || kind == FileKind::Step || kind == FileKind::Iges || kind == FileKind::Urdf ||
           kind == FileKind::Station;
}

bool isShapeFile(const std::filesystem::path& file)
{
    return isShapeKind(fileKindOf(file));
}

std::string endingsOf(bool (*isWanted)(FileKind))
{
    std::string text;
    for (const FileEnding& ending : endings)
        if (isWanted(ending.kind))
            text += (text.empty() ? "" : ", ") + std::string(ending.text);
    return text;
}

} // namespace vrk::station
