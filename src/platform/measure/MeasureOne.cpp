#include "platform/measure/Measure.h"

#include "platform/measure/MeasuredGeometry.h"

#include <BRepAdaptor_Curve.hxx>
#include <BRepAdaptor_Surface.hxx>
#include <BRepGProp.hxx>
#include <BRepTools.hxx>
#include <BRep_Tool.hxx>
#include <ElCLib.hxx>
#include <ElSLib.hxx>
#include <GCPnts_AbscissaPoint.hxx>
#include <GProp_GProps.hxx>
#include <Precision.hxx>
#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Edge.hxx>
#include <gp_Cone.hxx>
#include <gp_Cylinder.hxx>
#include <gp_Sphere.hxx>
#include <gp_Torus.hxx>

#include <fmt/format.h>

#include <cmath>
#include <numbers>

namespace vrk::measure {
namespace {

constexpr double degrees = 180 / std::numbers::pi;
constexpr int ringSteps = 50;
constexpr double lengthError = 1e-8; // model units
constexpr double areaError = 1e-10;  // as a share of the area; the kernel stops too early for a looser one

/// A circle, and how much of it there is.
struct Ring {
    gp_Circ circle;
    double first;
    double last;
};

/// Of a circular edge, and where a cylindrical or a spherical face was picked.
std::optional<Ring> ringOf(const TopoDS_Shape& shape, const gp_Pnt& place)
{
    if (shape.ShapeType() == TopAbs_EDGE) {
        const BRepAdaptor_Curve curve(TopoDS::Edge(shape));
        if (curve.GetType() == GeomAbs_Circle)
            return Ring{curve.Circle(), curve.FirstParameter(), curve.LastParameter()};
    }
    if (shape.ShapeType() != TopAbs_FACE || isMesh(shape))
        return std::nullopt;
    const BRepAdaptor_Surface surface(TopoDS::Face(shape));
    const double first = surface.FirstUParameter(), last = surface.LastUParameter();
    if (surface.GetType() == GeomAbs_Cylinder) {
        const gp_Cylinder cylinder = surface.Cylinder();
        double u = 0, v = 0;
        ElSLib::Parameters(cylinder, place, u, v);
        return Ring{ElSLib::CylinderVIso(cylinder.Position(), cylinder.Radius(), v), first, last};
    }
    if (surface.GetType() == GeomAbs_Sphere)
        return Ring{ElSLib::SphereVIso(surface.Sphere().Position(), surface.Sphere().Radius(), 0), first, last};
    return std::nullopt;
}

Measurement diameterOf(const Ring& ring)
{
    Measurement measured;
    measured.quantity = Quantity::Diameter;
    measured.value = 2 * ring.circle.Radius();
    const auto at = [&ring](double share) {
        return placeOf(ElCLib::Value(ring.first + share * (ring.last - ring.first), ring.circle));
    };
    measured.lines.resize(2);
    for (int i = 0; i <= ringSteps; ++i)
        measured.lines[0].push_back(at(1.0 * i / ringSteps));
    const rob::Posd centre = placeOf(ring.circle.Location());
    measured.lines[1] = {centre, at(0.5)};
    measured.textPlace = centre + (at(0.5) - centre) * 0.5;
    return measured;
}

Measurement lengthOf(const TopoDS_Edge& edge)
{
    const BRepAdaptor_Curve curve(edge);
    const double first = curve.FirstParameter(), last = curve.LastParameter();
    if (Precision::IsInfinite(first) || Precision::IsInfinite(last))
        throw MeasureError("An edge without end has no length");
    Measurement measured;
    measured.quantity = Quantity::Length;
    // `BRepGProp` takes a fixed number of places along a curve, and is off by a thousandth for a curved spline.
    measured.value = GCPnts_AbscissaPoint::Length(curve, lengthError);
    const int steps = curve.GetType() == GeomAbs_Line ? 1 : ringSteps;
    measured.lines.resize(1);
    for (int i = 0; i <= steps; ++i)
        measured.lines[0].push_back(placeOf(curve.Value(first + i * (last - first) / steps)));
    measured.textPlace = placeOf(curve.Value((first + last) / 2));
    return measured;
}

bool isEndless(const TopoDS_Face& face)
{
    double firstU = 0, lastU = 0, firstV = 0, lastV = 0;
    BRepTools::UVBounds(face, firstU, lastU, firstV, lastV);
    return Precision::IsInfinite(firstU) || Precision::IsInfinite(lastU) || Precision::IsInfinite(firstV) ||
           Precision::IsInfinite(lastV);
}

Measurement areaOf(const TopoDS_Shape& shape, const gp_Pnt& place)
{
    const bool isTriangles = isMesh(shape);
    TopExp_Explorer face(shape, TopAbs_FACE);
    if (!face.More())
        throw MeasureError("What has no face has no area");
    for (; face.More() && !isTriangles; face.Next())
        if (isEndless(TopoDS::Face(face.Current())))
            throw MeasureError("A face without border has no area");
    GProp_GProps properties;
    if (isTriangles)
        BRepGProp::SurfaceProperties(shape, properties, false, true);
    else // with a fixed number of places, splines are off by a ten-thousandth
        BRepGProp::SurfaceProperties(shape, properties, areaError);
    Measurement measured;
    measured.quantity = Quantity::Area;
    measured.value = properties.Mass();
    measured.textPlace = placeOf(shape.ShapeType() == TopAbs_FACE && !isTriangles ? place : properties.CentreOfMass());
    if (isTriangles)
        measured.note = "of the triangles";
    return measured;
}

Measurement placeAt(const gp_Pnt& point)
{
    Measurement measured;
    measured.quantity = Quantity::Place;
    measured.textPlace = placeOf(point);
    return measured;
}

std::string describeEdge(const TopoDS_Edge& edge, const Geometry& geometry)
{
    const BRepAdaptor_Curve curve(edge);
    const std::string length =
        Precision::IsInfinite(curve.FirstParameter()) || Precision::IsInfinite(curve.LastParameter())
            ? "endless"
            : textOf(lengthOf(edge));
    if (const auto* line = std::get_if<Line>(&geometry.what); line)
        return "line, " + length;
    const auto& other = std::get<Other>(geometry.what);
    if (!other.circle)
        return "curve, " + length;
    const bool isWhole = curve.IsClosed();
    return fmt::format("{}, diameter {} mm", isWhole ? "circle" : "arc", fixedText(2 * other.circle->Radius()));
}

std::string describeFace(const TopoDS_Face& face, const Geometry& geometry)
{
    if (isMesh(face))
        return "mesh";
    if (std::holds_alternative<Flat>(geometry.what))
        return "plane";
    const BRepAdaptor_Surface surface(face);
    switch (surface.GetType()) {
    case GeomAbs_Cylinder:
        return fmt::format("cylinder, diameter {} mm", fixedText(2 * surface.Cylinder().Radius()));
    case GeomAbs_Sphere:
        return fmt::format("sphere, diameter {} mm", fixedText(2 * surface.Sphere().Radius()));
    case GeomAbs_Cone:
        return fmt::format("cone, half angle {}°", fixedText(std::abs(surface.Cone().SemiAngle()) * degrees));
    case GeomAbs_Torus:
        return fmt::format("torus, diameters {} mm and {} mm", fixedText(2 * surface.Torus().MajorRadius()),
                           fixedText(2 * surface.Torus().MinorRadius()));
    default:
        return "curved face";
    }
}

} // namespace

MeasureError::~MeasureError() = default;

Single usualFor(const MeasuredThing& thing)
{
    const Geometry geometry = geometryOf(thing);
    if (std::holds_alternative<gp_Pnt>(geometry.what))
        return Single::Place;
    const TopoDS_Shape shape = shapeInWorld(thing);
    if (ringOf(shape, geometry.place))
        return Single::Diameter;
    return shape.ShapeType() == TopAbs_EDGE ? Single::Length : Single::Area;
}

Measurement measureOne(const MeasuredThing& thing, Single asked)
{
    const Geometry geometry = geometryOf(thing);
    const auto* point = std::get_if<gp_Pnt>(&geometry.what);
    if (asked == Single::Place) {
        if (!point)
            throw MeasureError("Only a point has a place");
        return placeAt(*point);
    }
    const TopoDS_Shape shape = shapeInWorld(thing);
    if (asked == Single::Area)
        return areaOf(shape, geometry.place);
    if (asked == Single::Length) {
        if (shape.ShapeType() != TopAbs_EDGE)
            throw MeasureError("Only an edge has a length");
        return lengthOf(TopoDS::Edge(shape));
    }
    const std::optional<Ring> ring = point ? std::nullopt : ringOf(shape, geometry.place);
    if (!ring)
        throw MeasureError("Only a circular edge, a cylindrical and a spherical face have a diameter");
    return diameterOf(*ring);
}

std::string describe(const MeasuredThing& thing)
{
    const Geometry geometry = geometryOf(thing);
    if (const auto* point = std::get_if<gp_Pnt>(&geometry.what))
        return "point at " + labelOf(placeAt(*point));
    const TopoDS_Shape shape = shapeInWorld(thing);
    switch (shape.ShapeType()) {
    case TopAbs_EDGE:
        return describeEdge(TopoDS::Edge(shape), geometry);
    case TopAbs_FACE:
        return describeFace(TopoDS::Face(shape), geometry);
    default:
        return isMesh(shape) ? "mesh" : "body";
    }
}

} // namespace vrk::measure
