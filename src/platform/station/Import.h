#pragma once

#include "platform/common/Export.h"

#include <filesystem>
#include <functional>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

class TopoDS_Shape;

namespace vrk::layout {
class Part;
}

namespace vrk::station {

/// A file that cannot be taken in. The text is one line that names the file and the cause.
class VRK_EXPORT ImportError : public std::runtime_error {
public:
    ImportError(const std::filesystem::path& file, const std::string& cause);
};

/// Called between the steps of an import, and within those that take long: what is being done, and how much of the whole is
/// done, from 0 to 1. On the importing thread. An exception that it throws ends the import and reaches its caller.
using Progress = std::function<void(std::string_view step, double fraction)>;

/// Reads a STEP (.step, .stp), BREP (.brep) or STL (.stl) file; the ending may be in any case.
///
/// An assembly becomes one part per occurrence of a product, at its place in the assembly. Names, body colours and face
/// colours are kept. Wires, edges and vertices that belong to no face are bodies as well. Shapes without a triangulation are meshed, on all cores; `meshShape` states how finely. The parts
/// are complete but not yet in the station: nothing is half-loaded when it fails.
///
/// @throws ImportError
VRK_EXPORT std::vector<std::shared_ptr<layout::Part>> ImportFile(const std::filesystem::path& file,
                                                                 const Progress& progress = {});

/// The shape that a body's "geometry/uri" names, as `ImportFile` gave it to the body: "<file>#<name>". A BREP file without
/// a name is meant as a whole.
///
/// The file is read, and its shapes are kept, until another file is asked for; of them only the one asked for is meshed.
/// @throws ImportError  also where the file holds no such shape.
VRK_EXPORT TopoDS_Shape ImportShape(const std::string& uri);

/// How far a triangle may lie from the surface of a shape whose bounding box has this diagonal: a thousandth of it, but
/// between 0.005 and 2 model units.
VRK_EXPORT double deflectionFor(double diagonal);

/// Gives every face of the shape that has no triangulation one: linear deflection `deflectionFor` its size, angular
/// deflection 0.35 radians, on all cores. Faces that have one keep it. Every edge without a polygon gets one to be drawn by:
/// the points that it has in the triangles of a face; where it bounds none, points with the same linear deflection and an
/// angular one of 0.1 radians.
VRK_EXPORT void meshShape(const TopoDS_Shape& shape);

} // namespace vrk::station
