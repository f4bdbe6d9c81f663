#include "StepsFixture.h"
#include "edit/AddThings.h"
#include "edit/Attaching.h"
#include "edit/RemoveThings.h"
#include "edit/SimplifyActions.h"
#include "files/FileStation.h"

#include "support/TempFolder.h"

#include "platform/layout/Body.h"
#include "platform/layout/Mechanism.h"
#include "platform/layout/Part.h"
#include "platform/sdf/SdfManager.h"
#include "scene/Scene.h"
#include "visual/Visual.h"

#include <gmock/gmock.h>

#include <QStatusBar>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <numbers>

namespace vrkview::test {
namespace {

using testing::HasSubstr;
using vrk::visual::Scene;

/// An STL file in the window: a ball of many triangles.
class SimplifyBodiesTest : public StepsFixture {
protected:
    void SetUp() override
    {
        StepsFixture::SetUp();
        window().getMessageBar().tell("");
        window().getMessageBar().hide();
        writeBall(folder / "ball.stl", 60);
        part = open(folder / "ball.stl");
        body = bodyOf(part);
        file = fileOf(body);
        history().forget();
        ASSERT_FALSE(work().isRunning());
    }
    void TearDown() override
    {
        work().cancel();
        EXPECT_TRUE(waitFor([] { return !work().isRunning(); }));
        while (history().canUndo())
            history().undo();
        history().push(std::make_unique<RemoveThings>(std::vector<unsigned>{part}));
        history().forget();
        window().getMessageBar().hide();
        StepsFixture::TearDown();
    }

    static void writeBall(const std::filesystem::path& file, int rings)
    {
        std::ofstream stream(file, std::ios::binary);
        const auto count = static_cast<std::uint32_t>(2 * rings * 2 * rings);
        stream << std::string(80, ' ');
        stream.write(reinterpret_cast<const char*>(&count), 4);
        const auto at = [rings](int u, int v) {
            const double a = std::numbers::pi * v / rings, b = std::numbers::pi * u / rings;
            return std::array{static_cast<float>(-1200 + 150 * std::sin(a) * std::cos(b)),
                              static_cast<float>(-1200 + 150 * std::sin(a) * std::sin(b)),
                              static_cast<float>(1500 + 150 * std::cos(a))};
        };
        const auto facet = [&](const auto& first, const auto&... others) {
            // About that of the ball at the first corner; where it is left out the program makes a copy of the file.
            const std::array normal{(first[0] + 1200) / 150, (first[1] + 1200) / 150, (first[2] - 1500) / 150};
            stream.write(reinterpret_cast<const char*>(normal.data()), 12);
            stream.write(reinterpret_cast<const char*>(first.data()), 12);
            (stream.write(reinterpret_cast<const char*>(others.data()), 12), ...);
            stream.write("\0\0", 2);
        };
        for (int u = 0; u < 2 * rings; ++u)
            for (int v = 0; v < rings; ++v) {
                facet(at(u, v), at(u, v + 1), at(u + 1, v + 1));
                facet(at(u, v), at(u + 1, v + 1), at(u + 1, v));
            }
    }
    static unsigned open(const std::filesystem::path& file)
    {
        auto station = std::make_shared<Station>(importFiles({file}));
        history().push(std::make_unique<AddThings>(station));
        return station->parts.front()->getId();
    }
    static unsigned bodyOf(unsigned part)
    {
        return std::dynamic_pointer_cast<vrk::layout::Part>(sdf::Share(part))->getBodies().front()->getId();
    }
    static std::string fileOf(unsigned body)
    {
        return std::dynamic_pointer_cast<vrk::layout::Body>(sdf::Share(body))->getGeometryUri();
    }
    static SimplifyActions& actions() { return window().getSimplifies(); }
    static MeshSimplifying& work() { return actions().getWork(); }
    static std::uint64_t triangles(unsigned body)
    {
        view().drain();
        return Scene::GetVisual(body)->getTrianglesNum();
    }
    void simplify(std::optional<double> tolerance)
    {
        state().selectVisuals({part});
        actions().simplifySelected(tolerance);
        EXPECT_TRUE(waitFor([] { return !work().isRunning(); }));
        settle();
    }

    vrk::test::TempFolder folder;
    unsigned part = 0, body = 0;
    std::string file;
};

TEST_F(SimplifyBodiesTest, SelectedMeshIsDrawnCoarserAndThatIsTakenBack)
{
    const std::uint64_t before = triangles(body);
    ASSERT_EQ(before, 14400u);
    shoot("simplify_before");

    simplify(2);

    EXPECT_EQ(message(), "");
    EXPECT_LT(triangles(body), before / 10);
    EXPECT_GT(triangles(body), 20u);
    EXPECT_NE(fileOf(body), file);
    EXPECT_THAT(window().statusBar()->currentMessage().toStdString(), HasSubstr("of 14400 triangles, within 2 mm"));
    EXPECT_EQ(history().undoText().toStdString(), "Simplify ball");
    shoot("simplify_after");

    history().undo();
    EXPECT_EQ(triangles(body), before);
    EXPECT_EQ(fileOf(body), file);
    history().redo();
    EXPECT_LT(triangles(body), before / 10);
}

TEST_F(SimplifyBodiesTest, WithoutAToleranceItIsAThousandthOfTheSize)
{
    simplify(std::nullopt);
    EXPECT_THAT(window().statusBar()->currentMessage().toStdString(), HasSubstr("within 0.3 mm"));
    EXPECT_LT(triangles(body), 14400u);
}

TEST_F(SimplifyBodiesTest, SelectedMeshIsShadedSmoothlyOrByItsFacetsAndThatIsTakenBack)
{
    const auto typeOf = [](unsigned id) {
        return std::dynamic_pointer_cast<vrk::layout::Body>(sdf::Share(id))->getFileType();
    };
    const std::uint64_t before = triangles(body);
    const auto smooth = [this](double degrees) {
        state().selectVisuals({part});
        actions().smoothSelected(degrees);
        EXPECT_TRUE(waitFor([] { return !work().isRunning(); }));
        state().clear();
        settle();
    };
    settle();
    smooth(0);
    const QImage facets = seen();
    EXPECT_EQ(typeOf(body), "mesh");
    EXPECT_EQ(history().undoText().toStdString(), "Smooth ball");

    smooth(35);
    EXPECT_EQ(message(), "");
    EXPECT_EQ(triangles(body), before);
    EXPECT_NE(seen(), facets);

    history().undo();
    settle();
    EXPECT_EQ(seen(), facets);
    history().undo();
    EXPECT_EQ(typeOf(body), "stl");
    EXPECT_EQ(fileOf(body), file);
}

TEST_F(SimplifyBodiesTest, GivenUpItChangesNothing)
{
    writeBall(folder / "large.stl", 300);
    const unsigned large = open(folder / "large.stl");
    const std::string before = fileOf(bodyOf(large));
    state().selectVisuals({large});
    const int steps = history().count();

    actions().simplifySelected(0.001);
    ASSERT_TRUE(work().isRunning());
    work().cancel();
    ASSERT_TRUE(waitFor([] { return !work().isRunning(); }));

    EXPECT_EQ(history().count(), steps);
    EXPECT_EQ(fileOf(bodyOf(large)), before);
    EXPECT_THAT(window().statusBar()->currentMessage().toStdString(), HasSubstr("given up"));
}

TEST_F(SimplifyBodiesTest, FileThatIsGoneIsTold)
{
    std::filesystem::remove(file);
    simplify(2);
    EXPECT_THAT(message(), HasSubstr("ball.stl"));
    EXPECT_EQ(fileOf(body), file);
}

TEST_F(SimplifyBodiesTest, ThingThatIsDeletedMeanwhileIsPassedOver)
{
    state().selectVisuals({part});
    actions().simplifySelected(2);
    history().push(std::make_unique<RemoveThings>(std::vector<unsigned>{part}));
    ASSERT_TRUE(waitFor([] { return !work().isRunning(); }));
    EXPECT_EQ(history().undoText().toStdString(), "Delete ball");
    history().undo();
    EXPECT_EQ(fileOf(body), file);
    EXPECT_EQ(triangles(body), 14400u);
}

TEST_F(SimplifyBodiesTest, WhatIsAttachedAndWhatIsHiddenStaysSo)
{
    writeBall(folder / "small.stl", 10);
    const unsigned small = open(folder / "small.stl");
    history().push(std::make_unique<AttachThing>(small, body));
    settle();
    const auto pose = Scene::GetVisual(small)->getWorldPose();

    simplify(2);

    ASSERT_TRUE(Scene::HasVisual(small));
    EXPECT_EQ(Scene::GetVisual(small)->getParent(), Scene::GetVisual(body));
    const auto now = Scene::GetVisual(small)->getWorldPose();
    EXPECT_NEAR((now.position - pose.position).length(), 0, 1e-2);
    state().setVisible({part}, false);
    history().undo(); // shows it
    state().setVisible({part}, false);
    settle();
    EXPECT_FALSE(Scene::GetVisual(body)->isVisible());
    history().undo();
    history().undo(); // fine again
    settle();
    EXPECT_TRUE(Scene::GetVisual(body)->isVisible());
    EXPECT_EQ(triangles(body), 14400u);
    EXPECT_EQ(Scene::GetVisual(small)->getParent(), Scene::GetVisual(body));
}

/// Its files are in metres, and those that are drawn in the cache.
TEST_F(SimplifyBodiesTest, LinksOfARobotAreSimplifiedWhereTheyStand)
{
    std::ofstream(folder / "arm.urdf")
        << R"(<robot name="Arm"><link name="base"><visual><geometry><mesh filename="ball.stl"
        scale="0.001 0.001 0.001"/></geometry></visual></link><link name="top"><visual><geometry><mesh filename="ball.stl"
        scale="0.001 0.001 0.001"/></geometry></visual></link><joint name="turn" type="revolute"><parent link="base"/>
        <child link="top"/><origin xyz="0 0 0.4"/><axis xyz="0 0 1"/><limit lower="-1" upper="1" effort="1" velocity="1"/>
        </joint></robot>)";
    auto station = std::make_shared<Station>(importFiles({folder / "arm.urdf"}));
    history().push(std::make_unique<AddThings>(station));
    const unsigned arm = station->mechanisms.front()->getId();
    const std::vector<ExchangedMesh> meshes = stlMeshesIn({arm});
    ASSERT_EQ(meshes.size(), 2u);
    const unsigned upper = meshes.back().body;
    view().drain();
    const auto pose = Scene::GetVisual(upper)->getWorldPose();
    state().selectVisuals({arm});

    actions().simplifySelected(2);
    ASSERT_TRUE(waitFor([] { return !work().isRunning(); }));

    EXPECT_LT(triangles(upper), 1500u) << message();
    EXPECT_EQ(Scene::GetVisual(upper)->getWorldPose(), pose);
    EXPECT_EQ(Scene::GetVisual(upper)->getParent()->getWorldPose(), pose);
    history().undo();
    EXPECT_EQ(triangles(upper), 14400u);
    EXPECT_EQ(triangles(meshes.front().body), 14400u) << "which draws the same file";
}

/// Its look goes with the visual and comes with the new one.
TEST_F(SimplifyBodiesTest, SelectedThingStaysSelectedAndLooksSo)
{
    const auto looksSelected = [] {
        const QImage picture = seen();
        state().clear();
        settle();
        return differingShare(picture, seen()) > 0.001;
    };
    simplify(2);
    EXPECT_EQ(state().getSelected(), std::vector<unsigned>{part});
    EXPECT_TRUE(looksSelected());
    state().selectVisuals({part});
    history().undo();
    settle();
    EXPECT_TRUE(looksSelected());
}

TEST_F(SimplifyBodiesTest, CommandIsForMeshesOnly)
{
    const auto isEnabled = [] {
        for (const QAction* action : window().QWidget::actions())
            if (action->text().contains("implify meshes"))
                return action->isEnabled();
        ADD_FAILURE() << "no such command";
        return false;
    };
    state().clear();
    EXPECT_FALSE(isEnabled());
    state().selectVisuals({thing("Pallet")});
    EXPECT_FALSE(isEnabled());
    state().selectVisuals({part});
    EXPECT_TRUE(isEnabled());
}

} // namespace
} // namespace vrkview::test
