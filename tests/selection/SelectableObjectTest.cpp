#include "selection/SelectableObject.h"

#include "SelectionFixture.h"

#include "scene/core/SceneCore.h"
#include "selection/CurveObject.h"
#include "selection/LineObject.h"
#include "selection/MeshObject.h"
#include "selection/PointCloudObject.h"
#include "selection/PointObject.h"
#include "selection/SensitiveEdge.h"
#include "selection/SensitiveFace.h"
#include "selection/SensitiveLine.h"
#include "selection/SensitivePoints.h"
#include "selection/ShapeObject.h"
#include "selection/ViewPixels.h"
#include "task/RobtargetVisual.h"
#include "visual/EdgeVisual.h"
#include "visual/FrameVisual.h"

#include <BRepBuilderAPI_MakeEdge.hxx>
#include <BRepBuilderAPI_MakeFace.hxx>
#include <Ogre.h>
#include <TopoDS.hxx>
#include <gp_Pln.hxx>

#include <algorithm>
#include <cmath>
#include <limits>
#include <mutex>
#include <random>

/// The six kinds of objects, each by itself, and the primitives that need a visual.
namespace vrk::selection {
namespace {

using rob::Posf;
using testing::ElementsAre;
using testing::IsEmpty;

const float nan = std::numeric_limits<float>::quiet_NaN();

class SelectableObjectTest : public SelectionFixture {
protected:
    static Result rayHit(const BVHPrimitive& object, const Ray& ray)
    {
        Result result;
        result.hit = true;
        object.intersectRay(result, ray);
        return result;
    }
    static const Ray atMiddle;
};

const Ray SelectableObjectTest::atMiddle({5, -1000, 10}, {0, 1, 0});

void expectNear(const Posf& a, const Posf& b, float tolerance = 1e-3f)
{
    EXPECT_NEAR((a - b).length(), 0, tolerance) << a.x << ", " << a.y << ", " << a.z;
}

TEST_F(SelectableObjectTest, StartsDirtyAndUnbuiltWithNothingMade)
{
    const ShapeObject object(test::meshedBox(10, 10, 10), addBox(10, {}));

    EXPECT_TRUE(object.worldDirty && object.detectable && object.enabled);
    EXPECT_FALSE(object.built || object.priority);
    EXPECT_TRUE(object.primitives.empty());
    EXPECT_FALSE(object.box.isValid());
    EXPECT_EQ(object.worldPose, rob::Posef());
    EXPECT_EQ(object.inverseWorldPose, rob::Posef());
}

TEST_F(SelectableObjectTest, UpdateOfACleanObjectReadsNothing)
{
    visual::SolidVisual* box = addBox(10, {});
    ShapeObject object(box->getShape(), box);
    object.update();
    const Box before = object.box;

    box->setPosition(100, 0, 0);
    object.update(); // not marked: it belongs to nobody

    EXPECT_EQ(object.box.min, before.min);
    object.worldDirty = true;
    object.update();
    EXPECT_EQ(object.box.min, Posf(99, -1, -1));
    EXPECT_FALSE(object.worldDirty);
}

TEST_F(SelectableObjectTest, PoseAndItsInverseAreTaken)
{
    visual::SolidVisual* box = addBox(10, {});
    box->setPose({{100, 20, 3}, rob::Rotationf(0.5f, rob::Dirf(0, 0, 1))});
    ShapeObject object(box->getShape(), box);

    object.update();

    expectNear(object.worldPose * Posf(1, 2, 3), box->getWorldPose() * Posf(1, 2, 3));
    expectNear(object.inverseWorldPose * (object.worldPose * Posf(1, 2, 3)), {1, 2, 3});
}

TEST_F(SelectableObjectTest, ShapeHasAPartForEachFaceThatIsShown)
{
    visual::SolidVisual* box = addBox(10, {});
    box->setFaceVisible(2, false);
    box->setFaceVisible(5, false);
    ShapeObject object(box->getShape(), box);

    object.update();

    std::vector<unsigned> faces;
    for (const BVHPrimitive* face : object.primitives)
        faces.push_back(static_cast<const SensitiveFace*>(face)->getFaceIndex());
    EXPECT_THAT(faces, ElementsAre(1, 3, 4, 6));
    EXPECT_EQ(object.getDescription(), box->getName());
    EXPECT_TRUE(object.isHitWithinBox());
}

TEST_F(SelectableObjectTest, FacesWithoutTrianglesAreNoParts)
{
    TopoDS_Shape bare = BRepBuilderAPI_MakeFace(gp_Pln(), 0, 10, 0, 10).Shape();
    auto* visual = new visual::SolidVisual(bare, world); // not drawn
    ShapeObject object(bare, visual);

    object.update();

    EXPECT_TRUE(object.primitives.empty());
    EXPECT_TRUE(object.built);
    EXPECT_FALSE(rayHit(object, atMiddle).hit);
}

TEST_F(SelectableObjectTest, SolidWhoseFacesAreAllHiddenStaysOutOfTheHierarchy)
{
    visual::SolidVisual* box = addBox(100, {});
    for (unsigned face = 1; face <= 5; ++face)
        box->setFaceVisible(face, false);
    EXPECT_THROW(box->setFaceVisible(6, false), visual::NoTriangleMesh);
    visual::SolidVisual* behind = addBox(100, {0, 300, 0});
    service.update();

    const SelectableObject& object = this->object(box);
    EXPECT_TRUE(object.primitives.empty());
    EXPECT_EQ(object.bvh.root, nullptr);
    EXPECT_FALSE(object.box.isValid());
    EXPECT_EQ(along(5, 10).visual, behind);
    box->setPosition(0, 0, 50); // moving it is no failure either
    service.update();
    EXPECT_FALSE(object.box.isValid());
    EXPECT_FALSE(service.sense(rob::Linef({5, -100, 10}, {5, 100, 10})).hit);
    EXPECT_FALSE(rayHit(object, atMiddle).hit);
}

TEST_F(SelectableObjectTest, ShapeAnswersInTheWorld)
{
    visual::SolidVisual* box = addBox(100, {});
    box->setPose({{0, 0, 0}, rob::Rotationf(3.14159265f, rob::Dirf(0, 0, 1))}); // from the origin to -100, -100
    service.update();
    const SelectableObject& object = this->object(box);

    const Result ray = rayHit(object, Ray({-20, -1000, 30}, {0, 1, 0}));
    ASSERT_TRUE(ray.hit);
    EXPECT_EQ(ray.visual, box);
    expectNear(ray.position, {-20, -100, 30}, 0.01f);
    expectNear(ray.localPosition, {20, 100, 30}, 0.01f);
    EXPECT_NEAR(ray.distance, 900, 0.01);
    Result line;
    object.intersectLine(line, {{-20, -200, 30}, {-20, -50, 30}});
    ASSERT_TRUE(line.hit);
    EXPECT_EQ(line.visual, box);
    expectNear(line.position, {-20, -100, 30}, 0.01f);
    EXPECT_NEAR(line.distance, 100.0 / 150, 1e-4);
    Result triangle;
    object.intersectTriangle(triangle, {{-20, -200, 30}, {-20, -50, 30}, {-21, -50, 30}});
    EXPECT_TRUE(triangle.hit);
    EXPECT_EQ(triangle.visual, box);
}

TEST_F(SelectableObjectTest, MissesAnswerTheDefault)
{
    visual::SolidVisual* box = addBox(100, {});
    visual::CurveVisual* curve = addCurve({0, 0, 0}, {10, 0, 0});
    visual::MeshVisual* mesh = addMesh(wall(10));
    visual::LineVisual* line = addLine({{0, 0, 0}, {10, 0, 0}});
    visual::PointVisual* point = addPoint({0, 0, 0});
    visual::PointCloudVisual* cloud = addCloud({{0, 0, 0}});
    service.update();
    for (visual::Visual* visual : std::initializer_list<visual::Visual*>{box, curve, mesh, line, point, cloud}) {
        const Result result = rayHit(object(visual), Ray({5000, 5000, 5000}, {0, 1, 0}));

        EXPECT_FALSE(result.hit);
        EXPECT_EQ(result.visual, nullptr);
        EXPECT_EQ(result.distance, Result().distance);
    }
}

void expectEqual(const Result& a, const Result& b)
{
    EXPECT_EQ(a.valid, b.valid);
    EXPECT_EQ(a.hit, b.hit);
    EXPECT_EQ(a.distance, b.distance);
    EXPECT_TRUE(a.edge.IsEqual(b.edge));
    EXPECT_TRUE(a.face.IsEqual(b.face));
    EXPECT_TRUE(a.shape.IsEqual(b.shape));
    EXPECT_EQ(a.visual, b.visual);
    EXPECT_EQ(a.position, b.position);
    EXPECT_EQ(a.localPosition, b.localPosition);
    EXPECT_EQ(a.pose, b.pose);
    EXPECT_EQ(a.pointIndex, b.pointIndex);
}

/// Asks into a fresh result and into one that holds the answer to something else.
template <typename Question>
bool isHitWhateverWasHeld(void (BVHPrimitive::*ask)(Result&, const Question&) const, const BVHPrimitive& asked,
                          const Question& question)
{
    Result fresh;
    (asked.*ask)(fresh, question);
    Result used;
    used.valid = false;
    used.hit = true;
    used.distance = 0;
    used.edge = used.face = used.shape = test::meshedBox(1, 1, 1);
    used.visual = visual::Scene::GetWorldVisual();
    used.position = used.localPosition = {7, 8, 9};
    used.pose = rob::Posef(Posf(1, 2, 3));
    used.pointIndex = 5;
    (asked.*ask)(used, question);
    expectEqual(used, fresh);
    return fresh.hit;
}

TEST_F(SelectableObjectTest, AnswerHoldsNothingOfWhatTheResultHeldBefore)
{
    const std::vector<visual::Visual*> visuals{addBox(100, {}),      addCurve({-40, 0, 10}, {40, 0, 10}),
                                               addMesh(wall(40)),    addLine({{-40, 0, 10}, {40, 0, 10}}),
                                               addPoint({5, 0, 10}), addCloud({{5, 0, 10}, {500, 0, 10}})};
    service.update();
    int byRay = 0, byLine = 0, byTriangle = 0;
    const auto ask = [&](const BVHPrimitive& asked) {
        for (const float x : {5.0f, 5000.0f}) {
            byRay += isHitWhateverWasHeld(&BVHPrimitive::intersectRay, asked, Ray({x, -1000, 10}, {0, 1, 0}));
            byLine += isHitWhateverWasHeld(&BVHPrimitive::intersectLine, asked, {{x, -500, 10}, {x, 500, 10}});
            byTriangle += isHitWhateverWasHeld(&BVHPrimitive::intersectTriangle, asked,
                                               {{x, -500, 10}, {x, 500, 10}, {x + 1, 500, 10}});
        }
    };

    for (visual::Visual* visual : visuals) {
        ask(object(visual));
        for (const BVHPrimitive* part : object(visual).primitives)
            ask(*part);
    }

    // Each object and one of its parts; a point has none, and two faces of the box lie across the way.
    EXPECT_EQ(byRay, 6 + 6);
    EXPECT_EQ(byLine, 2 + 3);
    EXPECT_EQ(byTriangle, 2 + 3);
}

TEST_F(SelectableObjectTest, OnlyShapesAreDescribed)
{
    service.update();
    EXPECT_EQ(CurveObject({}, addCurve({0, 0, 0}, {10, 0, 0})).getDescription(), "");
    EXPECT_EQ(MeshObject(addMesh(wall(10))).getDescription(), "");
    EXPECT_EQ(LineObject(addLine({})).getDescription(), "");
    EXPECT_EQ(PointObject(addPoint({})).getDescription(), "");
    EXPECT_EQ(PointCloudObject(addCloud({{0, 0, 0}})).getDescription(), "");
}

TEST_F(SelectableObjectTest, CurveHasAPartForEachOfItsEdges)
{
    const TopoDS_Edge first = test::straightEdge({0, 0, 0}, {100, 0, 0});
    const TopoDS_Edge second = test::straightEdge({100, 0, 0}, {100, 0, 100});
    auto* curve = new visual::CurveVisual("two", TopoDS_Shape(), world);
    for (const TopoDS_Edge& edge : {first, second})
        visual::EdgeVisual::Build(curve, "e", edge, {"BodyCurve", "BodyCurveHighlighted", "BodyCurveSelected"},
                                  visual::EdgeOrigin::Curve);
    makeMesh(wall(5), curve);                                                              // no edge
    visual::EdgeVisual::Build(curve, "g", test::straightEdge({0, 0, 50}, {50, 0, 50}), {}, // laid on it, not of it
                              visual::EdgeOrigin::Generated);
    CurveObject object({}, curve);

    object.update();

    ASSERT_EQ(object.primitives.size(), 2u);
    EXPECT_TRUE(rayHit(object, Ray({50, -1000, 2}, {0, 1, 0})).edge.IsSame(first));
    EXPECT_TRUE(rayHit(object, Ray({98, -1000, 50}, {0, 1, 0})).edge.IsSame(second));
}

TEST_F(SelectableObjectTest, CurveAnswersInTheWorld)
{
    const TopoDS_Edge edge = test::straightEdge({0, 0, 0}, {100, 0, 0});
    visual::CurveVisual* curve = addCurve(edge);
    curve->setPose({Posf(0, 50, 7), rob::Rotationf(std::sqrt(0.5f), 0, -std::sqrt(0.5f), 0)}); // it stands up in z
    service.update();

    const Result result = rayHit(object(curve), Ray({0, -1000, 47}, {0, 1, 0}));

    ASSERT_TRUE(result.hit);
    EXPECT_EQ(result.visual, curve);
    EXPECT_TRUE(result.shape.IsSame(edge));
    EXPECT_TRUE(result.edge.IsSame(edge));
    EXPECT_EQ(result.pose, object(curve).worldPose);
    expectNear(result.position, {0, 50, 47}, 0.01f);
    expectNear(result.localPosition, {40, 0, 0}, 0.01f);
}

TEST_F(SelectableObjectTest, PoseOfAnEdgeCountsFromAHundredthOfAUnitAndAThousandthOfAQuaternion)
{
    const auto hitAt1000 = [this](const rob::Posef& pose) {
        auto* curve = new visual::CurveVisual("curve", TopoDS_Shape(), world);
        auto edge = visual::EdgeVisual::Build(curve, "e", test::straightEdge({0, 0, 0}, {1000, 0, 0}), {},
                                              visual::EdgeOrigin::Curve);
        (*edge)->setPose(pose);
        CurveObject object({}, curve);
        object.update();
        return rayHit(object, Ray({1000, 100, 0}, {0, -1, 0})).localPosition;
    };
    const auto turned = [](float sine) {
        return rob::Posef({}, rob::Rotationf(std::sqrt(1 - sine * sine), 0, 0, sine));
    };

    EXPECT_EQ(hitAt1000(rob::Posef(Posf(0, 0, 0.009f))).z, 0) << "as if it were at the origin";
    EXPECT_NEAR(hitAt1000(rob::Posef(Posf(0, 0, 0.02f))).z, 0.02, 1e-4);
    EXPECT_EQ(hitAt1000(turned(0.0009f)).y, 0) << "as if it were not turned";
    EXPECT_NEAR(hitAt1000(turned(0.002f)).y, 4, 0.01);
}

TEST_F(SelectableObjectTest, EdgeHasNoSectionBetweenPointsThatAreOne)
{
    const TopoDS_Edge edge =
        test::withPolygon(BRepBuilderAPI_MakeEdge(gp_Pnt(0, 0, 0), gp_Pnt(100, 0, 0)).Edge(),
                          {{0, 0, 0}, {0, 0, 0}, {5e-7, 0, 0}, {50, 0, 0}, {50, 0, 0}, {100, 0, 0}, {100, 0, 0}});
    visual::CurveVisual* curve = addCurve(edge);
    service.update();

    const auto& part = dynamic_cast<const SensitiveEdge&>(*object(curve).primitives.front());
    ASSERT_EQ(part.primitives.size(), 2u);
    const auto& first = static_cast<const SensitiveLine&>(*part.primitives[0]);
    const auto& second = static_cast<const SensitiveLine&>(*part.primitives[1]);
    EXPECT_EQ(first.getStart(), Posf(0, 0, 0));
    EXPECT_EQ(first.getEnd(), Posf(50, 0, 0));
    EXPECT_EQ(second.getStart(), Posf(50, 0, 0));
    EXPECT_EQ(second.getEnd(), Posf(100, 0, 0));
}

TEST_F(SelectableObjectTest, EdgeHasASectionBetweenPointsThatAreAllButOne)
{
    visual::CurveVisual* curve = addCurve(test::withPolygon(
        BRepBuilderAPI_MakeEdge(gp_Pnt(0, 0, 0), gp_Pnt(100, 0, 0)).Edge(), {{0, 0, 0}, {2e-6, 0, 0}, {100, 0, 0}}));
    service.update();

    EXPECT_EQ(dynamic_cast<const SensitiveEdge&>(*object(curve).primitives.front()).primitives.size(), 2u);
}

TEST_F(SelectableObjectTest, EdgeOfOnePointOverAndOverHasNoPartsAndNoBox)
{
    visual::CurveVisual* curve = addCurve(test::withPolygon(
        BRepBuilderAPI_MakeEdge(gp_Pnt(0, 0, 0), gp_Pnt(100, 0, 0)).Edge(), {{7, 0, 0}, {7, 0, 0}, {7, 0, 0}}));
    service.update();

    EXPECT_FALSE(object(curve).box.isValid());
    EXPECT_FALSE(along(7, 0).hit);
}

TEST_F(SelectableObjectTest, ScaledMeshIsAskedInItsOwnSize)
{
    visual::MeshVisual* mesh = addMesh(wall(10));
    mesh->setScale(2, 2, 2);
    mesh->setPosition(0, 100, 0);
    service.update();
    const auto& object = dynamic_cast<const MeshObject&>(this->object(mesh));

    EXPECT_EQ(object.getScale(), rob::Vec3f(2, 2, 2));
    EXPECT_FALSE(object.isHitWithinBox());
    EXPECT_EQ(object.box.min, Posf(-20, 100, -20)); // the box of a mesh has no unit more
    EXPECT_EQ(object.box.max, Posf(20, 100, 20));
    const Result ray = along(15, 3);
    ASSERT_TRUE(ray.hit);
    EXPECT_EQ(ray.visual, mesh);
    expectNear(ray.position, {15, 100, 3});
    EXPECT_NEAR(ray.distance, 550, 1e-3); // half of what it is in the world
    EXPECT_FALSE(along(21, 3).hit);
    const Result line = service.sense(rob::Linef({15, 0, 3}, {15, 400, 3}));
    EXPECT_EQ(line.visual, mesh);
    EXPECT_NEAR(line.distance, 0.25, 1e-5);
    expectNear(line.position, {15, 100, 3});
    EXPECT_TRUE(service.sense(rob::Trianglef({15, 0, 3}, {15, 400, 3}, {16, 400, 3})).hit);
    EXPECT_FALSE(service.sense(rob::Trianglef({25, 0, 3}, {25, 400, 3}, {26, 400, 3})).hit);
}

TEST_F(SelectableObjectTest, MeshCanBeStretchedAlongOneAxis)
{
    visual::MeshVisual* mesh = addMesh(wall(10));
    mesh->setScale(4, 1, 1);
    service.markDirty(mesh);
    service.update();

    const Result result = service.select(Ray({-465, -1000, 3}, rob::normalized(rob::Vec3f(0.5f, 1, 0))));

    ASSERT_TRUE(result.hit);
    expectNear(result.position, {35, 0, 3}, 0.01f);
    EXPECT_NEAR(result.distance, std::hypot(500.0 / 4, 1000), 0.01);
}

TEST_F(SelectableObjectTest, MeshOfItsOwnSizeIsHitWithinItsBox)
{
    visual::MeshVisual* mesh = addMesh(wall(10));
    service.update();

    EXPECT_TRUE(dynamic_cast<const MeshObject&>(object(mesh)).isHitWithinBox());
}

TEST_F(SelectableObjectTest, TrianglesOfAScaledMeshAreFoundInABoxOfTheWorld)
{
    visual::MeshVisual* mesh = addMesh({{{0, 0, 0}, {1, 0, 0}, {0, 0, 1}}, {{50, 0, 0}, {51, 0, 0}, {50, 0, 1}}});
    mesh->setScale(2, 2, 2);
    mesh->setPosition(1000, 0, 0);
    service.update();
    std::mutex mutex;
    std::vector<unsigned> found;
    const auto collect = [&](unsigned triangle) {
        const std::lock_guard lock(mutex);
        found.push_back(triangle);
    };

    const BVHPrimitive& asked = object(mesh);
    asked.forEachInBox(Box(1099, -1, -1, 1105, 1, 1), collect);
    EXPECT_THAT(found, ElementsAre(1));
    found.clear();
    asked.forEachInBox(Box(1049, -1, -1, 1055, 1, 1), collect);
    EXPECT_THAT(found, IsEmpty());
    // No other kind has triangles to tell of.
    visual::SolidVisual* box = addBox(100, {});
    service.update();
    static_cast<const BVHPrimitive&>(object(box)).forEachInBox(Box(-99, -99, -99, 99, 99, 99), collect);
    EXPECT_THAT(found, IsEmpty());
}

TEST_F(SelectableObjectTest, MeshVisualWithoutAMeshHasNoParts)
{
    auto* visual = new visual::MeshVisual("empty", world);
    visual->setType(VisualType::Mesh);
    service.addMeshVisual(visual, true, false);
    MeshObject ofNoMeshVisual(world);
    service.update();
    ofNoMeshVisual.update();

    EXPECT_TRUE(object(visual).primitives.empty());
    EXPECT_FALSE(object(visual).box.isValid());
    EXPECT_TRUE(ofNoMeshVisual.primitives.empty());
}

TEST_F(SelectableObjectTest, SectionsOfALineFollowItsKind)
{
    using visual::RenderOpType;
    auto* visual = new visual::LineVisual(world);
    const auto section = [&](RenderOpType type, unsigned points) {
        visual::DynamicLines* line = visual->createDynamicLine(type);
        for (unsigned i = 0; i < points; ++i)
            line->addPoint(10.0f * static_cast<float>(i), static_cast<float>(type), 0);
    };
    section(RenderOpType::Lines, 5);     // the last one has no partner
    section(RenderOpType::LineStrip, 4); // three
    section(RenderOpType::Points, 6);    // none
    section(RenderOpType::Lines, 1);
    section(RenderOpType::LineStrip, 1);
    section(RenderOpType::LineStrip, 0);
    LineObject object(visual);

    object.update();

    std::vector<std::pair<float, float>> ends;
    for (const BVHPrimitive* part : object.primitives) {
        const auto& line = static_cast<const SensitiveLine&>(*part);
        ends.emplace_back(line.getStart().x, line.getEnd().x);
    }
    EXPECT_THAT(
        ends, ElementsAre(std::pair(0, 10), std::pair(20, 30), std::pair(0, 10), std::pair(10, 20), std::pair(20, 30)));
}

TEST_F(SelectableObjectTest, LineWithoutSectionsAndWhatIsNoLineHaveNoParts)
{
    LineObject empty(new visual::LineVisual(world));
    LineObject other(addBox(10, {}));

    empty.update();
    other.update();

    EXPECT_TRUE(empty.primitives.empty() && other.primitives.empty());
    EXPECT_FALSE(empty.box.isValid() || other.box.isValid());
    EXPECT_FALSE(rayHit(empty, atMiddle).hit);
}

TEST_F(SelectableObjectTest, AxesOfAFrameAreItsParts)
{
    auto* frame = new visual::FrameVisual(world, 50.0f);
    frame->setPosition(0, 0, 200);
    service.addLineVisual(frame);
    service.update();

    EXPECT_EQ(object(frame).primitives.size(), 3u);
    const Result result = along(30, 202);
    EXPECT_EQ(result.visual, frame);
    expectNear(result.position, {30, 0, 200}, 0.01f);
}

TEST_F(SelectableObjectTest, AxesOfATargetAreItsPartsInOrder)
{
    auto* target = new visual::RobtargetVisual(world, 901);
    target->setFrameSize(40);
    target->setPosition(0, 0, 200);
    service.addFrameVisual(target);
    service.update();

    std::vector<Posf> ends;
    for (const BVHPrimitive* part : object(target).primitives) {
        const auto& line = static_cast<const SensitiveLine&>(*part);
        EXPECT_EQ(line.getStart(), Posf());
        ends.push_back(line.getEnd());
    }
    EXPECT_THAT(ends, ElementsAre(Posf(40, 0, 0), Posf(0, 40, 0), Posf(0, 0, 40)));
    const Result result = along(30, 202);
    EXPECT_EQ(result.visual, target);
    expectNear(result.position, {30, 0, 200}, 0.01f);
    EXPECT_TRUE(along(0, 235).hit);
    EXPECT_FALSE(along(60, 200).hit);
}

TEST_F(SelectableObjectTest, TargetDrawnByItsZAxisIsPickedByItAlone)
{
    auto* target = new visual::RobtargetVisual(world, 901);
    visual::SceneCore::Get()->visuals.enter(target);
    service.addFrameVisual(target);
    service.update();
    ASSERT_TRUE(along(40, 0).hit);

    scene.setDrawTargetZAxisOnly(true);
    drain();
    service.update();

    EXPECT_EQ(object(target).primitives.size(), 1u);
    EXPECT_FALSE(along(40, 0).hit);
    const Result result = along(0, 40);
    EXPECT_EQ(result.visual, target);
    expectNear(result.position, {0, 0, 40}, 0.01f);

    scene.setDrawTargetZAxisOnly(false);
    drain();
    service.update();
    EXPECT_TRUE(along(40, 0).hit);
}

TEST_F(SelectableObjectTest, TargetOfNoSizeHasNoParts)
{
    auto* target = new visual::RobtargetVisual(world, 901);
    target->setFrameSize(0);
    service.addFrameVisual(target);

    service.update();

    EXPECT_TRUE(object(target).primitives.empty());
    EXPECT_FALSE(object(target).box.isValid());
    EXPECT_FALSE(along(0, 0).hit);
}

TEST_F(SelectableObjectTest, PickOfATargetFollowsItsSize)
{
    auto* target = new visual::RobtargetVisual(world, 901);
    service.addFrameVisual(target);
    service.update();
    EXPECT_FALSE(along(90, 0).hit);

    target->setFrameSize(100);
    service.update();

    EXPECT_EQ(along(90, 0).visual, target);
}

TEST_F(SelectableObjectTest, LineKeepsTheSectionsItWasBuiltFrom)
{
    visual::LineVisual* line = addLine({{0, 0, 0}, {10, 0, 0}});
    service.update();

    line->getLines().front()->addPoint(500, 0, 0);
    service.markDirty(line);
    service.update();

    EXPECT_FALSE(along(300, 0).hit);
    service.removeObject(line);
    service.addLineVisual(line);
    service.update();
    EXPECT_TRUE(along(300, 0).hit);
}

TEST_F(SelectableObjectTest, QuickLookAtLinesPassesEveryHit)
{
    std::mt19937 random(7);
    std::uniform_real_distribution<float> any(-1, 1);
    const auto point = [&](float size) { return Posf(size * any(random), size * any(random), size * any(random)); };
    const std::optional<float> pixelAt1 = worldUnitsPerPixel(1);
    ASSERT_TRUE(pixelAt1);
    unsigned hits = 0, refused = 0;
    for (int i = 0; i < 200; ++i) {
        const unsigned sections = 1 + static_cast<unsigned>(i % 7); // those of more than four have a hierarchy
        std::vector<Posf> points;
        for (unsigned k = 0; k <= sections; ++k)
            points.push_back(point(i % 3 == 0 ? 5 : 100));
        visual::LineVisual* visual = addLine(points);
        visual->setPose({point(3000), rob::Rotationf(3 * any(random), rob::normalized(point(1) - Posf()))});
        LineObject lines(visual);
        lines.update();
        for (int k = 0; k < 100; ++k) {
            const Posf origin = point(5000);
            const Posf aim = visual->getWorldPosition() + (point(400) - Posf());
            const Ray ray(origin, rob::normalized(k % 4 == 0 ? origin - aim : aim - origin));
            const Result hit = rayHit(lines, ray);
            const float nearest = 6000 * (1 + any(random));
            const bool passes = lines.mayBeHit(ray, {nearest, pixelAt1});
            EXPECT_TRUE(passes || !hit.hit || hit.distance >= nearest) << i << ", " << k;
            hits += hit.hit && hit.distance < nearest ? 1 : 0;
            refused += passes ? 0 : 1;
        }
    }
    EXPECT_GT(hits, 500u);
    EXPECT_GT(refused, 10'000u);
}

TEST_F(SelectableObjectTest, FewLinesAnswerAsTheirHierarchyDoes)
{
    std::mt19937 random(8);
    std::uniform_real_distribution<float> any(-50, 50);
    const auto point = [&] { return Posf(any(random), any(random), any(random)); };
    visual::LineVisual* visual = addLine({point(), point(), point(), point()});
    LineObject lines(visual);
    lines.update();

    EXPECT_EQ(lines.bvh.root, nullptr); // nobody has asked
    unsigned hits = 0;
    for (int k = 0; k < 1000; ++k) {
        const Posf origin(any(random), -200, any(random));
        const Ray ray(origin, rob::normalized(point() - origin));
        Result byHierarchy;
        lines.closestHitRay(byHierarchy, ray);
        const Result hit = rayHit(lines, ray);
        EXPECT_EQ(hit.hit, byHierarchy.hit);
        EXPECT_EQ(hit.distance, byHierarchy.distance);
        hits += hit.hit ? 1 : 0;
    }
    EXPECT_NE(lines.bvh.root, nullptr);
    EXPECT_EQ(lines.box.min, lines.bvh.root->box.min);
    EXPECT_EQ(lines.box.max, lines.bvh.root->box.max);
    EXPECT_GT(hits, 50u);
}

TEST_F(SelectableObjectTest, BoxOfAPointIsTenUnitsWide)
{
    visual::PointVisual* point = addPoint({10, 20, 30});
    service.update();

    EXPECT_EQ(object(point).box.min, Posf(5, 15, 25));
    EXPECT_EQ(object(point).box.max, Posf(15, 25, 35));
    EXPECT_TRUE(object(point).primitives.empty());
    EXPECT_EQ(object(point).bvh.root, nullptr);
}

TEST_F(SelectableObjectTest, MovedPointHasItsBoxRefreshed)
{
    visual::PointVisual* point = addPoint({10, 20, 30});
    service.update();

    point->setPosition(100, 0, 0);
    EXPECT_TRUE(service.isDirty());
    service.update();

    // The position of the node counts twice: once in the middle of the box, once in the pose that moves it.
    EXPECT_EQ(object(point).box.min, Posf(205, 15, 25));
    expectNear(object(point).worldPose.position, {110, 20, 30});
}

TEST_F(SelectableObjectTest, PickOfAPointReadsWhereItIsNow)
{
    visual::PointVisual* point = addPoint({10, 0, 30});
    service.update();
    const Box before = object(point).box;

    point->getSceneNode()->setPosition(0, 0, 3); // nobody is told

    EXPECT_FALSE(along(10, 30).hit);
    EXPECT_EQ(along(10, 33).visual, point);
    expectNear(along(10, 33).position, {10, 0, 33});
    EXPECT_EQ(object(point).box.min, before.min);
}

TEST_F(SelectableObjectTest, PointIsHitAlsoBehindTheOriginOfTheRay)
{
    addPoint({10, 0, 30});
    service.update();

    // Its box, of five units each way, reaches the ray; the line through both is what is measured from.
    EXPECT_FLOAT_EQ(along(10, 30, 4).distance, 4);
    EXPECT_FALSE(along(10, 30, 6).hit);
}

layout::PointCloud::Points gridOfPoints(unsigned count)
{
    layout::PointCloud::Points points;
    for (unsigned i = 0; i < count; ++i)
        points.emplace_back(static_cast<float>(i % 40) * 7, static_cast<float>(i / 40 % 40) * 7,
                            static_cast<float>(i / 1600) * 7);
    return points;
}

/// The sizes of a cloud's groups. Each point must be in one of them, and each box be a unit wider than its points.
std::vector<std::size_t> groupSizes(const SelectableObject& object, const layout::PointCloud::Points& points)
{
    std::vector<std::size_t> sizes;
    std::vector<unsigned> all;
    for (const BVHPrimitive* part : object.primitives) {
        const auto& group = static_cast<const SensitivePoints&>(*part);
        sizes.push_back(group.getIndices().size());
        all.insert(all.end(), group.getIndices().begin(), group.getIndices().end());
        Box box;
        for (const unsigned index : group.getIndices())
            box.addPoint(points[index]);
        box.expand();
        EXPECT_EQ(group.box.min, box.min);
        EXPECT_EQ(group.box.max, box.max);
    }
    std::sort(all.begin(), all.end());
    std::vector<unsigned> expected;
    for (unsigned i = 0; i < points.size(); ++i)
        if (points[i].isFinite())
            expected.push_back(i);
    EXPECT_EQ(all, expected);
    return sizes;
}

TEST_F(SelectableObjectTest, CloudOfAThousandPointsIsOneGroupAndOneMoreIsSeveral)
{
    const auto thousand = gridOfPoints(1000), oneMore = gridOfPoints(1001);
    visual::PointCloudVisual* small = addCloud(thousand);
    visual::PointCloudVisual* large = addCloud(oneMore);
    service.update();

    EXPECT_THAT(groupSizes(object(small), thousand), ElementsAre(1000));
    EXPECT_GE(groupSizes(object(large), oneMore).size(), 2u);
}

TEST_F(SelectableObjectTest, GroupsOfALargeCloudHaveUpToAThousandPoints)
{
    const auto points = gridOfPoints(20000);
    visual::PointCloudVisual* cloud = addCloud(points);
    service.update();

    for (const std::size_t size : groupSizes(object(cloud), points))
        EXPECT_LE(size, 1000u);
}

TEST_F(SelectableObjectTest, LowerHalfOfTheLongestAxisComesFirst)
{
    layout::PointCloud::Points points;
    for (unsigned i = 0; i < 1200; ++i)
        points.emplace_back(0.0f, i % 2 ? 100.0f : 0.0f, static_cast<float>(i % 7));
    visual::PointCloudVisual* cloud = addCloud(points);
    service.update();

    ASSERT_THAT(groupSizes(object(cloud), points), ElementsAre(600, 600));
    const auto& lower = static_cast<const SensitivePoints&>(*object(cloud).primitives[0]);
    EXPECT_EQ(lower.getIndices().front(), 0u);
    EXPECT_EQ(points[lower.getIndices().back()].y, 0);
}

TEST_F(SelectableObjectTest, PointOnTheSplitBelongsToTheUpperHalf)
{
    layout::PointCloud::Points points(400, Posf(0, 0, 0));
    points.insert(points.end(), 400, Posf(0, 50, 0));
    points.insert(points.end(), 400, Posf(0, 100, 0));
    visual::PointCloudVisual* cloud = addCloud(points);
    service.update();

    EXPECT_THAT(groupSizes(object(cloud), points), ElementsAre(400, 800));
}

TEST_F(SelectableObjectTest, CoincidentPointsStayInOneGroupHoweverMany)
{
    layout::PointCloud::Points points(5000, Posf(3, 4, 5));
    const auto alone = points;
    visual::PointCloudVisual* all = addCloud(alone);
    points.emplace_back(1000.0f, 0.0f, 0.0f);
    visual::PointCloudVisual* withOutlier = addCloud(points);
    service.update();

    EXPECT_THAT(groupSizes(object(all), alone), ElementsAre(5000));
    EXPECT_EQ(groupSizes(object(withOutlier), points).size(), 2u);
    EXPECT_EQ(service.selectPointInCloud(Ray({3, -100, 5}, {0, 1, 0})).pointIndex, 0);
}

TEST_F(SelectableObjectTest, PointsThatAreNotFiniteAreInNoGroup)
{
    const float infinite = std::numeric_limits<float>::infinity();
    auto points = gridOfPoints(1500);
    points[3].x = nan;
    points[700].y = infinite;
    points[1400] = {-infinite, nan, 0};
    visual::PointCloudVisual* cloud = addCloud(points);
    service.update();

    groupSizes(object(cloud), points);
    EXPECT_TRUE(object(cloud).box.isValid());
    EXPECT_LT(object(cloud).box.max.y, 1000);
    EXPECT_EQ(service.selectPointInCloud(Ray({points[5].x, -100, 0}, {0, 1, 0})).pointIndex, 5);
}

TEST_F(SelectableObjectTest, NearerOfTwoPointsOnTheRayWinsThoughTheOtherIsCloserToIt)
{
    visual::PointCloudVisual* cloud = addCloud({{0, 50, 0}, {2.5f, 0, 0}, {-5, 0, 0}, {0, -10, 40}});
    service.update();
    const SensitivePoints group(cloud, {0, 1});

    const Result result = rayHit(group, Ray({0, -100, 0}, {0, 1, 0}));

    EXPECT_EQ(result.pointIndex, 1);
    EXPECT_EQ(result.position, Posf(2.5f, 0, 0));
    EXPECT_EQ(result.localPosition, result.position);
    EXPECT_EQ(result.visual, cloud);
}

TEST_F(SelectableObjectTest, FirstOfEquallyFarPointsStays)
{
    visual::PointCloudVisual* cloud = addCloud({{1, 0, 0}, {-1, 0, 0}});

    EXPECT_EQ(rayHit(SensitivePoints(cloud, {0, 1}), Ray({0, -100, 0}, {0, 1, 0})).pointIndex, 0);
    EXPECT_EQ(rayHit(SensitivePoints(cloud, {1, 0}), Ray({0, -100, 0}, {0, 1, 0})).pointIndex, 1);
}

TEST_F(SelectableObjectTest, GroupWithoutPointsHasNoBoxAndAnswersNothing)
{
    visual::PointCloudVisual* cloud = addCloud({{1, 0, 0}});
    const SensitivePoints group(cloud, {});

    EXPECT_FALSE(group.box.isValid());
    EXPECT_FALSE(rayHit(group, atMiddle).hit);
}

TEST_F(SelectableObjectTest, RayOfNoDirectionIsRefusedByPoints)
{
    visual::PointCloudVisual* cloud = addCloud({{1, 0, 0}});

    EXPECT_THAT(
        [&] {
            rayHit(SensitivePoints(cloud, {0}), Ray({0, 0, 0}, {0, 0, 0}));
        },
        testing::ThrowsMessage<std::overflow_error>(testing::StrEq("0-length vector cannot be normalized.")));
}

} // namespace
} // namespace vrk::selection
