#pragma once

#include "platform/common/Export.h"
#include "platform/geometry/LengthUnit.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

class TopoDS_Shape;

namespace vrk::layout {
class Assembly;
class Part;
} // namespace vrk::layout

namespace vrk::station {

/// A file that cannot be taken in. The text is one line that names the file and the cause.
class VRK_EXPORT ImportError : public std::runtime_error {
public:
    ImportError(const std::filesystem::path& file, const std::string& cause);
};

/// Called between the steps of an import, and within those that take long: what is being done, and how much of the whole is
/// done, from 0 to 1; told again every 50 ms while a CAD file says nothing new. On the importing thread. An
/// exception that it throws ends the import and reaches its caller.
using Progress = std::function<void(std::string_view step, double fraction)>;

/// What a file holds, complete but not yet in the station.
struct VRK_EXPORT ImportedFile {
    /// Those that are in no other; what they hold is in them.
    std::vector<std::shared_ptr<layout::Assembly>> assemblies;
    std::vector<std::shared_ptr<layout::Part>> parts; ///< those that are in no assembly
    /// What the file has, or refers to, and could not be taken in: a line each, for the user, without the file's name.
    std::vector<std::string> notes;

    /// All parts, also those in assemblies, in the order of the file.
    std::vector<std::shared_ptr<layout::Part>> allParts() const;
};

/// Reads a STEP (.step, .stp), IGES (.igs, .iges), BREP (.brep), STL (.stl) or PLY (.ply) file; the ending may be in any case.
///
/// Each occurrence of a product in an assembly becomes a part at its place, and each of an assembly an assembly. They are
/// named as the file names the occurrence, where it does; else as their product; else as what is around them, or the file.
/// Those beside each other have different names: "bolt", "bolt (2)". What a file has side by side, in no assembly, is put
/// into one of the file's name. Body and face colours are kept. Wires, edges and vertices that belong to no face become bodies, too. Shapes without
/// triangles are meshed on all cores, see `meshShape`. Nothing is in the station yet, so that a failure leaves nothing
/// half-loaded.
///
/// A PLY file is read for its faces, with normals and colours of its points; that of points alone is a cloud, see
/// "station/ImportCloud.h". A mesh becomes one body; where the view does not read the file as it stands, its geometry lies in
/// the `GeometryCache`, and `layout::Body::getSourceFile` tells where it came from.
///
/// STEP, IGES and BREP are read by a program of their own, which damage takes down in place of this one: "station/CadReader.h".
/// Any thread, several at once.
/// @param unit  of files that name none, which are meshes.
/// @throws ImportError
VRK_EXPORT ImportedFile ImportAssembled(const std::filesystem::path& file, const Progress& progress = {},
                                        LengthUnit unit = LengthUnit::Millimetre);

/// The same without assemblies: each part by itself, at its place in the file.
/// @throws ImportError
VRK_EXPORT std::vector<std::shared_ptr<layout::Part>>
ImportFile(const std::filesystem::path& file, const Progress& progress = {}, LengthUnit unit = LengthUnit::Millimetre);

/// Whether the file is a mesh of another kind than STL by its ending; of a PLY file, whether it holds faces, for which its
/// first lines are read. Any thread.
VRK_EXPORT bool isMeshFile(const std::filesystem::path& file);

/// The shape that a body's "geometry/uri" names, as `ImportFile` gave it to the body: "<file>#<name>". A BREP file without
/// a name is meant as a whole.
///
/// The file is read once, and all its shapes are meshed: they are kept until another file is asked for. Any thread.
/// @throws ImportError  also where the file holds no such shape.
VRK_EXPORT TopoDS_Shape ImportShape(const std::string& uri);

/// How far a triangle may lie from the surface of a shape whose bounding box has this diagonal: a two-thousandth of it, but
/// between 0.005 and 1 model units.
VRK_EXPORT double deflectionFor(double diagonal);

/// Meshes the faces of the shape that have no triangles (`BRepMesh_IncrementalMesh`): linear deflection `deflectionFor` its
/// size, angular deflection 0.2 radians, on all cores. Every edge without a polygon gets one to be drawn by:
/// the points that it has in the triangles of a face; where it bounds none, points with the same linear deflection and an
/// angular one of 0.1 radians.
VRK_EXPORT void meshShape(const TopoDS_Shape& shape);

} // namespace vrk::station
