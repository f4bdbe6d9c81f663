#include "station/support/TestStation.h"
#include "visual/Visual.h"

#include <cmath>

namespace vrk::visual {
namespace {

using testing::StrEq;
using testing::ThrowsMessage;

class StationPoses : public test::SceneFixture {
protected:
    StationPoses()
    {
        layout::Layout::inst().addPart(part);
        scene.addPart(part.get());
        drain();
        visual = Scene::GetVisual(part->getId());
        body = Scene::GetVisual(part->getBodies()[0]->getId());
    }

    std::shared_ptr<layout::Part> part = test::makePart("part", {100, 0, 0});
    Visual* visual = nullptr;
    Visual* body = nullptr;
};

TEST_F(StationPoses, PoseIsSetByAPost)
{
    scene.setVisualPose(part->getId(), rob::Posef(rob::Posf(1, 2, 3)));
    EXPECT_EQ(visual->getPosition(), rob::Posf(100, 0, 0));

    drain();

    EXPECT_EQ(visual->getPosition(), rob::Posf(1, 2, 3));
}

TEST_F(StationPoses, UnknownIdsArePassedOver)
{
    scene.setVisualPose(4711, {});
    scene.setVisualWorldPose(4711u, {});

    EXPECT_NO_THROW(drain());
}

TEST_F(StationPoses, VisualThatIsRemovedFirstIsPassedOver)
{
    scene.removeVisual(part->getId());
    scene.setVisualWorldPose(visual, rob::Posef(rob::Posf(1, 2, 3)));

    EXPECT_NO_THROW(drain());
    EXPECT_FALSE(Scene::HasVisual(part->getId()));
}

TEST_F(StationPoses, WorldPoseUndoesTheParents)
{
    scene.setVisualWorldPose(part->getBodies()[0]->getId(), rob::Posef(rob::Posf(1, 2, 3)));
    drain();
    EXPECT_EQ(body->getPosition(), rob::Posf(-99, 2, 3));

    scene.setVisualWorldPose(body, rob::Posef(rob::Posf(4, 5, 6)));
    drain();
    EXPECT_EQ(body->getWorldPosition(), rob::Posf(4, 5, 6));
}

TEST_F(StationPoses, OrientationsGoByTheirPlaces)
{
    scene.setVisualsOrientations({part->getId(), part->getBodies()[0]->getId()},
                                 {rob::Orientd(0, 1, 0, 0), rob::Orientd(0, 0, 1, 0)});

    drain();

    EXPECT_EQ(visual->getPose().orientation, rob::Orientf(0, 1, 0, 0));
    EXPECT_EQ(body->getPose().orientation, rob::Orientf(0, 0, 1, 0));
}

TEST_F(StationPoses, UnknownIdFailsInTheMiddleOfTheOrientations)
{
    scene.setVisualsOrientations({part->getId(), 4711, part->getBodies()[0]->getId()},
                                 {rob::Orientd(0, 1, 0, 0), {}, rob::Orientd(0, 0, 1, 0)});

    EXPECT_THAT([this] { drain(); }, ThrowsMessage<std::out_of_range>(StrEq("invalid unordered_map<K, T> key")));

    EXPECT_EQ(visual->getPose().orientation, rob::Orientf(0, 1, 0, 0));
    EXPECT_EQ(body->getPose().orientation, rob::Orientf());
}

TEST_F(StationPoses, MovedOriginLeavesTheBodiesWhereTheyAreAndTakesTheFrameAlong)
{
    const rob::Posef before = body->getWorldPose();
    const rob::Posef newOrigin(rob::Posf(150, 20, 0), rob::Rotationf(std::sqrt(0.5f), 0, 0, std::sqrt(0.5f)));
    const rob::Posef delta = newOrigin.inverse() * visual->getWorldPose();
    Visual* frame = nullptr;
    for (Visual* child : visual->getChildren())
        if (child->getType() == VisualType::Frame)
            frame = child;

    scene.setLocalOrigin(part->getId(), newOrigin, delta);
    drain();

    EXPECT_NEAR((body->getWorldPosition() - before.position).length(), 0, 1e-4);
    EXPECT_NEAR((visual->getWorldPosition() - newOrigin.position).length(), 0, 1e-4);
    ASSERT_NE(frame, nullptr);
    EXPECT_EQ(frame->getPose(), rob::Posef()) << "the local frame stays with the origin";
}

TEST_F(StationPoses, MovedOriginTakesGizmosAlong)
{
    auto* gizmo = new Visual(visual);
    gizmo->setType(VisualType::Gui);
    auto* other = new Visual(visual);

    scene.setLocalOrigin(part->getId(), {}, rob::Posef(rob::Posf(100, 0, 0)));
    drain();

    EXPECT_EQ(gizmo->getPosition(), rob::Posf(0, 0, 0));
    EXPECT_EQ(other->getPosition(), rob::Posf(100, 0, 0));
}

TEST_F(StationPoses, MovedOriginTurnsWhatIsShownAndMovesItByTheSameTurn)
{
    const rob::Rotationf quarter(std::sqrt(0.5f), 0, 0, std::sqrt(0.5f));
    body->setPose({rob::Posf(10, 0, 0), quarter});

    scene.setLocalOrigin(part->getId(), {}, rob::Posef(rob::Posf(1, 2, 3), quarter));
    drain();

    EXPECT_NEAR((body->getPosition() - rob::Posf(1, 12, 3)).length(), 0, 1e-4);
    EXPECT_TRUE(body->getPose().rotation().isApprox(quarter * quarter));
}

TEST_F(StationPoses, JointsMoveTheVisualsOfTheLinks)
{
    const auto arm = test::makeArm();
    layout::Layout::inst().addManipulator(arm);
    scene.addMechanism(arm.get(), true);
    const boost::signals2::scoped_connection follow =
        layout::Mechanism::OnLinksMoved([this](const std::vector<layout::LinkPose>& poses) {
            for (const layout::LinkPose& link : poses)
                scene.setVisualPose(link.id, rob::Posef(link.pose));
        });
    const double angle = 1.0;

    arm->setJointValues(std::span(&angle, 1));
    drain();

    const Visual* upper = Scene::GetVisual(arm->getLinks()[1]->getId());
    EXPECT_EQ(upper->getPosition(), rob::Posf(0, 0, 100));
    EXPECT_NEAR(upper->getPose().orientation.z, std::sin(0.5), 1e-6);
}

} // namespace
} // namespace vrk::visual
