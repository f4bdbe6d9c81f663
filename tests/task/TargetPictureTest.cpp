#include "TargetFixture.h"

#include "platform/layout/Body.h"
#include "scene/ViewLook.h"
#include "visual/SolidVisual.h"

#include <cmath>

namespace vrk::visual {
namespace {

using test::Picture;

/// Targets on a plate, as a program has them that runs over it to and fro.
class TargetPicture : public test::WithTargets<test::RenderTest> {
protected:
    static constexpr int rows = 6;
    static constexpr int columns = 10;

    TargetPicture()
    {
        setSize(800, 500);
        settings.targetFrameSize = 30;
        settings.jointTargetFrameSize = 30;
    }

    /// Turned about z along the way, and all but the joint targets with z into the plate, as tools go.
    void addTargets()
    {
        const TopoDS_Shape shape = test::meshedBox(520, 300, 20);
        const auto body = test::addModelBody(shape, "targets-plate", "#D8DCE0");
        SolidVisual::Build(world, body.get(), shape);
        Visual* plate = Scene::GetVisual(body->getId());
        plate->setPosition(-260, -150, -20);
        for (int row = 0; row < rows; ++row)
            for (int column = 0; column < columns; ++column)
                placeTarget(row, column);
    }

    std::vector<InstanceFrameVisual*> targets; // row by row

private:
    void placeTarget(int row, int column)
    {
        const unsigned id = 900 + targets.size();
        const bool isJoint = row == rows - 1;
        InstanceFrameVisual* target = isJoint ? static_cast<InstanceFrameVisual*>(entered(addJointTarget(id)))
                                              : static_cast<InstanceFrameVisual*>(entered(addTarget(id)));
        const float x = static_cast<float>(column) * 50 - 225;
        const float y = static_cast<float>(row) * 50 - 125;
        const auto turn = static_cast<float>(column) * 0.2f;
        const rob::Rotationf about = rob::Rotationf(std::cos(turn / 2), 0, 0, std::sin(turn / 2));
        target->setPose({{x, y, isJoint ? 2.0f : 32.0f}, isJoint ? about : about * rob::Rotationf(0, 1, 0, 0)});
        targets.push_back(target);
    }
};

const test::View fromAbove{{130, -430, 390}, {0, 0, 0}, {0, 0, 1}};

TEST_F(TargetPicture, TargetsInTheirLooks)
{
    addTargets();
    for (int column = 0; column < columns; ++column)
        targets[static_cast<std::size_t>(columns + column)]->setSelected();
    for (const std::size_t one : {33u, 36u, 54u})
        targets[one]->setHighlighted();
    targets[57]->setSelected();
    targets[45]->setVisible(false, false);

    const Picture picture = render(fromAbove);

    EXPECT_TRUE(matchesBaseline(picture, "targets"));
}

TEST_F(TargetPicture, TargetsByTheirZAxisAlone)
{
    addTargets();
    for (int column = 0; column < columns; ++column)
        targets[static_cast<std::size_t>(columns + column)]->setSelected();
    targets[33]->setHighlighted();
    scene.setDrawTargetZAxisOnly(true);

    const Picture picture = render(fromAbove);

    EXPECT_TRUE(matchesBaseline(picture, "targets_z_only"));
}

TEST_F(TargetPicture, TargetOfSizeZeroDrawsNothing)
{
    const Picture empty = render(test::lookingAtOrigin(300));
    RobtargetVisual* target = addTarget();
    EXPECT_GT(largestDifference(render(test::lookingAtOrigin(300)), empty), 50);

    target->setFrameSize(0);
    target->setSelected();
    target->setFrameSize(0);

    EXPECT_EQ(largestDifference(render(test::lookingAtOrigin(300)), empty), 0);
}

TEST_F(TargetPicture, TargetsDrawAfterTheBatchOfAnotherKindIsFreed)
{
    constexpr unsigned batch = 5000;
    auto* group = new Visual(world);
    for (unsigned i = 0; i < batch; ++i)
        new RobtargetVisual(group, 10000 + i);
    JointTargetVisual* home = addJointTarget();
    InstanceFrameVisual* last = nullptr;
    for (unsigned i = batch; i < 2 * batch + 200; ++i)
        last = new RobtargetVisual(group, 10000 + i);
    last->setFrameSize(100);

    scene.deleteVisual(home);
    scene.cleanupInstanceBatches();
    drain();

    const test::Pixel pixel = pixelAt(render(test::lookingAtOrigin(400)), {60, 0, 0});
    EXPECT_GT(pixel.r, pixel.b + 60) << "the red of an axis along x";
}

TEST_F(TargetPicture, TargetFollowsItsParentAndItsLookFollowsTheTarget)
{
    auto* parent = new Visual(world);
    auto* target = new RobtargetVisual(parent, 801);
    target->setFrameSize(100);
    parent->setPosition(0, 0, 40);
    const auto isDrawn = [&](const rob::Posf& at) {
        const Picture picture = render(test::lookingAtOrigin(400));
        const test::Pixel pixel = pixelAt(picture, at);
        return pixel.r > pixel.b + 60; // the red of an axis along x
    };

    EXPECT_TRUE(isDrawn({60, 0, 40}));
    EXPECT_FALSE(isDrawn({60, 0, 0}));
    target->setSelected();
    target->setFrameSize(100);
    parent->setPosition(0, 0, -40);
    EXPECT_TRUE(isDrawn({60, 0, -40}));
    EXPECT_FALSE(isDrawn({60, 0, 40}));
}

/// OGRE takes the instances of a batch for one thing, which is in view or not.
TEST_F(TargetPicture, TargetsAreSeenFarFromTheOriginWhichIsOutOfView)
{
    const Picture without = render({{5000, -200, 0}, {5000, 0, 0}, {0, 0, 1}});
    RobtargetVisual* target = addTarget();
    target->setPosition(5000, 0, 0);
    const Picture with = render({{5000, -200, 0}, {5000, 0, 0}, {0, 0, 1}});
    EXPECT_GT(test::largestDifference(without, with), 80);

    target->setPosition(5000, 0, 10000);
    const Picture moved = render({{5000, -200, 10000}, {5000, 0, 10000}, {0, 0, 1}});
    EXPECT_GT(test::largestDifference(without, moved), 80);
}

TEST_F(TargetPicture, TargetsAreSeenThereInThePictureAfterAShadowWasTaken)
{
    const test::View far{{5000, -200, 0}, {5000, 0, 0}, {0, 0, 1}};
    addTargets();
    const Picture without = render(far);
    addTarget()->setPosition(5000, 0, 0);
    drain();
    TakeGroundShadow();
    const Picture with = render(far);
    RemoveGroundShadow();
    EXPECT_GT(test::largestDifference(without, with), 80);
}

} // namespace
} // namespace vrk::visual
