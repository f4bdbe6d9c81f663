// What an application gets that uses the library wrongly: told at the call, or in the next batch with a line in the log.

#include "platform/layout/Body.h"
#include "platform/layout/Part.h"
#include "scene/core/RenderTaskQueue.h"
#include "scene/core/SceneCore.h"
#include "support/SceneFixture.h"
#include "support/ThrowsExactly.h"
#include "visual/Visual.h"

#include <TopoDS_Edge.hxx>
#include <TopoDS_Shape.hxx>
#include <TopoDS_Wire.hxx>
#include <gmock/gmock.h>

#include <algorithm>
#include <iostream>
#include <limits>
#include <thread>

namespace vrk::visual {
namespace {

using rob::Posed;
using rob::Posef;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr const char* unknownKey = "invalid unordered_map<K, T> key";
constexpr unsigned nobody = 4711; // an id that nothing has

class MisuseTest : public test::SceneFixture {
protected:
    /// What the next batch throws, and then what it told the log.
    std::string logOfFailingBatch()
    {
        testing::internal::CaptureStderr();
        EXPECT_THAT([this] { drain(); }, test::throwsExactly<std::out_of_range>(unknownKey));
        return testing::internal::GetCapturedStderr();
    }
};

/// An operation with an id that is unknown when its task runs.
struct LateCase {
    const char* name;
    void (*post)(Scene& scene);
};

class UnknownIdMisuseTest : public MisuseTest, public testing::WithParamInterface<LateCase> {};

TEST_P(UnknownIdMisuseTest, FailsInTheBatchWithALineThatNamesOperationAndId)
{
    GetParam().post(scene);

    const std::string log = logOfFailingBatch();

    EXPECT_THAT(log, HasSubstr(std::string("Scene::") + GetParam().name + ": " + unknownKey + " (4711)"));
    EXPECT_EQ(std::ranges::count(log, '\n'), 1);
}

INSTANTIATE_TEST_SUITE_P(
    Table, UnknownIdMisuseTest,
    testing::Values(LateCase{"removeVisual", [](Scene& scene) { scene.removeVisual(nobody); }},
                    LateCase{"addAttachment", [](Scene& scene) { scene.addAttachment(nobody, 0, Posed()); }},
                    LateCase{"reparentVisual", [](Scene& scene) { scene.reparentVisual(nobody, 0); }},
                    LateCase{"moveVisualToParent", [](Scene& scene) { scene.moveVisualToParent(nobody, 0, Posef()); }},
                    LateCase{"showCopiedVisual", [](Scene& scene) { scene.showCopiedVisual(nobody, Posef()); }},
                    LateCase{
                        "setVisualsOrientations",
                        [](Scene& scene) { scene.setVisualsOrientations({nobody}, {rob::OrientTemplate<double>()}); }}),
    [](const auto& info) { return std::string(info.param.name); });

/// What is refused at the call.
struct EarlyCase {
    const char* name;
    void (*call)(Scene& scene);
    const char* text;
};

class RefusedMisuseTest : public MisuseTest, public testing::WithParamInterface<EarlyCase> {};

TEST_P(RefusedMisuseTest, IsToldAtTheCallAndNothingIsPosted)
{
    EXPECT_THAT([this] { GetParam().call(scene); }, test::throwsExactly<std::invalid_argument>(GetParam().text));
    EXPECT_NO_THROW(drain());
}

constexpr float nan = std::numeric_limits<float>::quiet_NaN();
const Posef nowhere(rob::Posf(nan, 0, 0));
const Posed farAway(rob::Posd(0, std::numeric_limits<double>::infinity(), 0));

INSTANTIATE_TEST_SUITE_P(
    Table, RefusedMisuseTest,
    testing::Values(
        EarlyCase{"addAssembly", [](Scene& s) { s.addAssembly(nullptr); },
                  "addAssembly needs an assembly, not a null pointer"},
        EarlyCase{"addPart", [](Scene& s) { s.addPart(nullptr); }, "addPart needs a part, not a null pointer"},
        EarlyCase{"addBody", [](Scene& s) { s.addBody(nullptr, nullptr); }, "addBody needs a part, not a null pointer"},
        EarlyCase{"addMechanism", [](Scene& s) { s.addMechanism(nullptr, true); },
                  "addMechanism needs a mechanism, not a null pointer"},
        EarlyCase{"addFrame", [](Scene& s) { s.addFrame(nullptr); }, "addFrame needs a frame, not a null pointer"},
        EarlyCase{"addWObj", [](Scene& s) { s.addWObj(nullptr); }, "addWObj needs a work object, not a null pointer"},
        EarlyCase{"addPointCloud", [](Scene& s) { s.addPointCloud(nullptr); },
                  "addPointCloud needs a point cloud, not a null pointer"},
        EarlyCase{"attachVisual", [](Scene& s) { s.attachVisual(0, nullptr); },
                  "attachVisual needs a visual, not a null pointer"},
        EarlyCase{"detachVisual", [](Scene& s) { s.detachVisual(nullptr); },
                  "detachVisual needs a visual, not a null pointer"},
        EarlyCase{"setVisualWorldPoseOfNull", [](Scene& s) { s.setVisualWorldPose(nullptr, Posef()); },
                  "setVisualWorldPose needs a visual, not a null pointer"},
        EarlyCase{"setVisualPose", [](Scene& s) { s.setVisualPose(nobody, nowhere); },
                  "setVisualPose needs a pose of finite numbers"},
        EarlyCase{
            "setVisualPoseTurned",
            [](Scene& s) { s.setVisualPose(nobody, Posef(rob::Posf(), rob::OrientTemplate<float>(1, nan, 0, 0))); },
            "setVisualPose needs a pose of finite numbers"},
        EarlyCase{"setVisualWorldPose", [](Scene& s) { s.setVisualWorldPose(nobody, nowhere); },
                  "setVisualWorldPose needs a pose of finite numbers"},
        EarlyCase{"addAttachment", [](Scene& s) { s.addAttachment(nobody, 0, farAway); },
                  "addAttachment needs a pose of finite numbers"},
        EarlyCase{"moveVisualToParent", [](Scene& s) { s.moveVisualToParent(nobody, 0, nowhere); },
                  "moveVisualToParent needs a pose of finite numbers"},
        EarlyCase{"showCopiedVisual", [](Scene& s) { s.showCopiedVisual(nobody, nowhere); },
                  "showCopiedVisual needs a pose of finite numbers"},
        EarlyCase{"setCameraPose", [](Scene& s) { s.setCameraPose(nowhere); },
                  "setCameraPose needs a pose of finite numbers"}),
    [](const auto& info) { return std::string(info.param.name); });

/// What is refused with the same words by many operations.
struct RefusedCase {
    const char* name;
    void (*post)(Scene&);
    const char* needed;
};

class RefusedTest : public MisuseTest, public testing::WithParamInterface<RefusedCase> {};

TEST_P(RefusedTest, IsRefusedAtTheCallAndPostsNothing)
{
    const std::string text = std::string(GetParam().name) + " needs " + GetParam().needed;
    EXPECT_THAT([this] { GetParam().post(scene); }, test::throwsExactly<std::invalid_argument>(text));
    EXPECT_NO_THROW(drain());
}

INSTANTIATE_TEST_SUITE_P(
    NullPointers, RefusedTest,
    testing::Values(
        RefusedCase{"buildVisual", [](Scene& s) { s.buildVisual(nullptr); }, "a component, not a null pointer"},
        RefusedCase{"addTempVisual", [](Scene& s) { s.addTempVisual(nullptr); }, "a visual, not a null pointer"},
        RefusedCase{"deleteVisual", [](Scene& s) { s.deleteVisual(nullptr); }, "a visual, not a null pointer"},
        RefusedCase{"setVisualHighlighted", [](Scene& s) { s.setVisualHighlighted(nullptr); },
                    "a visual, not a null pointer"},
        RefusedCase{"setVisualSelected", [](Scene& s) { s.setVisualSelected(nullptr); },
                    "a visual, not a null pointer"},
        RefusedCase{"resetColor", [](Scene& s) { s.resetColor(nullptr); }, "a visual, not a null pointer"},
        RefusedCase{"highlightFace", [](Scene& s) { s.highlightFace(nullptr, 1); }, "a solid, not a null pointer"},
        RefusedCase{"highlightEdge", [](Scene& s) { s.highlightEdge(nullptr, TopoDS_Edge()); },
                    "a visual, not a null pointer"},
        RefusedCase{"updateSolidVisual", [](Scene& s) { s.updateSolidVisual(nullptr, TopoDS_Shape()); },
                    "a body, not a null pointer"},
        RefusedCase{"debugViewCamMesh", [](Scene& s) { s.debugViewCamMesh(nullptr, 0); }, "a mesh, not a null pointer"},
        RefusedCase{"addPath", [](Scene& s) { s.addPath(nullptr); }, "a path, not a null pointer"},
        RefusedCase{"buildMoveInstruction", [](Scene& s) { s.buildMoveInstruction(nullptr); },
                    "a move, not a null pointer"},
        RefusedCase{"buildMoveInstructions",
                    [](Scene& s) {
                        s.buildMoveInstructions({{nullptr, nullptr, 0}});
                    },
                    "a move, not a null pointer"},
        RefusedCase{"attachGuiTo", [](Scene& s) { s.attachGuiTo(nullptr, nobody, Posef()); },
                    "a handle, not a null pointer"},
        RefusedCase{"detachGui", [](Scene& s) { s.detachGui(nullptr); }, "a handle, not a null pointer"},
        RefusedCase{"previewEdges", [](Scene& s) { s.previewEdges(nullptr, Posef()); }, "edges, not a null pointer"},
        RefusedCase{"previewCurves", [](Scene& s) { s.previewCurves(nullptr, Posef()); }, "wires, not a null pointer"},
        RefusedCase{"addPreviewCurves", [](Scene& s) { s.addPreviewCurves(nobody, nullptr); },
                    "a list, not a null pointer"},
        RefusedCase{"addPreviewCurvesWithDirection",
                    [](Scene& s) {
                        s.addPreviewCurvesWithDirection(nobody, nullptr, {0, 0, 1});
                    },
                    "a list, not a null pointer"},
        RefusedCase{"previewPoints", [](Scene& s) { s.previewPoints(nullptr, nobody, {}); },
                    "points, not a null pointer"},
        RefusedCase{"previewTriangleMesh", [](Scene& s) { s.previewTriangleMesh(nullptr, nobody); },
                    "segments, not a null pointer"}),
    [](const auto& info) { return std::string(info.param.name); });

INSTANTIATE_TEST_SUITE_P(
    Poses, RefusedTest,
    testing::Values(
        RefusedCase{"deleteAttachment", [](Scene& s) { s.deleteAttachment(nobody, 0, 0, farAway); },
                    "a pose of finite numbers"},
        RefusedCase{"addTaskFrame", [](Scene& s) { s.addTaskFrame(nobody, farAway); }, "a pose of finite numbers"},
        RefusedCase{"setLocalOrigin", [](Scene& s) { s.setLocalOrigin(nobody, Posef(), nowhere); },
                    "a pose of finite numbers"},
        RefusedCase{"setVisualsOrientations",
                    [](Scene& s) { s.setVisualsOrientations({nobody}, {rob::OrientTemplate<double>(nan, 0, 0, 0)}); },
                    "a pose of finite numbers"},
        RefusedCase{"setOrbitPivotVisible", [](Scene& s) { s.setOrbitPivotVisible(true, nowhere); },
                    "a pose of finite numbers"},
        RefusedCase{"setPreviewedFrameVisible", [](Scene& s) { s.setPreviewedFrameVisible(nobody, farAway); },
                    "a pose of finite numbers"},
        RefusedCase{"previewEdge", [](Scene& s) { s.previewEdge(TopoDS_Edge(), nowhere); }, "a pose of finite numbers"},
        RefusedCase{"previewWire", [](Scene& s) { s.previewWire(TopoDS_Wire(), nowhere); }, "a pose of finite numbers"},
        RefusedCase{"previewTargets",
                    [](Scene& s) {
                        s.previewTargets({Posef(), nowhere});
                    },
                    "a pose of finite numbers"}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(MisuseTest, OrientationsOfAnotherNumberThanTheIdsAreRefused)
{
    EXPECT_THAT([this] { scene.setVisualsOrientations({nobody}, {}); },
                test::throwsExactly<std::invalid_argument>("setVisualsOrientations needs as many orientations as ids"));
}

TEST_F(MisuseTest, PoseThatNoFloatCanHoldIsRefused)
{
    const rob::Posed far(rob::Posd(1e300, 0, 0));
    EXPECT_THAT([&] { scene.addAttachment(nobody, 0, far); },
                test::throwsExactly<std::invalid_argument>("addAttachment needs a pose of finite numbers"));
}

class PassedOverTest : public MisuseTest, public testing::WithParamInterface<LateCase> {};

TEST_P(PassedOverTest, UnknownIdIsPassedOver)
{
    GetParam().post(scene);
    EXPECT_NO_THROW(drain());
}

INSTANTIATE_TEST_SUITE_P(
    Table, PassedOverTest,
    testing::Values(LateCase{"setVisualPose", [](Scene& s) { s.setVisualPose(nobody, Posef()); }},
                    LateCase{"setVisualWorldPose", [](Scene& s) { s.setVisualWorldPose(nobody, Posef()); }},
                    LateCase{"setVisualVisible", [](Scene& s) { s.setVisualVisible(nobody, false); }},
                    LateCase{"setCollision", [](Scene& s) { s.setCollision(nobody, true); }},
                    LateCase{"createPaintVisual", [](Scene& s) { s.createPaintVisual(1, nobody); }},
                    LateCase{"removePaintVisual", [](Scene& s) { s.removePaintVisual(1, nobody); }},
                    LateCase{"setPaintColor", [](Scene& s) { s.setPaintColor(nobody, 1, 0, 0); }},
                    LateCase{"addTask", [](Scene& s) { s.addTask(nobody); }},
                    LateCase{"addBand", [](Scene& s) { s.addBand(nobody); }},
                    LateCase{"setVisualSelected", [](Scene& s) { s.setVisualSelected(nobody); }},
                    LateCase{"setVisualsSelected", [](Scene& s) { s.setVisualsSelected({nobody}); }}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(MisuseTest, UnknownIdThatIsLookedUpAtTheCallFailsThere)
{
    EXPECT_THAT([this] { scene.setVisualHighlighted(nobody); }, test::throwsExactly<std::out_of_range>(unknownKey));
    EXPECT_THAT([this] { scene.bodyVisualUseMaterial(nobody, "Body"); },
                test::throwsExactly<std::out_of_range>(unknownKey));
    EXPECT_THAT([] { Scene::GetBodyFace(nobody, 1); }, test::throwsExactly<std::out_of_range>(unknownKey));
}

// Batches

TEST_F(MisuseTest, WithAHandlerTheBatchGoesOn)
{
    bool isRun = false;
    scene.removeVisual(nobody);
    scene.addRenderTask([&isRun] { isRun = true; }, 0);
    std::vector<std::string> told;
    std::exception_ptr thrown;
    testing::internal::CaptureStderr();

    scene.processMsgs([&](const RenderTaskQueue::Failure& failure) {
        told.push_back(failure.text);
        thrown = failure.thrown;
    });

    testing::internal::GetCapturedStderr();
    EXPECT_TRUE(isRun);
    EXPECT_THAT(told, ElementsAre("Scene::removeVisual: invalid unordered_map<K, T> key (4711)"));
    EXPECT_THAT([&] { std::rethrow_exception(thrown); }, test::throwsExactly<std::out_of_range>(unknownKey));
}

TEST_F(MisuseTest, HandlerThatThrowsEndsTheBatch)
{
    bool isRun = false;
    scene.removeVisual(nobody);
    scene.addRenderTask([&isRun] { isRun = true; }, 0);
    testing::internal::CaptureStderr();

    EXPECT_THROW(scene.processMsgs([](const auto&) { throw std::domain_error("enough"); }), std::domain_error);

    testing::internal::GetCapturedStderr();
    EXPECT_FALSE(isRun);
    EXPECT_NO_THROW(drain());
}

/// The id of an earlier task does not turn up beside another failure.
TEST_F(MisuseTest, FailureOfAnotherKindNamesNoId)
{
    scene.addRenderTask(
        [] {
            try {
                Scene::GetVisual(nobody);
            } catch (const std::out_of_range&) {
            }
        },
        0);
    scene.addRenderTask([] { throw std::runtime_error("of my own"); }, 0);
    testing::internal::CaptureStderr();
    EXPECT_THROW(drain(), std::runtime_error);
    const std::string log = testing::internal::GetCapturedStderr();
    EXPECT_THAT(log, HasSubstr("of my own\n"));
    EXPECT_THAT(log, testing::Not(HasSubstr("4711")));
}

TEST_F(MisuseTest, PostFromAnotherThreadThatFailsIsToldOnTheRenderThread)
{
    std::thread([this] { scene.removeVisual(nobody); }).join();
    EXPECT_THAT(logOfFailingBatch(), HasSubstr("Scene::removeVisual"));
}

TEST_F(MisuseTest, VisualThatIsRemovedTwiceFailsTheSecondTime)
{
    auto* visual = new Visual(world);
    SceneCore::Get()->visuals.enter(visual);
    const unsigned id = visual->getId();
    scene.removeVisual(id);
    scene.removeVisual(id);
    EXPECT_THAT(logOfFailingBatch(), HasSubstr("Scene::removeVisual"));
    EXPECT_FALSE(Scene::HasVisual(id));
}

// Before the start, each in a process of its own

struct TooEarly {
    const char* name;
    void (*call)();
};

class BeforeTheStartDeathTest : public testing::TestWithParam<TooEarly> {};

TEST_P(BeforeTheStartDeathTest, StaticOperationThrowsALogicError)
{
    testing::FLAGS_gtest_death_test_style = "threadsafe";
    EXPECT_EXIT(
        {
            try {
                GetParam().call();
            } catch (const std::logic_error& failure) {
                std::cerr << failure.what();
                std::_Exit(typeid(failure) == typeid(std::logic_error) && !Scene::Get() ? 0 : 2);
            }
            std::_Exit(1);
        },
        testing::ExitedWithCode(0), "The library has not been started.");
}

INSTANTIATE_TEST_SUITE_P(Table, BeforeTheStartDeathTest,
                         testing::Values(TooEarly{"GetName", [] { Scene::GetName(); }},
                                         TooEarly{"GetVisual", [] { Scene::GetVisual(1); }},
                                         TooEarly{"HasVisual", [] { Scene::HasVisual(1); }},
                                         TooEarly{"GetWorldVisual", [] { Scene::GetWorldVisual(); }},
                                         TooEarly{"GetStateManager", [] { Scene::GetStateManager(); }},
                                         TooEarly{"GetSceneManager", [] { Scene::GetSceneManager(); }},
                                         TooEarly{"GetInstanceMgr", [] { Scene::GetInstanceMgr("x"); }},
                                         TooEarly{"LoadStation", [] { Scene::LoadStation(); }},
                                         TooEarly{"GetBodyFace", [] { Scene::GetBodyFace(1, 1); }},
                                         TooEarly{"GetGridCellCount", [] { Scene::GetGridCellCount(); }},
                                         TooEarly{"GetGridCellLength", [] { Scene::GetGridCellLength(); }}),
                         [](const auto& info) { return std::string(info.param.name); });

} // namespace
} // namespace vrk::visual
