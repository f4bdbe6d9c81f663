#include "PreviewFixture.h"

#include "platform/kinematics/Reach.h"
#include "platform/layout/Mechanism.h"
#include "platform/sdf/SdfManager.h"
#include "preview/marks/PreviewVisualsHelper.h"
#include "scene/math/Shapes.h"
#include "station/ManipulatorVisual.h"
#include "view/Camera.h"

#include <TopExp_Explorer.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>

#include <numbers>

namespace vrk::visual {
namespace {

/// What is previewed and measured about a crate, as a view of common size and one of a screen with twice the pixels show it.
class AnnotationPicture : public test::WithPreviews<test::RenderTest>, public testing::WithParamInterface<unsigned> {
protected:
    AnnotationPicture()
    {
        setSize(400 * GetParam(), 300 * GetParam(), 4);
        Camera::Get()->setHFOV(0.47f);
        const auto body = test::addModelBody(shape, "annotated-crate", "#B0B4B8");
        SolidVisual::Build(world, body.get(), shape);
        crate = Scene::GetVisual(body->getId());
        crate->setPosition(-100, -100, -100);
    }
    ~AnnotationPicture() override
    {
        scene.removePreviewCurves();
        scene.removePreviewFaces();
        scene.removePreviewedPoints();
        scene.removePolylines();
        scene.removeDimensionVisual();
        scene.removeAllPositionVisuals();
        PreviewVisualsHelper::Get()->removeAllVisuals();
        drain();
        Camera::Get()->setHFOV(std::numbers::pi_v<float> / 3);
    }
    TopoDS_Face face(int number) const
    {
        TopExp_Explorer faces(shape, TopAbs_FACE);
        for (int i = 0; i < number; ++i)
            faces.Next();
        return TopoDS::Face(faces.Current());
    }
    std::string nameOf(const std::string& what) const { return what + "_" + std::to_string(GetParam()) + "x"; }
    const test::View view = test::lookingAtOrigin(1500);
    const TopoDS_Shape shape = test::meshedBox(200, 200, 200);
    Visual* crate;
};

TEST_P(AnnotationPicture, EdgesLieOverTheBodyAndOthersInFrontOfIt)
{
    // A wire behind the crate, an edge along its front, a strip on its lid and a polyline beside it.
    std::vector<TopoDS_Wire> wires{test::wireOfThree({-60, 140, 140}, {60, 140, 140}, {60, 140, 0}, {-60, 140, 0})};
    scene.previewCurves(&wires, {});
    scene.previewEdge(test::straightEdge({-100, -101, -60}, {100, -101, 60}), {});
    scene.addPreviewCurvesWithDirection(
        0, new geometry::PointList{{{-60, -60, 102}, {60, -60, 102}, {60, 60, 102}, {-60, 60, 102}}}, {0, 0, 1});
    scene.drawPolyline({{130, -130, -80}, {130, -20, -40}, {130, 40, 120}}, 0, true);
    scene.setArrowSizeLevel(12);

    EXPECT_TRUE(matchesBaseline(render(test::lookingAtOrigin(1150)), nameOf("preview_curves")));
}

TEST_P(AnnotationPicture, FacesPointsTargetsAndMeshes)
{
    scene.previewFaces({face(5), face(2)}, crate->getId());
    std::vector<gp_Pnt> points;
    for (int i = 0; i < 6; ++i)
        points.emplace_back(20 + 32 * i, -2, 150);
    scene.previewTargets({rob::Posef(rob::Posf(-60, 0, 150)), rob::Posef(rob::Posf(60, 0, 150))});
    scene.previewPoints(&points, crate->getId(), {1, 0.5f, 0});
    std::vector<std::pair<rob::Posf, rob::Posf>> segments{
        {{201, 40, 40}, {201, 160, 40}}, {{201, 160, 40}, {201, 100, 150}}, {{201, 100, 150}, {201, 40, 40}}};
    scene.previewTriangleMesh(&segments, crate->getId());

    EXPECT_TRUE(matchesBaseline(render(view), nameOf("preview_shapes")));
}

TEST_P(AnnotationPicture, FrameOfThreePicks)
{
    PreviewVisualsHelper& helper = *PreviewVisualsHelper::Get();
    helper.addSelectPoint1({-100, -100, 100});
    helper.addSelectPoint2({100, -100, 100});
    helper.addSelectPoint3({100, 100, 100});
    helper.addPreviewUserFrame(rob::Posef(rob::Posf(-100, -100, 100)));

    EXPECT_TRUE(matchesBaseline(render(view), nameOf("picks_of_a_plane")));
}

TEST_P(AnnotationPicture, FrameOfOriginAndAxes)
{
    PreviewVisualsHelper& helper = *PreviewVisualsHelper::Get();
    helper.addPrimaryFrom({-100, -100, 100});
    helper.addPrimaryTo({-100, -100, 180});
    helper.addAxisXFrom({-100, -100, 100});
    helper.addAxisXTo({100, -100, 100});
    helper.addAxisYFrom({-100, -100, 100});
    helper.addAxisYTo({-100, 100, 100});
    helper.setPrimaryLineSelected(true);
    helper.addPreviewObjectFrame(rob::Posef(rob::Posf(100, -100, -100)));

    EXPECT_TRUE(matchesBaseline(render(view), nameOf("picks_of_axes")));
}

TEST_P(AnnotationPicture, PreviewedFramesAndTheAxisOfAJoint)
{
    scene.createPreviewedFrameVisual(1, true);
    scene.createPreviewedFrameVisual(2, false);
    scene.setPreviewedFrameVisible(1, rob::Posed(rob::Posd(-100, -100, 100)));
    scene.setPreviewedFrameVisible(2, rob::Posed(rob::Posd(100, 100, 100)));
    scene.createPreviewedJointVisual();
    scene.setPreviewedJointVisible({160, -160, -150}, {160, -160, 60});

    EXPECT_TRUE(matchesBaseline(render(view), nameOf("previewed_frames_and_joint")));
}

TEST_P(AnnotationPicture, DimensionsOfTheCrate)
{
    scene.createDistanceVisual({-100, -130, -100}, {100, -130, -100});
    scene.createAngleVisual({100, -130, -100}, {180, -130, -100}, {100, -130, 100}, std::numbers::pi / 2);
    scene.createDiameterVisual(rob::TPCircle::FullTurn({70, 0, 102}, {0, 70, 102}, {-70, 0, 102}));

    EXPECT_TRUE(matchesBaseline(render(view), nameOf("dimensions")));
}

/// An arm of six axes, without bodies.
std::shared_ptr<layout::Manipulator> makeSixAxes()
{
    constexpr double degree = std::numbers::pi / 180;
    const auto newId = [] { return sdf::SdfManager::inst().generateId(); };
    auto arm = std::make_shared<layout::Manipulator>(newId(), "arm");
    auto last = std::make_shared<layout::Link>(newId(), "base");
    arm->addLink(last);
    const auto addJoint = [&](const rob::Posd& at, const rob::Dird& axis, double lower, double upper) {
        const auto next = std::make_shared<layout::Link>(newId(), "link");
        arm->addLink(next);
        layout::Joint joint;
        joint.type = layout::JointType::Revolute;
        joint.parentLink = last->getId();
        joint.childLink = next->getId();
        joint.origin = rob::Posed(at);
        joint.axis = axis;
        joint.lower = lower * degree;
        joint.upper = upper * degree;
        arm->addJoint(joint);
        last = next;
    };
    addJoint({0, 0, 400}, {0, 0, 1}, -120, 120);
    addJoint({180, 0, 0}, {0, 1, 0}, -65, 140);
    addJoint({0, 0, 600}, {0, 1, 0}, -180, 70);
    addJoint({200, 0, 120}, {1, 0, 0}, -300, 300);
    addJoint({440, 0, 0}, {0, 1, 0}, -120, 120);
    addJoint({0, 0, 0}, {1, 0, 0}, -360, 360);
    arm->placeWrist(last->getId(), rob::Posed(rob::Posd(90, 0, 0)));
    return arm;
}

TEST_P(AnnotationPicture, ReachOfAnArmOfSixAxes)
{
    const auto arm = makeSixAxes();
    ManipulatorVisual::Build(world, arm.get(), true);
    const kinematics::Reach reach = kinematics::computeReach(kinematics::ArmChain::ToWristCentre(*arm)).value();
    const kinematics::Reach::Curve& curve = reach.curves.front();
    scene.addWorkEnvelopeVisual(arm->getId(), arm->getId(), curve.points, curve.normals, static_cast<float>(reach.from),
                                static_cast<float>(reach.to));
    const test::View whole{{4600, -5600, 3300}, {0, 0, 350}};

    EXPECT_TRUE(matchesBaseline(render(whole), nameOf("work_envelope_2d")));

    scene.updateWorkEnvelopeVisual(arm->getId(), true, true);
    EXPECT_TRUE(matchesBaseline(render(whole), nameOf("work_envelope_3d")));
}

INSTANTIATE_TEST_SUITE_P(Sizes, AnnotationPicture, testing::Values(1u, 2u),
                         [](const auto& info) { return std::to_string(info.param) + "x"; });

} // namespace
} // namespace vrk::visual
