#pragma once

#include <Standard_Handle.hxx>

class Poly_Triangulation;
class TopoDS_Face;

/// The one place that knows what differs between one version of Open CASCADE and another.
namespace vrk::visual {

/// Gives the triangulation of `face` normals, taken from its surface; one that has normals keeps them.
void computeNormals(const TopoDS_Face& face, const Handle(Poly_Triangulation) & triangulation);

} // namespace vrk::visual
