#pragma once

#include "platform/station/import/ImportFormats.h"

#include "scene/math/Pose.h"

#include <Message_ProgressRange.hxx>

#include <cstdint>
#include <functional>
#include <map>

/// What CAD files hold, read with nothing of the station: the program that reads them for it has none. Not installed.
namespace vrk::station {

struct CadBody {
    std::string name;
    std::string uri;
    std::string color;                          // empty where the file says none
    std::map<unsigned, std::string> faceColors; // by face number from 1
    TopoDS_Shape shape;
};

/// A part, or an assembly of those behind it that name it.
struct CadPart {
    std::string name;
    rob::Posed pose;         // in its owner
    std::uint32_t owner = 0; // the number, from 1, of the assembly that it is in, which stands before it; 0 for none
    bool isAssembly = false; // it has no bodies then
    std::vector<CadBody> bodies;
};

using CadParts = std::vector<CadPart>;

/// How deep assemblies may lie in each other.
constexpr std::size_t deepestAssembly = 60;

/// What is in a file.
struct CadContent {
    CadParts parts;
    std::vector<std::string> notes; // what of it is not: a line each
};

/// What is in one file; `file` is absolute, is there and is not empty. Shapes come as the file has them, without
/// triangulation where it has none.
CadContent readStep(const std::filesystem::path& file, const Progress& progress);
CadContent readIges(const std::filesystem::path& file, const Progress& progress);
CadContent readBrep(const std::filesystem::path& file, const Progress& progress);
/// The one shape of a BREP file, which may be a compound of several bodies.
TopoDS_Shape readWholeBrep(const std::filesystem::path& file, const Progress& progress);

/// What of a shape becomes a body of its own: each solid with a face, each such shell outside solids, the loose faces together, and each
/// wire, edge and vertex that stands in a compound, or alone, and belongs to nothing.
std::vector<TopoDS_Shape> bodyShapesOf(const TopoDS_Shape& shape);

/// Takes faces and curves without end, or larger than anything that is built, out of the bodies, and what has nothing left
/// then out of the parts, with a note.
void leaveOutEndless(CadContent& content);

/// "a.stp, b.stp", of many the first ones and "and 7 more".
std::string listed(const std::vector<std::string>& names);

/// As `meshShape`; a break leaves a part of it undone.
void meshShape(const TopoDS_Shape& shape, const Message_ProgressRange& range);

/// Open CASCADE's failures in `call` become those of an import.
void callOcct(const std::filesystem::path& file, const std::function<void()>& call);

/// What is read of a file.
enum class CadRequest {
    Bare,           ///< its content, without triangles where the file has none
    Meshed,         ///< its content
    Whole,          ///< a BREP file as one body, meshed
    Triangles,      ///< a mesh of triangles, see "ReadScene.h"
    RobotTriangles, ///< the same with the axes as they stand in the file
};

/// Reads a STEP, IGES or BREP file here and now. Open CASCADE's readers share parameters: one call at a time.
/// @throws ImportError, also in place of Open CASCADE's failures; whatever `progress` throws.
CadContent readCad(const std::filesystem::path& file, CadRequest request, const Progress& progress);

} // namespace vrk::station
