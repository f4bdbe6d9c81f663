#include "selection/RegionOracle.h"

#include "scene/core/SceneCore.h"
#include "selection/region/RegionQuery.h"
#include "task/RobtargetVisual.h"
#include "visual/EdgeVisual.h"

#include <BRepBuilderAPI_Transform.hxx>
#include <BRepPrimAPI_MakeBox.hxx>

#include <gmock/gmock.h>

#include <atomic>
#include <limits>
#include <thread>

namespace vrk::selection {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;
using ::testing::StrEq;
using ::testing::ThrowsMessage;

using Cover = RegionQuery::Cover;
using Sight = RegionQuery::Sight;
using Corner = rob::Vec2Template<double>;

constexpr double nan = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

/// The view shows 400 x 300 pixels of the plane y = 0, its middle at the origin, from 1000 units away.
class RegionQueryTest : public SelectionFixture {
protected:
    RegionQueryTest() { worldPixel = 2 * 1000 * std::tan(visual::Camera::Get()->getVFOV() / 2) / 300; }

    rob::Posf at(double x, double y, double depth = 0) const
    {
        return {static_cast<float>((x - 200) * worldPixel), static_cast<float>(depth),
                static_cast<float>((150 - y) * worldPixel)};
    }
    float units(double pixels) const { return static_cast<float>(pixels * worldPixel); }
    RegionAnswer ask(const RegionQuery& query)
    {
        service.update();
        return service.askRegion(query, RegionView::OfMainCamera());
    }
    static std::vector<unsigned> idsOf(const std::vector<RegionAnswer::Whole>& all)
    {
        std::vector<unsigned> ids;
        for (const auto& one : all)
            ids.push_back(one.id);
        return ids;
    }
    static std::vector<unsigned> partsOf(const std::vector<RegionAnswer::Part>& all)
    {
        std::vector<unsigned> parts;
        for (const auto& one : all)
            parts.push_back(one.part);
        return parts;
    }
    static RegionQuery forPoints(RegionQuery query)
    {
        query.kinds = {.bodies = false, .frames = false, .points = true, .curves = false, .singlePoints = false};
        return query;
    }

    double worldPixel;
};

TEST_F(RegionQueryTest, RectangleTakesTheBodiesThatItTouchesOrThoseWhollyInside)
{
    visual::Visual* inside = addBox(units(10), at(100, 100));
    visual::Visual* touched = addBox(units(40), at(150, 100));
    addBox(units(10), at(300, 100));

    RegionQuery query = RegionQuery::Rectangle(80, 80, 150, 120);
    EXPECT_THAT(idsOf(ask(query).bodies), ElementsAre(inside->getId(), touched->getId()));
    query.cover = Cover::WhollyInside;
    EXPECT_THAT(idsOf(ask(query).bodies), ElementsAre(inside->getId()));
    EXPECT_EQ(ask(query).bodies.front().visual, inside);
    query = RegionQuery::Rectangle(150, 120, 80, 80); // from the other corner
    EXPECT_EQ(ask(query).bodies.size(), 2u);
}

TEST_F(RegionQueryTest, GeometryDecidesAndNotTheBox)
{
    visual::Visual* diagonal = addMesh({{at(50, 50), at(250, 250), at(249, 250)}});
    EXPECT_THAT(ask(RegionQuery::Rectangle(200, 60, 240, 100)).bodies, IsEmpty());
    EXPECT_THAT(idsOf(ask(RegionQuery::Rectangle(140, 140, 160, 160)).bodies), ElementsAre(diagonal->getId()));
}

TEST_F(RegionQueryTest, RegionWithinATriangleTouchesIt)
{
    visual::Visual* wide = addMesh({{at(50, 50), at(350, 50), at(200, 280)}});
    EXPECT_THAT(idsOf(ask(RegionQuery::Rectangle(199, 99, 201, 101)).bodies), ElementsAre(wide->getId()));
    EXPECT_THAT(idsOf(ask(RegionQuery::Polygon({{199, 99}, {201, 99}, {200, 102}})).bodies),
                ElementsAre(wide->getId()));
    RegionQuery wholly = RegionQuery::Rectangle(199, 99, 201, 101);
    wholly.cover = Cover::WhollyInside;
    EXPECT_THAT(ask(wholly).bodies, IsEmpty());
}

TEST_F(RegionQueryTest, NotchOfAPolygonIsOutside)
{
    visual::Visual* left = addBox(units(8), at(110, 150));
    addBox(units(8), at(150, 140)); // in the notch
    visual::Visual* across = addBox(units(30), at(185, 150));
    const std::vector<Corner> u{{100, 100}, {120, 100}, {120, 180}, {180, 180},
                                {180, 100}, {200, 100}, {200, 200}, {100, 200}};
    RegionQuery query = RegionQuery::Polygon(u);
    EXPECT_THAT(idsOf(ask(query).bodies), ElementsAre(left->getId(), across->getId()));
    query.cover = Cover::WhollyInside;
    EXPECT_THAT(idsOf(ask(query).bodies), ElementsAre(left->getId()));
}

TEST_F(RegionQueryTest, FacesAndEdgesOfASolidComeByTheirNumbers)
{
    visual::SolidVisual* box = addBox(units(40), at(100, 100));
    RegionQuery query = RegionQuery::Rectangle(50, 50, 150, 150);
    query.kinds = {.bodies = false, .faces = true, .edges = true};
    query.cover = Cover::WhollyInside;
    const RegionAnswer all = ask(query);
    EXPECT_THAT(partsOf(all.faces), ElementsAre(1, 2, 3, 4, 5, 6));
    EXPECT_EQ(all.faces.front().visual, box);
    EXPECT_EQ(all.edges.size(), 12u);

    // The side to the left alone lies wholly to the left of the middle.
    query.corners = RegionQuery::Rectangle(50, 50, 100, 150).corners;
    const RegionAnswer left = ask(query);
    ASSERT_EQ(left.faces.size(), 1u);
    EXPECT_EQ(left.edges.size(), 4u);
}

TEST_F(RegionQueryTest, HiddenFacesAreNotAnswered)
{
    visual::SolidVisual* box = addBox(units(40), at(100, 100));
    box->setFaceVisible(3, false);
    RegionQuery query = RegionQuery::Rectangle(50, 50, 150, 150);
    query.kinds.faces = true;
    EXPECT_THAT(partsOf(ask(query).faces), ElementsAre(1, 2, 4, 5, 6));
}

TEST_F(RegionQueryTest, EdgesOfHiddenFacesAreNotAnswered)
{
    visual::SolidVisual* box = addBox(units(40), at(100, 100));
    for (unsigned face = 2; face <= 6; ++face)
        box->setFaceVisible(face, false);
    RegionQuery query = RegionQuery::Rectangle(50, 50, 150, 150);
    query.kinds = {.bodies = false, .edges = true, .frames = false};
    EXPECT_EQ(ask(query).edges.size(), 4u);
    box->setFaceVisible(2, true); // across from the first
    service.updateShapeFaces(box);
    EXPECT_EQ(ask(query).edges.size(), 8u);
}

TEST_F(RegionQueryTest, EdgesFarFromTheOriginAreWhereTheModelHasThem)
{
    // Steps of single precision are 0.0156 there.
    const gp_Pnt corner(200'000.0037, 150'000.0021, 30'000.0013);
    gp_Trsf move;
    move.SetTranslation(gp_Vec(gp_Pnt(), corner));
    addSolid(test::meshed(BRepBuilderAPI_Transform(BRepPrimAPI_MakeBox(10, 10, 10).Shape(), move, true).Shape()));
    service.update();
    RegionView view; // along y, a thousand pixels to a unit, the corner at (100, 1100)
    view.view = {1, 0, 0, -corner.X(), 0, 0, 1, -corner.Z(), 0, -1, 0, corner.Y() - 10, 0, 0, 0, 1};
    view.width = view.height = 1200;
    view.projection = {2 / 1.2, 0, 0, 2 * 0.1 / 1.2 - 1, 0, 2 / 1.2, 0, 2 * 0.1 / 1.2 - 1, 0, 0, -0.01, 0, 0, 0, 0, 1};
    const auto edgesIn = [&](double left, double right) {
        RegionQuery query = RegionQuery::Rectangle(left, 400, right, 500);
        query.kinds = {.bodies = false, .edges = true, .frames = false};
        return service.askRegion(query, view).edges.size();
    };
    EXPECT_EQ(edgesIn(99.9, 100.1), 2u); // the near one and the far one
    EXPECT_EQ(edgesIn(95, 99.9), 0u);
    EXPECT_EQ(edgesIn(100.1, 105), 0u);
}

TEST_F(RegionQueryTest, EdgesOfACurve)
{
    visual::CurveVisual* curve = addCurve(gp_Pnt(-50, 0, 0), gp_Pnt(50, 0, 0));
    RegionQuery query = RegionQuery::Rectangle(190, 140, 210, 160);
    query.kinds = {.bodies = false, .edges = true, .frames = false};
    const RegionAnswer found = ask(query);
    ASSERT_EQ(found.edges.size(), 1u);
    EXPECT_EQ(found.edges.front(), (RegionAnswer::Part{curve, curve->getId(), 1}));
    query.cover = Cover::WhollyInside;
    EXPECT_THAT(ask(query).edges, IsEmpty());
    query.corners = RegionQuery::Rectangle(190, 50, 210, 60).corners;
    query.cover = Cover::Touching;
    EXPECT_THAT(ask(query).edges, IsEmpty());
}

TEST_F(RegionQueryTest, CurveIsFoundAsAWhole)
{
    const auto edgeFrom = [this](double left, double right) {
        const rob::Posf a = at(left, 150), b = at(right, 150);
        return test::straightEdge(gp_Pnt(a.x, a.y, a.z), gp_Pnt(b.x, b.y, b.z));
    };
    visual::CurveVisual* curve = addCurve(edgeFrom(150, 190));
    visual::EdgeVisual::Build(curve, "second", edgeFrom(190, 250), {}, visual::EdgeOrigin::Curve);
    RegionQuery query = RegionQuery::Rectangle(140, 140, 200, 160);
    EXPECT_THAT(idsOf(ask(query).curves), ElementsAre(curve->getId()));
    EXPECT_THAT(ask(query).edges, IsEmpty()); // which were not asked for
    query.cover = Cover::WhollyInside;
    EXPECT_THAT(ask(query).curves, IsEmpty());
    query.corners = RegionQuery::Rectangle(140, 140, 260, 160).corners;
    EXPECT_THAT(idsOf(ask(query).curves), ElementsAre(curve->getId()));
    query.kinds.curves = false;
    EXPECT_TRUE(ask(query) == RegionAnswer());

    // Half of it behind a body: it is seen, and wholly inside.
    query.kinds.curves = true;
    query.sight = Sight::Seen;
    visual::SolidVisual* body = addBox(units(30), at(165, 150, -100));
    EXPECT_THAT(idsOf(ask(query).curves), ElementsAre(curve->getId()));
    body->setPosition(at(100, 250, -200));
    body->setScale(6, 1, 6);
    EXPECT_THAT(ask(query).curves, IsEmpty());
}

TEST_F(RegionQueryTest, SinglePointsAreFoundWhereTheyAreDrawn)
{
    visual::PointVisual* inside = addPoint(at(100, 100));
    addPoint(at(300, 100));
    addPoint(at(100, 100, -2000)); // behind the eye
    RegionQuery query = RegionQuery::Rectangle(90, 90, 110, 110);
    EXPECT_THAT(idsOf(ask(query).singlePoints), ElementsAre(inside->getId()));
    query.cover = Cover::WhollyInside;
    EXPECT_THAT(idsOf(ask(query).singlePoints), ElementsAre(inside->getId()));
    query.kinds.singlePoints = false;
    EXPECT_TRUE(ask(query) == RegionAnswer());

    query.kinds.singlePoints = true;
    query.sight = Sight::Seen;
    EXPECT_EQ(ask(query).singlePoints.size(), 1u);
    visual::SolidVisual* before = addBox(units(60), at(100, 100, -200));
    EXPECT_THAT(ask(query).singlePoints, IsEmpty());
    service.disableObject(before);
    EXPECT_EQ(ask(query).singlePoints.size(), 1u);

    // Drawn larger than it is told, and turned about the origin
    inside->setScale(1.25, 1.25, 1.25);
    inside->setRotation(rob::Rotationf(0, 1.5707963f, 0));
    const rob::Posf drawn = inside->getWorldRotation() * rob::Posf(rob::Vec3f(at(100, 100)) * 1.25f);
    query = RegionQuery::Rectangle(200 + drawn.x / worldPixel - 2, 150 - drawn.z / worldPixel - 2,
                                   200 + drawn.x / worldPixel + 2, 150 - drawn.z / worldPixel + 2);
    EXPECT_THAT(idsOf(ask(query).singlePoints), ElementsAre(inside->getId()));
}

TEST_F(RegionQueryTest, FramesOfTargetsAreFoundByTheirAxes)
{
    auto* target = new visual::RobtargetVisual(world, 901);
    target->setFrameSize(static_cast<int>(units(40)));
    target->setPosition(at(100, 150));
    service.addFrameVisual(target);
    addLine({at(100, 140), at(150, 140)});                          // is no frame
    RegionQuery query = RegionQuery::Rectangle(110, 145, 120, 155); // across the axis to the right
    EXPECT_THAT(idsOf(ask(query).frames), ElementsAre(901u));
    EXPECT_THAT(ask(query).bodies, IsEmpty());
    query.corners = RegionQuery::Rectangle(110, 130, 120, 140).corners; // between the axes
    EXPECT_THAT(ask(query).frames, IsEmpty());
    query.corners = RegionQuery::Rectangle(95, 100, 150, 160).corners;
    query.cover = Cover::WhollyInside;
    EXPECT_THAT(idsOf(ask(query).frames), ElementsAre(901u));
    query.corners = RegionQuery::Rectangle(95, 120, 150, 160).corners; // the axis upwards sticks out
    EXPECT_THAT(ask(query).frames, IsEmpty());

    query = RegionQuery::Polygon({{95, 100}, {150, 100}, {150, 160}, {95, 160}, {94, 130}});
    query.sight = Sight::Seen;
    EXPECT_THAT(idsOf(ask(query).frames), ElementsAre(901u));
    addBox(units(100), at(110, 140, -200));
    EXPECT_THAT(ask(query).frames, IsEmpty());
    query.sight = Sight::Through;
    query.kinds.frames = false;
    EXPECT_THAT(ask(query).frames, IsEmpty());
}

TEST_F(RegionQueryTest, WhatIsDisabledOrHasPriorityIsLeftOut)
{
    visual::SolidVisual* shown = addBox(units(10), at(100, 100));
    visual::SolidVisual* hidden = addBox(units(10), at(110, 100));
    service.disableObject(hidden);
    addMesh({{at(90, 90), at(120, 90), at(100, 120)}}, true, true);
    EXPECT_THAT(idsOf(ask(RegionQuery::Rectangle(50, 50, 200, 200)).bodies), ElementsAre(shown->getId()));
}

TEST_F(RegionQueryTest, OnlyWhatIsSeenIsAnsweredOnRequest)
{
    visual::Visual* front = addBox(units(60), at(200, 150, -200));
    visual::Visual* behind = addBox(units(10), at(200, 150, 200));
    visual::Visual* aside = addBox(units(10), at(300, 150, 200));
    for (const Sight sight : {Sight::Seen, Sight::SeenExactly}) {
        RegionQuery query = RegionQuery::Rectangle(20, 20, 380, 280);
        EXPECT_THAT(idsOf(ask(query).bodies), ElementsAre(front->getId(), behind->getId(), aside->getId()));
        query.sight = sight;
        query.kinds.faces = true;
        query.kinds.edges = true;
        const RegionAnswer seen = ask(query);
        EXPECT_THAT(idsOf(seen.bodies), ElementsAre(front->getId(), aside->getId()));
        int facesOfFront = 0, edgesOfFront = 0, edgesBehind = 0;
        for (const auto& face : seen.faces)
            facesOfFront += face.visual == front ? 1 : 0;
        for (const auto& edge : seen.edges) {
            edgesOfFront += edge.visual == front ? 1 : 0;
            edgesBehind += edge.visual == behind ? 1 : 0;
        }
        EXPECT_EQ(facesOfFront, 1); // the others turn away: the box stands before the middle of the view
        EXPECT_EQ(edgesOfFront, 4);
        EXPECT_EQ(edgesBehind, 0);
    }
}

TEST_F(RegionQueryTest, BodiesHideThePointsBehindThem)
{
    addBox(units(60), at(200, 150, -200));
    visual::PointCloudVisual* cloud =
        addCloud({at(200, 150, 200), at(300, 150, 200), at(200, 150, -400), at(310, 150, 0)});
    RegionQuery query = forPoints(RegionQuery::Rectangle(20, 20, 380, 280));
    ASSERT_EQ(ask(query).clouds.size(), 1u);
    EXPECT_THAT(ask(query).clouds[0].points, ElementsAre(0, 1, 2, 3));
    EXPECT_TRUE(ask(query).clouds[0].isWhole);
    EXPECT_EQ(ask(query).clouds[0].id, cloud->getId());
    for (const Sight sight : {Sight::Seen, Sight::SeenExactly}) {
        query.sight = sight;
        EXPECT_THAT(ask(query).clouds[0].points, ElementsAre(1, 2, 3));
        EXPECT_FALSE(ask(query).clouds[0].isWhole);
    }
}

TEST_F(RegionQueryTest, WindowOfDepthCutsOff)
{
    visual::Visual* near = addBox(units(10), at(180, 150, -300));
    visual::Visual* middle = addBox(units(10), at(200, 150, 0));
    visual::Visual* far = addBox(units(10), at(220, 150, 300));
    addCloud({at(180, 150, -300), at(200, 150, 0), at(220, 150, 300)});
    RegionQuery query = RegionQuery::Rectangle(20, 20, 380, 280);
    query.kinds.points = true;
    query.nearest = 900;
    query.farthest = 1100;
    EXPECT_THAT(idsOf(ask(query).bodies), ElementsAre(middle->getId()));
    EXPECT_THAT(ask(query).clouds[0].points, ElementsAre(1));
    query.farthest = 1300; // through the middle of the farthest
    EXPECT_THAT(idsOf(ask(query).bodies), ElementsAre(middle->getId(), far->getId()));
    query.cover = Cover::WhollyInside;
    EXPECT_THAT(idsOf(ask(query).bodies), ElementsAre(middle->getId()));
    query = RegionQuery::Rectangle(20, 20, 380, 280);
    query.farthest = 750;
    EXPECT_THAT(idsOf(ask(query).bodies), ElementsAre(near->getId()));
    query.nearest = 800; // nothing is farther than 800 and nearer than 750
    EXPECT_THAT(ask(query).bodies, IsEmpty());
}

TEST_F(RegionQueryTest, WhatLiesBehindTheEyeIsOutside)
{
    addBox(units(10), at(200, 150, -1500));
    visual::Visual* through = addMesh({{at(200, 150, -2000), at(200, 150, 1000), at(230, 150, 1000)}});
    addCloud({at(200, 150, -1500), at(200, 150, -2500)});
    RegionQuery query = RegionQuery::Rectangle(0, 0, 400, 300);
    query.kinds.points = true;
    EXPECT_THAT(idsOf(ask(query).bodies), ElementsAre(through->getId()));
    EXPECT_THAT(ask(query).clouds, IsEmpty());
    query.cover = Cover::WhollyInside;
    EXPECT_THAT(ask(query).bodies, IsEmpty());
}

TEST_F(RegionQueryTest, BadRegionsAreRefused)
{
    service.update();
    const RegionView view = RegionView::OfMainCamera();
    const auto refused = [&](const RegionQuery& query, const char* text) {
        EXPECT_THAT([&] { service.askRegion(query, view); }, ThrowsMessage<std::invalid_argument>(StrEq(text)));
    };
    refused(RegionQuery::Polygon({}), "a region needs at least three corners");
    refused(RegionQuery::Polygon({{1, 1}, {2, 2}}), "a region needs at least three corners");
    refused(RegionQuery::Rectangle(0, 0, nan, 5), "a corner of the region is not finite");
    refused(RegionQuery::Polygon({{0, 0}, {5, 0}, {nan, nan}}), "a corner of the region is not finite");
    refused(RegionQuery::Rectangle(0, 0, infinity, 5), "a corner of the region is not finite");
    RegionQuery query = RegionQuery::Rectangle(0, 0, 5, 5);
    query.nearest = nan;
    refused(query, "the window of depth is not a number");
}

TEST_F(RegionQueryTest, BadViewsAreRefused)
{
    service.update();
    RegionView view = RegionView::OfMainCamera();
    const auto refused = [&](const char* text) {
        EXPECT_THAT([&] { service.askRegion(RegionQuery::Rectangle(0, 0, 5, 5), view); },
                    ThrowsMessage<std::invalid_argument>(StrEq(text)));
    };
    view.projection[5] = nan;
    refused("the view is not finite");
    view = {};
    refused("the view has no pixels");
}

TEST_F(RegionQueryTest, DirtyServiceRefuses)
{
    addBox(units(10), at(100, 100));
    ASSERT_TRUE(service.isDirty());
    EXPECT_THAT([&] { service.askRegion(RegionQuery::Rectangle(0, 0, 400, 300), RegionView::OfMainCamera()); },
                ThrowsMessage<std::logic_error>(StrEq("the selection is not up to date")));
}

TEST_F(RegionQueryTest, WithoutARenderTargetThereIsNoView)
{
    visual::SceneCore::Get()->mainCamera.withdraw();
    EXPECT_THAT([] { RegionView::OfMainCamera(); },
                ThrowsMessage<std::logic_error>(StrEq("there is no camera with a render target")));
}

TEST_F(RegionQueryTest, RegionsOutsideTheViewAreEmpty)
{
    addBox(units(10), at(100, 100));
    addBox(units(10), at(450, 100)); // beside the view
    addCloud({at(100, 100), at(450, 100)});
    RegionQuery query = RegionQuery::Rectangle(-500, -500, -400, -400);
    query.kinds.points = true;
    EXPECT_TRUE(ask(query) == RegionAnswer());
    query.corners = RegionQuery::Rectangle(410, 50, 500, 150).corners;
    EXPECT_TRUE(ask(query) == RegionAnswer());
    query.corners = {{410, 50}, {500, 50}, {450, 150}};
    EXPECT_TRUE(ask(query) == RegionAnswer());
    query.corners = RegionQuery::Rectangle(-1e6, -1e6, 1e6, 1e6).corners;
    EXPECT_EQ(ask(query).bodies.size(), 1u);
    EXPECT_THAT(ask(query).clouds[0].points, ElementsAre(0));
}

TEST_F(RegionQueryTest, RegionsOfNoAreaTouchWhatTheyLieOn)
{
    visual::Visual* body = addBox(units(60), at(200, 150));
    visual::PointCloudVisual* cloud = addCloud({at(200, 150, -100)});
    for (const Sight sight : {Sight::Through, Sight::Seen}) {
        RegionQuery query = RegionQuery::Rectangle(200, 150, 200, 150);
        query.sight = sight;
        query.kinds.points = true;
        EXPECT_THAT(idsOf(ask(query).bodies), ElementsAre(body->getId()));
        query.cover = Cover::WhollyInside;
        EXPECT_THAT(ask(query).bodies, IsEmpty());
    }
    RegionQuery line = forPoints(RegionQuery::Polygon({{100, 150}, {200, 150}, {300, 150}}));
    EXPECT_THAT(ask(line).clouds, IsEmpty());
    EXPECT_NE(cloud, nullptr);
}

TEST_F(RegionQueryTest, HundredThousandCorners)
{
    std::vector<Corner> circle, zigzag;
    std::mt19937 random(3);
    std::uniform_real_distribution<double> uniform(50, 250);
    for (int i = 0; i < 100000; ++i) {
        const double angle = i * 2 * std::acos(-1.0) / 100000;
        circle.emplace_back(150 + 60 * std::cos(angle), 150 + 60 * std::sin(angle));
        zigzag.emplace_back(uniform(random), uniform(random));
    }
    addBox(units(10), at(150, 150));
    addCloud({at(150, 150), at(150, 95), at(150, 85), at(240, 150)});
    RegionQuery query = RegionQuery::Polygon(circle);
    query.kinds.points = true;
    EXPECT_EQ(ask(query).bodies.size(), 1u);
    EXPECT_THAT(ask(query).clouds[0].points, ElementsAre(0, 1));
    query.corners = zigzag;
    EXPECT_EQ(ask(query).bodies.size(), 1u);
}

TEST_F(RegionQueryTest, WholeCloudIsToldAndListed)
{
    std::vector<rob::Posf> points;
    for (int i = 0; i < 50000; ++i)
        points.push_back(at(100 + i * 37 % 100, 100 + i * 53 % 100));
    points.emplace_back(std::numeric_limits<float>::quiet_NaN(), 0.0f, 0.0f); // is not drawn
    addCloud(points);
    const RegionAnswer found = ask(forPoints(RegionQuery::Polygon({{50, 50}, {350, 50}, {200, 290}, {50, 250}})));
    ASSERT_EQ(found.clouds.size(), 1u);
    const auto& numbers = found.clouds[0].points;
    EXPECT_EQ(numbers.size() == 50000, found.clouds[0].isWhole);
    EXPECT_TRUE(std::ranges::is_sorted(numbers));
    const RegionAnswer all = ask(forPoints(RegionQuery::Rectangle(50, 50, 250, 250)));
    EXPECT_TRUE(all.clouds[0].isWhole);
    EXPECT_EQ(all.clouds[0].points.size(), 50000u);
    EXPECT_EQ(all.clouds[0].points.back(), 49999u);
}

TEST_F(RegionQueryTest, ProgressAscendsToOne)
{
    for (int i = 0; i < 100; ++i)
        addBox(units(2), at(100 + i, 100));
    std::vector<rob::Posf> points;
    for (int i = 0; i < 300000; ++i)
        points.push_back(at(100 + i * 37 % 100, 100 + i * 53 % 100));
    addCloud(points);
    std::vector<double> told;
    RegionQuery query = RegionQuery::Rectangle(0, 0, 400, 300);
    query.kinds.points = true;
    query.sight = Sight::Seen;
    query.progress = [&told](double done) { told.push_back(done); };
    ask(query);
    ASSERT_GT(told.size(), 5u);
    EXPECT_TRUE(std::ranges::is_sorted(told));
    EXPECT_EQ(told.front(), 0);
    EXPECT_EQ(told.back(), 1);
}

TEST_F(RegionQueryTest, QuestionCanBeStopped)
{
    for (int i = 0; i < 100; ++i)
        addBox(units(2), at(100 + i, 100));
    std::stop_source stop;
    RegionQuery query = RegionQuery::Rectangle(0, 0, 400, 300);
    query.stop = stop.get_token();
    query.progress = [&stop](double) { stop.request_stop(); }; // once it runs
    const RegionAnswer stopped = ask(query);
    EXPECT_TRUE(stopped.isStopped);
    EXPECT_THAT(stopped.bodies, IsEmpty());
    query.progress = [](double) { throw std::runtime_error("enough"); };
    query.stop = {};
    EXPECT_THAT([&] { ask(query); }, ThrowsMessage<std::runtime_error>(StrEq("enough")));
    query.progress = {};
    EXPECT_EQ(ask(query).bodies.size(), 100u);
}

/// What is removed or changed while a question runs on another thread waits for it, and the next question refuses or
/// sees the change.
TEST_F(RegionQueryTest, ChangesWaitForQuestionsOnOtherThreads)
{
    std::vector<rob::Posf> points;
    for (int i = 0; i < 30000; ++i)
        points.push_back(at(100 + i * 37 % 100, 100 + i * 53 % 100));
    addBox(units(60), at(200, 150));
    service.update();
    const RegionView view = RegionView::OfMainCamera();
    std::atomic<bool> isOver = false;
    std::atomic<int> answered = 0, refused = 0;
    std::thread asking([&] {
        RegionQuery query = RegionQuery::Polygon({{60, 60}, {240, 70}, {230, 240}, {70, 230}});
        query.kinds = {.bodies = true, .faces = true, .edges = true, .frames = true, .points = true};
        while (!isOver) {
            query.sight = answered % 2 == 0 ? Sight::Through : Sight::Seen;
            try {
                answered += service.askRegion(query, view).bodies.empty() ? 0 : 1;
            } catch (const std::logic_error&) {
                ++refused;
            }
        }
    });
    for (int i = 0; i < 30 || answered < 5; ++i) {
        visual::PointCloudVisual* cloud = addCloud(points);
        visual::SolidVisual* body = addBox(units(20), at(150, 150));
        service.update();
        cloud->setPosition({1, 2, 3});
        body->setPosition({3, 2, 1});
        service.update();
        cloud->setSelectedIndices({1, 2, 3}); // registers it anew
        service.update();
        visual::Scene::Get()->deleteVisual(cloud);
        visual::Scene::Get()->deleteVisual(body);
        service.update();
    }
    isOver = true;
    asking.join();
    EXPECT_GT(answered, 0);
}

/// Random clouds in random poses, turned and scaled by their parents, in random views: against loops in double precision.
TEST_F(RegionQueryTest, HiddenPointsOfACloudAreNotFoundAndTheOthersAreTheWholeOfIt)
{
    visual::PointCloudVisual* cloud = addCloud(
        {at(100, 100), {std::numeric_limits<float>::quiet_NaN(), 0, 0}, at(120, 100), at(300, 200), at(140, 100)});
    const RegionQuery query = forPoints(RegionQuery::Rectangle(50, 50, 200, 150));
    const auto hide = [cloud](const std::vector<std::uint32_t>& numbers) {
        cloud->hidePoints(std::make_shared<const layout::PointSet>(numbers));
    };

    hide({1, 2});
    EXPECT_THAT(ask(query).clouds.at(0).points, ElementsAre(0, 4));
    EXPECT_FALSE(ask(query).clouds[0].isWhole);
    hide({1, 2, 3});
    EXPECT_THAT(ask(query).clouds.at(0).points, ElementsAre(0, 4));
    EXPECT_TRUE(ask(query).clouds[0].isWhole);
    hide({0, 2, 4});
    EXPECT_THAT(ask(query).clouds, IsEmpty());
}

TEST_F(RegionQueryTest, PointsAgreeWithALoopOverAllPoints)
{
    std::mt19937 random(11);
    int tested = 0, inside = 0;
    for (int round = 0; round < 60; ++round) {
        visual::PointCloudVisual* cloud =
            addRandomCloud(random, 920000u + static_cast<unsigned>(round),
                           [this](const std::vector<rob::Posf>& points) { return addCloud(points); });
        useOrthogonal(round % 3 == 2);
        visual::Camera::Get()->ogreCamera()->setFOVy(Ogre::Degree(round % 5 == 4 ? 100.0f : 45.0f));
        look({{static_cast<float>(uniform(random, -1500, 1500)), round % 4 == 3 ? -200.0f : -1500.0f,
               static_cast<float>(uniform(random, -500, 1500))},
              {0, 0, 0}});
        const bool isRectangle = round % 2 == 0;
        RegionQuery query = RegionQuery::Rectangle(uniform(random, 0, 400), uniform(random, 0, 300),
                                                   uniform(random, 0, 400), uniform(random, 0, 300));
        std::vector<rob::Posf> polygon;
        if (!isRectangle) {
            query.corners.clear();
            for (int i = 0; i < 3 + round % 9; ++i) {
                polygon.emplace_back(static_cast<float>(uniform(random, -20, 420)),
                                     static_cast<float>(uniform(random, -20, 320)), 0.0f);
                query.corners.emplace_back(polygon.back().x, polygon.back().y);
            }
        }
        if (round % 7 == 6) {
            query.nearest = 1200;
            query.farthest = 1900;
        }
        const RegionAnswer found = ask(forPoints(query));
        std::set<std::uint32_t> numbers;
        if (!found.clouds.empty())
            numbers.insert(found.clouds[0].points.begin(), found.clouds[0].points.end());
        const DoubleView view;
        const std::vector<rob::Posd> places = drawnPoints(*cloud);
        for (std::size_t i = 0; i < places.size(); ++i) {
            const DoubleView::Pixel p = view.pixelOf(places[i]);
            const double depth = view.depthOf(places[i]);
            Inside expected = isRectangle ? insideRectangle(query.corners[0].x, query.corners[0].y, query.corners[2].x,
                                                            query.corners[2].y, p)
                                          : insidePolygon(polygon, p.x, p.y);
            for (const double border : {0.0, query.nearest, query.farthest})
                if (std::abs(depth - border) < 1e-3)
                    expected = Inside::Unsure;
            if (std::min({std::abs(p.x), std::abs(p.y), std::abs(p.x - 400), std::abs(p.y - 300)}) < edgeDoubt)
                expected = Inside::Unsure;
            if (expected == Inside::Unsure)
                continue;
            const bool isShown = p.w > 0 && depth > 0 && depth >= query.nearest && depth <= query.farthest &&
                                 p.x >= 0 && p.x <= 400 && p.y >= 0 && p.y <= 300;
            const bool isIn = expected == Inside::Yes && isShown;
            ++tested;
            inside += isIn ? 1 : 0;
            ASSERT_EQ(numbers.contains(static_cast<std::uint32_t>(i)), isIn) << "round " << round << ", point " << i;
        }
        visual::Scene::Get()->deleteVisual(cloud);
    }
    useOrthogonal(false);
    visual::Camera::Get()->updateFOV();
    EXPECT_GT(tested, 100000);
    EXPECT_GT(inside, 10000);
}

} // namespace
} // namespace vrk::selection
