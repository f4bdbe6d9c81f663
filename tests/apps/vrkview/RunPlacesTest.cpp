#include "canvas/RunPlaces.h"

#include "handles/DragViews.h"
#include "platform/task/Seam.h"

#include <BRepMesh_IncrementalMesh.hxx>
#include <BRepPrimAPI_MakeBox.hxx>
#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRep_Tool.hxx>
#include <TopExp.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <TopoDS.hxx>

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vrkview {
namespace {

using vrk::rob::Posd;
using vrk::rob::Posed;
using vrk::rob::Posf;
using vrk::task::EdgeMfgShape;

/// The numbers of the edges of a shape whose ends all have this z.
std::vector<unsigned> edgesAt(const TopoDS_Shape& shape, double z)
{
    TopTools_IndexedMapOfShape edges;
    TopExp::MapShapes(shape, TopAbs_EDGE, edges);
    std::vector<unsigned> found;
    for (int i = 1; i <= edges.Size(); ++i) {
        const TopoDS_Edge& edge = TopoDS::Edge(edges(i));
        const auto liesThere = [&](const TopoDS_Vertex& vertex) {
            return std::abs(BRep_Tool::Pnt(vertex).Z() - z) < 1e-9;
        };
        if (liesThere(TopExp::FirstVertex(edge)) && liesThere(TopExp::LastVertex(edge)))
            found.push_back(static_cast<unsigned>(i));
    }
    return found;
}

/// Around the lid of a box of 100 x 60 x 30: four edges, of which two are run against their own direction.
std::shared_ptr<EdgeMfgShape> lidOfABox()
{
    const TopoDS_Shape box = BRepPrimAPI_MakeBox(100, 60, 30).Shape();
    return vrk::task::MakeSeam(7, "lid", box, 42, edgesAt(box, 30));
}

std::shared_ptr<EdgeMfgShape> rimOfACylinder()
{
    const TopoDS_Shape cylinder = BRepPrimAPI_MakeCylinder(50, 20).Shape();
    return vrk::task::MakeSeam(8, "rim", cylinder, 42, edgesAt(cylinder, 20));
}

const Posed turned(Posd(1000, -200, 50), vrk::rob::Rotationd(0.8, 0, 0.6));

Posd placeOf(const EdgeMfgShape& run, const RunPlaces::PathPoint& point)
{
    return turned * run.getMfgVector(point).getPos(run.getEdge(point.edge));
}

TEST(RunPlacesTest, LengthGoesOverAllEdges)
{
    EXPECT_NEAR(RunPlaces(*lidOfABox(), turned).length(), 320, 1e-9);
    const double round = 100 * std::numbers::pi;
    EXPECT_NEAR(RunPlaces(*rimOfACylinder(), turned).length(), round, 0.005 * round) << "by the lines that are drawn";
}

TEST(RunPlacesTest, PlaceOfALengthHasThatLength)
{
    const auto run = lidOfABox();
    const auto isReversed = [](const auto& edge) {
        return edge.vectors.back().parameter < edge.vectors.front().parameter;
    };
    ASSERT_TRUE(std::ranges::any_of(run->getMfgVectors(), isReversed));
    ASSERT_FALSE(std::ranges::all_of(run->getMfgVectors(), isReversed));
    const RunPlaces places(*run, turned);

    for (double along = 3; along < 320; along += 7) {
        const RunPlaces::PathPoint point = places.at(along);
        EXPECT_NEAR(places.alongOf(point), along, 1e-9);
        const Posd next = placeOf(*run, places.at(along + 1e-3));
        EXPECT_NEAR((next - placeOf(*run, point)).length(), 1e-3, 1e-6) << "a step along is as long in the world";
    }
}

TEST(RunPlacesTest, LengthBeyondAnEndIsThatOfTheEnd)
{
    const auto run = lidOfABox();
    const RunPlaces places(*run, turned);

    EXPECT_EQ(places.alongOf(places.at(-5)), 0);
    EXPECT_NEAR(places.alongOf(places.at(1e6)), 320, 1e-9);
}

TEST(RunPlacesTest, RunWithoutEdgesHasNoPlace)
{
    const RunPlaces places(EdgeMfgShape(9, "none"), {});

    EXPECT_EQ(places.length(), 0);
    EXPECT_FALSE(places.nearestTo(vrk::test::lookingAt(Posf(0, -500, 0), Posf()), {400, 300}));
}

TEST(RunPlacesTest, PlaceUnderAPixelIsTheOneThatIsSeenThere)
{
    const auto seen = vrk::test::lookingAt(Posf(1300, -700, 420), Posf(turned * Posd(50, 30, 30)));
    for (const auto& view : {seen, vrk::test::withParallelSight(seen, 300)})
        for (const auto& run : {lidOfABox(), rimOfACylinder()}) {
            const RunPlaces places(*run, turned);
            for (double along = 2; along < places.length(); along += 11) {
                const Posd place = placeOf(*run, places.at(along));
                const auto image = vrk::test::imageOf(view, place);
                ASSERT_TRUE(image);
                const auto found = places.nearestTo(view, {image->x, image->y});
                ASSERT_TRUE(found);
                // On a curve its lines are the places, which are not quite below the pixel.
                EXPECT_NEAR(*found, along, run->getId() == 7 ? 0.02 : 1.0) << run->getName();
            }
        }
}

TEST(RunPlacesTest, RunBehindTheEyeIsNotFound)
{
    const auto away = vrk::test::lookingAt(Posf(1300, -700, 420), Posf(2600, -1400, 800));

    EXPECT_FALSE(RunPlaces(*lidOfABox(), turned).nearestTo(away, {400, 300}));
}

} // namespace
} // namespace vrkview
