#include "mesh/MeshManager.h"
#include "platform/geometry/MeshEdges.h"
#include "platform/layout/Body.h"
#include "platform/layout/Layout.h"
#include "platform/layout/Part.h"
#include "platform/sdf/SdfManager.h"
#include "selection/VisualSelection.h"
#include "support/SceneFixture.h"
#include "support/TempFolder.h"
#include "support/ThrowsExactly.h"
#include "visual/Edges.h"
#include "visual/MeshVisual.h"
#include "visual/SolidVisual.h"
#include "visual/WireFrameVisual.h"

#include <array>
#include <cstdlib>
#include <fstream>

namespace vrk::visual {
namespace {

using DisplayMode = Scene::DisplayMode;
using testing::IsEmpty;
using testing::SizeIs;
using Edges = std::shared_ptr<const geometry::MeshEdges>;

/// A wedge of eight triangles as STL, whose top is bent by 90 degrees.
class MeshBodyEdges : public test::RenderTest {
protected:
    std::string writeWedge(const std::string& name, float length = 200) const
    {
        const float l = length / 2;
        const std::array<rob::Posf, 6> p{rob::Posf(-l, -100, 0), rob::Posf(l, -100, 0), rob::Posf(l, 100, 0),
                                         rob::Posf(-l, 100, 0),  rob::Posf(-l, 0, 100), rob::Posf(l, 0, 100)};
        const std::filesystem::path file = folder.path() / name;
        std::ofstream stream(file);
        stream << "solid wedge\n";
        for (const auto& [a, b, c] :
             {std::array{0, 1, 5}, {0, 5, 4}, {2, 3, 4}, {2, 4, 5}, {0, 3, 2}, {0, 2, 1}, {1, 2, 5}, {3, 0, 4}}) {
            const rob::Vec3f normal = (p[b] - p[a]).cross(p[c] - p[a]);
            const rob::Vec3f unit = normal * (1 / normal.length());
            stream << "facet normal " << unit.x << ' ' << unit.y << ' ' << unit.z << "\nouter loop\n";
            for (const int corner : {a, b, c})
                stream << "vertex " << p[corner].x << ' ' << p[corner].y << ' ' << p[corner].z << '\n';
            stream << "endloop\nendfacet\n";
        }
        stream << "endsolid wedge\n";
        return file.string();
    }
    MeshVisual* build(const std::string& file)
    {
        auto part = std::make_shared<layout::Part>(sdf::SdfManager::inst().generateId(), "part");
        const auto body = part->addBody("body");
        body->setGeometry(file, "stl");
        body->setColor("#FF8000");
        layout::Layout::inst().addPart(part);
        MeshVisual::Build(world, body.get());
        return static_cast<MeshVisual*>(Scene::GetVisual(body->getId()));
    }
    static Edges edgesOf(const MeshVisual& body)
    {
        const Mesh& mesh = *body.getMesh();
        return std::make_shared<const geometry::MeshEdges>(geometry::edgesOfMesh(mesh.vertices, mesh.indices));
    }
    static std::vector<Visual*> wireFramesOf(const Visual& body)
    {
        return test::childrenOfType(body, VisualType::WireFrame);
    }
    void give(const MeshVisual& body, const Edges& edges)
    {
        scene.addMeshEdges(body.getId(), edges);
        drain();
    }

    test::TempFolder folder;
};

TEST_F(MeshBodyEdges, BodyIsMadeWithoutAndIsGivenOneWireFrame)
{
    MeshVisual* body = build(writeWedge("wedge.stl"));
    EXPECT_THAT(test::childrenOf(*body), IsEmpty());

    give(*body, edgesOf(*body));
    give(*body, edgesOf(*body));

    ASSERT_THAT(wireFramesOf(*body), SizeIs(1));
    auto& wireFrame = dynamic_cast<WireFrameVisual&>(*wireFramesOf(*body).front());
    EXPECT_THAT(test::uploaded(wireFrame.getLines()), SizeIs(2 * 9));
    EXPECT_EQ(test::materialOf(wireFrame), "WireFrame");
    EXPECT_FALSE(Scene::HasVisual(wireFrame.getId()));
    EXPECT_FALSE(selection::VisualSelection::Get()->hasVisual(&wireFrame)) << "it cannot be picked";
}

TEST_F(MeshBodyEdges, BodiesOfOneListShareItsBufferAlsoBeyondTheFirst)
{
    const std::string file = writeWedge("shared.stl");
    MeshVisual *first = build(file), *second = build(file), *other = build(file);
    const Edges edges = edgesOf(*first);
    give(*first, edges);
    give(*second, edges);
    give(*other, edgesOf(*other));
    const auto linesOf = [](const MeshVisual& body) -> const DynamicLines& {
        return dynamic_cast<const WireFrameVisual&>(*wireFramesOf(body).front()).getLines();
    };

    EXPECT_EQ(&test::vertexDataOf(linesOf(*first)), &test::vertexDataOf(linesOf(*second)));
    EXPECT_NE(&test::vertexDataOf(linesOf(*first)), &test::vertexDataOf(linesOf(*other)));
    Visual::Delete(first);

    EXPECT_THAT(test::uploaded(linesOf(*second)), SizeIs(2 * 9));
}

TEST_F(MeshBodyEdges, ListIsNotKeptBehindItsLastBody)
{
    MeshVisual* body = build(writeWedge("kept.stl"));
    const Edges edges = edgesOf(*body);
    give(*body, edges);
    EXPECT_GT(edges.use_count(), 1);

    Visual::Delete(body);

    EXPECT_EQ(edges.use_count(), 1);
}

TEST_F(MeshBodyEdges, WhatIsNotOfThisMeshIsPassedOver)
{
    MeshVisual* body = build(writeWedge("wedge2.stl"));
    geometry::MeshEdges others = *edgesOf(*body);
    others.triangles += 1;

    give(*body, std::make_shared<const geometry::MeshEdges>(others));
    give(*body, std::make_shared<const geometry::MeshEdges>());
    scene.addMeshEdges(sdf::SdfManager::inst().generateId(), edgesOf(*body));
    const auto solid = test::addModelBody(test::meshedBox(1, 1, 1), "no mesh");
    SolidVisual::Build(world, solid.get(), solid->getShape());
    scene.addMeshEdges(solid->getId(), edgesOf(*body));
    drain();

    EXPECT_THAT(test::childrenOf(*body), IsEmpty());
    EXPECT_THAT(wireFramesOf(*Scene::GetVisual(solid->getId())), SizeIs(1));
    EXPECT_THAT([&] { scene.addMeshEdges(body->getId(), nullptr); },
                test::throwsExactly<std::invalid_argument>("addMeshEdges needs edges, not a null pointer"));
}

TEST_F(MeshBodyEdges, EdgesGoWhenAnotherMeshIsDrawn)
{
    MeshVisual* body = build(writeWedge("before.stl"));
    give(*body, edgesOf(*body));

    body->attachMesh(writeWedge("after.stl", 300));

    EXPECT_THAT(wireFramesOf(*body), IsEmpty());
}

TEST_F(MeshBodyEdges, DisplayModesShowAndHideThemAsThoseOfSolids)
{
    const MeshVisual* body = build(writeWedge("modes.stl"));
    give(*body, edgesOf(*body));
    const Visual* wireFrame = wireFramesOf(*body).front();

    for (const auto& [mode, isShown] : {std::pair(DisplayMode::Shaded, false),
                                        {DisplayMode::ShadedWithEdges, true},
                                        {DisplayMode::Wire, false},
                                        {DisplayMode::Edges, true}}) {
        scene.setDisplayMode(mode);
        drain();
        EXPECT_EQ(wireFrame->isVisible(), isShown) << "mode " << static_cast<int>(mode);
        EXPECT_TRUE(body->isVisible());
    }
    scene.setDisplayMode(DisplayMode::ShadedWithEdges);
    drain();
}

TEST_F(MeshBodyEdges, EdgesOfAHiddenBodyAreHiddenAndComeWithIt)
{
    MeshVisual* body = build(writeWedge("hidden.stl"));
    scene.setVisualVisible(body->getId(), false);
    give(*body, edgesOf(*body));
    EXPECT_FALSE(wireFramesOf(*body).front()->isVisible());

    scene.setVisualVisible(body->getId(), true);
    drain();

    EXPECT_TRUE(wireFramesOf(*body).front()->isVisible());
}

TEST_F(MeshBodyEdges, ColourOfTheBodyIsNotTheirs)
{
    MeshVisual* body = build(writeWedge("coloured.stl"));
    give(*body, edgesOf(*body));

    scene.setVisualColor(body->getId(), 0, 1, 0);
    scene.resetColor(body->getId());
    scene.setVisualSelected(body->getId());
    drain();

    EXPECT_EQ(test::materialOf(*wireFramesOf(*body).front()), "WireFrame");
}

TEST_F(MeshBodyEdges, ADoubleHasNone)
{
    MeshVisual* body = build(writeWedge("double.stl"));
    give(*body, edgesOf(*body));

    Visual* copy = body->copy(world).value();

    EXPECT_THAT(test::childrenOf(*copy), IsEmpty());
    delete copy;
}

TEST_F(MeshBodyEdges, BendIsADarkLineInThePicture)
{
    MeshVisual* body = build(writeWedge("drawn.stl"));
    setSize(1440, 1080); // edges are finer in coarser pictures
    const test::View view = test::lookingAtOrigin(600);
    const auto darkAlongTheTop = [&](const test::Picture& picture) {
        int dark = 0;
        for (int x = -80; x <= 80; x += 8) {
            const test::Pixel pixel = pixelAt(picture, rob::Posf(static_cast<float>(x), 0, 100));
            dark += pixel.r < 90 ? 1 : 0;
        }
        return dark;
    };
    EXPECT_EQ(darkAlongTheTop(render(view)), 0);

    give(*body, edgesOf(*body));

    EXPECT_GE(darkAlongTheTop(render(view)), 18) << "of 21";
    scene.setDisplayMode(DisplayMode::Shaded);
    EXPECT_EQ(darkAlongTheTop(render(view)), 0);
    scene.setDisplayMode(DisplayMode::ShadedWithEdges);
    drain();
}

/// Seen from between its faces, a wedge has nothing but backs.
TEST_F(MeshBodyEdges, BacksOfAClosedMeshAreDrawnOnlyUntilItIsKnownToBeClosed)
{
    MeshVisual* body = build(writeWedge("closed.stl"));
    const test::View fromInside{{0, 0, 30}, {100, 0, 30}, {0, 0, 1}};
    const auto middle = [&] { return render(fromInside).at(200, 150); };
    const test::Pixel before = middle();
    EXPECT_GT(before.r, before.b + 60);

    give(*body, edgesOf(*body));

    const test::Pixel after = middle();
    EXPECT_LT(std::abs(after.r - after.b), 20) << "the grey behind it";
    const test::Pixel outside = render({{300, -300, 200}, {0, 0, 30}, {0, 0, 1}}).at(200, 150);
    EXPECT_GT(outside.r, outside.b + 60);
}

TEST_F(MeshBodyEdges, BacksOfAnOpenMeshStay)
{
    MeshVisual* body = build(writeWedge("open.stl"));
    auto open = std::make_shared<geometry::MeshEdges>(*edgesOf(*body));
    open->isClosed = false;
    give(*body, open);

    const test::Pixel middle = render({{0, 0, 30}, {100, 0, 30}, {0, 0, 1}}).at(200, 150);
    EXPECT_GT(middle.r, middle.b + 60);
}

} // namespace
} // namespace vrk::visual
