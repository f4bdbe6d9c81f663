#include "IdPicture.h"
#include "PickRules.h"
#include "canvas/DrawMode.h"
#include "canvas/Surroundings.h"
#include "canvas/Views.h"
#include "demo/DemoShapes.h"
#include "demo/DemoStation.h"
#include "files/FileStation.h"
#include "files/StationScene.h"
#include "start/PrivateDisplay.h"
#include "start/StartUp.h"

#include "platform/StepFiles.h"
#include "platform/layout/Layout.h"
#include "platform/task/EdgeMfgShape.h"
#include "platform/task/Path.h"
#include "platform/task/Task.h"
#include "scene/Scene.h"
#include "selection/SelectableObject.h"
#include "selection/VisualSelection.h"
#include "support/TempFolder.h"
#include "view/Camera.h"
#include "view/OffscreenTarget.h"
#include "visual/Visual.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <BRepBuilderAPI_MakeEdge.hxx>
#include <BRepBuilderAPI_MakeVertex.hxx>
#include <Ogre.h>
#include <TopoDS_Edge.hxx>
#include <TopoDS_Vertex.hxx>
#include <gp.hxx>
#include <gp_Circ.hxx>

#include <iostream>
#include <memory>
#include <set>

namespace vrkview::test {
namespace {

using testing::IsEmpty;
using vrk::selection::SelectableObject;
using vrk::selection::VisualSelection;
using vrk::test::StepDocument;
using vrk::visual::Camera;
using vrk::visual::OffscreenTarget;
using vrk::visual::Scene;
using vrk::visual::Visual;
using Kind = SelectableObject::ObjectKind;

constexpr int step = 8; // pixels

/// The library, once for the process, and one station after the other in it.
class PickPicture : public testing::Test {
protected:
    static void SetUpTestSuite() { startLibrary(); }

    PickPicture() : target(1600, 1000, 0) { Camera::Get()->setRenderTarget(target.renderTarget()); }
    ~PickPicture() override
    {
        Camera::Get()->setRenderTarget(Ogre::Root::getSingleton().getRenderTarget("ogrewindow"));
        Station nothing;
        nothing.whole.emplace();
        addToStation(nothing); // in the place of what there is
    }

    static void show(const Station& station)
    {
        Scene& scene = *Scene::Get();
        showStation(station);
        scene.processMsgs();
        showAs(*findDrawMode("shaded"), station.hiddenFaces);
        scene.processMsgs();
        suitSurroundings();
        scene.processMsgs();
        suitCameraToScene();
    }

    /// From where the station was left, or along a direction.
    IdPicture look(const char* view = nullptr)
    {
        if (view)
            lookAlong(*findView(view));
        else
            lookAsLeft();
        Scene::Get()->processMsgs();
        VisualSelection::Get()->update();
        IdPicture picture(target);
        if (const QString folder = qEnvironmentVariable("VRK_SHOTS"); !folder.isEmpty())
            picture.picture().save(folder + "/ids_" + testing::UnitTest::GetInstance()->current_test_info()->name() +
                                   "_" + (view ? view : "left") + ".png");
        return picture;
    }

    OffscreenTarget target;
};

std::set<Kind> kindsOf(const std::set<Visual*>& visuals)
{
    std::set<Kind> kinds;
    for (Visual* visual : visuals)
        kinds.insert(VisualSelection::Get()->getObject(visual)->kind);
    return kinds;
}

/// All of it is accounted for, and nearly all is simply the same.
void expectAgreement(const IdPicture& picture)
{
    const Comparison comparison = compareAll(picture, step);
    std::cout << comparison.summary() << std::endl;
    EXPECT_THAT(comparison.unexplained, IsEmpty());
    EXPECT_EQ(comparison.compared(), picture.width() * picture.height() / (step * step));
    EXPECT_GE(comparison.count(Verdict::Same), comparison.compared() * 0.97);
    EXPECT_LE(comparison.count(Verdict::Silhouette), comparison.compared() * 0.005);
    for (const Verdict rare : {Verdict::TriangleBorder, Verdict::NearlyParallel, Verdict::DepthStep, Verdict::LineLift})
        EXPECT_LE(comparison.count(rare), comparison.compared() * 0.001) << nameOf(rare);
}

/// Takes programs and bands out of the view: what is compared are things. Targets are instances, which cannot be drawn in a
/// colour each, and lines and ribbons are not picked.
void removePrograms()
{
    Scene& scene = *Scene::Get();
    for (const auto& task : vrk::layout::Layout::inst().tasks) {
        for (const unsigned path : task->getPaths())
            scene.removePathVisual(path);
        for (const auto& band : task->getMfgShapes())
            scene.removeVisual(band->getId());
    }
    scene.processMsgs();
}

TEST_F(PickPicture, DemoStationIsPickedAsItIsDrawn)
{
    const Station demo = demoStation();
    show(demo);
    removePrograms();
    VisualSelection::Get()->update();

    for (const char* view : {static_cast<const char*>(nullptr), "iso", "front", "left", "top"}) {
        SCOPED_TRACE(view ? view : "as left");
        const IdPicture picture = look(view);

        expectAgreement(picture);
        const std::set<Visual*> seen = picture.seen();
        EXPECT_GE(seen.size(), 40u);
        EXPECT_THAT(kindsOf(seen), testing::IsSupersetOf({Kind::Shape, Kind::Mesh, Kind::Curve, Kind::Line}));
    }
}

/// Parts with holes and rounds, two of them twice, a circle, a line and a point.
void writeAssembly(const std::filesystem::path& file)
{
    StepDocument document;
    const TDF_Label assembly = document.addAssembly("Clamping station");
    const TDF_Label flange = document.addProduct(demo::flange(), "Flange");
    const TDF_Label bracket = document.addProduct(demo::bracket(), "Bracket");
    const auto place = [&](const TDF_Label& product, const TopLoc_Location& at, const char* name) {
        document.addComponent(assembly, product, at, name);
    };
    using vrk::test::moved, vrk::test::turnedAndMoved;
    place(document.addProduct(demo::fixturePlate(), "Plate"), moved(0, 0, 0), "Plate");
    place(flange, moved(-190, 80, 0), "Left flange");
    place(flange, turnedAndMoved(190, 80, 0), "Right flange");
    place(bracket, moved(0, 60, 0), "Bracket");
    place(bracket, turnedAndMoved(10, -90, 0), "Turned bracket");
    place(document.addProduct(demo::pipeBend(), "Bend"), moved(-200, -100, 0), "Bend");
    place(document.addProduct(demo::spurGear(24, 4, 20, 20), "Gear"), moved(200, -90, 60), "Gear");
    const gp_Ax2 above(gp_Pnt(0, 0, 160), gp::DZ());
    document.addProduct(BRepBuilderAPI_MakeEdge(gp_Circ(above, 150)).Edge(), "Round");
    document.addProduct(BRepBuilderAPI_MakeEdge(gp_Pnt(-270, -170, 1), gp_Pnt(270, 170, 200)).Edge(), "Way");
    document.addProduct(BRepBuilderAPI_MakeVertex(gp_Pnt(100, -150, 40)).Vertex(), "Mark");
    document.addProduct(BRepBuilderAPI_MakeVertex(gp_Pnt(-90, 0, 0)).Vertex(), "Mark on the plate");
    document.write(file);
}

TEST_F(PickPicture, AssemblyOfAStepFileIsPickedAsItIsDrawn)
{
    const vrk::test::TempFolder folder;
    const std::filesystem::path file = folder / "clamping.step";
    writeAssembly(file);
    const Station station = importFiles({file});
    show(station);

    for (const char* view : {"iso", "front", "back", "left", "right", "top"}) {
        SCOPED_TRACE(view);
        const IdPicture picture = look(view);

        expectAgreement(picture);
        EXPECT_GE(picture.seen().size(), 7u);
    }
    const IdPicture picture = look("iso");
    EXPECT_EQ(picture.seen().size(), 11u);
    EXPECT_THAT(kindsOf(picture.seen()), testing::ElementsAre(Kind::Shape, Kind::Curve, Kind::Point));
}

TEST_F(PickPicture, WhatMovedSinceThePictureIsExplainedByNoRule)
{
    const vrk::test::TempFolder folder;
    const std::filesystem::path file = folder / "clamping.step";
    writeAssembly(file);
    show(importFiles({file}));
    const IdPicture picture = look("iso");
    Visual* plate = picture.at(picture.width() / 2, picture.height() * 3 / 4);
    ASSERT_TRUE(plate);

    plate->setPosition(20, 0, 0);
    VisualSelection::Get()->update();

    EXPECT_GT(compareAll(picture, step).unexplained.size(), 10u);
}

} // namespace
} // namespace vrkview::test

int main(int argc, char** argv)
{
    testing::InitGoogleMock(&argc, argv);
    const vrkview::PrivateDisplay display;
    return RUN_ALL_TESTS();
}
