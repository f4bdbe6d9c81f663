#pragma once

#include <Standard_Handle.hxx>

#ifdef No_Exception
#error "Open CASCADE's inline checks must stay: they are what refuses a shape or an index that is wrong."
#endif

class Poly_Triangulation;
class TopoDS_Face;

/// The one place that knows what differs between one version of Open CASCADE and another.
namespace vrk::visual {

/// Gives the triangulation of `face` normals, taken from its surface; one that has normals keeps them.
void computeNormals(const TopoDS_Face& face, const Handle(Poly_Triangulation) & triangulation);

} // namespace vrk::visual
