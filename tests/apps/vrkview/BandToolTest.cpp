#include "canvas/BandTool.h"

#include "CrateFixture.h"
#include "FakeInput.h"
#include "canvas/DrawMode.h"
#include "canvas/MoveTool.h"
#include "edit/Bands.h"
#include "edit/History.h"
#include "edit/RemoveThings.h"

#include "handles/HandleMeshVisual.h"
#include "handles/PathEndsHandle.h"
#include "handles/UVIndicatorVisual.h"
#include "handles/VectorHandle.h"
#include "platform/layout/Body.h"
#include "platform/sdf/SdfManager.h"
#include "scene/core/SceneCore.h"
#include "selection/VisualSelection.h"
#include "task/bands/BandVectorVisual.h"
#include "task/bands/VectorBandVisual.h"
#include "visual/MeshVisual.h"

#include <BRepBndLib.hxx>
#include <Bnd_Box.hxx>
#include <TopExp.hxx>
#include <TopTools_IndexedMapOfShape.hxx>

#include <Ogre.h>

#include <gmock/gmock.h>

#include <QAction>
#include <QDockWidget>

#include <cmath>

namespace vrkview::test {
namespace {

using testing::HasSubstr;
using vrk::rob::Posd;
using vrk::rob::Posed;
using vrk::task::EdgeMfgShape;
using vrk::visual::PathEndsHandle;
using vrk::visual::Scene;
using vrk::visual::UVIndicatorVisual;
using vrk::visual::VectorBandVisual;
using vrk::visual::VectorHandle;
using vrk::visual::Visual;
using Piece = BandTool::Piece;

constexpr double side = 300; // of the crate, along which the band runs

/// A crate above the station with a band along its upper edge in front, which is selected and shaped by hand; from the
/// front, right and above.
class BandToolTest : public WithCrates<> {
protected:
    void SetUp() override
    {
        for (QDockWidget* dock : window().findChildren<QDockWidget*>())
            dock->hide();
        window().resize(760, 620);
        state().setDrawMode(*findDrawMode("shaded"));
        WithCrates::SetUp();
        const unsigned crate = addCrate("Crate", Posed(Posd(-1200, -1200, 1300)));
        const auto part = std::dynamic_pointer_cast<vrk::layout::Part>(sdf::Share(crate));
        const auto body = part->getBodies().front();
        bodyId = body->getId();
        history().forget();
        auto change =
            std::make_unique<AddBand>(bodyId, std::vector{edgeInFront(body->getShape())}, vrk::task::SeamOptions());
        band = change->getBand();
        history().push(std::move(change));
        settle();
        start = camera();
        emit mouse().focusRequested(crate);
        ASSERT_TRUE(waitFor([] { return !window().getFlight().isFlying(); }));
        state().selectVisuals({band});
        mover().setOn(true);
        settle();
        before = BandLook::Of(*bandOf(band));
    }
    void TearDown() override
    {
        tool().cancel();
        mover().setOn(false);
        while (history().canUndo())
            history().undo();
        history().forget();
        Scene::Get()->setCameraPose(start);
        settle();
        WithCrates::TearDown();
    }
    static unsigned edgeInFront(const TopoDS_Shape& shape)
    {
        TopTools_IndexedMapOfShape edges;
        TopExp::MapShapes(shape, TopAbs_EDGE, edges);
        for (int i = 1; i <= edges.Extent(); ++i) {
            Bnd_Box box;
            BRepBndLib::Add(edges(i), box);
            const gp_Pnt low = box.CornerMin(), high = box.CornerMax();
            if (low.Z() > 299 && high.Y() < -149)
                return static_cast<unsigned>(i);
        }
        ADD_FAILURE() << "no such edge";
        return 1;
    }
    static BandTool& tool() { return window().getBandTool(); }
    static MoveTool& mover() { return window().getMover(); }
    static History& history() { return state().getHistory(); }
    VectorBandVisual& visual() const { return dynamic_cast<VectorBandVisual&>(*Scene::GetVisual(band)); }
    std::shared_ptr<EdgeMfgShape> run() const { return bandOf(band); }
    double from() const { return RunPlaces(*run(), {}).alongOf(run()->getStart()); }
    double to() const { return RunPlaces(*run(), {}).alongOf(run()->getEnd()); }
    static bool isShown(const Visual& handle) { return handle.getSceneNode()->isInSceneGraph(); }

    static QPoint knob(bool isStart)
    {
        const PathEndsHandle& ends = *PathEndsHandle::Get();
        return onScreen(Posd(isStart ? ends.startWorldPos() : ends.endWorldPos())).toPoint();
    }
    static QPoint ring(const Visual* wanted)
    {
        return placeOn(Posd(VectorHandle::Get()->getWorldPosition()),
                       [wanted](const Visual* found) { return found == wanted; });
    }
    /// Where the view shows a place of the edges.
    QPoint onEdge(double along) const
    {
        const RunPlaces places(*run(), {});
        const EdgeMfgShape::PathPoint point = places.at(along);
        const Posd place = run()->getMfgVector(point).getPos(run()->getEdge(point.edge));
        return onScreen(Posed(Scene::GetVisual(bodyId)->getWorldPose()) * place).toPoint();
    }
    EdgeMfgShape::PathPoint vectorAt(std::size_t index) const
    {
        return *visual().getBandVectors().at(index)->getPathPoint();
    }
    /// A place on one of the lines that stand on the edge.
    QPoint vectorOnScreen(std::size_t index) const
    {
        const EdgeMfgShape::PathPoint point = vectorAt(index);
        const Posed onBody = run()->getMfgVector(point).getPose(run()->getEdge(point.edge));
        return onScreen(Posed(Scene::GetVisual(bodyId)->getWorldPose()) * (onBody * Posd(0, 0, 12))).toPoint();
    }
    static void press(const QPoint& place)
    {
        moveTo(place);
        pressButton(1);
        ASSERT_TRUE(waitFor([] { return tool().isDragging(); }));
    }
    static void release()
    {
        releaseButton(1);
        EXPECT_TRUE(waitFor([] { return !tool().isDragging(); }));
        settle();
    }
    static std::unique_ptr<QObject> connectText(QString& told)
    {
        auto scope = std::make_unique<QObject>();
        QObject::connect(&tool(), &BandTool::textChanged, scope.get(), [&told](const QString& text) {
            if (!text.isEmpty())
                told = text;
        });
        return scope;
    }

    unsigned bodyId = 0;
    unsigned band = 0;
    BandLook before;
    vrk::rob::Posef start; // of the camera
};

TEST_F(BandToolTest, KnobsAndRingsStandOnTheSelectedBandWhileThingsAreMovedByHand)
{
    EXPECT_EQ(tool().getBand(), band);
    EXPECT_TRUE(isShown(*PathEndsHandle::Get()));
    EXPECT_EQ(PathEndsHandle::Get()->getParent(), Scene::GetVisual(bodyId));
    EXPECT_FALSE(isShown(*VectorHandle::Get())) << "until a vector is clicked";
    EXPECT_FALSE(tool().getVector().has_value());
    shoot("band-ends");
    clickAt(vectorOnScreen(1));
    settle();
    EXPECT_TRUE(isShown(*VectorHandle::Get()));
    ASSERT_TRUE(tool().getVector().has_value());
    EXPECT_NE(visual().getSelectedVector(), nullptr);
    shoot("band-handles");

    mover().setOn(false);
    settle();
    EXPECT_EQ(tool().getBand(), 0u);
    EXPECT_FALSE(isShown(*PathEndsHandle::Get()));
    EXPECT_FALSE(isShown(*VectorHandle::Get()));
    mover().setOn(true);
    state().clear();
    settle();
    EXPECT_EQ(tool().getBand(), 0u);
}

TEST_F(BandToolTest, KnobShortensTheRunToThePlaceUnderTheMouseInOneStep)
{
    QString told;
    const auto scope = connectText(told);
    const int steps = history().count();
    press(knob(true));
    moveTo(onEdge(60));
    moveTo(onEdge(100));
    settle();
    EXPECT_EQ(before, BandLook::Of(*run())) << "the model waits for the end of the drag";
    EXPECT_NE(visual().getSelectedBand(), nullptr);
    shoot("band-shortened");

    release();

    EXPECT_NEAR(from(), 100, 3); // the place of a whole pixel
    EXPECT_NEAR(to(), side, 1e-6);
    EXPECT_THAT(told.toStdString(), HasSubstr("mm long"));
    ASSERT_EQ(history().count(), steps + 1);
    EXPECT_TRUE(state().isSelected(band));
    EXPECT_TRUE(isShown(*PathEndsHandle::Get()));
    history().undo();
    settle();
    EXPECT_EQ(before, BandLook::Of(*run()));
}

TEST_F(BandToolTest, OtherKnobIsDrawnByStepsWithControlAndStopsBeforeTheFirst)
{
    press(knob(false));
    {
        const HeldKey control("Control_L");
        moveTo(onEdge(202));
        settle();
        release();
    }
    EXPECT_NEAR(to(), 200, 1e-6);

    press(knob(false));
    moveTo(onEdge(100));
    moveTo(onEdge(0) + (onEdge(0) - onEdge(100)));
    release();
    EXPECT_NEAR(to(), 1, 1e-6) << "something is left of it";
    EXPECT_NEAR(from(), 0, 1e-6);
}

TEST_F(BandToolTest, ClosedBandOpensWhereItsKnobIsDrawn)
{
    BandLook closed = before;
    closed.closed = true;
    history().push(std::make_unique<EditBand>("Close", band, closed));
    settle();
    EXPECT_FALSE(PathEndsHandle::Get()->getEndHandle()->isVisible());

    press(knob(true));
    moveTo(onEdge(40));
    moveTo(onEdge(50));
    release();

    EXPECT_FALSE(run()->closed);
    EXPECT_NEAR(from(), 50, 3);
    EXPECT_TRUE(PathEndsHandle::Get()->getEndHandle()->isVisible());
    EXPECT_TRUE(vrk::selection::VisualSelection::Get()->isEnabled(PathEndsHandle::Get()->getEndHandle()->getKnob()));
    history().undo();
    settle();
    EXPECT_TRUE(run()->closed);
}

TEST_F(BandToolTest, RingTurnsTheToolAtItsVectorAndNoOther)
{
    for (const Piece piece : {Piece::Twist, Piece::Tilt}) {
        const Visual* wanted = piece == Piece::Twist ? static_cast<const Visual*>(VectorHandle::Get()->getTwist())
                                                     : VectorHandle::Get()->getTilt();
        clickAt(vectorOnScreen(1));
        settle();
        ASSERT_TRUE(tool().getVector().has_value());
        const auto [edge, parameter] = *tool().getVector();
        const auto poseThere = [&] { return run()->getMfgVector({edge, parameter}).getPose(run()->getEdge(edge)); };
        const Posed start = poseThere();
        const BandLook lookBefore = BandLook::Of(*run());
        QString told;
        const auto scope = connectText(told);
        const QPoint place = ring(wanted);
        press(place);
        moveTo(place + QPoint(8, 8));
        moveTo(place + QPoint(25, 30));
        settle();
        shoot(piece == Piece::Twist ? "band-twist" : "band-tilt");
        release();

        // About x of the rings by a twist, about y by a tilt.
        const vrk::rob::Vec3d turned =
            start.rotation().inverse() * vrk::rob::Vec3d(poseThere().rotation() * vrk::rob::Dird(0, 0, 1));
        EXPECT_NEAR(piece == Piece::Twist ? turned.x : turned.y, 0, 1e-9);
        EXPECT_GT(std::abs(piece == Piece::Twist ? turned.y : turned.x), 0.01);
        EXPECT_THAT(told.toStdString(), HasSubstr(piece == Piece::Twist ? "Twist" : "Tilt"));
        const BandLook now = BandLook::Of(*run());
        int others = 0;
        for (std::size_t i = 0; i < now.directions.front().size(); ++i)
            others += now.directions.front()[i] == lookBefore.directions.front()[i] ? 0 : 1;
        EXPECT_EQ(others, 1) << "one vector, the one with the rings";
        history().undo();
        settle();
        EXPECT_EQ(lookBefore, BandLook::Of(*run()));
    }
}

TEST_F(BandToolTest, ClickOnAVectorPutsTheRingsThereAndAPressElsewhereTakesThemOff)
{
    ASSERT_GE(visual().getBandVectors().size(), 2u);
    moveTo(vectorOnScreen(1));
    settle();
    EXPECT_NE(visual().getPreviewVector(), nullptr);
    clickAt(vectorOnScreen(1));
    settle();
    EXPECT_EQ(tool().getVector(), vectorAt(1));
    EXPECT_EQ(visual().getSelectedVector(), visual().getBandVectors()[1]);

    clickAt(vectorOnScreen(0));
    settle();

    EXPECT_EQ(tool().getVector(), vectorAt(0));
    const EdgeMfgShape::PathPoint point = vectorAt(0);
    const Posd there =
        Posed(Scene::GetVisual(bodyId)->getWorldPose()) * run()->getMfgVector(point).getPos(run()->getEdge(point.edge));
    EXPECT_LT((Posd(VectorHandle::Get()->getWorldPosition()) - there).length(), 0.01);
    EXPECT_TRUE(state().isSelected(band)) << "the click was the rings'";

    clickAt(emptyPlace());
    settle();
    EXPECT_FALSE(tool().getVector().has_value());
    EXPECT_FALSE(isShown(*VectorHandle::Get()));
}

TEST_F(BandToolTest, EscapeTakesADragBack)
{
    const int steps = history().count();
    press(knob(true));
    moveTo(onEdge(80));
    typeKey("Escape");
    EXPECT_TRUE(waitFor([] { return !tool().isDragging(); }));
    releaseButton(1);
    settle();

    EXPECT_EQ(before, BandLook::Of(*run()));
    EXPECT_EQ(history().count(), steps);
    EXPECT_EQ(visual().getBandVectors().size(), before.directions.front().size());
    const Posd start(PathEndsHandle::Get()->getStartHandle()->getWorldPosition());
    EXPECT_LT((onScreen(start).toPoint() - onEdge(0)).manhattanLength(), 3) << "the knob is back";
}

TEST_F(BandToolTest, BandThatGoesDuringADragEndsIt)
{
    press(knob(true));
    moveTo(onEdge(80));

    history().push(std::make_unique<RemoveBand>(band));
    state().stationHasChanged();
    settle();

    EXPECT_FALSE(tool().isDragging());
    EXPECT_EQ(tool().getBand(), 0u);
    EXPECT_FALSE(isShown(*PathEndsHandle::Get()));
    releaseButton(1);
    settle();
    history().undo();
    settle();
    EXPECT_EQ(before, BandLook::Of(*run()));
}

TEST_F(BandToolTest, BodyThatGoesDuringADragTakesNoHandleAlong)
{
    press(knob(true));
    moveTo(onEdge(80));

    const QPoint farther = onEdge(120);
    removeFromScene(bodyId);
    moveTo(farther);
    releaseButton(1);
    settle();

    ASSERT_NE(PathEndsHandle::Get(), nullptr);
    ASSERT_NE(VectorHandle::Get(), nullptr);
    EXPECT_FALSE(isShown(*PathEndsHandle::Get()));
    EXPECT_FALSE(tool().isDragging());
}

TEST_F(BandToolTest, DirectionsOfAFaceStandOnTheOneThatWasSelectedLast)
{
    state().clear();
    typeKey("u");
    state().toggleFace(bodyId, 3, ViewState::FaceUse::Base);
    settle();
    const UVIndicatorVisual* mark = UVIndicatorVisual::Get();
    ASSERT_NE(mark, nullptr);
    EXPECT_TRUE(mark->isVisible());
    const vrk::rob::Posf first = mark->getWorldPosition();
    const vrk::rob::Posf crate = Scene::GetVisual(bodyId)->getWorldPosition();
    EXPECT_LT((first - crate).length(), 400.0f) << "on the crate, and not where it was drawn";

    state().toggleFace(bodyId, 6, ViewState::FaceUse::Base);
    settle();
    EXPECT_GT((mark->getWorldPosition() - first).length(), 100.0f);
    shoot("face-directions");
    const Ogre::AxisAlignedBox box = mark->getMesh()->getEntity()->getWorldBoundingBox(true);
    EXPECT_GT(box.getSize().length(), 60) << "to be seen on a face of some 300 mm";
    EXPECT_LT(box.getSize().length(), 250);
    typeKey("u");
    settle();
    EXPECT_FALSE(mark->isVisible());
}

} // namespace
} // namespace vrkview::test
