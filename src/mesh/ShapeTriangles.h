#pragma once

#include "mesh/Mesh.h"
#include "platform/geometry/BodyColorTool.h" // ColorInfo
#include "platform/layout/Body.h"            // FaceMap

#include <Poly_Triangulation.hxx>

#include <cstddef>
#include <functional>
#include <memory>
#include <string>

class TopLoc_Location;

/// Makes a mesh of the triangulations that the faces of a shape carry, without OGRE. Thread: any, but not two at once on
/// faces that share a triangulation: missing normals are computed here and stored in it.
namespace vrk::visual {

/// Whether the face of that number, from 1, takes part.
using FaceFilter = std::function<bool(unsigned face)>;

/// What becomes of a node with an infinite or undefined coordinate.
enum class BadNodes {
    DropTriangles,  ///< it lies at the origin, and the triangles at it are left out
    ZeroCoordinate, ///< that coordinate becomes 0, and all triangles stay
};

/// The vertices of one face in the buffer of a mesh: one run, since no two faces share a vertex.
struct VertexRun {
    std::size_t start = 0;
    std::size_t count = 0;
};

/// The triangulation of an entry of a face map, and where it lies; null if the face has none.
/// @throws Standard_TypeMismatch "TopoDS::Face" if the entry is no face.
Handle(Poly_Triangulation) triangulationOf(const TopoDS_Shape& entry, TopLoc_Location& location);

/// Appends the triangulation of one face to `mesh`, as vertices of its own. Normals that are missing are computed and
/// stay in the triangulation.
///
/// @param color  null for a mesh without colours.
/// @return the number of nodes with an infinite or undefined coordinate.
/// @throws Standard_TypeMismatch "TopoDS::Face" if the entry is no face, "NCollection_AliasedArray::Value(), wrong type"
///         for nodes that are neither doubles nor floats; Standard_ConstructionError "gp_Dir() - input vector has zero
///         norm".
std::size_t appendFace(Mesh& mesh, const TopoDS_Shape& entry, const rob::ColorTemplate<float>* color,
                       BadNodes badNodes);

/// The triangulations of all visible faces, in the order of their numbers. For each face of which something is left out a
/// warning is written to `AppLogger`.
///
/// @param colors      null for a mesh without colours.
/// @param visualName  what the warnings call the solid.
/// @return null if there is no usable triangle.
/// @throws as `appendFace`, and the failures of a colour text.
std::unique_ptr<Mesh> makeShapeMesh(std::string meshName, const layout::FaceMap& faces, const FaceFilter& isVisible,
                                    const ColorInfo* colors, const std::string& visualName);

/// The vertices of a face in the mesh that `makeShapeMesh` made of the same faces. A hidden face, one without
/// triangulation and face 0 have none.
/// @throws Standard_TypeMismatch as `appendFace`; Standard_OutOfRange for a visible face past the last one.
VertexRun runOfFace(const layout::FaceMap& faces, const FaceFilter& isVisible, unsigned face);

/// The model's colour for each vertex of that mesh.
/// @throws as `runOfFace`, and the failures of a colour text.
std::vector<rob::ColorTemplate<float>> vertexColors(const layout::FaceMap& faces, const FaceFilter& isVisible,
                                                    const ColorInfo& colors);

} // namespace vrk::visual
