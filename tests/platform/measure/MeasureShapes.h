#pragma once

#include "platform/measure/Measure.h"

#include <BRepBuilderAPI_MakeEdge.hxx>
#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepBuilderAPI_MakeVertex.hxx>
#include <BRepMesh_IncrementalMesh.hxx>
#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <Poly_Triangulation.hxx>
#include <TopExp.hxx>
#include <TopExp_Explorer.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Compound.hxx>
#include <TopoDS_Edge.hxx>
#include <TopoDS_Face.hxx>
#include <gp_Circ.hxx>
#include <gp_Lin.hxx>
#include <gp_Pln.hxx>
#include <gp_Quaternion.hxx>
#include <gp_Trsf.hxx>

#include <numbers>
#include <random>

/// Shapes to measure, and poses to measure them at.
namespace vrk::measure {

inline MeasuredThing pointAt(double x, double y, double z)
{
    return MeasuredPoint{{x, y, z}};
}

inline MeasuredThing edgeFrom(const gp_Pnt& from, const gp_Pnt& to)
{
    return MeasuredShape{BRepBuilderAPI_MakeEdge(from, to).Edge(), {}, {}};
}

inline gp_Circ circleAt(const gp_Pnt& centre, const gp_Dir& axis, double radius)
{
    return {gp_Ax2(centre, axis), radius};
}

inline MeasuredThing circleEdge(const gp_Pnt& centre, const gp_Dir& axis, double radius)
{
    return MeasuredShape{BRepBuilderAPI_MakeEdge(circleAt(centre, axis, radius)).Edge(), {}, {}};
}

/// A rectangle of a plane: from `low` to `high` in both directions of it.
inline MeasuredThing plateOn(const gp_Ax3& place, double low, double high)
{
    return MeasuredShape{BRepBuilderAPI_MakeFace(gp_Pln(place), low, high, low, high).Face(), {}, {}};
}

inline TopoDS_Shape pieceOf(const TopoDS_Shape& shape, TopAbs_ShapeEnum kind, int number)
{
    TopTools_IndexedMapOfShape pieces;
    TopExp::MapShapes(shape, kind, pieces);
    return pieces(number);
}

/// The faces of a shape as triangles without surfaces, as a mesh file gives them.
inline TopoDS_Shape meshOf(const TopoDS_Shape& shape)
{
    BRepMesh_IncrementalMesh(shape, 0.1);
    BRep_Builder builder;
    TopoDS_Compound mesh;
    builder.MakeCompound(mesh);
    for (TopExp_Explorer each(shape, TopAbs_FACE); each.More(); each.Next()) {
        TopLoc_Location location;
        TopoDS_Face face;
        builder.MakeFace(face, BRep_Tool::Triangulation(TopoDS::Face(each.Current()), location));
        face.Orientation(each.Current().Orientation());
        builder.Add(mesh, face.Located(location));
    }
    return mesh;
}

/// Anywhere within so many units of the origin, turned by any angle about any axis.
inline rob::Posed anyPose(std::mt19937& random, double reach)
{
    std::uniform_real_distribution<double> coordinate(-reach, reach), part(-1, 1), angle(0, 2 * std::numbers::pi);
    const rob::Posd position(coordinate(random), coordinate(random), coordinate(random));
    const rob::Dird axis = rob::normalized(rob::Vec3d(part(random), part(random), part(random) + 1.5));
    return {position, rob::Rotationd(angle(random), axis)};
}

inline gp_Trsf trsfOf(const rob::Posed& pose)
{
    gp_Trsf result;
    const auto& [w, x, y, z] = pose.orientation;
    result.SetTransformation(gp_Quaternion(x, y, z, w), gp_Vec(pose.position.x, pose.position.y, pose.position.z));
    return result;
}

/// The thing where `motion` puts it.
inline MeasuredThing moved(const MeasuredThing& thing, const rob::Posed& motion)
{
    if (const auto* point = std::get_if<MeasuredPoint>(&thing))
        return MeasuredPoint{motion * point->place, point->isSample};
    MeasuredShape shape = std::get<MeasuredShape>(thing);
    shape.pose = motion * shape.pose;
    return shape;
}

} // namespace vrk::measure
