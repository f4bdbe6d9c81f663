#include "scene/core/SceneCore.h"
#include "selection/VisualSelection.h"
#include "support/SceneFixture.h"
#include "visual/Edges.h"
#include "visual/FrameVisual.h"

#include <functional>

namespace vrk::visual {
namespace {

class SceneFrames : public test::SceneFixture {
protected:
    SceneSettings& settings = SceneCore::Get()->settings;

    FrameVisual* addFrame(unsigned id, VisualType type)
    {
        auto* frame = new FrameVisual(world, id, "", type);
        SceneCore::Get()->visuals.enter(frame);
        return frame;
    }
    Visual* addOf(unsigned id, VisualType type, Visual* parent = nullptr)
    {
        auto* visual = new Visual(id, parent ? parent : world);
        visual->setType(type);
        SceneCore::Get()->visuals.enter(visual);
        return visual;
    }
};

float sizeOf(const FrameVisual& frame)
{
    return frame.getLines().front()->getPoints().at(1).x;
}

TEST_F(SceneFrames, WorldHasAFrameFromTheStart)
{
    ASSERT_NE(worldFrame, nullptr);
    EXPECT_EQ(worldFrame->getParent(), world);
    EXPECT_EQ(worldFrame->getType(), VisualType::Frame);
    EXPECT_EQ(Scene::GetVisual(worldFrame->getId()), worldFrame);
    EXPECT_EQ(sizeOf(*worldFrame), 100);
}

TEST_F(SceneFrames, SizeReachesAllFramesOfTheType)
{
    FrameVisual* frame = addFrame(501, VisualType::Frame);
    FrameVisual* tcp = addFrame(502, VisualType::Tcp);

    scene.setFrameSize(35, VisualType::Frame);
    EXPECT_EQ(sizeOf(*frame), 100) << "it is posted";
    drain();

    EXPECT_EQ(sizeOf(*frame), 35);
    EXPECT_EQ(sizeOf(*worldFrame), 35);
    EXPECT_EQ(sizeOf(*tcp), 70);
    EXPECT_EQ(settings.worldFrameSize, 35);
}

TEST_F(SceneFrames, SizeOfToolFramesIsKeptForPlainOnes)
{
    const FrameVisual* tcp = addFrame(502, VisualType::Tcp);

    scene.setFrameSize(35, VisualType::Tcp);
    drain();

    EXPECT_EQ(sizeOf(*tcp), 35);
    EXPECT_EQ(settings.worldFrameSize, 35);
    EXPECT_EQ(settings.tcpFrameSize, 70);
    EXPECT_EQ(sizeOf(*addFrame(503, VisualType::Tcp)), 70);
    EXPECT_EQ(sizeOf(*addFrame(504, VisualType::Frame)), 35);
    EXPECT_EQ(sizeOf(*worldFrame), 100) << "it is of another type";
}

TEST_F(SceneFrames, SizeOfATypeThatIsNotThereChangesNothing)
{
    for (const VisualType type : {VisualType::Tcp, VisualType::Robtarget, VisualType::JointTarget, VisualType::WObj,
                                  VisualType::UserFrame, VisualType::None})
        scene.setFrameSize(35, type);
    drain();

    EXPECT_EQ(settings.worldFrameSize, 100);
    EXPECT_EQ(settings.tcpFrameSize, 70);
    EXPECT_EQ(settings.targetFrameSize, 50);
    EXPECT_EQ(settings.jointTargetFrameSize, 60);
    EXPECT_EQ(settings.wobjFrameSize, 80);
}

TEST_F(SceneFrames, HiddenFrameTakesItsSizeAtTheNextUpdateOnceShown)
{
    FrameVisual* frame = addFrame(501, VisualType::Frame);
    frame->setVisible(false, false);

    scene.setFrameSize(35, VisualType::Frame);
    drain();
    EXPECT_EQ(test::uploaded(*frame->getLines().front()).at(1).x, 100);

    frame->setVisible(true, false);
    frame->update();
    EXPECT_EQ(test::uploaded(*frame->getLines().front()).at(1).x, 35);
}

struct VisibleCase {
    const char* name;
    void (Scene::*set)(bool);
    VisualType type;
    bool recursive;
};
class SceneFramesVisible : public SceneFrames, public testing::WithParamInterface<VisibleCase> {};

TEST_P(SceneFramesVisible, ReachesItsTypeAlone)
{
    std::vector<Visual*> visuals;
    unsigned id = 600;
    for (const VisualType type :
         {VisualType::Frame, VisualType::Tcp, VisualType::Robtarget, VisualType::JointTarget, VisualType::WObj})
        visuals.push_back(addOf(++id, type));
    Visual* child = nullptr;
    for (Visual* visual : visuals)
        if (visual->getType() == GetParam().type)
            child = addOf(++id, VisualType::ObjectFrame, visual);

    std::invoke(GetParam().set, scene, false);
    drain();

    for (const Visual* visual : visuals)
        EXPECT_EQ(visual->isVisible(), visual->getType() != GetParam().type);
    EXPECT_EQ(child->isVisible(), !GetParam().recursive);

    std::invoke(GetParam().set, scene, true);
    drain();
    for (const Visual* visual : visuals)
        EXPECT_TRUE(visual->isVisible());
    EXPECT_TRUE(child->isVisible());
}

/// Hiding a kind is a matter of the picture alone, unlike hiding a visual by its id.
TEST_P(SceneFramesVisible, LeavesPickingAsItIs)
{
    auto* frame = new FrameVisual(world, 601, "", VisualType::Frame);
    frame->setType(GetParam().type);
    SceneCore::Get()->visuals.enter(frame);
    selection::VisualSelection& service = *selection::VisualSelection::Get();
    service.addLineVisual(frame);

    std::invoke(GetParam().set, scene, false);
    drain();

    EXPECT_FALSE(frame->isVisible());
    EXPECT_TRUE(service.isEnabled(frame));
}

// Joint targets have a type of their own and stay as they are.
INSTANTIATE_TEST_SUITE_P(
    Table, SceneFramesVisible,
    testing::Values(VisibleCase{"Frames", &Scene::setFrameVisualVisible, VisualType::Frame, false},
                    VisibleCase{"Tools", &Scene::setTcpVisualVisible, VisualType::Tcp, false},
                    VisibleCase{"Targets", &Scene::setTargetVisualVisible, VisualType::Robtarget, false},
                    VisibleCase{"WorkObjects", &Scene::setWObjVisualVisible, VisualType::WObj, true}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(SceneFrames, TaskFrameIsRegisteredButCannotBePicked)
{
    scene.addTaskFrame(700, {{1.5, 2, 3}, rob::Rotationd(0.5, 0.5, 0.5, 0.5)});
    EXPECT_FALSE(Scene::HasVisual(700)) << "it is posted";
    drain();

    Visual* frame = Scene::GetVisual(700);
    EXPECT_EQ(frame->getParent(), world);
    EXPECT_EQ(frame->getType(), VisualType::Frame);
    EXPECT_THAT(frame->getName(), testing::StartsWith("task frame for controller"));
    EXPECT_EQ(frame->getPose(), rob::Posef({1.5f, 2, 3}, rob::Rotationf(0.5f, 0.5f, 0.5f, 0.5f)));
    EXPECT_FALSE(selection::VisualSelection::Get()->hasVisual(frame));
}

} // namespace
} // namespace vrk::visual
