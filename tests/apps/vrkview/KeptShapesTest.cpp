#include "demo/KeptShapes.h"

#include "demo/DemoSolids.h"
#include "demo/DemoStation.h"
#include "files/Station.h"

#include "platform/station/Import.h"

#include <BRepAdaptor_Curve.hxx>
#include <BRep_Tool.hxx>
#include <Poly_Triangulation.hxx>
#include <TopExp.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>

#include <gmock/gmock.h>

#include <cstring>
#include <stdexcept>

namespace vrkview::demo {
namespace {

using testing::StrEq;
using testing::ThrowsMessage;

constexpr double rounding = 1e-9; // millimetres; directions are made of length 1 again as they are read

TopTools_IndexedMapOfShape partsOf(const TopoDS_Shape& shape, TopAbs_ShapeEnum kind)
{
    TopTools_IndexedMapOfShape parts;
    TopExp::MapShapes(shape, kind, parts);
    return parts;
}

std::span<const std::byte> asBytes(const std::string& text)
{
    return std::as_bytes(std::span(text));
}

int countFaces(const TopoDS_Shape& shape)
{
    return partsOf(shape, TopAbs_FACE).Extent();
}

void expectSameTriangles(const TopoDS_Shape& a, const TopoDS_Shape& b)
{
    TopLoc_Location placeA, placeB;
    const Handle(Poly_Triangulation) first = BRep_Tool::Triangulation(TopoDS::Face(a), placeA);
    const Handle(Poly_Triangulation) second = BRep_Tool::Triangulation(TopoDS::Face(b), placeB);
    ASSERT_FALSE(first.IsNull() || second.IsNull());
    ASSERT_TRUE(first->HasNormals() && second->HasNormals());
    ASSERT_EQ(first->NbNodes(), second->NbNodes());
    ASSERT_EQ(first->NbTriangles(), second->NbTriangles());
    for (int i = 1; i <= first->NbNodes(); ++i) {
        EXPECT_LT(first->Node(i).Transformed(placeA).Distance(second->Node(i).Transformed(placeB)), rounding);
        EXPECT_GT(gp_Vec(first->Normal(i)).Dot(gp_Vec(second->Normal(i))), 1 - 1e-6);
    }
    for (int i = 1; i <= first->NbTriangles(); ++i) {
        int one[3], other[3];
        first->Triangle(i).Get(one[0], one[1], one[2]);
        second->Triangle(i).Get(other[0], other[1], other[2]);
        EXPECT_EQ(std::memcmp(one, other, sizeof one), 0);
    }
}

void expectSameShape(const TopoDS_Shape& a, const TopoDS_Shape& b)
{
    const TopTools_IndexedMapOfShape facesA = partsOf(a, TopAbs_FACE), facesB = partsOf(b, TopAbs_FACE);
    ASSERT_EQ(facesA.Extent(), facesB.Extent());
    for (int i = 1; i <= facesA.Extent(); ++i) {
        EXPECT_EQ(facesA(i).Orientation(), facesB(i).Orientation());
        expectSameTriangles(facesA(i), facesB(i));
    }
    const TopTools_IndexedMapOfShape edgesA = partsOf(a, TopAbs_EDGE), edgesB = partsOf(b, TopAbs_EDGE);
    ASSERT_EQ(edgesA.Extent(), edgesB.Extent());
    for (int i = 1; i <= edgesA.Extent(); ++i) {
        if (BRep_Tool::Degenerated(TopoDS::Edge(edgesA(i))))
            continue;
        const BRepAdaptor_Curve curveA(TopoDS::Edge(edgesA(i))), curveB(TopoDS::Edge(edgesB(i)));
        for (const double part : {0.0, 0.3, 1.0}) {
            const double place = curveA.FirstParameter() + part * (curveA.LastParameter() - curveA.FirstParameter());
            EXPECT_LT(curveA.Value(place).Distance(curveB.Value(place)), rounding);
        }
    }
}

TEST(KeptShapes, AreThoseThatTheirMakersGive)
{
    const ShapesMadeAnew made;
    demoStation();

    ASSERT_GT(made.get().size(), 50u);
    for (const auto& [name, shape] : made.get()) {
        SCOPED_TRACE(name);
        ASSERT_FALSE(shapeIn(keptBytes(), name).IsNull());
        const TopoDS_Shape read = shapeIn(keptBytes(), name);
        vrk::station::meshShape(read); // which has its triangles, and gets normals
        expectSameShape(shape, read);
    }
}

TEST(KeptShapes, ShapeThatIsMissingIsMadeAndMeshed)
{
    int calls = 0;
    const TopoDS_Shape cube = kept("no such shape", [&] {
        ++calls;
        return box({0, 0, 0}, {10, 10, 10});
    });

    EXPECT_EQ(calls, 1);
    ASSERT_EQ(countFaces(cube), 6);
    expectSameShape(cube, cube);
}

TEST(KeptShapes, ShapeThatIsThereIsNotMade)
{
    const TopoDS_Shape base = kept("Base", []() -> TopoDS_Shape { throw std::logic_error("made again"); });

    EXPECT_GT(countFaces(base), 6);
    expectSameShape(base, base); // with its triangles and their normals
}

TEST(KeptShapes, EachOfSeveralIsFoundByItsName)
{
    const std::string bytes =
        bytesOf({{"small", box({0, 0, 0}, {1, 1, 1})}, {"round", cylinder({0, 0, 0}, gp::DZ(), 1, 2)}});

    EXPECT_EQ(countFaces(shapeIn(asBytes(bytes), "small")), 6);
    EXPECT_EQ(countFaces(shapeIn(asBytes(bytes), "round")), 3);
    EXPECT_TRUE(shapeIn(asBytes(bytes), "other").IsNull());
    EXPECT_TRUE(shapeIn({}, "small").IsNull());
}

TEST(KeptShapes, BytesThatEndEarlyHoldNothing)
{
    const std::string bytes = bytesOf({{"small", box({0, 0, 0}, {1, 1, 1})}});

    for (const std::size_t size : {std::size_t{3}, std::size_t{10}, std::size_t{15}, bytes.size() - 1})
        EXPECT_TRUE(shapeIn(asBytes(bytes).first(size), "small").IsNull()) << size;
}

TEST(KeptShapes, BytesThatAreNoShapeHoldNothing)
{
    std::string bytes = bytesOf({{"small", box({0, 0, 0}, {1, 1, 1})}});
    bytes.replace(8 + 5 + 8 + 1, 30, 30, '?'); // behind two lengths and the name

    EXPECT_TRUE(shapeIn(asBytes(bytes), "small").IsNull());
}

TEST(KeptShapes, TwoOfOneNameAreRefused)
{
    ShapesMadeAnew made;
    const auto cube = [] { return box({0, 0, 0}, {1, 1, 1}); };
    kept("twice", cube);

    EXPECT_THAT([&] { kept("twice", cube); },
                ThrowsMessage<std::logic_error>(StrEq("two shapes of the demo station have the name twice")));
}

} // namespace
} // namespace vrkview::demo
