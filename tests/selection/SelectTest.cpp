#include "SelectionFixture.h"

#include "platform/layout/Body.h"
#include "platform/sdf/SdfManager.h"
#include "scene/core/SceneCore.h"
#include "selection/ModelHit.h"
#include "selection/ViewPixels.h"

#include <BRepPrimAPI_MakeBox.hxx>
#include <Ogre.h>
#include <TopoDS.hxx>

#include <cmath>
#include <limits>

/// What lies under a pixel or on a ray.
namespace vrk::selection {
namespace {

using rob::Posf;
using testing::StrEq;
using testing::ThrowsMessage;

const float nan = std::numeric_limits<float>::quiet_NaN();

class Select : public SelectionFixture {
protected:
    ~Select() override { visual::SceneCore::Get()->settings.gridNormalDir = 2; }

    /// The grid's plane is that of y and z, of x and z or of x and y.
    static void setGridNormal(int axis) { visual::SceneCore::Get()->settings.gridNormalDir = axis; }
};

// 400 x 300 pixels of 60 degrees across: at 1000 units a pixel is 2 * 1000 * tan(30 degrees) / 400 units wide.
const float pixelAt1000 = 2 * 1000 * std::tan(1.0471976f / 2) / 400;

bool isDefault(const Result& result)
{
    return result.valid && !result.hit && result.visual == nullptr && result.position == Posf() &&
           result.distance == Result().distance && result.face.IsNull() && result.pointIndex == -1;
}

TEST_F(Select, SolidTellsItsFaceShapePoseAndPlace)
{
    visual::SolidVisual* box = addBox(100, {0, 0, 0});
    service.update();

    const Result result = service.select(210, 160);

    ASSERT_TRUE(result.valid && result.hit);
    EXPECT_EQ(result.visual, box);
    EXPECT_TRUE(result.shape.IsSame(box->getShape()));
    EXPECT_EQ(box->getFaceIndex(TopoDS::Face(result.face)), 3u); // the one in front
    EXPECT_EQ(result.pose, box->getWorldPose());
    const float pixel = pixelAt1000 * 0.95f; // 950 units away
    EXPECT_NEAR((result.position - Posf(10 * pixel, -50, -10 * pixel)).length(), 0, 0.01);
    EXPECT_NEAR((result.localPosition - Posf(50 + 10 * pixel, 0, 50 - 10 * pixel)).length(), 0, 0.01);
    const Posf start = visual::Camera::Get()->getViewportRay(210, 160).origin; // where the view begins
    EXPECT_NEAR(result.distance, (result.position - start).length(), 0.01);
    EXPECT_TRUE(result.edge.IsNull());
    EXPECT_EQ(result.pointIndex, -1);
}

TEST_F(Select, HitTellsWhatOfTheModelItIs)
{
    const auto body = test::addModelBody(test::meshedBox(100, 100, 100), "box");
    const auto part = std::dynamic_pointer_cast<sdf::SdfNode>(sdf::Share(body->getParentId()));
    part->setPose(rob::Posed(rob::Posd(-50, -50, -50)));
    scene.addPart(part.get());
    drain();
    service.update();

    const ModelHit hit = ModelOf(service.select(210, 160));

    EXPECT_EQ(hit.object, body);
    EXPECT_EQ(hit.body, body);
    EXPECT_EQ(hit.owner, part);
    EXPECT_EQ(hit.face, 3u); // the one in front
}

TEST_F(Select, WhatIsNotOfTheModelHasNoObject)
{
    addBox(100, {0, 0, 0}); // a visual alone
    service.update();
    const Result hit = service.select(210, 160);
    ASSERT_TRUE(hit.hit);
    EXPECT_EQ(ModelOf(hit).object, nullptr);
    const ModelHit none = ModelOf(Result());
    EXPECT_EQ(none.object, nullptr);
    EXPECT_EQ(none.owner, nullptr);
    EXPECT_EQ(none.body, nullptr);
    EXPECT_EQ(none.face, 0u);
}

TEST_F(Select, BeforeTheUpdateTheAnswerIsTheDefault)
{
    addBox(100, {0, 0, 0});

    EXPECT_TRUE(isDefault(service.select(210, 160)));
    EXPECT_TRUE(isDefault(along(5, 10)));
    EXPECT_TRUE(isDefault(service.selectPointInCloud(210, 160)));
    EXPECT_TRUE(isDefault(service.selectPointInCloud(Ray({0, 0, 0}, {0, 0, 1}))));
}

TEST_F(Select, HierarchyOfAServiceThatBecameDirtyIsNotAsked)
{
    visual::SolidVisual* box = addBox(100, {0, 0, 0});
    addCloud({{0, 0, 0}});
    service.update();
    const Ray toCloud({0, -1000, 0}, {0, 1, 0});
    const Ray toEmptyGround({500, 20, 30}, {0, 0, -1});
    const auto answers = [&] {
        return std::vector<Result>{service.select(210, 160), along(5, 10), service.selectPointInCloud(200, 150),
                                   service.selectPointInCloud(toCloud), service.select(toEmptyGround)};
    };
    for (const Result& result : answers())
        EXPECT_FALSE(isDefault(result));

    service.markDirty(box);

    for (const Result& result : answers())
        EXPECT_TRUE(isDefault(result));
}

TEST_F(Select, NearestHitWins)
{
    visual::SolidVisual* back = addBox(100, {0, 300, 0});
    visual::SolidVisual* front = addBox(100, {0, 0, 0});
    service.update();

    EXPECT_EQ(along(5, 10).visual, front);
    EXPECT_EQ(service.select(Ray({5, 1000, 10}, {0, -1, 0})).visual, back);
}

TEST_F(Select, FirstOfEquallyNearObjectsStays)
{
    visual::SolidVisual* first = addBox(100, {0, 0, 0});
    addBox(100, {0, 0, 0});
    service.update();

    EXPECT_EQ(along(5, 10).visual, first);
}

TEST_F(Select, FirstOfEquallyNearMeshesAndPointsStays)
{
    visual::MeshVisual* mesh = addMesh(wall(40));
    addMesh(wall(40));
    visual::PointVisual* point = addPoint({100, 0, 0});
    addPoint({100, 0, 0});
    service.update();

    EXPECT_EQ(along(5, 10).visual, mesh);
    EXPECT_EQ(along(100, 0).visual, point);
}

TEST_F(Select, PriorityWinsFromBehindABody)
{
    visual::SolidVisual* body = addBox(100, {0, 0, 0});
    visual::MeshVisual* handle = addMesh(wall(40, 500), true, true);
    service.update();

    const Result result = along(5, 10);
    EXPECT_EQ(result.visual, handle);
    EXPECT_FLOAT_EQ(result.distance, 1500);
    EXPECT_EQ(along(45, 10).visual, body); // beside the handle
}

TEST_F(Select, FirstOfSeveralWithPriorityWinsWhateverTheDistance)
{
    visual::MeshVisual* far = addMesh(wall(40, 500), true, true);
    addMesh(wall(40, 100), true, true);
    service.update();

    EXPECT_EQ(along(5, 10).visual, far); // few objects are asked in the order of their entry
}

TEST_F(Select, CurveOnAFaceWinsByHalfItsTolerance)
{
    addBox(100, {0, 50, 0}); // its front lies in y = 0
    visual::CurveVisual* curve = addCurve({-40, 0, 10}, {40, 0, 10});
    service.update();

    const Result result = along(0, 10);

    EXPECT_EQ(result.visual, curve);
    EXPECT_NEAR(result.distance, 1000 - 2.5f * pixelAt1000, 0.01);
    EXPECT_TRUE(result.shape.IsSame(curve->getShape()));
    EXPECT_FALSE(result.edge.IsNull());
    EXPECT_TRUE(result.face.IsNull());
}

TEST_F(Select, CurveALittleBehindAFaceWinsAndOneFartherBehindLoses)
{
    visual::SolidVisual* box = addBox(100, {0, 50, 0});
    visual::CurveVisual* curve = addCurve({-40, 0, 10}, {40, 0, 10});
    const float half = 2.5f * pixelAt1000; // 7.2 units

    curve->setPosition(0, half - 0.5f, 0);
    service.update();
    EXPECT_EQ(along(0, 10).visual, curve);
    curve->setPosition(0, half + 0.5f, 0);
    service.update();
    EXPECT_EQ(along(0, 10).visual, box);
}

TEST_F(Select, LineIsHitWithinFivePixels)
{
    visual::LineVisual* line = addLine({{-100, 0, 0}, {100, 0, 0}});
    service.update();

    EXPECT_EQ(service.select(200, 145.02f).visual, line);
    EXPECT_EQ(service.select(200, 154.98f).visual, line);
    EXPECT_FALSE(service.select(200, 144.96f).hit);
    EXPECT_FALSE(service.select(200, 155.04f).hit);
}

TEST_F(Select, ToleranceOfALineGrowsWithTheDistance)
{
    addLine({{-100, 0, 0}, {100, 0, 0}});
    service.update();

    look({{0, -4000, 0}, {0, 0, 0}});
    EXPECT_TRUE(along(0, 19.5f * pixelAt1000, -4000).hit);
    EXPECT_FALSE(along(0, 20.5f * pixelAt1000, -4000).hit);
}

TEST_F(Select, LineFartherThanItsBoxHasRoomForIsHitWithinItsBoxOnly)
{
    addLine({{-1000, 0, 0}, {1000, 0, 0}});
    service.update();
    // Five pixels at 10000 units are 144 units, at 30000 they are 433.
    const float room = 50 * pixelAt1000;

    EXPECT_TRUE(along(0, room - 1, -30000).hit);
    EXPECT_FALSE(along(0, room + 1, -30000).hit);
}

TEST_F(Select, PointIsHitWithinTwoUnits)
{
    visual::PointVisual* point = addPoint({10, 0, 20});
    service.update();

    const Result result = along(11.9f, 20);
    EXPECT_EQ(result.visual, point);
    EXPECT_NEAR(result.distance, 1000, 1e-3); // its depth along the ray
    EXPECT_NEAR((result.position - Posf(10, 0, 20)).length(), 0, 1e-4);
    EXPECT_FALSE(along(12.1f, 20).hit);
}

TEST_F(Select, CloudIsNotAmongIt)
{
    addCloud({{0, 0, 0}, {10, 0, 0}});
    service.update();

    EXPECT_FALSE(along(0, 0).hit);
}

TEST_F(Select, DetectableFlagPlaysNoRole)
{
    visual::SolidVisual* box = addBox(100, {0, 0, 0}, false);
    service.update();

    EXPECT_EQ(along(5, 10).visual, box);
    service.setDetectable(box, true);
    EXPECT_FALSE(service.isDirty());
    EXPECT_EQ(along(5, 10).visual, box);
}

TEST_F(Select, BodyThatIsHiddenWithoutBeingDisabledIsStillHit)
{
    visual::SolidVisual* box = addBox(100, {0, 0, 0});
    box->setVisible(false, true);
    service.update();

    EXPECT_EQ(along(5, 10).visual, box);
}

TEST_F(Select, BodyHiddenByTheDisplayModeIsStillHit)
{
    visual::SolidVisual* box = addBox(100, {0, 0, 0});
    scene.setDisplayMode(visual::Scene::DisplayMode::Edges);
    drain();
    service.update();

    EXPECT_FALSE(box->isVisible());
    EXPECT_EQ(along(5, 10).visual, box);
    scene.setDisplayMode(visual::Scene::DisplayMode::Shaded);
    drain();
}

TEST_F(Select, BodyHiddenThroughTheSceneIsNotHit)
{
    const TopoDS_Shape shape = test::meshedBox(100, 100, 100);
    const auto body = test::addModelBody(shape, "selection-box");
    visual::SolidVisual::Build(world, body.get(), shape);
    service.update();
    ASSERT_TRUE(along(5, 10).hit);

    scene.setVisualVisible(body->getId(), false);
    drain();
    service.update();
    EXPECT_FALSE(along(5, 10).hit);
    scene.setVisualVisible(body->getId(), true);
    drain();
    service.update();
    EXPECT_TRUE(along(5, 10).hit);
}

TEST_F(Select, WithoutAHitThePlaceIsOnTheGrid)
{
    const Result result = service.select(Ray({10, 20, 30}, rob::normalized(rob::Vec3f(0.6f, 0, -0.8f))));

    EXPECT_FALSE(result.hit);
    EXPECT_NEAR((result.position - Posf(32.5f, 20, 0)).length(), 0, 1e-4);
    EXPECT_EQ(result.visual, nullptr);
}

TEST_F(Select, PlaceOnTheGridMayLieBehindTheCamera)
{
    const Result result = service.select(Ray({10, 20, 30}, rob::normalized(rob::Vec3f(0.6f, 0, 0.8f))));

    EXPECT_FALSE(result.hit);
    EXPECT_NEAR((result.position - Posf(-12.5f, 20, 0)).length(), 0, 1e-4);
}

TEST_F(Select, PixelOfEmptySpaceGivesThePlaceOnTheGridUnderIt)
{
    look({{0, 0, 1000}, {0, 0, 0}, {0, 1, 0}});

    const Result result = service.select(210, 140);

    EXPECT_NEAR((result.position - Posf(10 * pixelAt1000, 10 * pixelAt1000, 0)).length(), 0, 0.01);
}

TEST_F(Select, RayAlongTheGridGivesTheOrigin)
{
    EXPECT_EQ(service.select(Ray({10, 20, 30}, {1, 0, 0})).position, Posf());
    EXPECT_EQ(service.select(Ray({10, 20, 30}, {1, 0, 1e-7f})).position, Posf());
    EXPECT_NE(service.select(Ray({10, 20, 30}, {1, 0, 1.3e-7f})).position, Posf());
}

TEST_F(Select, GridCanStandAcrossEachAxis)
{
    const Ray ray({10, 20, 30}, {-0.48f, -0.6f, -0.64f});

    setGridNormal(0);
    EXPECT_FLOAT_EQ(service.select(ray).position.x, 0);
    EXPECT_NEAR(service.select(ray).position.y, 20 - 0.6f * 10 / 0.48f, 1e-4);
    setGridNormal(1);
    EXPECT_FLOAT_EQ(service.select(ray).position.y, 0);
    setGridNormal(2);
    EXPECT_NEAR(service.select(ray).position.z, 0, 1e-5);
}

TEST_F(Select, AHitHasNoPlaceOnTheGrid)
{
    addBox(100, {0, 0, 200});
    service.update();

    EXPECT_NEAR(service.select(Ray({5, 10, 1000}, {0, 0, -1})).position.z, 250, 1e-3);
}

TEST_F(Select, NearestPointOfACloudIsFoundByItsNumber)
{
    visual::PointCloudVisual* cloud = addCloud({{500, 0, 0}, {0, 100, 0}, {2, -50, 0}});
    cloud->setPosition(0, 0, 70);
    addBox(100, {0, -300, 70}); // bodies do not hide a cloud
    service.update();

    const Result result = service.selectPointInCloud(Ray({0, -1000, 70}, {0, 1, 0}));

    EXPECT_EQ(result.visual, cloud);
    EXPECT_EQ(result.pointIndex, 2); // nearer to the origin, though farther from the ray
    EXPECT_NEAR((result.position - Posf(2, -50, 70)).length(), 0, 1e-3);
    EXPECT_NEAR((result.localPosition - Posf(2, -50, 0)).length(), 0, 1e-3);
    EXPECT_NEAR(result.distance, std::hypot(950, 2), 1e-3);
}

TEST_F(Select, CloudPointIsHitWithinThreeUnits)
{
    addCloud({{-50, 0, 0}, {0, 0, 0}, {50, 0, 0}});
    service.update();
    const auto at = [&](float x, float z) { return service.selectPointInCloud(Ray({x, -1000, z}, {0, 1, 0})); };

    EXPECT_EQ(at(2.9f, 0).pointIndex, 1);
    EXPECT_FALSE(at(3.1f, 0).hit);
    // The boxes of its points are one unit wider, and a ray that misses them is not looked at.
    EXPECT_EQ(at(0, 0.9f).pointIndex, 1);
    EXPECT_FALSE(at(0, 1.1f).hit);
}

TEST_F(Select, NoCloudPointIsTheDefaultWithoutAPlaceOnTheGrid)
{
    addCloud({{0, 0, 0}});
    service.update();

    EXPECT_TRUE(isDefault(service.selectPointInCloud(Ray({10, 20, 30}, {0, 0, -1}))));
    EXPECT_TRUE(isDefault(service.selectPointInCloud(10, 10)));
}

TEST_F(Select, DisabledCloudIsNotHit)
{
    visual::PointCloudVisual* cloud = addCloud({{0, 0, 0}});
    service.disableObject(cloud);
    service.update();

    EXPECT_FALSE(service.selectPointInCloud(Ray({0, -1000, 0}, {0, 1, 0})).hit);
}

TEST_F(Select, PixelAndRayAgree)
{
    addBox(100, {0, 0, 0});
    service.update();
    for (float x = 5; x < 400; x += 30)
        for (float y = 5; y < 300; y += 30) {
            const Result byPixel = service.select(x, y);
            const Result byRay = service.select(visual::Camera::Get()->getViewportRay(x, y));

            EXPECT_EQ(byPixel.hit, byRay.hit);
            EXPECT_EQ(byPixel.distance, byRay.distance);
            EXPECT_EQ(byPixel.position, byRay.position);
        }
}

TEST_F(Select, ViewOfNoPixelsAnswersNothing)
{
    addBox(100, {0, 0, 0});
    addCloud({{0, 0, 0}});
    service.update();
    Ogre::Viewport& viewport = *visual::Camera::Get()->ogreCamera()->getViewport();

    for (const auto& [width, height] : {std::pair{0.0f, 0.0f}, {1.0f, 0.0f}, {0.0f, 1.0f}}) {
        viewport.setDimensions(0, 0, width, height);
        EXPECT_TRUE(isDefault(service.select(0, 0)));
        EXPECT_TRUE(isDefault(service.selectPointInCloud(0, 0)));
        EXPECT_FALSE(worldUnitsPerPixel(1000).has_value());
    }
    viewport.setDimensions(0, 0, 1, 1);
    EXPECT_TRUE(service.select(210, 160).hit);
}

TEST_F(Select, SizeOfAPixelIsThatOfThePerspective)
{
    EXPECT_NEAR(worldUnitsPerPixel(1000).value(), pixelAt1000, 1e-3);
    EXPECT_NEAR(worldUnitsPerPixel(10).value(), pixelAt1000 / 100, 1e-5);
    EXPECT_EQ(worldUnitsPerPixel(0).value(), 0);
    setSize(400, 150); // the same angle across
    EXPECT_NEAR(worldUnitsPerPixel(1000).value(), pixelAt1000, 1e-3);
}

TEST_F(Select, RayOfNoDirectionHitsNothing)
{
    addBox(100, {0, 0, 0});
    addCurve({-40, 0, 10}, {40, 0, 10});
    addLine({{0, 0, 0}, {10, 0, 0}});
    addMesh(wall(40, 500), true, true);
    service.update();

    for (const Posf& origin : {Posf(5, -1000, 10), Posf(5, 5, 10)}) {
        const Result result = service.select(Ray(origin, {0, 0, 0}));

        EXPECT_TRUE(result.face.IsNull());
    }
    EXPECT_EQ(service.select(Ray({5, -1000, 10}, {0, 0, 0})).position, Posf());
}

TEST_F(Select, WhatIsNoNumberHitsNothing)
{
    addBox(100, {0, 0, 0});
    addCloud({{0, 0, 0}});
    addPoint({0, 0, 0});
    addLine({{0, 0, 0}, {10, 0, 0}});
    service.update();

    EXPECT_FALSE(service.select(Ray({nan, 0, 0}, {0, 1, 0})).hit);
    EXPECT_FALSE(service.select(Ray({0, -1000, 0}, {nan, nan, nan})).hit);
    EXPECT_FALSE(service.select(nan, 10).hit);
    EXPECT_FALSE(service.selectPointInCloud(nan, nan).hit);
    EXPECT_FALSE(service.selectPointInCloud(Ray({nan, 0, 0}, {0, 1, 0})).hit);
}

TEST_F(Select, EdgeOfAFaceIsFoundWithinTwentyPixels)
{
    // A face of 200 units, looked at along y; the middle of it is 100 units from each edge.
    addBox(200, {0, 100, 0});
    service.update();

    look({{0, -1000, 0}, {0, 0, 0}}); // 20 pixels are 57.7 units
    EXPECT_TRUE(along(1, 43).getFaceEdge().has_value());
    EXPECT_FALSE(along(1, 42).getFaceEdge().has_value());
    const std::optional<Result::EdgeRes> edge = along(1, 43).getFaceEdge();
    EXPECT_NEAR(edge->param, 101, 0.01);
    look({{0, -2000, 0}, {0, 0, 0}}); // 115.5 units
    EXPECT_TRUE(along(1, 2).getFaceEdge().has_value());
}

TEST_F(Select, MeshHasNoEdgeUnderIt)
{
    addMesh(wall(40));
    service.update();

    const Result result = along(39, 1);
    ASSERT_TRUE(result.hit);
    EXPECT_TRUE(result.face.IsNull());
    EXPECT_FALSE(result.getFaceEdge().has_value());
    EXPECT_FALSE(result.getEdgeParam().has_value());
}

TEST_F(Select, CurveTellsTheParameterUnderIt)
{
    visual::CurveVisual* curve = addCurve({0, 0, 0}, {100, 0, 0});
    service.update();
    EXPECT_NEAR(along(30, 2).getEdgeParam().value_or(-1), 30, 1e-3);

    // Wherever the curve stands.
    curve->setPose({{0, 0, 500}, rob::Rotationf(1.5707963f, rob::Dirf(0, 1, 0))}); // x is now down
    service.update();
    const Result turned = along(2, 470);
    EXPECT_EQ(turned.visual, curve);
    EXPECT_NEAR(turned.getEdgeParam().value_or(-1), 30, 1e-3);
    EXPECT_NEAR((turned.position - Posf(0, 0, 470)).length(), 0, 1e-2);
}

TEST_F(Select, LocatedEdgeTellsTheParameterUnderIt)
{
    gp_Trsf trsf;
    trsf.SetTranslation({0, 0, 200});
    visual::CurveVisual* curve =
        addCurve(TopoDS::Edge(test::straightEdge({0, 0, 0}, {100, 0, 0}).Moved(TopLoc_Location(trsf))));
    curve->setPosition(0, 0, 300);
    service.update();

    const Result result = along(30, 502);

    EXPECT_EQ(result.visual, curve);
    EXPECT_NEAR(result.getEdgeParam().value_or(-1), 30, 1e-3);
    EXPECT_NEAR((result.position - Posf(30, 0, 500)).length(), 0, 1e-2);
    EXPECT_NEAR((result.localPosition - Posf(30, 0, 200)).length(), 0, 1e-2);
}

} // namespace
} // namespace vrk::selection
