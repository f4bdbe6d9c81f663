#include "PlainTriangles.h"
#include "geometry/Geometry.h"

#include "platform/common/ParallelFor.h"
#include "scene/math/Trsf.h"
#include "selection/SensitiveFace.h"
#include "selection/geometry/BVHBuilder.h"

#include <BRepAlgoAPI_Cut.hxx>
#include <BRepAlgoAPI_Fuse.hxx>
#include <BRepBuilderAPI_MakeEdge.hxx>
#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepBuilderAPI_MakeWire.hxx>
#include <BRepBuilderAPI_Transform.hxx>
#include <BRepClass3d_SolidClassifier.hxx>
#include <BRepFilletAPI_MakeFillet.hxx>
#include <BRepMesh_IncrementalMesh.hxx>
#include <BRepOffsetAPI_MakePipe.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <BRepPrimAPI_MakeTorus.hxx>
#include <GC_MakeArcOfCircle.hxx>
#include <TopExp.hxx>
#include <TopExp_Explorer.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>
#include <gp_Circ.hxx>
#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <numbers>

namespace vrk::selection {
namespace {

using rob::Posf;

constexpr double enlargement = 4;

TopoDS_Shape filletedBox()
{
    const TopoDS_Shape box = BRepPrimAPI_MakeBox(gp_Pnt(-50, -40, -30), gp_Pnt(50, 40, 30)).Shape();
    BRepFilletAPI_MakeFillet fillet(box);
    for (TopExp_Explorer edge(box, TopAbs_EDGE); edge.More(); edge.Next())
        fillet.Add(6, TopoDS::Edge(edge.Current()));
    return fillet.Shape();
}

/// Large against the unit by which the boxes of triangles are wider.
TopoDS_Shape enlarged(const TopoDS_Shape& shape)
{
    gp_Trsf scale;
    scale.SetScaleFactor(enlargement);
    return BRepBuilderAPI_Transform(shape, scale, true).Shape();
}

/// A disc with a hub, a bore and a ring of six holes.
TopoDS_Shape flange()
{
    TopoDS_Shape shape =
        BRepAlgoAPI_Fuse(BRepPrimAPI_MakeCylinder(80, 20).Shape(), BRepPrimAPI_MakeCylinder(40, 60).Shape());
    shape = BRepAlgoAPI_Cut(shape, BRepPrimAPI_MakeCylinder(20, 60).Shape());
    for (int i = 0; i < 6; ++i) {
        const double turn = i * std::numbers::pi / 3;
        const gp_Ax2 axis(gp_Pnt(60 * std::cos(turn), 60 * std::sin(turn), 0), gp_Dir(0, 0, 1));
        shape = BRepAlgoAPI_Cut(shape, BRepPrimAPI_MakeCylinder(axis, 6, 20).Shape());
    }
    return shape;
}

/// A bent pipe with thick walls.
TopoDS_Shape pipe()
{
    const gp_Circ bend(gp_Ax2({0, 0, 0}, {0, 0, 1}), 100);
    const TopoDS_Edge arc =
        BRepBuilderAPI_MakeEdge(GC_MakeArcOfCircle(bend, 0, std::numbers::pi / 2, true).Value()).Edge();
    const auto swept = [&](double radius) {
        const gp_Circ circle(gp_Ax2({100, 0, 0}, {0, 1, 0}), radius);
        const TopoDS_Wire rim = BRepBuilderAPI_MakeWire(BRepBuilderAPI_MakeEdge(circle).Edge()).Wire();
        return BRepOffsetAPI_MakePipe(BRepBuilderAPI_MakeWire(arc).Wire(), BRepBuilderAPI_MakeFace(rim).Face()).Shape();
    };
    return BRepAlgoAPI_Cut(swept(30), swept(20));
}

/// The faces of a solid with their own triangles, as an object of the scene has them.
class Faces : public PrimitiveContainer {
public:
    explicit Faces(const TopoDS_Shape& solid)
    {
        const BRepMesh_IncrementalMesh mesher(solid, 2, false, 0.5, false);
        TopTools_IndexedMapOfShape map;
        TopExp::MapShapes(solid, TopAbs_FACE, map);
        for (int i = 1; i <= map.Size(); ++i)
            primitives.push_back(new SensitiveFace(map(i), static_cast<unsigned>(i)));
        bvh = BVHBuilder(this).build();
    }
    /// Whether the ray passes exactly through the border of a triangle ahead.
    bool meetsABorder(const Ray& ray) const
    {
        for (const BVHPrimitive* primitive : primitives) {
            const auto& face = static_cast<const SensitiveFace&>(*primitive);
            for (const BVHPrimitive* triangle : face.primitives) {
                rob::Trianglef corners;
                face.getTriangle(corners, static_cast<const SensitiveIndexedTriangle&>(*triangle));
                const EdgeFunctions f = edgeFunctions(ray, corners);
                if (f.isOnBorder() && f.t > 0)
                    return true;
            }
        }
        return false;
    }
    std::size_t triangleCount() const
    {
        std::size_t count = 0;
        for (const BVHPrimitive* face : primitives)
            count += static_cast<const SensitiveFace*>(face)->primitives.size();
        return count;
    }
};

struct SolidCase {
    const char* name;
    TopoDS_Shape (*make)();
    gp_Pnt inside; // one point in the body, before it is enlarged; others are looked for around it
    double spread;
    std::size_t atLeast; // triangles
};
Posf insideOf(const SolidCase& c)
{
    return rob::toPosf(c.inside.Scaled({0, 0, 0}, enlargement));
}

class RayLeakFromInside : public testing::TestWithParam<SolidCase> {};

TEST_P(RayLeakFromInside, EveryRayFromInsideAClosedBodyHitsUnlessItMeetsABorderExactly)
{
    constexpr unsigned rays = 25000; // 100,000 over the four bodies
    const SolidCase& c = GetParam();
    const TopoDS_Shape solid = enlarged(c.make());
    const Faces faces(solid);
    ASSERT_GE(faces.triangleCount(), c.atLeast);
    Dice dice(17, static_cast<float>(c.spread * enlargement));
    BRepClass3d_SolidClassifier classifier(solid);
    std::vector<Posf> origins;
    while (origins.size() < 100) {
        const Posf p = insideOf(c) + rob::Vec3f(dice.point());
        classifier.Perform(gp_Pnt(p.x, p.y, p.z), 8); // well inside: the triangles cut off some of a bulge
        if (classifier.State() == TopAbs_IN)
            origins.push_back(p);
    }

    std::atomic<unsigned> onBorder = 0, leaks = 0;
    parallelFor(rays, [&](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i) {
            Dice own(static_cast<unsigned>(i), 1);
            rob::Vec3f to;
            do
                to = rob::Vec3f(own.point());
            while (to.length() > 1 || to.length() < 0.1f); // the same in all directions
            const Ray ray(origins[i % origins.size()], rob::normalized(to));
            Result result;
            faces.closestHitRay(result, ray);
            if (!result.hit)
                ++(faces.meetsABorder(ray) ? onBorder : leaks);
        }
    });

    EXPECT_EQ(leaks, 0u);
    EXPECT_LE(onBorder, rays / 1000); // exact meetings are rare
    RecordProperty("met a border", static_cast<int>(onBorder));
    RecordProperty("triangles", static_cast<int>(faces.triangleCount()));
}

TEST_P(RayLeakFromInside, RaysAtTheNodesThemselvesHitOrMeetABorderExactly)
{
    const SolidCase& c = GetParam();
    const Faces faces(enlarged(c.make()));
    const Posf origin = insideOf(c);
    unsigned asked = 0, leaks = 0;
    for (const BVHPrimitive* primitive : faces.primitives) {
        const auto& face = static_cast<const SensitiveFace&>(*primitive);
        for (std::size_t i = 0; i < face.primitives.size(); i += 1 + face.primitives.size() / 60) {
            rob::Trianglef corners;
            face.getTriangle(corners, static_cast<const SensitiveIndexedTriangle&>(*face.primitives[i]));
            for (const Posf& target : {corners.a, Posf((rob::Vec3f(corners.a) + rob::Vec3f(corners.b)) * 0.5f)}) {
                const Ray ray(origin, rob::normalized(target - origin));
                Result result;
                faces.closestHitRay(result, ray);
                ++asked;
                if (!result.hit && !faces.meetsABorder(ray))
                    ++leaks;
            }
        }
    }
    EXPECT_GT(asked, 100u);
    EXPECT_EQ(leaks, 0u);
}

TEST(RayLeak, RayExactlyThroughASharedEdgeMissesAndIsAccountedFor)
{
    const Faces cube(BRepPrimAPI_MakeBox(gp_Pnt(-50, -50, -50), gp_Pnt(50, 50, 50)).Shape());
    const Ray throughDiagonal({0, 0, 0}, {1, 0, 0});
    Result result;

    cube.closestHitRay(result, throughDiagonal);

    EXPECT_FALSE(result.hit);
    EXPECT_TRUE(cube.meetsABorder(throughDiagonal));
    EXPECT_FALSE(cube.meetsABorder(Ray({0, 1, 0}, {1, 0, 0})));
}

INSTANTIATE_TEST_SUITE_P(
    Solids, RayLeakFromInside,
    testing::Values(SolidCase{"FilletedBox", filletedBox, {0, 0, 0}, 25, 300},
                    SolidCase{"Flange", flange, {50, 0, 10}, 35, 300},
                    SolidCase{"Pipe", pipe, {88.4, 88.4, 0}, 15, 800},
                    SolidCase{"Torus", [] { return BRepPrimAPI_MakeTorus(60, 20).Shape(); }, {60, 0, 0}, 18, 800}),
    [](const auto& info) { return std::string(info.param.name); });

} // namespace
} // namespace vrk::selection
