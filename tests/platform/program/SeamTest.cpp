#include "platform/task/Seam.h"

#include <BRepAlgoAPI_Cut.hxx>
#include <BRepBuilderAPI_MakeEdge.hxx>
#include <BRepBuilderAPI_MakeFace.hxx>
#include <BRepBuilderAPI_MakePolygon.hxx>
#include <BRepBuilderAPI_MakeVertex.hxx>
#include <BRepBuilderAPI_MakeWire.hxx>
#include <BRepFilletAPI_MakeFillet.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCone.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakePrism.hxx>
#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <Geom_BezierSurface.hxx>
#include <TColgp_Array2OfPnt.hxx>
#include <TopExp.hxx>
#include <TopExp_Explorer.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Compound.hxx>

#include <gp_Circ.hxx>
#include <gp_Pln.hxx>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <numbers>
#include <random>

namespace vrk::task {
namespace {

using geometry::MfgVector;
using geometry::MfgVectors;
using rob::Dird;
using rob::Posd;
using rob::Vec3d;
using testing::ElementsAre;
using testing::SizeIs;
using testing::StrEq;
using testing::ThrowsMessage;

constexpr double degrees = std::numbers::pi / 180;

std::shared_ptr<EdgeMfgShape> seamOf(const TopoDS_Shape& shape, const std::vector<unsigned>& edges,
                                     const SeamOptions& options = {})
{
    return MakeSeam(7, "seam", shape, 42, edges, options);
}

TopTools_IndexedMapOfShape edgesOf(const TopoDS_Shape& shape)
{
    TopTools_IndexedMapOfShape edges;
    TopExp::MapShapes(shape, TopAbs_EDGE, edges);
    return edges;
}

/// The numbers of the edges that run all along where `test` says so.
std::vector<unsigned> edgesWhere(const TopoDS_Shape& shape, const std::function<bool(const Posd&)>& test)
{
    const TopTools_IndexedMapOfShape edges = edgesOf(shape);
    std::vector<unsigned> found;
    for (int i = 1; i <= edges.Size(); ++i) {
        const TopoDS_Edge& edge = TopoDS::Edge(edges(i));
        if (BRep_Tool::Degenerated(edge))
            continue;
        const auto [first, last] = geometry::GetEdgeParameters(edge);
        bool isThere = true;
        for (const double t : {0.0, 0.3, 0.5, 0.9, 1.0})
            isThere = isThere && test(geometry::GetPointAtParameter(edge, first + t * (last - first)));
        if (isThere)
            found.push_back(static_cast<unsigned>(i));
    }
    return found;
}

bool isNear(double a, double b)
{
    return std::abs(a - b) < 1e-6;
}

Posd endOf(const MfgVectors& of)
{
    return of.vectors.back().getPos(of.edge);
}

Posd beginOf(const MfgVectors& of)
{
    return of.vectors.front().getPos(of.edge);
}

const TopoDS_Shape cube = BRepPrimAPI_MakeBox(100, 100, 100).Shape();

TEST(Seam, DirectionIsHalfwayBetweenTheOutwardNormals)
{
    for (unsigned number = 1; number <= 12; ++number) {
        const auto seam = seamOf(cube, {number});

        ASSERT_THAT(seam->getMfgVectors(), SizeIs(1));
        const MfgVectors& of = seam->getMfgVectors()[0];
        EXPECT_EQ(of.body, 42u);
        EXPECT_EQ(of.edgeNumber, number);
        EXPECT_TRUE(of.edge.IsSame(edgesOf(cube)(static_cast<int>(number))));
        ASSERT_THAT(of.vectors, SizeIs(2)) << "one at each end";
        for (const MfgVector& vector : of.vectors) {
            // Of a cube it is the way from the axis through its middle that the edge is parallel to.
            Vec3d away = vector.getPos(of.edge) - Posd(50, 50, 50);
            const Dird along = vector.getEdgeTangent(of.edge);
            away = away - along * away.dot(along);
            EXPECT_NEAR((Vec3d(vector.direction) - Vec3d(rob::normalized(away))).length(), 0, 1e-9) << number;
        }
        EXPECT_FALSE(seam->closed);
    }
}

TEST(Seam, DirectionOfOneSideIsTheNormalOfTheFaceThere)
{
    for (unsigned number = 1; number <= 12; ++number)
        for (const ToolSide side : {ToolSide::Left, ToolSide::Right}) {
            const auto seam = seamOf(cube, {number}, {.side = side});

            const MfgVectors& of = seam->getMfgVectors()[0];
            const Dird normal = of.vectors[0].direction;
            const Dird along = of.vectors[0].getEdgeTangent(of.edge);
            const Vec3d inwards = Posd(50, 50, 50) - (beginOf(of) + endOf(of)) * 0.5;
            // Seen from outside, up is the normal and the left hand is up x along.
            const Vec3d towardsFace = side == ToolSide::Left ? normal.cross(along) : along.cross(normal);
            EXPECT_GT(towardsFace.dot(inwards), 1) << number;
            EXPECT_NEAR(normal.dot(inwards), -50, 1e-9) << number;
        }
}

TEST(Seam, TurnsWithTheBody) // one pose moves question and answer alike
{
    std::mt19937 random(4);
    std::uniform_real_distribution<double> any(-1, 1);
    const TopoDS_Shape pipe =
        BRepAlgoAPI_Cut(cube, BRepPrimAPI_MakeCylinder(gp_Ax2({50, 50, 0}, {0, 0, 1}), 20, 100)).Shape();
    for (int round = 0; round < 10; ++round) {
        gp_Trsf turn;
        turn.SetRotation(gp_Ax1({any(random), any(random), any(random)}, gp_Dir(any(random), any(random), 1)),
                         3 * any(random));
        gp_Trsf move;
        move.SetTranslation({100 * any(random), 100 * any(random), 100 * any(random)});
        const gp_Trsf both = move * turn;
        const TopoDS_Shape turned = pipe.Moved(TopLoc_Location(both));
        for (unsigned number = 1; number <= static_cast<unsigned>(edgesOf(pipe).Size()); ++number) {
            const auto here = seamOf(pipe, {number}), there = seamOf(turned, {number});
            const MfgVectors& a = here->getMfgVectors()[0];
            const MfgVectors& b = there->getMfgVectors()[0];
            ASSERT_EQ(a.vectors.size(), b.vectors.size()) << number;
            for (std::size_t i = 0; i < a.vectors.size(); ++i) {
                const Dird& d = a.vectors[i].direction;
                const gp_Dir told = gp_Dir(d.x, d.y, d.z).Transformed(both);
                EXPECT_NEAR((b.vectors[i].direction - Dird(told.X(), told.Y(), told.Z())).length(), 0, 1e-6) << number;
            }
        }
    }
}

TEST(Seam, RimOfACylinderLeansOutwardsAllTheWayRound)
{
    const TopoDS_Shape cylinder = BRepPrimAPI_MakeCylinder(40, 100).Shape();
    const auto rim = edgesWhere(cylinder, [](const Posd& p) { return isNear(p.z, 100); });
    ASSERT_THAT(rim, SizeIs(1));

    const auto seam = seamOf(cylinder, rim, {.chordTolerance = 0.05});

    EXPECT_TRUE(seam->closed);
    const MfgVectors& of = seam->getMfgVectors()[0];
    for (const MfgVector& vector : of.vectors) {
        const Posd at = vector.getPos(of.edge);
        const Vec3d told(at.x / 40 * std::sqrt(0.5), at.y / 40 * std::sqrt(0.5), std::sqrt(0.5));
        EXPECT_NEAR((Vec3d(vector.direction) - told).length(), 0, 1e-9);
    }
    for (std::size_t i = 1; i < of.vectors.size(); ++i)
        EXPECT_LE(40 * (1 - std::cos((of.vectors[i].parameter - of.vectors[i - 1].parameter) / 2)), 0.05 * 1.01);
}

TEST(Seam, RimOfAHoleLeansInwards)
{
    const TopoDS_Shape plate =
        BRepAlgoAPI_Cut(cube, BRepPrimAPI_MakeCylinder(gp_Ax2({50, 50, 0}, {0, 0, 1}), 20, 100)).Shape();
    const auto rim =
        edgesWhere(plate, [](const Posd& p) { return isNear(p.z, 100) && isNear(std::hypot(p.x - 50, p.y - 50), 20); });
    ASSERT_THAT(rim, SizeIs(1));

    const auto seam = seamOf(plate, rim);

    const MfgVectors& of = seam->getMfgVectors()[0];
    ASSERT_GT(of.vectors.size(), 10u);
    for (const MfgVector& vector : of.vectors) {
        const Posd at = vector.getPos(of.edge);
        const Vec3d told((50 - at.x) / 20 * std::sqrt(0.5), (50 - at.y) / 20 * std::sqrt(0.5), std::sqrt(0.5));
        EXPECT_NEAR((Vec3d(vector.direction) - told).length(), 0, 1e-9);
    }
}

TEST(Seam, EdgeWhereAFaceMeetsItselfHasThatFacesNormal)
{
    const TopoDS_Shape cylinder = BRepPrimAPI_MakeCylinder(40, 100).Shape();
    const auto along = edgesWhere(cylinder, [](const Posd& p) { return isNear(p.x, 40) && isNear(p.y, 0); });
    ASSERT_THAT(along, SizeIs(1));

    for (const ToolSide side : {ToolSide::Between, ToolSide::Left, ToolSide::Right}) {
        const auto seam = seamOf(cylinder, along, {.side = side});
        for (const MfgVector& vector : seam->getMfgVectors()[0].vectors)
            EXPECT_NEAR((vector.direction - Dird(1, 0, 0)).length(), 0, 1e-9);
    }
}

TEST(Seam, TipOfAConeTakesTheNormalBesideIt)
{
    const TopoDS_Shape cone = BRepPrimAPI_MakeCone(100, 0, 100).Shape();
    const auto along = edgesWhere(cone, [](const Posd& p) { return isNear(p.y, 0) && isNear(p.x + p.z, 100); });
    ASSERT_THAT(along, SizeIs(1));

    const auto seam = seamOf(cone, along);

    for (const MfgVector& vector : seam->getMfgVectors()[0].vectors)
        EXPECT_NEAR((vector.direction - Dird(std::sqrt(0.5), 0, std::sqrt(0.5))).length(), 0, 1e-9);
}

TEST(Seam, FaceThatTurnsAlongAStraightEdgeAddsVectors)
{
    const std::vector<gp_Pnt> points{{0, 0, 0}, {0, 100, 0}, {100, 0, 0}, {100, 100, 100}};
    const int side = static_cast<int>(points.size()) / 2;
    TColgp_Array2OfPnt corners(1, side, 1, side);
    for (int i = 0; i < 2 * side; ++i)
        corners(1 + i / side, 1 + i % side) = points[static_cast<std::size_t>(i)];
    const TopoDS_Shape twisted =
        BRepBuilderAPI_MakeFace(Handle(Geom_Surface)(new Geom_BezierSurface(corners)), 1e-6).Shape();
    const auto edge = edgesWhere(twisted, [](const Posd& p) { return isNear(p.y, 0) && isNear(p.z, 0); });
    ASSERT_THAT(edge, SizeIs(1));

    const auto seam = seamOf(twisted, edge, {.side = ToolSide::Left});

    const MfgVectors& of = seam->getMfgVectors()[0];
    ASSERT_GT(of.vectors.size(), 2u);
    for (double x = 0; x <= 100; x += 1) {
        // At x along the edge the surface rises by x over the 100 across.
        const Dird told = rob::normalized(Vec3d(0, -x / 100, 1));
        const double parameter =
            of.vectors.front().parameter + x / 100 * (of.vectors.back().parameter - of.vectors.front().parameter);
        const Dird got = seam->getMfgVector({0, parameter}).direction;
        EXPECT_LT(std::acos(std::min(1.0, std::abs(got.dot(told)))), 0.03) << x;
    }
}

// The order of a run

/// The edges of a face of the cube, around it.
std::vector<unsigned> aroundTop()
{
    const auto top = edgesWhere(cube, [](const Posd& p) { return isNear(p.z, 100); });
    EXPECT_EQ(top.size(), 4u);
    return top;
}

void expectOneChain(const EdgeMfgShape& seam)
{
    const std::vector<MfgVectors>& legs = seam.getMfgVectors();
    for (std::size_t i = 1; i < legs.size(); ++i)
        EXPECT_NEAR((endOf(legs[i - 1]) - beginOf(legs[i])).length(), 0, 1e-6) << i;
    if (seam.closed) {
        EXPECT_NEAR((endOf(legs.back()) - beginOf(legs.front())).length(), 0, 1e-6);
    }
}

std::vector<unsigned> numbersOf(const EdgeMfgShape& seam)
{
    std::vector<unsigned> numbers;
    for (const MfgVectors& leg : seam.getMfgVectors())
        numbers.push_back(leg.edgeNumber);
    return numbers;
}

TEST(Seam, EdgesInAnyOrderMakeOneChainAndReversedOnesAreTurned)
{
    std::vector<unsigned> numbers = aroundTop();
    std::ranges::sort(numbers);
    do {
        const auto ring = seamOf(cube, numbers);
        EXPECT_TRUE(ring->closed);
        EXPECT_EQ(ring->getMfgVectors()[0].edgeNumber, numbers[0]);
        EXPECT_THAT(numbersOf(*ring), testing::UnorderedElementsAreArray(numbers));
        expectOneChain(*ring);
    } while (std::ranges::next_permutation(numbers).found);

    numbers.pop_back();
    std::ranges::sort(numbers);
    do {
        const auto open = seamOf(cube, numbers);
        EXPECT_FALSE(open->closed);
        EXPECT_THAT(numbersOf(*open), testing::UnorderedElementsAreArray(numbers));
        expectOneChain(*open);
        const auto place = [&](unsigned number) { return std::ranges::find(numbers, number); };
        EXPECT_LT(place(numbersOf(*open).front()), place(numbersOf(*open).back()))
            << "from the one that was given earlier";
    } while (std::ranges::next_permutation(numbers).found);
}

TEST(Seam, ReversedEdgesKeepTheirDirectionsAndTheirSides)
{
    const auto ring = seamOf(cube, aroundTop(), {.side = ToolSide::Left});
    const auto other = seamOf(cube, aroundTop(), {.side = ToolSide::Right});

    bool isAnyReversed = false;
    const bool topIsLeft = ring->getMfgVectors()[0].vectors[0].direction == Dird(0, 0, 1);
    const EdgeMfgShape& ofTop = topIsLeft ? *ring : *other;
    const EdgeMfgShape& ofWalls = topIsLeft ? *other : *ring;
    for (std::size_t i = 0; i < 4; ++i) {
        isAnyReversed |= ofTop.getEdge(static_cast<int>(i)).Orientation() == TopAbs_REVERSED;
        for (const MfgVector& vector : ofTop.getMfgVectors()[i].vectors)
            EXPECT_NEAR(vector.direction.z, 1, 1e-9) << "one side all the way";
        for (const MfgVector& vector : ofWalls.getMfgVectors()[i].vectors)
            EXPECT_NEAR(vector.direction.z, 0, 1e-9);
    }
    EXPECT_TRUE(isAnyReversed);
}

struct RefusedList {
    const char* name;
    std::vector<unsigned> edges;
    const char* text;
};
class RefusedLists : public testing::TestWithParam<RefusedList> {};

TEST_P(RefusedLists, AreToldApart)
{
    EXPECT_THAT([] { seamOf(cube, GetParam().edges); }, ThrowsMessage<std::invalid_argument>(StrEq(GetParam().text)));
}

INSTANTIATE_TEST_SUITE_P(Table, RefusedLists,
                         testing::Values(RefusedList{"None", {}, "a run needs an edge"},
                                         RefusedList{"Zero", {0}, "there is no edge 0: the body has 12"},
                                         RefusedList{"PastTheLast", {1, 13}, "there is no edge 13: the body has 12"},
                                         RefusedList{"Twice", {1, 2, 1}, "edge 1 is given twice"}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(Seam, EdgesThatAreNoChainAreRefused)
{
    std::vector<unsigned> apart = aroundTop();
    const auto bottom = edgesWhere(cube, [](const Posd& p) { return isNear(p.z, 0); });
    apart.push_back(bottom[0]);
    EXPECT_THAT([&] { seamOf(cube, apart); },
                ThrowsMessage<std::invalid_argument>(
                    StrEq("edge " + std::to_string(bottom[0]) + " does not follow the others in one chain")));
    EXPECT_THROW(seamOf(cube, {bottom[0], apart[0]}), std::invalid_argument);

    const auto corner = edgesWhere(cube, [](const Posd& p) {
        return isNear(p.x * p.x + p.y * p.y + p.z * p.z, std::pow(std::max({p.x, p.y, p.z}), 2)); // the three axes
    });
    ASSERT_THAT(corner, SizeIs(3));
    EXPECT_THAT([&] { seamOf(cube, corner); },
                ThrowsMessage<std::invalid_argument>(testing::HasSubstr("meet at one place: a run has no branches")));
}

// What has no direction

TEST(Seam, EdgeOfASingleFaceHasNothingToHalve)
{
    const TopoDS_Shape sheet = BRepBuilderAPI_MakeFace(gp_Pln(gp_Pnt(0, 0, 0), gp_Dir(0, 0, 1)), 0, 100, 0, 50).Shape();

    EXPECT_THAT([&] { seamOf(sheet, {2}); },
                ThrowsMessage<std::invalid_argument>(
                    StrEq("edge 2 bounds one face only: there is no direction between two. Take that of the face")));
    for (const ToolSide side : {ToolSide::Left, ToolSide::Right})
        EXPECT_EQ(seamOf(sheet, {2}, {.side = side})->getMfgVectors()[0].vectors[0].direction, Dird(0, 0, 1));
    EXPECT_EQ(seamOf(sheet.Reversed(), {2}, {.side = ToolSide::Left})->getMfgVectors()[0].vectors[0].direction,
              Dird(0, 0, -1))
        << "outwards is what the face says";
}

TEST(Seam, EdgeOfNoFaceIsRefused)
{
    const TopoDS_Shape wire = BRepBuilderAPI_MakeEdge(gp_Pnt(0, 0, 0), gp_Pnt(10, 0, 0)).Shape();

    EXPECT_THAT([&] { seamOf(wire, {1}); }, ThrowsMessage<std::invalid_argument>(StrEq(
                                                "edge 1 bounds no face, so that nothing tells where the tool points")));
}

TEST(Seam, EdgeWithoutLengthIsRefused)
{
    const TopoDS_Shape cone = BRepPrimAPI_MakeCone(100, 0, 100).Shape();
    const TopTools_IndexedMapOfShape edges = edgesOf(cone);
    unsigned tip = 0;
    for (int i = 1; i <= edges.Size(); ++i)
        if (BRep_Tool::Degenerated(TopoDS::Edge(edges(i))))
            tip = static_cast<unsigned>(i);
    ASSERT_NE(tip, 0u);
    const std::string text = "edge " + std::to_string(tip) + " has no length";

    EXPECT_THAT([&] { seamOf(cone, {tip}); }, ThrowsMessage<std::invalid_argument>(StrEq(text)));
    EXPECT_THAT([&] { TangentChain(cone, tip, 0.1); }, ThrowsMessage<std::invalid_argument>(StrEq(text)));
}

/// A triangle with its corners so, its first edge given.
TopoDS_Face triangle(const TopoDS_Edge& edge, const TopoDS_Vertex& from, const TopoDS_Vertex& to, const gp_Pnt& third)
{
    const TopoDS_Vertex tip = BRepBuilderAPI_MakeVertex(third).Vertex();
    const TopoDS_Wire wire = BRepBuilderAPI_MakeWire(edge, BRepBuilderAPI_MakeEdge(to, tip).Edge(),
                                                     BRepBuilderAPI_MakeEdge(tip, from).Edge())
                                 .Wire();
    return BRepBuilderAPI_MakeFace(wire, Standard_True).Face();
}

TopoDS_Compound together(const std::vector<TopoDS_Shape>& shapes)
{
    TopoDS_Compound compound;
    BRep_Builder().MakeCompound(compound);
    for (const TopoDS_Shape& shape : shapes)
        BRep_Builder().Add(compound, shape);
    return compound;
}

TEST(Seam, FacesBackToBackHaveNoDirectionBetween)
{
    const TopoDS_Vertex from = BRepBuilderAPI_MakeVertex(gp_Pnt(0, 0, 0)).Vertex();
    const TopoDS_Vertex to = BRepBuilderAPI_MakeVertex(gp_Pnt(100, 0, 0)).Vertex();
    const TopoDS_Edge edge = BRepBuilderAPI_MakeEdge(from, to).Edge();
    const TopoDS_Face one = triangle(edge, from, to, {50, 80, 0});
    const TopoDS_Shape other = triangle(edge, from, to, {50, 80, 0}).Reversed();
    const TopoDS_Shape third = triangle(edge, from, to, {50, 0, 80});
    const TopoDS_Shape blade = together({one, other});
    const auto number = static_cast<unsigned>(edgesOf(blade).FindIndex(edge));

    EXPECT_THAT([&] { seamOf(blade, {number}); }, ThrowsMessage<std::invalid_argument>(StrEq(
                                                      "the faces at edge " + std::to_string(number) +
                                                      " look away from each other: no direction lies between them")));
    const TopoDS_Shape fan = together({one, other, third});
    EXPECT_THAT([&] { seamOf(fan, {number}); },
                ThrowsMessage<std::invalid_argument>(testing::HasSubstr("bounds 3 faces")));
}

TEST(Seam, ToleranceWithoutSenseIsRefused)
{
    for (const double chord : {0.0, -1.0, std::nan(""), HUGE_VAL})
        EXPECT_THAT([chord] { seamOf(cube, {1}, {.chordTolerance = chord}); },
                    ThrowsMessage<std::invalid_argument>(StrEq("a chord tolerance is a length above 0")));
    for (const double angle : {-0.1, std::nan("")})
        EXPECT_THAT([angle] { TangentChain(cube, 1, angle); },
                    ThrowsMessage<std::invalid_argument>(StrEq("an angle tolerance is 0 or more")));
    EXPECT_THAT([] { TangentChain({}, 1, 0.1); },
                ThrowsMessage<std::invalid_argument>(StrEq("a body without a shape has no edges")));
    EXPECT_THAT([] { TangentChain(cube, 13, 0.1); },
                ThrowsMessage<std::invalid_argument>(StrEq("there is no edge 13: the body has 12")));
}

// Tangent chains

TopoDS_Shape roundedBox()
{
    BRepFilletAPI_MakeFillet rounded(cube);
    const TopTools_IndexedMapOfShape edges = edgesOf(cube);
    for (int i = 1; i <= edges.Size(); ++i)
        if (const TopoDS_Edge edge = TopoDS::Edge(edges(i));
            isNear(std::abs(geometry::GetEdgePointInfoAtParam(edge, 1).second.z), 1))
            rounded.Add(15, edge);
    return rounded.Shape();
}

TEST(TangentChain, GoesRoundWhereCornersAreRounded)
{
    const TopoDS_Shape box = roundedBox();
    const auto top = edgesWhere(box, [](const Posd& p) { return isNear(p.z, 100); });
    ASSERT_THAT(top, SizeIs(8));

    for (const unsigned number : top) {
        const std::vector<unsigned> chain = TangentChain(box, number, 1 * degrees);
        EXPECT_THAT(chain, testing::UnorderedElementsAreArray(top)) << number;
        const auto seam = seamOf(box, chain);
        EXPECT_TRUE(seam->closed);
        expectOneChain(*seam);
        EXPECT_EQ(numbersOf(*seam), chain) << "it comes in order";
        for (const MfgVectors& leg : seam->getMfgVectors())
            for (const MfgVector& vector : leg.vectors)
                EXPECT_NEAR(vector.direction.z, std::sqrt(0.5), 1e-6);
    }
}

TEST(TangentChain, EndsAtCorners)
{
    for (unsigned number = 1; number <= 12; ++number)
        EXPECT_THAT(TangentChain(cube, number, 89 * degrees), ElementsAre(number));
    const TopoDS_Shape box = roundedBox();
    const auto upright = edgesWhere(box, [](const Posd& p) { return isNear(p.x, 0) && isNear(p.y, 15); });
    ASSERT_THAT(upright, SizeIs(1));
    EXPECT_THAT(TangentChain(box, upright[0], 1 * degrees), ElementsAre(upright[0]));
}

TEST(TangentChain, TakesCornersWithinTheAngle)
{
    BRepBuilderAPI_MakePolygon corners;
    for (int i = 0; i < 12; ++i)
        corners.Add(gp_Pnt(100 * std::cos(i * 30 * degrees), 100 * std::sin(i * 30 * degrees), 0));
    corners.Close();
    const TopoDS_Shape prism =
        BRepPrimAPI_MakePrism(BRepBuilderAPI_MakeFace(corners.Wire()).Face(), gp_Vec(0, 0, 50)).Shape();
    const auto top = edgesWhere(prism, [](const Posd& p) { return isNear(p.z, 50); });
    ASSERT_THAT(top, SizeIs(12));

    EXPECT_THAT(TangentChain(prism, top[3], 30.1 * degrees), SizeIs(12));
    EXPECT_THAT(TangentChain(prism, top[3], 29.9 * degrees), ElementsAre(top[3]));
}

TEST(TangentChain, OfAClosedEdgeIsThatEdge)
{
    const TopoDS_Shape cylinder = BRepPrimAPI_MakeCylinder(40, 100).Shape();
    const auto rim = edgesWhere(cylinder, [](const Posd& p) { return isNear(p.z, 100); });

    EXPECT_THAT(TangentChain(cylinder, rim[0], 10 * degrees), ElementsAre(rim[0]));
}

TEST(TangentChain, EndsBeforeItRunsIntoItself)
{
    // A straight edge that enters a circle of two halves along its tangent.
    const gp_Pnt entry(0, 0, 0), top(0, 100, 0);
    const gp_Circ circle(gp_Ax2({0, 50, 0}, gp::DZ()), 50);
    const TopoDS_Compound six = together({BRepBuilderAPI_MakeEdge(gp_Pnt(-80, 0, 0), entry).Edge(),
                                          BRepBuilderAPI_MakeEdge(circle, entry, top).Edge(),
                                          BRepBuilderAPI_MakeEdge(circle, top, entry).Edge()});

    EXPECT_THAT(TangentChain(six, 1, 1 * degrees), ElementsAre(1u, 2u));
    EXPECT_THAT(TangentChain(six, 2, 1 * degrees), ElementsAre(2u, 3u)) << "back to where it began";
}

TEST(TangentChain, IsARunWhereverItBegins)
{
    // A block with an arch through it, whose round end meets the straight sides along their tangents.
    TopoDS_Shape block = BRepPrimAPI_MakeBox(gp_Pnt(-60, -30, 0), gp_Pnt(60, 30, 100)).Shape();
    const gp_Ax2 through(gp_Pnt(0, -40, 40), gp::DY());
    block = BRepAlgoAPI_Cut(block, BRepPrimAPI_MakeCylinder(through, 25, 80).Shape());
    block = BRepAlgoAPI_Cut(block, BRepPrimAPI_MakeBox(gp_Pnt(-25, -40, -10), gp_Pnt(25, 40, 40)).Shape());
    BRepFilletAPI_MakeFillet rounded(block);
    for (const unsigned number : edgesWhere(block, [](const Posd& p) { return isNear(p.z, 100); }))
        rounded.Add(10, TopoDS::Edge(edgesOf(block)(static_cast<int>(number))));
    const TopoDS_Shape shape = rounded.Shape();

    for (unsigned number = 1; number <= static_cast<unsigned>(edgesOf(shape).Size()); ++number) {
        const std::vector<unsigned> chain = TangentChain(shape, number, 5 * degrees);
        EXPECT_THAT(chain, testing::Contains(number));
        EXPECT_NO_THROW(expectOneChain(*seamOf(shape, chain))) << testing::PrintToString(chain);
    }
}

TEST(EdgeMfgShape, VectorWithoutFiniteNumbersIsRefused)
{
    EdgeMfgShape shape(1, "seam");
    const TopoDS_Edge edge = BRepBuilderAPI_MakeEdge(gp_Pnt(0, 0, 0), gp_Pnt(10, 0, 0)).Edge();
    for (const MfgVector& vector : {MfgVector{std::nan(""), {0, 0, 1}}, MfgVector{1, {0, HUGE_VAL, 0}}})
        EXPECT_THAT(([&] {
                        shape.addEdge({edge, {vector}, 0, 0});
                    }),
                    ThrowsMessage<std::invalid_argument>(StrEq("a vector of a run needs numbers that are finite")));
    EXPECT_THAT(shape.getMfgVectors(), SizeIs(0));
}

TEST(EdgeMfgShape, OneVectorIsTurnedAndTheOthersStay)
{
    EdgeMfgShape shape(1, "seam");
    const TopoDS_Edge edge = BRepBuilderAPI_MakeEdge(gp_Pnt(0, 0, 0), gp_Pnt(10, 0, 0)).Edge();
    shape.addEdge({edge, {{0, {0, 0, 1}}, {10, {0, 0, 1}}}, 0, 0});

    shape.setDirection(0, 1, {0, 1, 0});

    EXPECT_EQ(shape.getMfgVector({0, 0}).direction, rob::Dird(0, 0, 1));
    EXPECT_EQ(shape.getMfgVector({0, 10}).direction, rob::Dird(0, 1, 0));
    const auto subscript = ThrowsMessage<std::out_of_range>(StrEq("invalid vector subscript"));
    EXPECT_THAT(([&] { shape.setDirection(1, 0, {0, 0, 1}); }), subscript);
    EXPECT_THAT(([&] { shape.setDirection(-1, 0, {0, 0, 1}); }), subscript);
    EXPECT_THAT(([&] { shape.setDirection(0, 2, {0, 0, 1}); }), subscript);
    EXPECT_THAT(([&] {
                    shape.setDirection(0, 1, {0, std::nan(""), 1});
                }),
                ThrowsMessage<std::invalid_argument>(StrEq("a vector of a run needs numbers that are finite")));
    EXPECT_EQ(shape.getMfgVector({0, 10}).direction, rob::Dird(0, 1, 0));
}

} // namespace
} // namespace vrk::task
