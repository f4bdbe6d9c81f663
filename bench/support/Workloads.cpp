#include "bench/support/Workloads.h"

#include "bench/support/Rng.h"

#include <BRepAlgoAPI_Common.hxx>
#include <BRepAlgoAPI_Cut.hxx>
#include <BRepAlgoAPI_Fuse.hxx>
#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepBuilderAPI_MakePolygon.hxx>
#include <BRepFilletAPI_MakeFillet.hxx>
#include <BRepMesh_IncrementalMesh.hxx>
#include <BRepOffsetAPI_ThruSections.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakePrism.hxx>
#include <BRepPrimAPI_MakeRevol.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <BRepPrimAPI_MakeTorus.hxx>
#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <TopExp.hxx>
#include <TopLoc_Location.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopTools_ListOfShape.hxx>
#include <TopoDS.hxx>
#include <gp_Ax1.hxx>
#include <gp_Ax2.hxx>
#include <gp_Quaternion.hxx>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <numbers>
#include <stdexcept>

namespace vrk::bench {
namespace {

constexpr double pi = std::numbers::pi;

TopTools_ListOfShape listOf(std::initializer_list<TopoDS_Shape> shapes)
{
    TopTools_ListOfShape list;
    for (const TopoDS_Shape& shape : shapes)
        list.Append(shape);
    return list;
}

/// One boolean operation with all its tools at once.
template <typename Operation>
TopoDS_Shape combined(const TopoDS_Shape& argument, const TopTools_ListOfShape& tools)
{
    Operation operation;
    operation.SetArguments(listOf({argument}));
    operation.SetTools(tools);
    operation.Build();
    if (operation.HasErrors())
        throw std::runtime_error("a boolean operation of the workload failed");
    return operation.Shape();
}

TopoDS_Shape cylinder(const gp_Pnt& from, const gp_Dir& along, double radius, double length)
{
    return BRepPrimAPI_MakeCylinder(gp_Ax2(from, along), radius, length).Shape();
}

/// A drill along +z that sticks out on both sides of a body from 0 to `height`.
TopoDS_Shape drill(double x, double y, double radius, double height)
{
    return cylinder(gp_Pnt(x, y, -1), gp::DZ(), radius, height + 2);
}

bool isVertical(const TopoDS_Shape& edge)
{
    const gp_Pnt a = BRep_Tool::Pnt(TopExp::FirstVertex(TopoDS::Edge(edge)));
    const gp_Pnt b = BRep_Tool::Pnt(TopExp::LastVertex(TopoDS::Edge(edge)));
    return std::hypot(a.X() - b.X(), a.Y() - b.Y()) < 1e-6;
}

template <typename Filter>
TopoDS_Shape filleted(const TopoDS_Shape& shape, double radius, Filter filter)
{
    TopTools_IndexedMapOfShape edges;
    TopExp::MapShapes(shape, TopAbs_EDGE, edges);
    BRepFilletAPI_MakeFillet fillet(shape);
    for (int i = 1; i <= edges.Extent(); ++i)
        if (filter(edges(i)))
            fillet.Add(radius, TopoDS::Edge(edges(i)));
    return fillet.Shape();
}

TopoDS_Shape polygonFace(const std::vector<gp_Pnt>& corners)
{
    BRepBuilderAPI_MakePolygon polygon;
    for (const gp_Pnt& corner : corners)
        polygon.Add(corner);
    polygon.Close();
    return BRepBuilderAPI_MakeFace(polygon.Wire()).Shape();
}

// The ten kinds of shape; each draws its sizes in a fixed order.

TopoDS_Shape roundedBox(Rng& r)
{
    const double a = r.uni(200, 900), b = r.uni(200, 900), c = r.uni(200, 900);
    return filleted(BRepPrimAPI_MakeBox(a, b, c).Shape(), 0.12 * std::min({a, b, c}), [](const auto&) { return true; });
}

TopoDS_Shape plate(Rng& r)
{
    const double a = r.uni(400, 1200), b = r.uni(400, 1200), c = r.uni(40, 120);
    const TopoDS_Shape body = filleted(BRepPrimAPI_MakeBox(a, b, c).Shape(), 0.05 * std::min(a, b), isVertical);
    TopTools_ListOfShape holes;
    for (int u = 1; u <= 5; ++u)
        for (int v = 1; v <= 4; ++v)
            holes.Append(drill(a * u / 6, b * v / 5, 0.25 * std::min(a / 6, b / 5), c));
    return combined<BRepAlgoAPI_Cut>(body, holes);
}

TopoDS_Shape flange(Rng& r)
{
    const double radius = r.uni(150, 500), h = r.uni(60, 150);
    const TopoDS_Shape body = combined<BRepAlgoAPI_Fuse>(
        BRepPrimAPI_MakeCylinder(radius, h).Shape(), listOf({BRepPrimAPI_MakeCylinder(0.55 * radius, 2 * h).Shape()}));
    TopTools_ListOfShape holes = listOf({drill(0, 0, 0.4 * radius, 2 * h)});
    for (int k = 0; k < 8; ++k)
        holes.Append(drill(0.78 * radius * std::cos(2 * pi * k / 8), 0.78 * radius * std::sin(2 * pi * k / 8),
                           0.07 * radius, 2 * h));
    return combined<BRepAlgoAPI_Cut>(body, holes);
}

TopoDS_Shape steppedShaft(Rng& r)
{
    const double h = r.uni(40, 90), r0 = r.uni(30, 80);
    std::vector<gp_Pnt> profile{{r0, 0, 0}};
    for (int k = 0; k < 7; ++k) {
        const double rr = r.uni(120, 450);
        profile.emplace_back(rr, 0, k * h);
        profile.emplace_back(rr, 0, (k + 1) * h);
    }
    profile.emplace_back(r0, 0, 7 * h);
    return BRepPrimAPI_MakeRevol(polygonFace(profile), gp::OZ()).Shape();
}

TopoDS_Shape wheel(Rng& r)
{
    const double radius = r.uni(150, 500), h = r.uni(40, 160), d = r.uni(0.82, 0.92);
    std::vector<gp_Pnt> corners;
    for (int k = 0; k < 48; ++k) {
        const double q = (k & 2) != 0 ? radius : d * radius;
        corners.emplace_back(q * std::cos(2 * pi * k / 48), q * std::sin(2 * pi * k / 48), 0);
    }
    const TopoDS_Shape body = BRepPrimAPI_MakePrism(polygonFace(corners), gp_Vec(0, 0, h)).Shape();
    return combined<BRepAlgoAPI_Cut>(body, listOf({drill(0, 0, 0.3 * radius, h)}));
}

TopoDS_Shape pipeBend(Rng& r)
{
    const double radius = r.uni(200, 450), q = r.uni(0.18, 0.35) * radius, length = r.uni(100, 400);
    const gp_Dir back(0, -1, 0), left(-1, 0, 0);
    return combined<BRepAlgoAPI_Fuse>(
        BRepPrimAPI_MakeTorus(radius, q, pi / 2).Shape(),
        listOf({cylinder(gp_Pnt(radius, 0, 0), back, q, length), cylinder(gp_Pnt(0, radius, 0), left, q, length),
                cylinder(gp_Pnt(radius, -length, 0), back, 1.5 * q, 0.3 * q),
                cylinder(gp_Pnt(-length, radius, 0), left, 1.5 * q, 0.3 * q)}));
}

TopoDS_Shape tank(Rng& r)
{
    const double radius = r.uni(150, 400), h = r.uni(300, 1000);
    TopTools_ListOfShape tools =
        listOf({BRepPrimAPI_MakeSphere(gp_Ax2(gp_Pnt(0, 0, h), gp::DZ()), radius, 0, pi / 2).Shape()});
    for (int k = 0; k < 3; ++k) {
        const double angle = 2 * pi * k / 3 + 0.1;
        tools.Append(cylinder(gp_Pnt(0, 0, h * (0.3 + 0.2 * k)), gp_Dir(std::cos(angle), std::sin(angle), 0),
                              0.2 * radius, 1.4 * radius));
    }
    return combined<BRepAlgoAPI_Fuse>(BRepPrimAPI_MakeCylinder(radius, h).Shape(), tools);
}

TopoDS_Shape bracket(Rng& r)
{
    const double a = r.uni(200, 600), b = r.uni(200, 600), w = r.uni(30, 60), h = r.uni(150, 400);
    const TopoDS_Shape profile = polygonFace({{0, 0, 0}, {a, 0, 0}, {a, w, 0}, {w, w, 0}, {w, b, 0}, {0, b, 0}});
    const TopoDS_Shape body = filleted(BRepPrimAPI_MakePrism(profile, gp_Vec(0, 0, h)).Shape(), 0.3 * w, isVertical);
    TopTools_ListOfShape holes;
    for (int k = 0; k < 4; ++k) {
        const double z = h * (k + 1) / 5;
        holes.Append(cylinder(gp_Pnt(0.65 * a, -1, z), gp::DY(), 0.06 * h, w + 2));
        holes.Append(cylinder(gp_Pnt(-1, 0.65 * b, z), gp::DX(), 0.06 * h, w + 2));
    }
    return combined<BRepAlgoAPI_Cut>(body, holes);
}

TopoDS_Shape drilledBall(Rng& r)
{
    const double radius = r.uni(150, 450), side = r.uni(0.78, 0.9) * radius;
    const TopoDS_Shape cube = BRepPrimAPI_MakeBox(gp_Pnt(-side, -side, -side), gp_Pnt(side, side, side)).Shape();
    const TopoDS_Shape body = combined<BRepAlgoAPI_Common>(BRepPrimAPI_MakeSphere(radius).Shape(), listOf({cube}));
    return combined<BRepAlgoAPI_Cut>(body,
                                     listOf({cylinder(gp_Pnt(0, 0, -2 * radius), gp::DZ(), 0.25 * radius, 4 * radius),
                                             cylinder(gp_Pnt(-2 * radius, 0, 0), gp::DX(), 0.2 * radius, 4 * radius)}));
}

TopoDS_Shape loft(Rng& r)
{
    const double h = r.uni(80, 220);
    BRepOffsetAPI_ThruSections sections(true, false, 1e-4);
    sections.CheckCompatibility(false);
    for (int k = 0; k < 5; ++k) {
        const double base = r.uni(140, 420), twist = r.uni(-0.15, 0.15);
        BRepBuilderAPI_MakePolygon polygon;
        for (int c = 0; c < 10; ++c) {
            const double q = base * r.uni(0.9, 1.1), angle = 2 * pi * c / 10 + twist;
            polygon.Add(gp_Pnt(q * std::cos(angle), q * std::sin(angle), k * h));
        }
        polygon.Close();
        sections.AddWire(polygon.Wire());
    }
    return sections.Shape();
}

gp_Trsf drawPose(Rng& r)
{
    const double x = r.uni(0, 20000), y = r.uni(0, 20000), z = r.uni(0, 3000);
    const double u1 = r.u01(), u2 = r.u01(), u3 = r.u01();
    const double s = std::sqrt(1 - u1), c = std::sqrt(u1);
    gp_Trsf pose;
    pose.SetTransformation(gp_Quaternion(s * std::sin(2 * pi * u2), s * std::cos(2 * pi * u2),
                                         c * std::sin(2 * pi * u3), c * std::cos(2 * pi * u3)),
                           gp_Vec(x, y, z));
    return pose;
}

} // namespace

TorusMesh makeTorusMesh(unsigned along, unsigned around)
{
    TorusMesh mesh;
    mesh.vertices.reserve(std::size_t{along} * around);
    mesh.indices.reserve(std::size_t{6} * along * around);
    for (unsigned i = 0; i < along; ++i) {
        const double a = 2 * pi * i / along;
        for (unsigned j = 0; j < around; ++j) {
            const double b = 2 * pi * j / around;
            const double r = 400 + 40 * std::sin(5 * a + 3 * b) + 25 * std::sin(11 * a - 7 * b) +
                             12 * std::sin(23 * a + 17 * b) + 6 * std::sin(61 * a - 43 * b);
            const double q = 1000 + r * std::cos(b);
            mesh.vertices.emplace_back(static_cast<float>(q * std::cos(a)), static_cast<float>(q * std::sin(a)),
                                       static_cast<float>(r * std::sin(b) + 80 * std::sin(3 * a)));
        }
    }
    for (unsigned i = 0; i < along; ++i)
        for (unsigned j = 0; j < around; ++j) {
            const unsigned i1 = (i + 1) % along, j1 = (j + 1) % around;
            const unsigned corner = i * around + j, opposite = i1 * around + j1;
            mesh.indices.insert(mesh.indices.end(), {corner, i1 * around + j, opposite});
            mesh.indices.insert(mesh.indices.end(), {corner, opposite, i * around + j1});
        }
    return mesh;
}

void writeStl(const TorusMesh& mesh, const std::filesystem::path& file)
{
    std::ofstream out(file, std::ios::binary);
    const std::array<char, 80> header{};
    out.write(header.data(), header.size());
    const auto count = static_cast<std::uint32_t>(mesh.indices.size() / 3);
    out.write(reinterpret_cast<const char*>(&count), sizeof(count));
    std::vector<char> block;
    for (std::size_t t = 0; t < count; ++t) {
        const rob::Posf corners[3] = {mesh.vertices[mesh.indices[3 * t]], mesh.vertices[mesh.indices[3 * t + 1]],
                                      mesh.vertices[mesh.indices[3 * t + 2]]};
        const rob::Vec3f across = (corners[1] - corners[0]).cross(corners[2] - corners[0]);
        const rob::Vec3f normal = across / across.length();
        char record[50] = {};
        std::memcpy(record, &normal, sizeof(normal));
        std::memcpy(record + 12, corners, sizeof(corners));
        block.insert(block.end(), record, record + sizeof(record));
        if (block.size() > 1'000'000 || t + 1 == count) {
            out.write(block.data(), static_cast<std::streamsize>(block.size()));
            block.clear();
        }
    }
    if (!out.flush())
        throw std::runtime_error("cannot write " + file.string());
}

PosedSolid makeSolid(unsigned number)
{
    using Maker = TopoDS_Shape (*)(Rng&);
    static constexpr Maker makers[] = {roundedBox, plate, flange,  steppedShaft, wheel,
                                       pipeBend,   tank,  bracket, drilledBall,  loft};
    Rng r(0xC0FFEE00 + number);
    const gp_Trsf pose = drawPose(r);
    return {makers[number % 10](r), pose};
}

TopoDS_Compound makeFineCompound(unsigned solidCount)
{
    TopoDS_Compound compound;
    BRep_Builder builder;
    builder.MakeCompound(compound);
    for (unsigned i = 0; i < solidCount; ++i) {
        const PosedSolid solid = makeSolid(i);
        // Before it is placed: the mesher's rounding, and with it a few triangles, depends on the place.
        const BRepMesh_IncrementalMesh mesher(solid.shape, 0.3, false, 0.22, false);
        builder.Add(compound, solid.shape.Located(TopLoc_Location(solid.pose)));
    }
    return compound;
}

} // namespace vrk::bench
