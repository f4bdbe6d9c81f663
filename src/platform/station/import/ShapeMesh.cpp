#include "platform/station/import/CadParts.h"

#include "platform/geometry/EdgePolygons.h"

#include <BRepBndLib.hxx>
#include <BRepMesh_IncrementalMesh.hxx>
#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <Bnd_Box.hxx>
#include <Poly_Triangulation.hxx>
#include <StdPrs_ToolTriangulatedShape.hxx>
#include <TopExp.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Compound.hxx>

#include <algorithm>

namespace vrk::station {
namespace {

constexpr double angularDeflection = 0.2; // radians; more shows as corners of a circle in a picture of 2160 lines

/// Computes the normals that are missing, so that nobody writes into a triangulation later. It takes a hundredth of the
/// time of the meshing.
void addNormals(const TopTools_IndexedMapOfShape& faces)
{
    for (int i = 1; i <= faces.Extent(); ++i) {
        TopLoc_Location location;
        const TopoDS_Face& face = TopoDS::Face(faces(i));
        const Handle(Poly_Triangulation) triangles = BRep_Tool::Triangulation(face, location);
        if (!triangles.IsNull())
            StdPrs_ToolTriangulatedShape::ComputeNormals(face, triangles); // does nothing where there are some
    }
}

void addPolygons(const TopoDS_Shape& shape)
{
    Bnd_Box box;
    BRepBndLib::Add(shape, box);
    if (!box.IsVoid() && !box.IsOpen())
        geometry::addEdgePolygons(shape, deflectionFor(box.CornerMin().Distance(box.CornerMax())));
}

} // namespace

void meshShape(const TopoDS_Shape& shape, const Message_ProgressRange& range)
{
    TopTools_IndexedMapOfShape faces;
    TopExp::MapShapes(shape, TopAbs_FACE, faces);
    // Only the faces without triangles go to the mesher, which would otherwise make coarse ones anew.
    TopoDS_Compound bare;
    const BRep_Builder builder;
    builder.MakeCompound(bare);
    bool anyBare = false;
    for (int i = 1; i <= faces.Extent(); ++i) {
        TopLoc_Location location;
        if (BRep_Tool::Triangulation(TopoDS::Face(faces(i)), location).IsNull()) {
            builder.Add(bare, faces(i));
            anyBare = true;
        }
    }

    if (anyBare) {
        Bnd_Box box;
        BRepBndLib::Add(shape, box);
        // A shape without end, such as a half space, has no triangles; the mesher would not come back from it.
        if (box.IsVoid() || box.IsOpen())
            return;
        const double diagonal = box.CornerMin().Distance(box.CornerMax());
        IMeshTools_Parameters fineness;
        fineness.Deflection = deflectionFor(diagonal);
        fineness.Angle = angularDeflection;
        fineness.InParallel = true;
        BRepMesh_IncrementalMesh(bare, fineness, range);
    }
    addNormals(faces);
    addPolygons(shape);
}

double deflectionFor(double diagonal)
{
    return std::clamp(diagonal / 2000, 0.005, 1.0);
}

void meshShape(const TopoDS_Shape& shape)
{
    meshShape(shape, {});
}

} // namespace vrk::station
