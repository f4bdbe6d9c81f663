#include "files/EdgesOfMeshes.h"
#include "StepsFixture.h"
#include "canvas/DrawMode.h"
#include "edit/AddThings.h"
#include "edit/RemoveThings.h"
#include "edit/SimplifyBodies.h"
#include "files/FileStation.h"

#include "support/TempFolder.h"

#include "platform/layout/Body.h"
#include "platform/layout/Part.h"
#include "platform/sdf/SdfManager.h"
#include "scene/Scene.h"
#include "visual/Visual.h"

#include <Ogre.h>

#include <gmock/gmock.h>

#include <array>
#include <fstream>

namespace vrkview::test {
namespace {

using vrk::visual::Scene;
using vrk::visual::Visual;

/// A block of an STL file in the window.
class EdgesOfMeshesTest : public StepsFixture {
protected:
    void SetUp() override
    {
        StepsFixture::SetUp();
        writeBlock(folder / "block.stl", 200);
        part = open(folder / "block.stl");
        body = bodyOf(part);
        settle();
    }
    void TearDown() override
    {
        state().setDrawMode(*findDrawMode("shaded-edges"));
        while (history().canUndo())
            history().undo();
        history().forget();
        StepsFixture::TearDown();
    }

    static void writeBlock(const std::filesystem::path& file, float side)
    {
        std::ofstream stream(file);
        stream << "solid block\n";
        const auto facet = [&](const std::array<float, 3>& normal, const std::array<std::array<float, 3>, 3>& corners) {
            stream << "facet normal " << normal[0] << ' ' << normal[1] << ' ' << normal[2] << "\nouter loop\n";
            for (const auto& c : corners)
                stream << "vertex " << c[0] - 1500 << ' ' << c[1] - 1500 << ' ' << c[2] + 1000 << '\n';
            stream << "endloop\nendfacet\n";
        };
        for (unsigned axis = 0; axis < 3; ++axis)
            for (const bool isFar : {false, true}) {
                const auto at = [&](float u, float v) {
                    std::array<float, 3> corner{};
                    corner[axis] = isFar ? side : 0;
                    corner[(axis + 1) % 3] = isFar ? u : v;
                    corner[(axis + 2) % 3] = isFar ? v : u;
                    return corner;
                };
                std::array<float, 3> normal{};
                normal[axis] = isFar ? 1.0f : -1.0f;
                facet(normal, {at(0, 0), at(side, 0), at(side, side)});
                facet(normal, {at(0, 0), at(side, side), at(0, side)});
            }
        stream << "endsolid block\n";
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
    /// Null where it has none.
    static const Visual* edgesOf(unsigned body)
    {
        view().drain();
        for (const Visual* child : Scene::GetVisual(body)->getChildren())
            if (child->getType() == vrk::VisualType::WireFrame)
                return child;
        return nullptr;
    }
    static bool showsEdges(unsigned body)
    {
        const Visual* edges = edgesOf(body);
        return edges && edges->isVisible();
    }

    vrk::test::TempFolder folder;
    unsigned part = 0, body = 0;
};

TEST_F(EdgesOfMeshesTest, OpenedBodyHasThemAndSoHasOneThatComesBack)
{
    EXPECT_TRUE(showsEdges(body));

    history().push(std::make_unique<RemoveThings>(std::vector<unsigned>{part}));
    ASSERT_FALSE(Scene::HasVisual(body));
    history().undo();

    EXPECT_TRUE(showsEdges(body));
}

TEST_F(EdgesOfMeshesTest, DisplayModeCountsForWhatIsOpenedLater)
{
    state().setDrawMode(*findDrawMode("shaded"));
    EXPECT_FALSE(showsEdges(body));

    const unsigned later = bodyOf(open(folder / "block.stl"));

    EXPECT_NE(edgesOf(later), nullptr);
    EXPECT_FALSE(showsEdges(later));
    state().setDrawMode(*findDrawMode("edges"));
    EXPECT_TRUE(showsEdges(later));
}

TEST_F(EdgesOfMeshesTest, HiddenBodyHidesThem)
{
    state().setVisible({part}, false);
    EXPECT_FALSE(showsEdges(body));

    state().setVisible({part}, true);

    EXPECT_TRUE(showsEdges(body));
}

TEST_F(EdgesOfMeshesTest, ExchangedMeshHasItsOwn)
{
    writeBlock(folder / "larger.stl", 300);
    const std::string before = std::dynamic_pointer_cast<vrk::layout::Body>(sdf::Share(body))->getGeometryUri();
    const auto sizeOfEdges = [this] {
        view().drain();
        return edgesOf(body)->getSceneNode()->_getWorldAABB().getSize().x;
    };
    settle();
    const float size = sizeOfEdges();

    history().push(std::make_unique<SimplifyBodies>(
        std::vector<ExchangedMesh>{{body, before, (folder / "larger.stl").string()}}, "Exchange %1"));
    settle();

    EXPECT_NEAR(sizeOfEdges(), 1.5f * size, 1);
    history().undo();
    settle();
    EXPECT_NEAR(sizeOfEdges(), size, 1);
}

/// Those of this mesh were never found.
TEST_F(EdgesOfMeshesTest, InTheBackgroundTheyComeLaterAndTakeTheDisplayMode)
{
    writeBlock(folder / "other.stl", 250);
    EdgesInBackground background(1);
    int came = 0;
    QObject::connect(&background, &EdgesInBackground::came, &state(), [&came] {
        ++came;
        state().drawAnew();
    });
    state().setDrawMode(*findDrawMode("shaded"));

    const unsigned first = bodyOf(open(folder / "other.stl")), second = bodyOf(open(folder / "other.stl"));
    EXPECT_EQ(edgesOf(first), nullptr);
    ASSERT_TRUE(waitFor([&came] { return came > 0; }));

    EXPECT_NE(edgesOf(first), nullptr);
    EXPECT_NE(edgesOf(second), nullptr);
    EXPECT_FALSE(showsEdges(second));
}

TEST_F(EdgesOfMeshesTest, BodyThatIsGoneByThenIsPassedOver)
{
    writeBlock(folder / "gone.stl", 260);
    EdgesInBackground background(1);
    int came = 0;
    QObject::connect(&background, &EdgesInBackground::came, &state(), [&came] { ++came; });

    const unsigned gone = bodyOf(open(folder / "gone.stl"));
    history().undo();
    ASSERT_FALSE(Scene::HasVisual(gone));

    EXPECT_TRUE(waitFor([&came] { return came > 0; }));
    view().drain();
}

TEST_F(EdgesOfMeshesTest, WhatTheBackgroundHasNotFoundWhenItEndsIsNotDrawn)
{
    writeBlock(folder / "late.stl", 270);
    unsigned late = 0;
    {
        const EdgesInBackground background(1);
        late = bodyOf(open(folder / "late.stl"));
    }
    settle();

    EXPECT_EQ(edgesOf(late), nullptr);
}

} // namespace
} // namespace vrkview::test
