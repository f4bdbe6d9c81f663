#include "view/SurfaceFrame.h"

#include "ViewTools.h"

#include "platform/layout/Body.h"
#include "platform/layout/Layout.h"
#include "platform/layout/Part.h"
#include "selection/geometry/Result.h"
#include "support/SceneFixture.h"
#include "support/TempFolder.h"
#include "view/OrbitViewController.h"
#include "visual/MeshVisual.h"
#include "visual/PointVisual.h"

#include <BRepPrimAPI_MakeSphere.hxx>
#include <BRep_Builder.hxx>
#include <BRep_Tool.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Face.hxx>

#include <fstream>

namespace vrk::visual {
namespace {

using selection::Result;

testing::AssertionResult hasAxes(const rob::Rotationf& rotation, const rob::Dirf& x, const rob::Dirf& y,
                                 const rob::Dirf& z)
{
    const auto far = [&](const rob::Dirf& axis, const rob::Dirf& expected) {
        return (rotation * axis - expected).length() > 1e-3f;
    };
    if (!far({1, 0, 0}, x) && !far({0, 1, 0}, y) && !far({0, 0, 1}, z))
        return testing::AssertionSuccess();
    const rob::Dirf found = rotation * rob::Dirf(0, 0, 1);
    return testing::AssertionFailure() << "z is " << found.x << ", " << found.y << ", " << found.z;
}

// Axes

TEST(FrameOfNormal, NormalUpIsTheWorldsFrame)
{
    EXPECT_TRUE(hasAxes(frameOfNormal({0, 0, 1}), {1, 0, 0}, {0, 1, 0}, {0, 0, 1}));
}

TEST(FrameOfNormal, AxisXLiesNearTheWorldsX)
{
    EXPECT_TRUE(hasAxes(frameOfNormal({0, 1, 0}), {1, 0, 0}, {0, 0, -1}, {0, 1, 0}));
    const float h = std::sqrt(0.5f);
    EXPECT_TRUE(hasAxes(frameOfNormal({h, 0, h}), {h, 0, -h}, {0, 1, 0}, {h, 0, h}));
}

TEST(FrameOfNormal, NormalAlongXTakesItsXAxisFromY)
{
    EXPECT_TRUE(hasAxes(frameOfNormal({1, 0, 0}), {0, 1, 0}, {0, 0, 1}, {1, 0, 0}));
    EXPECT_TRUE(hasAxes(frameOfNormal({-1, 0, 0}), {0, 1, 0}, {0, 0, -1}, {-1, 0, 0}));
}

TEST(FrameOfNormal, NormalIsAlongXUpToAThousandth)
{
    EXPECT_TRUE(hasAxes(frameOfNormal({1, 0, 0.0009f}), {0, 1, 0}, {0, 0, 1}, {1, 0, 0.0009f}));
    EXPECT_TRUE(hasAxes(frameOfNormal({1, 0, 0.0011f}), {0.0011f, 0, -1}, {0, 1, 0}, {1, 0, 0.0011f}));
}

TEST(FrameOfNormal, NormalOfAnyLengthIsTaken)
{
    EXPECT_TRUE(hasAxes(frameOfNormal({0, 0, -20}), {1, 0, 0}, {0, -1, 0}, {0, 0, -1}));
}

// Picks

class SurfaceFrame : public test::RenderTest {
protected:
    static Result hitOn(Visual* visual, const rob::Posf& position)
    {
        Result pick;
        pick.hit = true;
        pick.visual = visual;
        pick.position = position;
        return pick;
    }
    /// A hit on a face of a solid, in the world.
    static Result hitOn(SolidVisual* solid, int face, const rob::Posf& position)
    {
        Result pick = hitOn(solid, position);
        pick.face = solid->getFaceMap().FindKey(face);
        return pick;
    }

    rob::Posef out{rob::Posf(7, 7, 7)};
};

TEST_F(SurfaceFrame, MissIsNone)
{
    SolidVisual* box = test::addPickedBox(world, {0, 0, 0}, {100, 100, 80});
    Result miss = hitOn(box, 1, {0, 0, 0});
    miss.hit = false;

    EXPECT_FALSE(surfaceFrame(miss, out));
    EXPECT_FALSE(surfaceFrame(hitOn(nullptr, {1, 2, 3}), out));
    EXPECT_EQ(out, rob::Posef(rob::Posf(7, 7, 7)));
}

TEST_F(SurfaceFrame, PointIsNoSurface)
{
    EXPECT_FALSE(surfaceFrame(hitOn(PointVisual::Build(world, {1, 2, 3}), {1, 2, 3}), out));
    EXPECT_EQ(out, rob::Posef(rob::Posf(7, 7, 7)));
}

TEST_F(SurfaceFrame, MeshGivesThePlaceAndTheWorldsAxes)
{
    auto* mesh = new Visual(world);
    mesh->setType(VisualType::Mesh);

    EXPECT_TRUE(surfaceFrame(hitOn(mesh, {1, 2, 3}), out));

    EXPECT_EQ(out, rob::Posef(rob::Posf(1, 2, 3)));
}

TEST_F(SurfaceFrame, VisualThatOnlySaysThatItIsASolidGivesThePlaceAndTheWorldsAxes)
{
    Result pick = hitOn(test::addPickedBox(world, {0, 0, 0}, {100, 100, 80}), 2, {1, 2, 3});
    auto* other = new Visual(world);
    other->setType(VisualType::Solid);
    pick.visual = other;

    EXPECT_TRUE(surfaceFrame(pick, out));

    EXPECT_EQ(out, rob::Posef(rob::Posf(1, 2, 3)));
}

TEST_F(SurfaceFrame, EachFaceOfABoxGivesItsOutwardNormal)
{
    SolidVisual* box = test::addPickedBox(world, {-50, -50, -40}, {100, 100, 80});
    const rob::Posf middles[] = {{-50, 0, 0}, {50, 0, 0}, {0, -50, 0}, {0, 50, 0}, {0, 0, -40}, {0, 0, 40}};

    for (int face = 1; face <= 6; ++face) {
        const rob::Posf& middle = middles[face - 1]; // of the face, and from the middle of the box its normal
        ASSERT_TRUE(surfaceFrame(hitOn(box, face, middle), out));
        EXPECT_EQ(out.position, middle);
        const rob::Dirf z = out.rotation() * rob::Dirf(0, 0, 1);
        EXPECT_NEAR((z - rob::normalized(middle)).length(), 0, 1e-4f) << "face " << face;
    }
}

TEST_F(SurfaceFrame, TurnedSolidTurnsTheNormal)
{
    SolidVisual* box = test::addPickedBox(world, {0, 0, 0}, {100, 100, 80});
    box->setPose({{500, 0, 0}, rob::Rotationf(1.5707964f, rob::Dirf(0, 1, 0))}); // its z lies along x

    ASSERT_TRUE(surfaceFrame(hitOn(box, 6, {580, 50, -50}), out));

    EXPECT_TRUE(hasAxes(out.rotation(), {0, 1, 0}, {0, 0, 1}, {1, 0, 0}));
}

TEST_F(SurfaceFrame, CurvedFaceHasTheNormalOfThePlaceThatWasHit)
{
    SolidVisual* ball =
        test::addPickedSolid(world, test::meshed(BRepPrimAPI_MakeSphere(50.0).Shape()), "surface frame ball");
    const rob::Dirf normal = rob::normalized(rob::Vec3f(1, 2, 2));

    // Triangles cut the ball short of its surface.
    ASSERT_TRUE(surfaceFrame(hitOn(ball, 1, rob::Posf(normal) * 49.8f), out));

    EXPECT_NEAR((out.rotation() * rob::Dirf(0, 0, 1) - normal).length(), 0, 1e-3f);
}

TEST_F(SurfaceFrame, FaceOfAnotherSolidLeavesTheWorldsAxes)
{
    SolidVisual* box = test::addPickedBox(world, {0, 0, 0}, {100, 100, 80});
    Result pick = hitOn(box, {100, 50, 40});
    pick.face =
        Scene::GetBodyFaceInWorld(test::addPickedSolid(world, test::meshedBox(1, 2, 3), "another box")->getId(), 2);

    EXPECT_TRUE(surfaceFrame(pick, out));

    EXPECT_EQ(out, rob::Posef(rob::Posf(100, 50, 40)));
}

TEST_F(SurfaceFrame, FaceThatLiesElsewhereLeavesTheWorldsAxes)
{
    Result pick = hitOn(test::addPickedBox(world, {0, 0, 0}, {100, 100, 80}), 2, {100, 50, 40});
    gp_Trsf moved;
    moved.SetTranslation(gp_Vec(0, 0, 1));
    pick.face = TopoDS::Face(pick.face.Moved(TopLoc_Location(moved)));

    EXPECT_TRUE(surfaceFrame(pick, out));

    EXPECT_EQ(out, rob::Posef(rob::Posf(100, 50, 40)));
}

TEST_F(SurfaceFrame, FaceIsKnownWhicheverWayItIsTurned)
{
    Result pick = hitOn(test::addPickedBox(world, {0, 0, 0}, {100, 100, 80}), 2, {100, 50, 40});
    pick.face = TopoDS::Face(pick.face.Reversed());

    EXPECT_TRUE(surfaceFrame(pick, out));

    EXPECT_TRUE(hasAxes(out.rotation(), {0, 1, 0}, {0, 0, 1}, {1, 0, 0}));
}

TEST_F(SurfaceFrame, FaceOfAVisualThatIsNoSolidLeavesTheWorldsAxes)
{
    SolidVisual* box = test::addPickedBox(world, {0, 0, 0}, {100, 100, 80});
    Result pick = hitOn(box, 2, {100, 50, 40});
    auto* part = new Visual(world);
    part->setType(VisualType::Part);
    pick.visual = part;

    EXPECT_TRUE(surfaceFrame(pick, out));

    EXPECT_EQ(out, rob::Posef(rob::Posf(100, 50, 40)));
}

TEST_F(SurfaceFrame, FaceOfTrianglesOnlyLeavesTheWorldsAxes)
{
    const TopoDS_Face whole =
        TopoDS::Face(test::addPickedBox(world, {0, 0, 0}, {100, 100, 80})->getFaceMap().FindKey(2));
    TopLoc_Location location;
    TopoDS_Face bare;
    BRep_Builder().MakeFace(bare, BRep_Tool::Triangulation(whole, location));
    SolidVisual* solid = test::addPickedSolid(world, bare, "bare face");

    EXPECT_TRUE(surfaceFrame(hitOn(solid, 1, {100, 50, 40}), out));

    EXPECT_EQ(out, rob::Posef(rob::Posf(100, 50, 40)));
}

// The whole way from a pixel

class PickSurfaceFrame : public SurfaceFrame {
protected:
    bool pick() { return OrbitViewController::PickSurfaceFrame(200, 150, out); }
};

TEST_F(PickSurfaceFrame, EmptySpaceIsNone)
{
    selection::VisualSelection::Get()->update();
    test::lookAlong(*Camera::Get(), {0, 0, 500}, {0, 0, -1});

    EXPECT_FALSE(pick());
    EXPECT_EQ(out, rob::Posef(rob::Posf(7, 7, 7)));
}

TEST_F(PickSurfaceFrame, FaceUnderTheMouseGivesItsFrame)
{
    test::addPickedBox(world, {-50, -30, 0}, {100, 100, 80});
    test::lookAlong(*Camera::Get(), {500, 0, 40}, {-1, 0, 0});

    ASSERT_TRUE(pick());

    EXPECT_TRUE(test::isNearPoint(out.position, {50, 0, 40}, 0.05f));
    EXPECT_TRUE(hasAxes(out.rotation(), {0, 1, 0}, {0, 0, 1}, {1, 0, 0}));
}

TEST_F(PickSurfaceFrame, MeshUnderTheMouseGivesThePlaceAndTheWorldsAxes)
{
    const test::TempFolder folder;
    const std::string file = (folder.path() / "slope.stl").string();
    std::ofstream(file) << "solid s\nfacet normal 1 0 0\nouter loop\nvertex 0 -90 0\nvertex 0 90 0\nvertex 0 0 90\n"
                           "endloop\nendfacet\nendsolid s\n";
    auto part = std::make_shared<layout::Part>(sdf::SdfManager::inst().generateId(), "part");
    const auto body = part->addBody("body");
    body->setGeometry(file, "stl");
    layout::Layout::inst().addPart(part);
    MeshVisual::Build(world, body.get());
    selection::VisualSelection::Get()->update();
    test::lookAlong(*Camera::Get(), {500, 0, 40}, {-1, 0, 0});

    ASSERT_TRUE(pick());

    EXPECT_TRUE(test::isNearPoint(out.position, {0, 0, 40}, 0.05f));
    EXPECT_EQ(out.orientation, rob::Orientf());
}

TEST_F(PickSurfaceFrame, PointUnderTheMouseIsNone)
{
    const auto node =
        std::make_shared<sdf::SdfNode>(sdf::ModelType::Unknown, sdf::SdfManager::inst().generateId(), "point");
    PointVisual::Build(world, node.get(), {0, 0, 40});
    selection::VisualSelection::Get()->update();
    test::lookAlong(*Camera::Get(), {500, 0, 40}, {-1, 0, 0});
    ASSERT_TRUE(selection::VisualSelection::Get()->select(200, 150).hit);

    EXPECT_FALSE(pick());
}

} // namespace
} // namespace vrk::visual
