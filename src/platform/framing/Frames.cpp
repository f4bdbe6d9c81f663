#include "platform/framing/Frames.h"

#include <BRepAdaptor_Curve.hxx>
#include <BRepAdaptor_Surface.hxx>
#include <BRepGProp.hxx>
#include <BRep_Tool.hxx>
#include <GProp_GProps.hxx>
#include <GeomAPI_ProjectPointOnSurf.hxx>
#include <GeomLib_IsPlanarSurface.hxx>
#include <TopoDS_Edge.hxx>
#include <TopoDS_Face.hxx>

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace vrk::framing {
namespace {

using rob::Dird;
using rob::Posd;
using rob::Posed;
using rob::Vec3d;

constexpr double alongAxis = 1e-3; // a sine: below it the x of the world would turn with the rounding of z
constexpr double onLine = 1e-6;    // likewise: picks are in single precision
constexpr double level = 1e-6;
constexpr double flat = 1e-6; // model units that a plane may be off
constexpr double noArea = 1e-12;

constexpr const char* noNormal = "the face has no normal there";

/// Divides in one step, whatever the length: the general one refuses what is short.
Dird unit(const Vec3d& v)
{
    const double length = v.length();
    return {v.x / length, v.y / length, v.z / length};
}

/// @param x, z  of unit length and at right angles, nearly so.
rob::Rotationd rotationOf(const Dird& x, const Dird& z)
{
    const Dird y = unit(z.cross(x));
    return rob::Rotationd::FromAxes(unit(y.cross(z)), y, z).normalized();
}

struct Axes {
    Dird x;
    Dird y;
    rob::Rotationd rotation;
};

/// x along the line, y towards the third point.
Axes axesTo(const Posd& from, const Posd& to, const Posd& third)
{
    const Vec3d along = to - from, aside = third - from;
    checkApart(from, to);
    checkApart(from, third);
    checkApart(to, third);
    const Dird x = unit(along);
    const Vec3d normal = Vec3d(x).cross(unit(aside));
    const Vec3d normalFromEnd = Vec3d(x).cross(unit(third - to));
    if (std::min(normal.length(), normalFromEnd.length()) <= onLine)
        throw std::invalid_argument("the points lie on one line");
    const Dird z = unit(normal);
    return {x, unit(z.cross(x)), rotationOf(x, z)};
}

Vec3d turned(const Posed& body, const gp_Vec& v)
{
    return body.rotation() * Vec3d(v.X(), v.Y(), v.Z());
}

Posd moved(const Posed& body, const gp_Pnt& p)
{
    return body * Posd(p.X(), p.Y(), p.Z());
}

/// Out of the material that the face bounds.
gp_Vec outwards(const BRepAdaptor_Surface& surface, double u, double v)
{
    gp_Pnt place;
    gp_Vec du, dv;
    surface.D1(u, v, place, du, dv);
    gp_Vec normal = du.Crossed(dv);
    // A tip of a cone, or a pole of a ball: of the two directions one has no length there.
    if (normal.Magnitude() <= rob::zeroLength * std::max(1.0, du.Magnitude() * dv.Magnitude()))
        throw std::invalid_argument(noNormal);
    normal.Normalize();
    return surface.Face().Orientation() == TopAbs_REVERSED ? -normal : normal;
}

} // namespace

void checkApart(const Posd& a, const Posd& b)
{
    if ((b - a).length() <= rob::zeroLength)
        throw std::invalid_argument("two of the points are the same");
}

Posed frameFromThreePoints(const Posd& onX, const Posd& fartherOnX, const Posd& onY)
{
    const Axes axes = axesTo(onX, fartherOnX, onY);
    return {onX + axes.x * (onY - onX).dot(axes.x), axes.rotation};
}

Posed frameFromAxes(const Posd& origin, const Posd& onX, const Posd& sideOfY)
{
    return {origin, axesTo(origin, onX, sideOfY).rotation};
}

Posed frameOnNormal(const Posd& place, const Vec3d& normal)
{
    if (!(normal.length() > 0) || !std::isfinite(normal.length()))
        throw std::invalid_argument(noNormal);
    const Dird z = unit(normal);
    const Vec3d worldX(1, 0, 0), worldY(0, 1, 0);
    Vec3d x = worldX - z * z.x;
    if (x.length() <= alongAxis)
        x = worldY - z * z.y;
    return {place, rotationOf(unit(x), z)};
}

Posed frameOfFace(const TopoDS_Face& face, const Posed& body, const Posd& picked)
{
    if (face.IsNull())
        throw std::invalid_argument("there is no face");
    const BRepAdaptor_Surface surface(face);
    const Handle(Geom_Surface) geometry = BRep_Tool::Surface(face); // with the location of the face
    if (surface.GetType() == GeomAbs_Plane || GeomLib_IsPlanarSurface(geometry, flat).IsPlanar()) {
        GProp_GProps area;
        BRepGProp::SurfaceProperties(face, area);
        if (!(std::abs(area.Mass()) > noArea))
            throw std::invalid_argument("the face has no area");
        const double u = (surface.FirstUParameter() + surface.LastUParameter()) / 2;
        const double v = (surface.FirstVParameter() + surface.LastVParameter()) / 2;
        return frameOnNormal(moved(body, area.CentreOfMass()), turned(body, outwards(surface, u, v)));
    }
    const Posd inBody = body.inverse() * picked;
    GeomAPI_ProjectPointOnSurf nearest(gp_Pnt(inBody.x, inBody.y, inBody.z), geometry, surface.FirstUParameter(),
                                       surface.LastUParameter(), surface.FirstVParameter(), surface.LastVParameter());
    if (nearest.NbPoints() == 0)
        throw std::invalid_argument(noNormal);
    double u = 0, v = 0;
    nearest.LowerDistanceParameters(u, v);
    return frameOnNormal(moved(body, nearest.NearestPoint()), turned(body, outwards(surface, u, v)));
}

Posed frameOfCircle(const TopoDS_Edge& edge, const Posed& body)
{
    if (edge.IsNull() || BRepAdaptor_Curve(edge).GetType() != GeomAbs_Circle)
        throw std::invalid_argument("the edge is no circle");
    const gp_Circ circle = BRepAdaptor_Curve(edge).Circle();
    Vec3d axis = turned(body, gp_Vec(circle.Axis().Direction()));
    const double sign = std::abs(axis.z) > level ? axis.z : std::abs(axis.y) > level ? axis.y : axis.x;
    if (sign < 0)
        axis = -axis;
    return frameOnNormal(moved(body, circle.Location()), axis);
}

} // namespace vrk::framing
