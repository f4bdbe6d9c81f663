#include "HandleFixture.h"

#include "handles/PathEndsHandle.h"
#include "handles/VectorHandle.h"
#include "platform/layout/Body.h"
#include "task/bands/BandShapes.h"
#include "visual/SolidVisual.h"

#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>
#include <gp_Trsf.hxx>

#include <numbers>

namespace vrk::visual {
namespace {

using HandleType = DragHandle::HandleType;

/// A box of a station, with a handle at its middle, as a view of common size and one of a screen with twice the pixels show
/// it.
class HandlePicture : public test::WithHandles<test::RenderTest>, public testing::WithParamInterface<unsigned> {
protected:
    HandlePicture() : handle(*DragHandle::Get())
    {
        setSize(400 * GetParam(), 300 * GetParam(), 4);
        Camera::Get()->setHFOV(0.47f);
        scene.setHandleScale(1.5f);
        const auto body = test::addModelBody(boxShape, "handle-box", "#B0B4B8");
        SolidVisual::Build(world, body.get(), boxShape);
        box = Scene::GetVisual(body->getId());
        box->setPosition(-100, -100, -100);
    }
    ~HandlePicture() override { Camera::Get()->setHFOV(std::numbers::pi_v<float> / 3); }

    void attachToBox(GuiVisual* gui) { attach(gui, box, rob::Posef(rob::Posf(100, 100, 100))); }
    std::string nameOf(const std::string& what) const { return what + "_" + std::to_string(GetParam()) + "x"; }
    const test::View view = test::lookingAtOrigin(2000);
    const TopoDS_Shape boxShape = test::meshedBox(200, 200, 200);
    const TopLoc_Location toMiddle = [] {
        gp_Trsf moved;
        moved.SetTranslation({-100, -100, -100});
        return TopLoc_Location(moved);
    }();

    DragHandle& handle;
    Visual* box;
};

TEST_P(HandlePicture, ArrowsAndRingsStandOverTheBoxThatTheyAreIn)
{
    attachToBox(&handle);
    scene.resetDragHandle();

    EXPECT_TRUE(matchesBaseline(render(view), nameOf("drag_handle")));
}

TEST_P(HandlePicture, ArrowUnderTheMouse)
{
    attachToBox(&handle);
    scene.resetDragHandle();
    drain();
    handle.showHover(HandleType::X);

    EXPECT_TRUE(matchesBaseline(render(view), nameOf("drag_handle_hover")));
}

TEST_P(HandlePicture, Roll)
{
    attachToBox(&handle);
    handle.setMode(HandleType::Roll);

    EXPECT_TRUE(matchesBaseline(render(view), nameOf("drag_handle_roll")));
}

TEST_P(HandlePicture, Pitch)
{
    attachToBox(&handle);
    handle.setMode(HandleType::Pitch);

    EXPECT_TRUE(matchesBaseline(render(view), nameOf("drag_handle_pitch")));
}

TEST_P(HandlePicture, Yaw)
{
    attachToBox(&handle);
    handle.setMode(HandleType::Yaw);

    EXPECT_TRUE(matchesBaseline(render(view), nameOf("drag_handle_yaw")));
}

TEST_P(HandlePicture, TiltAndTwistWithTheirFans)
{
    VectorHandle& vector = *VectorHandle::Get();
    attachToBox(&vector);
    vector.setTwist(-0.6);
    vector.setTilt(0.9);

    EXPECT_TRUE(matchesBaseline(render(view), nameOf("vector_handle")));

    vector.setTwist(0.0);
    vector.setTilt(0.0);
}

TEST_P(HandlePicture, TiltUnderTheMouse)
{
    VectorHandle& vector = *VectorHandle::Get();
    attachToBox(&vector);
    vector.getTilt()->setHighlighted();

    EXPECT_TRUE(matchesBaseline(render(view), nameOf("vector_handle_highlighted")));

    vector.getTilt()->clearHighlightOrSelect();
}

TEST_P(HandlePicture, EndsOfARunAlongTheEdgesOfTheBox)
{
    // Along the front of the lid and round its right side: halfway between the two faces of each edge.
    task::EdgeMfgShape run(960, "run");
    run.addEdge({test::straightEdge({0, 0, 200}, {200, 0, 200}), {{0, {0, -1, 1}}}, 0, 0});
    run.addEdge({test::straightEdge({200, 0, 200}, {200, 200, 200}), {{0, {1, 0, 1}}}, 0, 0});
    run.setStart({0, 40});
    run.setEnd({1, 150});
    PathEndsHandle& ends = *PathEndsHandle::Get();
    attach(&ends, box);
    ends.updatePosition(run);

    EXPECT_TRUE(matchesBaseline(render(test::lookingAtOrigin(1200)), nameOf("path_ends")));
}

TEST_P(HandlePicture, DirectionsOfUAndVOnTheLid)
{
    TopExp_Explorer faces(boxShape, TopAbs_FACE);
    for (int i = 1; i < 6; ++i)
        faces.Next();

    scene.showUVIndicatorVisual(TopoDS::Face(faces.Current().Moved(toMiddle)));

    EXPECT_TRUE(matchesBaseline(render({{20, -60, 190}, {8, 8, 100}}), nameOf("uv_indicator_on_a_face")));
    scene.deleteUVIndicatorVisual();
}

TEST_P(HandlePicture, HiddenHandleLeavesTheBoxAlone)
{
    const test::Picture without = render(view);
    attachToBox(&handle);
    handle.hide();

    EXPECT_EQ(test::largestDifference(render(view), without), 0);
}

TEST_P(HandlePicture, HandleIsAsLargeFromFarAway)
{
    attachToBox(&handle);
    scene.resetDragHandle();
    drain();
    handle.showHover(HandleType::Z);
    // The tip of z, 245 times the scale above the middle, lies at one place of the picture.
    const auto tip = [&](float distance) {
        const test::Picture picture = render(test::lookingAtOrigin(distance));
        return pixelAt(picture, {0, 0, 230 * distance * 0.00025f * 1.5f});
    };

    EXPECT_TRUE(test::isNear(tip(900), tip(9000)));
}

INSTANTIATE_TEST_SUITE_P(Sizes, HandlePicture, testing::Values(1u, 2u),
                         [](const auto& info) { return std::to_string(info.param) + "x"; });

} // namespace
} // namespace vrk::visual
