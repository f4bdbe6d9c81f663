#include "PreviewFixture.h"

#include "platform/common/Checks.h"
#include "platform/layout/Mechanism.h"
#include "platform/sdf/SdfManager.h"
#include "preview/annotation/WorkEnvelopeVisuals.h"
#include "station/ManipulatorVisual.h"
#include "support/ThrowsExactly.h"

#include <cmath>
#include <limits>
#include <numbers>

/// The reach of an arm, as a curve and as the surface that it sweeps.
namespace vrk::visual {
namespace {

using test::throwsExactly;
using test::uploaded;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class WorkEnvelope : public test::WithPreviews<test::SceneFixture> {
protected:
    WorkEnvelope()
    {
        arm = std::make_shared<layout::Manipulator>(sdf::SdfManager::inst().generateId(), "arm");
        ManipulatorVisual::Build(world, arm.get(), true);
        visual = static_cast<ManipulatorVisual*>(Scene::GetVisual(arm->getId()));
        frame = new Visual(sdf::SdfManager::GenerateTransientId(), world);
        SceneCore::Get()->visuals.enter(frame);
    }
    void add(float from = 0, float to = 1)
    {
        scene.addWorkEnvelopeVisual(arm->getId(), frame->getId(), points, normals, from, to);
        drain();
    }
    WorkEnvelope2DVisual& curve() { return dynamic_cast<WorkEnvelope2DVisual&>(*visual->getEnvelope2D()); }
    WorkEnvelope3DVisual& surface() { return dynamic_cast<WorkEnvelope3DVisual&>(*visual->getEnvelope3D()); }
    static std::vector<Ogre::ManualObject::ManualObjectSection*> sectionsOf(const Visual& visual)
    {
        return dynamic_cast<Ogre::ManualObject&>(*visual.getSceneNode()->getAttachedObjects().front()).getSections();
    }
    struct Vertex {
        rob::Posf position;
        rob::Dirf normal;
    };
    static std::vector<Vertex> verticesOf(const Visual& visual)
    {
        const Ogre::VertexData& data = *sectionsOf(visual).at(0)->getRenderOperation()->vertexData;
        const Ogre::HardwareBufferLockGuard lock(data.vertexBufferBinding->getBuffer(0),
                                                 Ogre::HardwareBuffer::HBL_READ_ONLY);
        const auto* first = static_cast<const Vertex*>(lock.pData);
        return {first, first + data.vertexCount};
    }
    static std::vector<std::uint16_t> indicesOf(const Visual& visual)
    {
        const Ogre::IndexData& data = *sectionsOf(visual).at(0)->getRenderOperation()->indexData;
        const Ogre::HardwareBufferLockGuard lock(data.indexBuffer, Ogre::HardwareBuffer::HBL_READ_ONLY);
        const auto* first = static_cast<const std::uint16_t*>(lock.pData);
        return {first, first + data.indexCount};
    }

    std::shared_ptr<layout::Manipulator> arm;
    ManipulatorVisual* visual;
    Visual* frame;
    std::vector<rob::Posd> points{{100, 0, 0}, {200, 0, 50}, {100, 0, 100}};
    std::vector<rob::Dird> normals{{1, 0, 0}, {1, 0, 0}, {0, 0, 1}};
};

TEST_F(WorkEnvelope, CurveHangsShownOnTheFrame)
{
    scene.addWorkEnvelopeVisual(arm->getId(), frame->getId(), points, normals, 0, 1);
    EXPECT_EQ(visual->getEnvelope2D(), nullptr) << "it is posted";
    drain();

    EXPECT_EQ(curve().getName(),
              "work_envelope_" + std::to_string(arm->getId()) + "_2d" + std::to_string(curve().getId()));
    EXPECT_EQ(curve().getType(), VisualType::WorkEnvelope);
    EXPECT_EQ(curve().getParent(), frame);
    EXPECT_TRUE(curve().isVisible());
    EXPECT_THAT(uploaded(curve().getLine()),
                ElementsAre(rob::Posf(100, 0, 0), rob::Posf(200, 0, 50), rob::Posf(100, 0, 100)));
    for (const auto show : {&Visual::resetAppearance, &Visual::setSelected, &Visual::setHighlighted}) {
        (curve().*show)();
        EXPECT_EQ(test::materialOf(curve()), "PreviewCurve");
    }
    EXPECT_FALSE(Scene::HasVisual(curve().getId()));
}

TEST_F(WorkEnvelope, SurfaceHangsHiddenOnTheArm)
{
    add();

    EXPECT_EQ(surface().getName(),
              "work_envelope_" + std::to_string(arm->getId()) + "_3d" + std::to_string(surface().getId()));
    EXPECT_EQ(surface().getType(), VisualType::WorkEnvelope);
    EXPECT_EQ(surface().getParent(), visual);
    EXPECT_FALSE(surface().isVisible());
    EXPECT_FALSE(surface().getSceneNode()->getAttachedObjects().front()->getVisible());
    ASSERT_THAT(sectionsOf(surface()), SizeIs(1));
    EXPECT_EQ(sectionsOf(surface()).front()->getMaterialName(), "WorkEnvelope3D");
    EXPECT_EQ(sectionsOf(surface()).front()->getRenderOperation()->operationType,
              Ogre::RenderOperation::OT_TRIANGLE_LIST);
}

TEST_F(WorkEnvelope, SurfaceHasFiftyOneRowsWhateverTheAngle)
{
    for (const float to : {0.0f, 0.01f, 1.0f, 6.3f, -6.3f}) {
        add(0, to);

        EXPECT_THAT(verticesOf(surface()), SizeIs(51 * 3));
        EXPECT_THAT(indicesOf(surface()), SizeIs(50 * 2 * 6));
    }
}

TEST_F(WorkEnvelope, RowsAreTheCurveTurnedAboutZ)
{
    const auto to = static_cast<float>(std::numbers::pi);
    add(-to / 2, to / 2);

    const std::vector<Vertex> vertices = verticesOf(surface());
    const auto expectNear = [](const auto& actual, float x, float y, float z) {
        EXPECT_NEAR(actual.x, x, 1e-4);
        EXPECT_NEAR(actual.y, y, 1e-4);
        EXPECT_NEAR(actual.z, z, 1e-4);
    };
    expectNear(vertices[1].position, 0, -200, 50);
    expectNear(vertices[1].normal, 0, -1, 0);
    expectNear(vertices[25 * 3 + 1].position, 200, 0, 50);
    expectNear(vertices[50 * 3 + 1].position, 0, 200, 50);
    expectNear(vertices[50 * 3 + 2].normal, 0, 0, 1);
}

TEST_F(WorkEnvelope, TrianglesJoinEachRowToTheNext)
{
    add();

    const std::vector<std::uint16_t> indices = indicesOf(surface());
    EXPECT_THAT(std::vector(indices.begin(), indices.begin() + 12), ElementsAre(0, 1, 3, 3, 1, 4, 1, 2, 4, 4, 2, 5));
    EXPECT_EQ(indices.back(), 50 * 3 + 2);
}

TEST_F(WorkEnvelope, OnePointHasNoTrianglesAndNoneHasNothing)
{
    points.resize(1);
    normals.resize(1);
    add();
    EXPECT_THAT(sectionsOf(surface()), IsEmpty());
    EXPECT_TRUE(curve().getLine().isDirty());

    points.clear();
    normals.clear();
    add();
    EXPECT_THAT(sectionsOf(surface()), IsEmpty());
}

TEST_F(WorkEnvelope, FrameWithoutVisualDoesNothing)
{
    scene.addWorkEnvelopeVisual(arm->getId(), 4711, points, normals, 0, 1);
    scene.addWorkEnvelopeVisual(4712, 4711, points, normals, 0, 1);

    EXPECT_NO_THROW(drain());

    EXPECT_EQ(visual->getEnvelope2D(), nullptr);
    EXPECT_EQ(visual->getEnvelope3D(), nullptr);
}

TEST_F(WorkEnvelope, UnknownArmFailsAndSoDoesAnythingElse)
{
    scene.addWorkEnvelopeVisual(4711, frame->getId(), points, normals, 0, 1);
    EXPECT_THAT([this] { drain(); }, throwsExactly<std::out_of_range>("invalid unordered_map<K, T> key"));

    scene.addWorkEnvelopeVisual(frame->getId(), frame->getId(), points, normals, 0, 1);
    EXPECT_THAT([this] { drain(); }, throwsExactly<common::BadOptionalAccess>("Bad optional access"));

    for (const unsigned id : {0u, 4711u, frame->getId()}) {
        scene.updateWorkEnvelopeVisual(id, true, true);
        EXPECT_THAT([this] { drain(); }, throwsExactly<common::BadOptionalAccess>("Bad optional access"));
        scene.removeWorkEnvelopeVisual(id);
        EXPECT_THAT([this] { drain(); }, throwsExactly<common::BadOptionalAccess>("Bad optional access"));
    }
    EXPECT_THAT(test::childrenOf(*frame), IsEmpty());
}

TEST_F(WorkEnvelope, PointsThatCannotBeDrawnAreToldInTheLogAndChangeNothing)
{
    add();
    const Visual* before = &surface();
    points[1].x = std::numeric_limits<double>::quiet_NaN();
    add();
    points[1].x = 1e300;
    add();
    points.pop_back();
    points[1].x = 5;
    add();

    EXPECT_EQ(&surface(), before);
    EXPECT_THAT(lines, testing::AllOf(SizeIs(3),
                                      testing::Each("a reach is not shown: it needs finite points, and one normal for "
                                                    "each")));
}

TEST_F(WorkEnvelope, CurveAndSurfaceAreShownAndHiddenByThemselves)
{
    scene.updateWorkEnvelopeVisual(arm->getId(), true, true);
    EXPECT_NO_THROW(drain()) << "without a pair";
    add();

    scene.updateWorkEnvelopeVisual(arm->getId(), false, true);
    drain();
    EXPECT_FALSE(curve().isVisible());
    EXPECT_TRUE(surface().isVisible());

    scene.updateWorkEnvelopeVisual(arm->getId(), true, false);
    drain();
    EXPECT_TRUE(curve().isVisible());
    EXPECT_FALSE(surface().isVisible());
}

TEST_F(WorkEnvelope, SecondPairLeavesTheFirstInTheSceneUnreferenced)
{
    add();
    const Visual* firstCurve = &curve();
    const Visual* firstSurface = &surface();
    add();

    EXPECT_NE(&curve(), firstCurve);
    EXPECT_NE(&surface(), firstSurface);
    EXPECT_THAT(kindsOn<WorkEnvelope2DVisual>(*frame), SizeIs(2));
    EXPECT_THAT(kindsOn<WorkEnvelope3DVisual>(*visual), SizeIs(2));
}

TEST_F(WorkEnvelope, RemovalEndsThePair)
{
    add();

    scene.removeWorkEnvelopeVisual(arm->getId());
    scene.removeWorkEnvelopeVisual(arm->getId());
    drain();

    EXPECT_EQ(visual->getEnvelope2D(), nullptr);
    EXPECT_EQ(visual->getEnvelope3D(), nullptr);
    EXPECT_THAT(kindsOn<WorkEnvelope2DVisual>(*frame), IsEmpty());
    EXPECT_THAT(kindsOn<WorkEnvelope3DVisual>(*visual), IsEmpty());
}

TEST_F(WorkEnvelope, CurveThatDiesWithItsFrameIsForgotten)
{
    add();

    scene.removeVisual(frame->getId());
    drain();
    EXPECT_EQ(visual->getEnvelope2D(), nullptr);
    EXPECT_NE(visual->getEnvelope3D(), nullptr);

    scene.updateWorkEnvelopeVisual(arm->getId(), true, true);
    scene.removeWorkEnvelopeVisual(arm->getId());
    EXPECT_NO_THROW(drain());
}

TEST_F(WorkEnvelope, ArmTakesItsCurveAlong)
{
    add();

    scene.removeVisual(arm->getId());
    drain();

    EXPECT_THAT(kindsOn<WorkEnvelope2DVisual>(*frame), IsEmpty());
    scene.removeVisual(frame->getId());
    EXPECT_NO_THROW(drain());
}

TEST_F(WorkEnvelope, FrameOnTheArmItselfGoesWithIt)
{
    frame->attachTo(visual);
    add();

    scene.removeVisual(arm->getId());

    EXPECT_NO_THROW(drain());
    EXPECT_FALSE(Scene::HasVisual(frame->getId()));
}

} // namespace
} // namespace vrk::visual
