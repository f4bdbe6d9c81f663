#include "visual/ArrowVisual.h"

#include "scene/math/Trsf.h"

#include <BRepAdaptor_Curve.hxx>
#include <TopoDS_Edge.hxx>

namespace vrk::visual {

ArrowVisual::ArrowVisual(Visual* parent, const std::string& name) : MeshVisual(name, parent) {}

ArrowVisual* ArrowVisual::Build(Visual* parent, const rob::PosTemplate<float>& position,
                                const rob::DirTemplate<float>& direction, const std::string& color)
{
    auto* visual = new ArrowVisual(parent, arrowMesh);
    visual->becomeArrow(position, direction, color);
    return visual;
}

ArrowVisual* ArrowVisual::Build(Visual* parent, const TopoDS_Edge& edge, bool forward)
{
    const ArrowPlace place = PlaceOn(edge, forward != (edge.Orientation() == TopAbs_REVERSED));
    return Build(parent, place.position, place.direction, arrowColor);
}

ArrowPlace ArrowVisual::PlaceOn(const TopoDS_Edge& edge, bool atLast)
{
    const BRepAdaptor_Curve curve(edge);
    gp_Pnt point;
    gp_Vec tangent;
    curve.D1(atLast ? curve.LastParameter() : curve.FirstParameter(), point, tangent);
    if (atLast)
        tangent.Reverse();
    const rob::Vec3Template<float> direction(static_cast<float>(tangent.X()), static_cast<float>(tangent.Y()),
                                             static_cast<float>(tangent.Z()));
    return {rob::toPosf(point), rob::normalized(direction)};
}

} // namespace vrk::visual
