#include "scene/core/OcctCompat.h"

#include <Poly_Connect.hxx>
#include <Poly_Triangulation.hxx>
#include <Standard_Version.hxx>
#include <TopoDS_Face.hxx>
#if OCC_VERSION_HEX >= 0x070800
#include <BRepLib_ToolTriangulatedShape.hxx>
#else
#include <StdPrs_ToolTriangulatedShape.hxx>
#endif

namespace vrk::visual {

void computeNormals(const TopoDS_Face& face, const Handle(Poly_Triangulation) & triangulation)
{
    Poly_Connect connect; // filled only if a node has no normal on the surface, which is rare
#if OCC_VERSION_HEX >= 0x070800
    BRepLib_ToolTriangulatedShape::ComputeNormals(face, triangulation, connect);
#else
    StdPrs_ToolTriangulatedShape::ComputeNormals(face, triangulation, connect);
#endif
}

} // namespace vrk::visual
