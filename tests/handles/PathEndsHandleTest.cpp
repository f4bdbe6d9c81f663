#include "handles/PathEndsHandle.h"

#include "HandleFixture.h"

#include "handles/FixedSizeHandle.h"
#include "handles/HandleMeshVisual.h"
#include "selection/SelectableObject.h"
#include "task/bands/BandShapes.h"
#include "visual/DynamicLines.h"
#include "visual/LineVisual.h"
#include "visual/RenderGroups.h"

namespace vrk::visual {
namespace {

using task::EdgeMfgShape;

constexpr float stem = 37.5f;

class PathEndsHandleTest : public test::WithHandles<test::SceneFixture> {
protected:
    PathEndsHandleTest() : start(*handle.getStartHandle()), end(*handle.getEndHandle())
    {
        drain();
        attach(&handle, world);
        handle.updatePosition(*shape);
    }
    ~PathEndsHandleTest() override
    {
        handle.updatePosition(*shape);
        handle.disableSelection();
        drain();
    }
    static bool isPickable(const PathEndHandle& which)
    {
        return selection::VisualSelection::Get()->isEnabled(which.getKnob());
    }
    static rob::Posef poseOf(const EdgeMfgShape& run, EdgeMfgShape::PathPoint point)
    {
        return rob::Posef(run.getMfgVector(point).getPose(run.getEdge(point.edge)));
    }
    static bool isAt(const PathEndHandle& which,
                     const rob::Posef& pose) // OGRE scales orientations to their unit length
    {
        return which.getPosition() == pose.position && which.getPose().rotation().isApprox(pose.rotation());
    }
    void close() { shape->closed = true; }

    PathEndsHandle& handle = *PathEndsHandle::Get();
    PathEndHandle& start;
    PathEndHandle& end;
    const std::unique_ptr<EdgeMfgShape> shape = test::seamShape();
};

TEST_F(PathEndsHandleTest, IsOneGuiOfTwoEnds)
{
    EXPECT_EQ(handle.getType(), VisualType::Gui);
    EXPECT_TRUE(handle.getName().starts_with("PathEnd"));
    EXPECT_EQ(start.getParent(), &handle);
    EXPECT_EQ(end.getParent(), &handle);
    PathEndsHandle::Init();
    EXPECT_EQ(PathEndsHandle::Get(), &handle);
}

struct EndCase {
    const char* mesh;
    Ogre::Vector4 color;
};

TEST_F(PathEndsHandleTest, EndsAreStemsWithKnobsInTheirColours)
{
    const std::pair<PathEndHandle*, EndCase> ends[] = {{&start, {"PathStartHandle", {1, 0, 0, 1}}},
                                                       {&end, {"PathEndHandle", {0, 1, 0, 1}}}};
    for (const auto& [which, expected] : ends) {
        const HandleMeshVisual& knob = *which->getKnob();
        EXPECT_EQ(knob.getMeshName(), expected.mesh);
        EXPECT_TRUE(knob.getName().starts_with(expected.mesh));
        EXPECT_EQ(knob.getPosition(), rob::Posf(0, 0, stem));
        EXPECT_EQ(knob.getEntity()->getSubEntity(0)->getMaterialName(), "Axis");
        EXPECT_EQ(test::colorOf(knob), expected.color);
        const auto& lines = which->getBoundary()->getLines();
        ASSERT_EQ(lines.size(), 1u);
        EXPECT_EQ(lines.front()->getMaterial()->getName(), "PathBoundary");
        EXPECT_THAT(lines.front()->getPoints(), testing::ElementsAre(rob::Posf(), rob::Posf(0, 0, stem)));
    }
}

TEST_F(PathEndsHandleTest, KnobsAreDrawnAmongTheBodiesThatTheyStandOn)
{
    for (const PathEndHandle* which : {&start, &end})
        EXPECT_EQ(which->getKnob()->getEntity()->getRenderQueueGroup(), renderGroup::normal);
}

TEST_F(PathEndsHandleTest, KnobsAreRegisteredWithPriorityAndCannotBePickedAtFirst)
{
    const selection::VisualSelection& picking = *selection::VisualSelection::Get();
    for (const PathEndHandle* which : {&start, &end}) {
        EXPECT_TRUE(picking.hasVisual(which->getKnob()));
        EXPECT_FALSE(picking.isDetectable(which->getKnob()));
        EXPECT_TRUE(picking.getObject(which->getKnob())->priority);
        EXPECT_FALSE(isPickable(*which));
    }
}

TEST_F(PathEndsHandleTest, SelectionIsSwitchedByTasks)
{
    handle.enableSelection();
    EXPECT_FALSE(isPickable(start));
    drain();
    EXPECT_TRUE(isPickable(start));
    EXPECT_TRUE(isPickable(end));

    handle.disableSelection();
    EXPECT_TRUE(isPickable(start));
    drain();
    EXPECT_FALSE(isPickable(start));
    EXPECT_FALSE(isPickable(end));
}

TEST_F(PathEndsHandleTest, EndsStandWhereTheRunBeginsAndEnds)
{
    EXPECT_TRUE(isAt(start, poseOf(*shape, shape->getStart())));
    EXPECT_TRUE(isAt(end, poseOf(*shape, shape->getEnd())));
    shape->setStart({0, 30});

    handle.updatePosition(*shape);

    EXPECT_EQ(start.getPosition(), rob::Posf(30, 0, 0));
    EXPECT_TRUE(isAt(start, poseOf(*shape, {0, 30})));
}

TEST_F(PathEndsHandleTest, WorldPositionsAreThoseOfTheKnobs)
{
    Visual* parent = addRegistered(world, {1000, 0, 0});
    attach(&handle, parent);

    const rob::Posf expected = rob::Posf(1000, 0, 0) + rob::Vec3f(start.getPose() * rob::Posf(0, 0, stem));
    EXPECT_LT((handle.startWorldPos() - expected).length(), 1e-3f);
    EXPECT_EQ(handle.startWorldPos(), start.getKnob()->getWorldPosition());
    EXPECT_EQ(handle.endWorldPos(), end.getKnob()->getWorldPosition());
    EXPECT_GT((handle.endWorldPos() - handle.startWorldPos()).length(), 100.0f);
}

TEST_F(PathEndsHandleTest, EndOfAClosedRunIsHiddenAndNotPicked)
{
    handle.enableSelection();
    drain();
    const rob::Posef before = end.getPose();
    shape->setEnd({0, 50});
    close();

    handle.updatePosition(*shape);
    drain();

    EXPECT_FALSE(end.isVisible());
    EXPECT_FALSE(end.getKnob()->isVisible());
    EXPECT_FALSE(end.getBoundary()->isVisible());
    EXPECT_TRUE(start.isVisible());
    EXPECT_FALSE(isPickable(end));
    EXPECT_TRUE(isPickable(start));
    EXPECT_EQ(end.getPose(), before);
    handle.enableSelection();
    drain();
    EXPECT_FALSE(isPickable(end));
}

TEST_F(PathEndsHandleTest, EndOfARunThatWasOpenedIsShownAndPickedAfterTheNextEnabling)
{
    close();
    handle.updatePosition(*shape);
    shape->closed = false;

    handle.updatePosition(*shape);
    drain();

    EXPECT_TRUE(end.isVisible());
    EXPECT_TRUE(end.getKnob()->isVisible());
    EXPECT_FALSE(isPickable(end));
    handle.enableSelection();
    drain();
    EXPECT_TRUE(isPickable(end));
}

TEST_F(PathEndsHandleTest, RunWithoutEdgesChangesNothing)
{
    const rob::Posef before[] = {start.getPose(), end.getPose()};
    EdgeMfgShape empty(950, "empty");
    empty.closed = true;

    handle.updatePosition(empty);

    EXPECT_EQ(start.getPose(), before[0]);
    EXPECT_EQ(end.getPose(), before[1]);
    EXPECT_TRUE(end.isVisible());
}

TEST_F(PathEndsHandleTest, KeepsItsSizeInTheWorld)
{
    Camera::Get()->setWorldPosition({0, 0, 9000});

    EXPECT_EQ(handle.getSceneNode()->getScale(), Ogre::Vector3::UNIT_SCALE);
    EXPECT_EQ(dynamic_cast<FixedSizeHandle*>(static_cast<GuiVisual*>(&handle)), nullptr);
}

TEST_F(PathEndsHandleTest, KnobsArePickedAheadOfWhatTheyStandOn)
{
    handle.enableSelection();
    drain();
    selection::VisualSelection& picking = *selection::VisualSelection::Get();
    picking.update();
    const rob::Posf knob = handle.startWorldPos();

    const selection::Result hit = picking.select(Ray({knob.x, knob.y, 500}, {0, 0, -1}));

    EXPECT_EQ(hit.visual, start.getKnob());
}

/// Ends of the test's own, which die within it.
TEST_F(PathEndsHandleTest, EndsThatDieTakeStemAndKnobAlong)
{
    const std::size_t registered = selection::VisualSelection::Get()->registeredVisuals().size();
    const auto& all = sceneManager->getMovableObjects(Ogre::EntityFactory::FACTORY_TYPE_NAME);
    const std::size_t entities = all.size();
    {
        PathEndsHandle other;
        drain();
        EXPECT_EQ(selection::VisualSelection::Get()->registeredVisuals().size(), registered + 2);
        EXPECT_EQ(all.size(), entities + 2);
    }

    EXPECT_EQ(selection::VisualSelection::Get()->registeredVisuals().size(), registered);
    EXPECT_EQ(all.size(), entities);
    EXPECT_EQ(PathEndsHandle::Get(), &handle);
}

TEST_F(PathEndsHandleTest, TasksOfEndsThatAreGoneAreNotRun)
{
    const std::size_t registered = selection::VisualSelection::Get()->registeredVisuals().size();
    {
        PathEndsHandle other;
        other.enableSelection();
    }

    drain();

    EXPECT_EQ(selection::VisualSelection::Get()->registeredVisuals().size(), registered);
}

} // namespace
} // namespace vrk::visual
