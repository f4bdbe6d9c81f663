#include "FakeInput.h"
#include "MouseFixture.h"
#include "canvas/Picked.h"
#include "demo/DemoSolids.h"
#include "docks/JointDock.h"
#include "docks/JointRow.h"
#include "docks/LimitBox.h"
#include "edit/History.h"
#include "recording/Recorder.h"

#include <gmock/gmock.h>

#include <BRepTools.hxx>
#include <QDoubleSpinBox>

#include <filesystem>
#include <memory>

namespace vrkview::test {
namespace {

/// Makes the recordings that PlayedSessions plays, each with the hand of a user on a window of its own process:
/// viewer_record_sessions --gtest_filter=RecordSessions.<one of them>
class RecordSessions : public MouseFixture {
protected:
    void SetUp() override
    {
        window().resize(1100, 760);
        MouseFixture::SetUp();
        leaveView();
        settle();
    }
    static std::filesystem::path folder() { return VRK_SESSIONS; }
    void record(const char* name)
    {
        recorder = std::make_unique<Recorder>(window(), folder() / (std::string(name) + ".jsonl"));
        settle();
    }
    void finish()
    {
        leaveView();
        settle();
        shoot("recorded");
        recorder.reset();
    }
    static void key(const char* name)
    {
        typeKey(name);
        settle();
    }

    std::unique_ptr<Recorder> recorder;
};

TEST_F(RecordSessions, OrbitAndPick)
{
    record("orbit-and-pick");

    const QPoint pedestal = placeOf("Pedestal");
    drag(2, pedestal, pedestal + QPoint(120, 40));
    drag(1, emptyPlace(), emptyPlace() + QPoint(-20, 30));
    turnWheel(placeOf("Gear unit"), 3);
    {
        const HeldKey shift("Shift_L");
        drag(2, {300, 300}, {360, 270});
    }
    clickAt(placeOf("Gear unit"));
    {
        const HeldKey control("Control_L");
        clickAt(placeOf("Pedestal"));
    }
    moveTo(placeOf("Workpiece"));

    finish();
}

TEST_F(RecordSessions, SelectFacesAndHide)
{
    record("select-faces-and-hide");

    clickAt(placeOf("Controller"));
    key("h");
    {
        const HeldKey alt("Alt_L");
        clickAt(placeOf("Pedestal"));
        clickAt(placeOf("Measuring bench"));
        const HeldKey shift("Shift_L");
        clickAt(placeOf("Gear unit"));
    }
    key("g");
    key("F5");

    finish();
}

TEST_F(RecordSessions, RectangleAndLasso)
{
    state().setVisible({thing("Bracket as drawn")}, false); // as the demo begins; the tests show all
    settle();
    record("rectangle-and-lasso");
    const QPoint pedestal = placeOf("Pedestal");
    {
        const HeldKey shift("Shift_L");
        drag(1, {4, 4}, {view().width() * 2 / 5, view().height() - 4});
        drag(1, pedestal + QPoint(8, 8), pedestal - QPoint(8, 8));
        const HeldKey control("Control_L");
        const QPoint gears = placeOf("Gear unit");
        drag(1, gears + QPoint(5, 5), gears - QPoint(5, 5));
    }
    {
        const HeldKey shift("Shift_L");
        key("l");
    }
    for (const QPoint& corner :
         {QPoint(6, 6), QPoint(view().width() - 6, 6), view().rect().center(), QPoint(6, view().height() - 6)})
        clickAt(corner);
    key("BackSpace");
    clickAt({view().width() - 6, view().height() - 6});
    clickAt({6, view().height() - 6});
    key("Return");
    key("Escape");

    finish();
}

TEST_F(RecordSessions, CandidatesAndPieces)
{
    record("candidates-and-pieces");

    moveTo(placeOf("Gear unit"));
    key("q");
    key("q"); // what lies behind the first
    clickAt(placeOf("Gear unit"));
    moveTo(placeOf("Controller"));
    key("q");
    key("Escape");
    {
        const HeldKey control("Control_L");
        key("1"); // without bodies
    }
    clickAt(placeOf("Pedestal"));
    {
        const HeldKey control("Control_L");
        clickAt(placeOf("Controller"));
        key("1");
    }

    finish();
}

TEST_F(RecordSessions, LoadAttachJoints)
{
    BRepTools::Write(demo::box({500, 700, 0}, {900, 1100, 300}), (folder() / "block.brep").c_str());
    record("load-attach-joints");

    window().getFiles().open({QString::fromStdString((folder() / "block.brep").string())});
    EXPECT_TRUE(waitFor([] { return !window().getFiles().getOpening().isRunning(); }));
    settle();
    // The torch, which is attached to the wrist, and the workpiece, attached to the table, go with the joints.
    const std::vector<JointRow*> joints = window().getJointDock().getRows();
    joints[0]->getBox().setValue(35);
    joints[2]->getBox().setValue(-10);
    joints[6]->getBox().setValue(30);
    settle();
    clickAt(placeOf("Workpiece"));
    moveTo(placeOf("Welding torch"));
    key("1");
    moveTo(placeOf("block"));

    finish();
}

TEST_F(RecordSessions, BandAndPath)
{
    const QPoint middle = placeOf("Controller");
    QPoint onEdge;
    for (int step = 0; step < 400 && (step == 0 || !pickedAt(onEdge, PickAim::Edge)); ++step) // until an edge is near
        onEdge = middle + QPoint(step % 20 * 4 - 40, step / 20 * 4 - 40);
    ASSERT_TRUE(pickedAt(onEdge, PickAim::Edge));
    const QString before = state().getHistory().undoText();
    record("band-and-path");

    {
        const HeldKey alt("Alt_L"), control("Control_L");
        clickAt(onEdge);
    }
    {
        const HeldKey control("Control_L"), shift("Shift_L");
        key("b");
    }
    ASSERT_EQ(state().getSelected().size(), 1u);
    {
        const HeldKey control("Control_L");
        key("h");
    }
    moveTo(onEdge + QPoint(3, 3));
    shoot("band_and_path");
    for (int i = 0; i < 2; ++i) {
        const HeldKey control("Control_L");
        key("z");
    }
    moveTo(middle);
    EXPECT_EQ(state().getHistory().undoText(), before);

    finish();
}

TEST_F(RecordSessions, MoveTurnAndType)
{
    using Handle = vrk::visual::DragHandle::HandleType;
    state().setVisible({thing("Bracket as drawn")}, false); // as the demo begins; the tests show all
    const QPoint controller = placeOf("Controller");
    settle();
    record("move-turn-and-type");

    clickAt(controller);
    key("m");
    const QPoint arrow = placeOnHandle(Handle::X);
    drag(1, arrow, arrow + QPoint(60, 35));
    key("x"); // axes of the world
    const QPoint ring = placeOnHandle(Handle::Yaw);
    drag(1, ring, ring + QPoint(40, -10));
    key("x");
    clickAt(placeOnHandle(Handle::Z));
    for (const char* name : {"1", "2", "6", "BackSpace", "5", "Return"})
        key(name);
    shoot("move_turn_and_type");
    for (int i = 0; i < 3; ++i) {
        const HeldKey control("Control_L");
        key("z");
    }
    key("m");
    clickAt(emptyPlace());

    finish();
}

} // namespace
} // namespace vrkview::test
