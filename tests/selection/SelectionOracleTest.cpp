#include "SelectionOracle.h"
#include "SelectionFixture.h"
#include "geometry/Geometry.h"

#include "selection/geometry/BVHBuilder.h"

#include <BRepPrimAPI_MakeCylinder.hxx>
#include <BRepPrimAPI_MakeSphere.hxx>
#include <BRep_Builder.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Compound.hxx>

#include <cmath>

/// The service against loops over all that is in the scene, which know nothing of hierarchies.
namespace vrk::selection {
namespace {

using rob::Posf;
using rob::Vec3d;

class SelectionOracleTest : public SelectionFixture {
protected:
    rob::Posef randomPose(Dice& dice)
    {
        return {dice.point(), rob::Rotationf(dice.number(0, 6), rob::normalized(dice.point()))};
    }

    /// Some of every kind; hung on each other, disabled, with hidden faces; moved after they were entered.
    void fill(Dice& dice)
    {
        std::vector<visual::Visual*> made;
        for (unsigned i = 0; i < 4; ++i)
            made.push_back(addSolid(randomShape(dice)));
        static_cast<visual::SolidVisual*>(made[0])->setFaceVisible(1, false);
        service.updateShapeFaces(static_cast<visual::SolidVisual*>(made[0]));
        for (unsigned i = 0; i < 4; ++i) {
            visual::MeshVisual* mesh = addMesh(randomSoup(dice), true, i == 3 && dice.below(2) == 0);
            if (i == 1)
                mesh->setScale(2, 2, 2);
            if (i == 2)
                mesh->setScale(0.5, 3, 1);
            made.push_back(mesh);
        }
        made.push_back(addCurve(gp_Pnt(-60, 0, 0), gp_Pnt(60, 10, 20)));
        std::vector<Posf> strip;
        for (unsigned i = 0; i < 8; ++i)
            strip.push_back(Posf(rob::Vec3f(dice.point()) * 0.3f));
        made.push_back(addLine(strip, dice.below(2) ? visual::RenderOpType::Lines : visual::RenderOpType::LineStrip));
        layout::PointCloud::Points cloud(2500);
        for (Posf& p : cloud)
            p = Posf(rob::Vec3f(dice.point()) * 0.5f);
        made.push_back(addCloud(cloud));
        service.update();
        for (visual::Visual* visual : made)
            visual->setPose(randomPose(dice));
        // What is scaled has no children, and no parent that is turned after it.
        made[2]->attachTo(made[1]);
        made[9]->attachTo(made[2]);
        for (unsigned i = 0; i < 3; ++i)
            addPoint(dice.point());
        service.setObjectEnabled(made[dice.below(static_cast<unsigned>(made.size()))], false);
        service.setDetectable(made[dice.below(8)], false);
        service.update();
    }

    TopoDS_Shape randomShape(Dice& dice)
    {
        const double size = dice.number(20, 80);
        TopoDS_Compound shape;
        BRep_Builder().MakeCompound(shape);
        const auto add = [&](const TopoDS_Shape& part) {
            gp_Trsf trsf;
            trsf.SetRotation(gp_Ax1({0, 0, 0}, {1, 1, 0.5}), dice.number(0, 3));
            trsf.SetTranslationPart({dice.number(-50, 50), dice.number(-50, 50), dice.number(-50, 50)});
            BRep_Builder().Add(shape, part.Moved(TopLoc_Location(trsf)));
        };
        add(test::meshedBox(size, size / 2, size / 3));
        add(test::meshed(BRepPrimAPI_MakeCylinder(size / 4, size).Shape()));
        add(test::meshed(BRepPrimAPI_MakeSphere(size / 3).Shape()));
        return shape;
    }
    std::vector<rob::Trianglef> randomSoup(Dice& dice)
    {
        std::vector<rob::Trianglef> soup;
        for (unsigned i = 0; i < 60; ++i) {
            const rob::Vec3f at = rob::Vec3f(dice.point()) * 0.2f;
            const auto near = [&] { return Posf(at + rob::Vec3f(dice.point()) * 0.1f); };
            const Posf a = near(), b = near();
            soup.push_back({a, b, near()});
        }
        return soup;
    }
    /// From outside, at what is there.
    Ray randomRay(Dice& dice, const std::vector<visual::Visual*>& visuals)
    {
        Posf target = dice.point();
        if (dice.below(3) > 0) {
            const Box& box = object(visuals[dice.below(static_cast<unsigned>(visuals.size()))]).box;
            if (box.isValid())
                target = {dice.number(box.min.x, box.max.x), dice.number(box.min.y, box.max.y),
                          dice.number(box.min.z, box.max.z)};
        }
        const Posf from = Posf(rob::Vec3f(rob::normalized(dice.point())) * 900.0f);
        return {from, rob::normalized(target - from)};
    }
    std::vector<visual::Visual*> sortedVisuals() const
    {
        std::vector<visual::Visual*> visuals = entered();
        std::sort(visuals.begin(), visuals.end(),
                  [](const visual::Visual* a, const visual::Visual* b) { return a->getId() < b->getId(); });
        return visuals;
    }
    std::vector<const SelectableObject*> objects() const
    {
        std::vector<const SelectableObject*> found;
        for (visual::Visual* visual : sortedVisuals())
            found.push_back(service.getObject(visual));
        return found;
    }
};

/// A seldom ray is not judged: one that passes so near a border, or so evenly between two answers, that rounding decides.
struct Tally {
    unsigned asked = 0, hits = 0, unsure = 0;
};

TEST_F(SelectionOracleTest, RayHitsWhatTheLoopOverAllPrimitivesHits)
{
    Tally tally;
    for (unsigned seed = 0; seed < 6; ++seed) {
        Dice dice(seed, 200);
        fill(dice);
        const std::vector<visual::Visual*> visuals = sortedVisuals();
        for (unsigned i = 0; i < 400; ++i) {
            SCOPED_TRACE(testing::Message() << "seed " << seed << ", ray " << i);
            const Ray ray = randomRay(dice, visuals);
            const oracle::Answer expected = oracle::select(objects(), ray);
            ++tally.asked;
            if (expected.isUnsure) {
                ++tally.unsure;
                continue;
            }
            const Result found = service.select(ray);

            ASSERT_EQ(found.hit, expected.visual != nullptr);
            if (!found.hit)
                continue;
            ++tally.hits;
            ASSERT_EQ(found.visual, expected.visual);
            EXPECT_TRUE(expected.face.IsNull() ? found.face.IsNull() : found.face.IsSame(expected.face));
            EXPECT_NEAR(found.distance, expected.distance, 0.02);
            EXPECT_NEAR((Vec3d(rob::Posd(found.position)) - expected.position).length(), 0, 0.02);
        }
        for (visual::Visual* visual : visuals)
            if (service.hasVisual(visual) && visual->getParent() == world)
                scene.deleteVisual(visual);
    }
    EXPECT_GT(tally.hits, 600u);
    EXPECT_LT(tally.unsure, tally.asked / 20);
}

TEST_F(SelectionOracleTest, CloudPointIsThatOfTheLoopOverAllPoints)
{
    unsigned hits = 0;
    for (unsigned seed = 0; seed < 3; ++seed) {
        Dice dice(100 + seed, 150);
        layout::PointCloud::Points points(3000);
        for (Posf& p : points)
            p = dice.point();
        points[17].x = nan;
        visual::PointCloudVisual* cloud = addCloud(points);
        cloud->setPose(randomPose(dice));
        service.update();
        for (unsigned i = 0; i < 200; ++i) {
            SCOPED_TRACE(testing::Message() << "seed " << seed << ", ray " << i);
            const Posf from = dice.point();
            const Posf target = cloud->getWorldPose() * points[1 + dice.below(16)];
            const Ray ray(from, rob::normalized(target + rob::Vec3f(dice.point()) * 0.02f - from));
            const oracle::Answer expected = oracle::selectPoint(object(cloud), points, ray);
            if (expected.isUnsure)
                continue;

            const Result found = service.selectPointInCloud(ray);

            ASSERT_EQ(found.hit, expected.pointIndex >= 0);
            ASSERT_EQ(found.pointIndex, expected.pointIndex);
            if (found.hit) {
                ++hits;
                EXPECT_NEAR(found.distance, expected.distance, 0.02);
            }
        }
        scene.deleteVisual(cloud);
    }
    EXPECT_GT(hits, 300u);
}

TEST_F(SelectionOracleTest, LineAndTriangleTouchWhatTheLoopOverAllTrianglesTouches)
{
    unsigned lineHits = 0, triangleHits = 0, unsure = 0;
    for (unsigned seed = 0; seed < 4; ++seed) {
        Dice dice(200 + seed, 200);
        fill(dice);
        const auto all = objects();
        for (unsigned i = 0; i < 150; ++i) {
            SCOPED_TRACE(testing::Message() << "seed " << seed << ", question " << i);
            const Box& aim = all[dice.below(8)]->box; // a solid's or a mesh's
            const rob::Linef line(dice.point(), aim.isValid() ? Box(aim).getCenter() : dice.point());
            const oracle::Touch byLine = oracle::sense(all, line);
            if (byLine.isUnsure) {
                ++unsure;
            } else {
                const Result found = service.sense(line);
                ASSERT_EQ(found.hit, !byLine.touched.empty());
                if (found.hit) {
                    ++lineHits;
                    const auto nearest = byLine.touched.find(found.visual);
                    ASSERT_NE(nearest, byLine.touched.end()); // any of them may be first
                    EXPECT_NEAR(found.distance, nearest->second, 1e-4);
                }
            }
            const rob::Trianglef triangle = dice.triangle();
            const Result found = service.sense(triangle);
            const auto touched = oracle::sense(all, triangle);
            ASSERT_EQ(found.hit, !touched.empty());
            if (found.hit) {
                ++triangleHits;
                EXPECT_TRUE(touched.contains(found.visual));
            }
        }
        for (visual::Visual* visual : sortedVisuals())
            if (service.hasVisual(visual) && visual->getParent() == world)
                scene.deleteVisual(visual);
    }
    EXPECT_GT(lineHits, 100u);
    EXPECT_GT(triangleHits, 100u);
    EXPECT_LT(unsure, 30u);
}

/// The hierarchy of the scene as a test has it: it borrows the objects.
class Borrowed : public PrimitiveContainer {
public:
    ~Borrowed() override { primitives.clear(); }
};

TEST_F(SelectionOracleTest, PrunedPickIsBitForBitTheLoopOverTheCandidates)
{
    unsigned hits = 0;
    for (const float reach : {200.0f, 1e5f}) {
        Dice dice(31, reach);
        Borrowed plain;
        for (unsigned i = 0; i < 60; ++i) {
            visual::SolidVisual* solid = addSolid(randomShape(dice));
            solid->setPose(randomPose(dice));
            plain.primitives.push_back(&object(solid));
        }
        service.update();
        plain.bvh = BVHBuilder(&plain).build();
        for (unsigned i = 0; i < 1000; ++i) {
            SCOPED_TRACE(testing::Message() << "reach " << reach << ", ray " << i);
            const Posf from = dice.point();
            const Box& aim = plain.primitives[dice.below(60)]->box;
            const Posf to(dice.number(aim.min.x, aim.max.x), dice.number(aim.min.y, aim.max.y),
                          dice.number(aim.min.z, aim.max.z));
            const Ray ray(from, rob::normalized(to - from));
            std::vector<BVHPrimitive*> candidates;
            plain.queryRay(ray, candidates);
            Result expected, found;
            for (const BVHPrimitive* candidate : candidates) {
                // An object in plain steps: all its faces that the ray may meet, each asked in full.
                const auto& asked = static_cast<const SelectableObject&>(*candidate);
                asked.closestHitRay(found, ray.transformed(asked.inverseWorldPose));
                if (found.hit && expected.distance > found.distance) {
                    expected = found;
                    expected.visual = asked.visual;
                    expected.position = asked.worldPose * found.position;
                }
            }

            const Result picked = service.select(ray);

            ASSERT_EQ(picked.hit, expected.hit);
            if (!picked.hit)
                continue;
            ++hits;
            ASSERT_EQ(picked.visual, expected.visual);
            ASSERT_EQ(picked.distance, expected.distance);
            ASSERT_EQ(picked.position, expected.position);
            ASSERT_EQ(picked.localPosition, expected.localPosition);
            ASSERT_TRUE(picked.face.IsSame(expected.face));
        }
        for (const BVHPrimitive* object : plain.primitives)
            scene.deleteVisual(static_cast<const SelectableObject*>(object)->visual);
    }
    EXPECT_GT(hits, 600u);
}

TEST_F(SelectionOracleTest, MovingSceneAndRayTogetherMovesTheAnswer)
{
    Dice dice(5, 200);
    fill(dice);
    std::vector<visual::Visual*> all = sortedVisuals();
    // Those that lie in the world itself move with one more pose above them. Points are boxed by their node's own place.
    auto* stage = new visual::Visual(world);
    for (visual::Visual* visual : all)
        if (visual->getParent() == world)
            visual->attachTo(stage);
    service.update();
    std::vector<Ray> rays;
    std::vector<Result> before, cloudBefore;
    std::vector<bool> isSure;
    for (unsigned i = 0; i < 600; ++i) {
        rays.push_back(randomRay(dice, all));
        before.push_back(service.select(rays.back()));
        cloudBefore.push_back(service.selectPointInCloud(rays.back()));
        isSure.push_back(!oracle::select(objects(), rays.back()).isUnsure);
    }

    const rob::Posef pose(Posf(300, -200, 100), rob::Rotationf(1.1f, rob::normalized(rob::Vec3f(1, 2, 3))));
    stage->setPose(pose);
    service.update();

    unsigned hits = 0, cloudHits = 0;
    for (unsigned i = 0; i < rays.size(); ++i) {
        SCOPED_TRACE(testing::Message() << "ray " << i);
        const Ray moved = rays[i].transformed(pose);
        const Result cloud = service.selectPointInCloud(moved);
        if (cloud.hit && cloudBefore[i].hit && cloud.pointIndex == cloudBefore[i].pointIndex) {
            ++cloudHits;
            EXPECT_NEAR((cloud.position - pose * cloudBefore[i].position).length(), 0, 0.02);
        }
        if (!isSure[i] || oracle::select(objects(), moved).isUnsure)
            continue;
        const Result after = service.select(moved);
        ASSERT_EQ(after.hit, before[i].hit);
        if (!after.hit)
            continue;
        ++hits;
        EXPECT_EQ(after.visual, before[i].visual);
        EXPECT_TRUE(after.face.IsSame(before[i].face));
        EXPECT_NEAR(after.distance, before[i].distance, 0.05);
        EXPECT_NEAR((after.position - pose * before[i].position).length(), 0, 0.05);
    }
    EXPECT_GT(hits, 100u);
    EXPECT_GT(cloudHits, 10u);
}

} // namespace
} // namespace vrk::selection
