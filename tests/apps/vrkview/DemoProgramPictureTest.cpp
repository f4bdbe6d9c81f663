#include "canvas/DrawMode.h"
#include "canvas/ProgramParts.h"
#include "canvas/ProgramThings.h"
#include "canvas/Surroundings.h"
#include "canvas/Views.h"
#include "demo/DemoStation.h"
#include "files/StationScene.h"
#include "start/PrivateDisplay.h"
#include "start/StartUp.h"

#include "platform/layout/Layout.h"
#include "platform/task/Path.h"
#include "platform/task/Task.h"
#include "scene/Scene.h"
#include "selection/geometry/Box.h"
#include "support/Picture.h"
#include "view/Camera.h"
#include "view/OffscreenTarget.h"

#include <gmock/gmock.h>

#include <Ogre.h>

namespace vrkview::test {
namespace {

using vrk::test::Picture;
using vrk::visual::Camera;
using vrk::visual::OffscreenTarget;
using vrk::visual::Scene;

constexpr unsigned width = 480, height = 300, samples = 4;

struct Look {
    const char* baseline;
    void (*take)(unsigned path);
};

void drawOnly(bool targets, bool arrows, bool lines)
{
    draw(ProgramPart::Targets, targets);
    draw(ProgramPart::Arrows, arrows);
    draw(ProgramPart::Lines, lines);
}

/// The weld program of the demo station, from near by.
class DemoProgram : public testing::TestWithParam<Look> {
protected:
    static void SetUpTestSuite()
    {
        startLibrary();
        const Station demo = demoStation();
        showStation(demo);
        Scene::Get()->processMsgs();
        showAs(*findDrawMode("shaded-edges"), demo.hiddenFaces);
        Scene::Get()->processMsgs();
        suitSurroundings();
        Scene::Get()->processMsgs();
    }

    DemoProgram() : target(width, height, samples)
    {
        Camera::Get()->setRenderTarget(target.renderTarget());
        suitCameraToScene();
        lookAsLeft();
        Scene::Get()->processMsgs();
        Scene::Get()->setCameraPose(poseForBox(boxOfTargets(vrk::layout::Layout::inst().tasks.front()->getId())));
        Scene::Get()->processMsgs();
    }
    ~DemoProgram() override
    {
        drawOnly(true, true, true);
        draw(ProgramPart::ZAxesOnly, false);
        Scene::Get()->clearHighlightedVisual();
        Scene::Get()->setVisualsSelected({});
        Scene::Get()->processMsgs();
        Camera::Get()->setRenderTarget(Ogre::Root::getSingleton().getRenderTarget("ogrewindow"));
    }
    Picture render() const
    {
        Scene::Get()->processMsgs();
        Ogre::Root::getSingleton().renderOneFrame();
        return {width, height, target.read()};
    }

    OffscreenTarget target;
};

TEST_P(DemoProgram, HasItsLook)
{
    const Picture whole = render();

    GetParam().take(vrk::layout::Layout::inst().tasks.front()->getOwnPaths().front()->getId());
    const Picture picture = render();

    EXPECT_GT(vrk::test::largestDifference(picture, whole), 50);
    EXPECT_TRUE(vrk::test::matchesBaseline(picture, GetParam().baseline));
}

INSTANTIATE_TEST_SUITE_P(
    Table, DemoProgram,
    testing::Values(Look{"demo_program_targets", [](unsigned) { drawOnly(true, false, false); }},
                    Look{"demo_program_arrows", [](unsigned) { drawOnly(false, true, false); }},
                    Look{"demo_program_lines", [](unsigned) { drawOnly(false, false, true); }},
                    Look{"demo_program_z_axes", [](unsigned) { draw(ProgramPart::ZAxesOnly, true); }},
                    Look{"demo_program_highlighted", [](unsigned path) { Scene::Get()->setVisualHighlighted(path); }},
                    Look{"demo_program_selected", [](unsigned path) { Scene::Get()->setVisualsSelected({path}); }}),
    [](const auto& info) { return std::string(info.param.baseline); });

} // namespace
} // namespace vrkview::test

int main(int argc, char** argv)
{
    testing::InitGoogleMock(&argc, argv);
    const vrkview::PrivateDisplay display;
    return RUN_ALL_TESTS();
}
