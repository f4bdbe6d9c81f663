#include "FakeInput.h"
#include "WindowFixture.h"
#include "canvas/HeightLegend.h"
#include "canvas/ViewLegend.h"
#include "docks/JointDock.h"
#include "docks/JointRow.h"
#include "docks/LimitBox.h"
#include "docks/ProgramDock.h"
#include "docks/ProgramModel.h"
#include "docks/TreeDock.h"
#include "edit/History.h"
#include "window/HeightScale.h"
#include "window/MessageBar.h"

#include "support/ProcessorTime.h"
#include "support/TempFolder.h"

#include "platform/layout/Layout.h"
#include "platform/layout/Mechanism.h"
#include "platform/layout/Part.h"
#include "platform/layout/PointCloud.h"
#include "platform/sdf/SdfManager.h"
#include "scene/Scene.h"
#include "view/Camera.h"
#include "visual/PointCloudVisual.h"
#include "visual/Visual.h"

#include <gmock/gmock.h>

#include <QApplication>
#include <QDoubleSpinBox>
#include <QDropEvent>
#include <QLineEdit>
#include <QMenu>
#include <QMimeData>
#include <QPushButton>
#include <QSlider>
#include <QStatusBar>

#include <fstream>

namespace vrkview::test {
namespace {

using testing::HasSubstr;
using vrk::layout::Layout;
using vrk::visual::Camera;
using vrk::visual::Scene;

constexpr const char* crane = R"(<robot name="Crane">
  <link name="base"><visual><geometry><box size="0.12 0.12 0.04"/></geometry></visual></link>
  <link name="column"><visual><origin xyz="0 0 0.1"/><geometry><box size="0.04 0.04 0.2"/></geometry></visual></link>
  <link name="slide"><visual><origin xyz="0.06 0 0"/><geometry><box size="0.16 0.03 0.03"/></geometry></visual></link>
  <joint name="turn" type="revolute"><parent link="base"/><child link="column"/><axis xyz="0 0 1"/>
    <limit lower="-1.5" upper="1.5" effort="1" velocity="1"/></joint>
  <joint name="lift" type="prismatic"><parent link="column"/><child link="slide"/><origin xyz="0 0 0.05"/><axis xyz="0 0 1"/>
    <limit lower="0" upper="0.12" effort="1" velocity="1"/></joint>
</robot>)";

constexpr const char* pillar = R"(<robot name="Pillar">
  <link name="base"><visual><origin xyz="-2.2 -1.5 1"/><geometry><box size="0.5 0.5 2"/></geometry>
    <material name=""><color rgba="1 0 1 1"/></material></visual></link>
  <link name="top"><visual><origin xyz="-2.2 -1.5 2.2"/><geometry><box size="0.3 0.3 0.3"/></geometry></visual></link>
  <joint name="turn" type="revolute"><parent link="base"/><child link="top"/><axis xyz="0 0 1"/>
    <limit lower="-1.5" upper="1.5" effort="1" velocity="1"/></joint>
</robot>)";

const std::string program = R"(MODULE weld
CONST robtarget p1:=[[600,0,900],[0,0,1,0],[0,0,0,0],[9E9,9E9,9E9,9E9,9E9,9E9]];
CONST robtarget p2:=[[600,300,900],[0,0,1,0],[0,0,0,0],[9E9,9E9,9E9,9E9,9E9,9E9]];
PROC main()
MoveL p1,v100,fine,tool0;
MoveL p2,v100,fine,tool0;
MoveL Offs(p2,0,0,depth()),v100,fine,tool0;
ENDPROC
ENDMODULE
)";

int magentaOf(const QImage& picture)
{
    int pixels = 0;
    for (int y = 0; y < picture.height(); ++y)
        for (int x = 0; x < picture.width(); ++x) {
            const QColor color = picture.pixelColor(x, y);
            pixels += color.red() > 90 && color.blue() > 90 && color.green() < color.red() / 4 ? 1 : 0;
        }
    return pixels;
}

class OpeningTest : public WindowFixture {
protected:
    static StationFiles& files() { return window().getFiles(); }
    QString write(const char* name, const std::string& bytes) const
    {
        std::ofstream(folder.path() / name) << bytes;
        return QString::fromStdString((folder.path() / name).string());
    }
    static void openAndWait(const QStringList& paths)
    {
        files().open(paths);
        ASSERT_TRUE(waitFor([] { return !files().getOpening().isRunning(); }));
        settle();
    }
    static QStringList programs()
    {
        const ProgramModel& model = window().getProgramDock().getModel();
        QStringList names;
        for (int i = 0; i < model.rowCount(); ++i)
            names << model.index(i, 0).data().toString();
        return names;
    }
    static QList<QAction*> unitActions()
    {
        for (QMenu* menu : window().findChildren<QMenu*>())
            if (menu->title() == "&Unit of meshes and scans")
                return menu->actions();
        return {};
    }
    static std::size_t rowCount() { return window().getState().getTree().getRows().size(); }

    vrk::test::TempFolder folder;
};

TEST_F(OpeningTest, FileThatCannotBeReadIsToldAndTheStationStays)
{
    const std::size_t rows = rowCount();
    const QString path = write("broken.stl", "solid x facet normal 0 0 zero");

    openAndWait({path});

    EXPECT_TRUE(window().getMessageBar().isVisible());
    EXPECT_THAT(window().getMessageBar().getText().toStdString(), HasSubstr("broken.stl"));
    EXPECT_THAT(window().getMessageBar().getText().toStdString(), HasSubstr("Nothing was added."));
    EXPECT_EQ(rowCount(), rows);
    EXPECT_TRUE(window().getSettings().recentFiles().isEmpty());
    shoot("message");
    window().getMessageBar().hide();
}

TEST_F(OpeningTest, MissingFileIsTold)
{
    openAndWait({"/no/such/file.step"});

    EXPECT_THAT(window().getMessageBar().getText().toStdString(), HasSubstr("file.step"));
    window().getMessageBar().hide();
}

TEST_F(OpeningTest, BadFileBesideGoodOnesIsToldAndTheOthersJoin)
{
    const QStringList before = programs();
    const QString good = write("good.mod", program), bad = write("broken.stl", "no mesh");

    openAndWait({bad, good});

    EXPECT_THAT(window().getMessageBar().getText().toStdString(),
                HasSubstr("1 of 2 files could not be opened, the others are shown:\n" + bad.toStdString() + ": "));
    EXPECT_EQ(programs(), before + QStringList("weld"));
    EXPECT_TRUE(window().getState().getHistory().canUndo());
    shoot("left_out");
    window().getMessageBar().hide();
    window().getState().getHistory().undo();
    settle();
    EXPECT_EQ(programs(), before);
}

TEST_F(OpeningTest, WhatIsMissingOfAFileIsTold)
{
    Station station;
    files().tellWhatIsAmiss(station, 1);
    EXPECT_FALSE(window().getMessageBar().isVisible());
    station.notes = {"a.step: 1 of 3 faces could not be transferred: #17", "b.step: this", "c.step: that",
                     "d.step: more"};

    files().tellWhatIsAmiss(station, 4);

    EXPECT_TRUE(window().getMessageBar().isVisible());
    const std::string text = window().getMessageBar().getText().toStdString();
    EXPECT_THAT(text, HasSubstr("Some of what the files hold is missing:"));
    EXPECT_THAT(text, HasSubstr("a.step: 1 of 3 faces could not be transferred: #17"));
    EXPECT_THAT(text, HasSubstr("and 1 more"));
    window().getMessageBar().hide();
}

TEST_F(OpeningTest, DamagedProgramIsToldWithItsLineAndTheStationStays)
{
    const QStringList before = programs();
    const QString bad = write("weld.mod", program + "MODULE more\nPROC main()\n");
    const bool couldUndo = window().getState().getHistory().canUndo();

    openAndWait({bad});

    const std::string text = window().getMessageBar().getText().toStdString();
    EXPECT_THAT(text, HasSubstr("weld.mod: line 12: 'main' of line 11 has no ENDPROC"));
    EXPECT_THAT(text, HasSubstr("Nothing was added."));
    EXPECT_EQ(programs(), before);
    EXPECT_EQ(window().getState().getHistory().canUndo(), couldUndo);
    window().getMessageBar().hide();
}

TEST_F(OpeningTest, ProgramJoinsAsAStepAndASecondOfItsNameIsKept)
{
    const QStringList before = programs();
    const QString path = write("weld.mod", program);
    History& history = window().getState().getHistory();

    openAndWait({path});
    EXPECT_EQ(window().statusBar()->currentMessage(), "weld: 3 moves, 2 placed, 1 not known before it runs; 2 targets");
    openAndWait({path});

    EXPECT_EQ(programs(), before + QStringList({"weld", "weld (2)"}));
    shoot("opened_programs");
    history.undo();
    history.undo();
    EXPECT_EQ(programs(), before);
    history.redo();
    EXPECT_EQ(programs(), before + QStringList("weld"));
    history.undo();
    settle();
}

TEST_F(OpeningTest, DroppedRobotJoinsTheStationAndItsJointsFollowTheSliders)
{
    const std::size_t rows = rowCount();
    const std::size_t before = window().getJointDock().getRows().size();
    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(write("crane.urdf", crane))});
    QDragEnterEvent enter(QPoint(300, 300), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QDropEvent drop(QPointF(300, 300), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(&window(), &enter);
    EXPECT_TRUE(enter.isAccepted());
    QApplication::sendEvent(&window(), &drop);
    ASSERT_TRUE(waitFor([rows] { return rowCount() > rows; }));
    settle();
    const auto& robot = Layout::inst().manipulators.back();
    const unsigned slide = robot->getLinks()[2]->getId();
    const float height = Scene::GetVisual(slide)->getWorldPosition().z;
    const std::vector<JointRow*> all = window().getJointDock().getRows();
    ASSERT_EQ(all.size(), before + 2);
    // The rows of the arm come first, those of the devices last.
    const std::size_t first = Layout::inst().manipulators.front()->getJointValues().size();
    const std::vector<JointRow*> lines = {all[first], all[first + 1]};

    lines[0]->getBox().setValue(45);
    lines[1]->getSlider().setValue(lines[1]->getSlider().maximum());
    settle();

    EXPECT_NEAR(robot->getJointValues()[0], 0.785398, 1e-5);
    EXPECT_NEAR(robot->getJointValues()[1], 120, 1e-5);
    EXPECT_NEAR(Scene::GetVisual(slide)->getWorldPosition().z - height, 120, 1e-3);
    EXPECT_EQ(lines[0]->getBox().maximum(), 85.94); // the limit, in degrees
    EXPECT_THAT(window().getSettings().recentFiles().front().toStdString(), HasSubstr("crane.urdf"));
    shoot("joints");

    robot->setJointValues(std::vector{0.0, 30.0}); // from elsewhere
    EXPECT_TRUE(waitFor([&] { return lines[1]->getValue() == 30 && lines[0]->getValue() == 0; }));
}

TEST_F(OpeningTest, ScanInMetresIsToldOfAndComesInTheUnitThatIsChosen)
{
    MessageBar& messages = window().getMessageBar();
    const QString file = write("room.xyz", "0 0 0 200 30 30\n4 0 0 200 30 30\n0 3 2.5 200 30 30\n");

    openAndWait({file});
    EXPECT_THAT(messages.getText().toStdString(), HasSubstr("room: this scan seems to be in metres"));
    EXPECT_EQ(Layout::inst().pointclouds.back()->getPoints().at(1), vrk::rob::Posf(4, 0, 0)) << "not changed silently";
    window().getState().getHistory().undo();
    messages.tell("");
    messages.hide();
    for (QAction* unit : unitActions())
        if (unit->text() == "M&etres")
            unit->trigger();
    openAndWait({file});

    EXPECT_FALSE(messages.isVisible());
    EXPECT_EQ(Layout::inst().pointclouds.back()->getPoints().at(1), vrk::rob::Posf(4000, 0, 0));
    window().getState().getHistory().undo();
    files().getOpening().setReading({});
    settle();
}

TEST_F(OpeningTest, ScanWithColoursShowsThemOrItsHeights)
{
    const std::size_t clouds = Layout::inst().pointclouds.size();
    openAndWait({write("room.xyz", "0 0 0 200 30 30\n400 0 0 200 30 30\n0 300 250 200 30 30\n")});
    const unsigned id = Layout::inst().pointclouds.back()->getId();
    const auto& scan = dynamic_cast<const vrk::visual::PointCloudVisual&>(*Scene::GetVisual(id));
    EXPECT_FALSE(scan.areHeightsShown());
    QAction* byHeight = nullptr;
    for (QAction* each : window().QWidget::actions())
        if (each->text() == "Scans by &height")
            byHeight = each;
    ASSERT_NE(byHeight, nullptr);

    byHeight->trigger();
    settle();
    EXPECT_TRUE(scan.areHeightsShown());
    auto& scale = *window().findChild<HeightScale*>();
    EXPECT_TRUE(scale.isVisible());
    std::vector<unsigned> others;
    for (const auto& cloud : Layout::inst().pointclouds)
        if (cloud->getId() != id)
            others.push_back(cloud->getId());
    window().getState().setVisible(others, false);
    settle();
    EXPECT_EQ(scale.lowText(), "0.0");
    EXPECT_EQ(scale.highText(), "250 mm");
    shoot("heights");
    const QImage& legend = window().findChild<ViewLegend*>()->getPicture();
    others.clear();
    for (const StationTree::Row& row : window().getState().getTree().getRows())
        if (row.id != id)
            others.push_back(row.id);
    window().getState().hideOnly(others);
    settle();
    EXPECT_FALSE(legend.isNull());

    byHeight->trigger();
    settle();
    EXPECT_TRUE(legend.isNull());
    while (Layout::inst().pointclouds.size() > clouds) // what was hidden comes back first
        window().getState().getHistory().undo();
    settle();
    EXPECT_FALSE(scale.highText().isEmpty());
}

TEST_F(OpeningTest, PlyWithFacesIsABodyInTheColoursOfItsPoints)
{
    const std::size_t parts = Layout::inst().parts.size();
    openAndWait(
        {write("flag.ply", "ply\nformat ascii 1.0\nelement vertex 3\nproperty float x\nproperty float y\nproperty "
                           "float z\nproperty uchar red\nproperty uchar green\nproperty uchar blue\nelement face "
                           "1\nproperty list uchar int vertex_indices\nend_header\n-2200 -1500 0 255 0 255\n-1200 "
                           "-1500 0 255 0 255\n-2200 -1500 2500 255 0 255\n3 0 1 2\n")});

    ASSERT_EQ(Layout::inst().parts.size(), parts + 1);
    EXPECT_GT(magentaOf(after("F")), 100);
    shoot("flag");
    window().getState().getHistory().undo();
    settle();
}

TEST_F(OpeningTest, ArmOfNoKnownMakerIsShownInItsOwnColours)
{
    const QString file = write("pillar.urdf", pillar);
    after("0");
    ASSERT_EQ(magentaOf(seen()), 0);

    openAndWait({file});

    EXPECT_GT(magentaOf(after("F")), 100);
    shoot("pillar");
}

TEST_F(OpeningTest, WhatIsGivenUpAddsNothing)
{
    const std::size_t rows = rowCount();
    bool wasCancelled = false;
    const auto connection =
        QObject::connect(&files().getOpening(), &FileOpening::cancelled, [&wasCancelled] { wasCancelled = true; });
    QPushButton& button = *window().findChild<QPushButton*>("cancel");

    files().open({write("crane.urdf", crane)});
    EXPECT_TRUE(button.isVisible());
    button.click();

    EXPECT_TRUE(waitFor([] { return !files().getOpening().isRunning(); }));
    EXPECT_TRUE(wasCancelled);
    EXPECT_FALSE(button.isVisible());
    EXPECT_EQ(rowCount(), rows);
    QObject::disconnect(connection);
}

TEST_F(OpeningTest, StationThatCannotBeSavedIsTold)
{
    const QString noFolder = write("file", "");

    files().save(noFolder + "/cell");

    EXPECT_THAT(window().getMessageBar().getText().toStdString(), HasSubstr("file/cell.station.json"));
    EXPECT_THAT(window().getMessageBar().getText().toStdString(), HasSubstr("was not saved"));
    window().getMessageBar().hide();
}

TEST_F(OpeningTest, ScreenshotShowsWhatTheViewShows)
{
    after("0");
    const QSize size = view().toDevice(view().size());

    QImage picture = view().takePicture(size);
    addHeightLegend(picture);

    EXPECT_EQ(picture.size(), size);
    settle();
    const QImage screen = seen();
    double difference = 0;
    for (int y = 0; y < size.height(); y += 4)
        for (int x = 0; x < size.width(); x += 4)
            difference += std::abs(qGray(picture.pixel(x, y)) - qGray(screen.pixel(x, y)));
    EXPECT_LT(difference / (size.width() / 4.0 * size.height() / 4.0), 4.0);
}

TEST_F(OpeningTest, OutlineOfWhatIsSelectedIsInTheScreenshotAndStaysInTheWindow)
{
    after("0");
    const auto outlined = [](const QImage& picture) {
        int count = 0;
        for (int y = 0; y < picture.height(); ++y)
            for (int x = 0; x < picture.width(); ++x) {
                const QRgb pixel = picture.pixel(x, y);
                count += qRed(pixel) > 200 && qGreen(pixel) < 90 && qBlue(pixel) > 110 ? 1 : 0;
            }
        return count;
    };
    const int before = outlined(seen());
    window().getState().selectVisuals({vrk::layout::Layout::inst().parts.front()->getId()});
    settle();
    const int inWindow = outlined(seen());

    const QImage picture = view().takePicture(view().toDevice(view().size()));
    settle();

    EXPECT_GT(inWindow, before + 100);
    EXPECT_GT(outlined(picture), before + 100);
    EXPECT_EQ(outlined(seen()), inWindow);
    window().getState().clear();
    settle();
}

TEST_F(OpeningTest, NewMoveTakesOverFromTheOneBeforeAndInputEndsIt)
{
    after("0");
    typeKey("1");
    ASSERT_TRUE(waitFor([] { return window().getFlight().isFlying(); }));
    typeKey("5");
    settle();
    const auto down = Camera::Get()->getWorldRotation() * vrk::rob::DirTemplate<float>(0, 0, -1);
    EXPECT_LT(down.z, -0.999f);

    typeKey("1");
    ASSERT_TRUE(waitFor([] { return window().getFlight().isFlying(); }));
    clickLeft();
    EXPECT_TRUE(waitFor([] { return !window().getFlight().isFlying(); }));

    typeKey("3");
    ASSERT_TRUE(waitFor([] { return window().getFlight().isFlying(); }));
    Camera::Get()->setWorldPosition({5000, 0, 0}); // somebody else
    settle();
    EXPECT_EQ(Camera::Get()->getWorldPosition().x, 5000);
    after("0");
}

TEST_F(OpeningTest, SavedStationTakesThePlaceOfThePresentOneAndIsTheSame)
{
    // Points that were made by code have no file to refer to.
    const unsigned cloud = Layout::inst().pointclouds.front()->getId();
    Scene::Get()->removeVisual(cloud);
    Scene::Get()->processMsgs();
    Layout::inst().removePointCloud(cloud);
    window().getState().stationHasChanged();
    const std::size_t rows = rowCount();
    const unsigned hidden = Layout::inst().parts.front()->getId();
    window().getState().setVisible({hidden}, false);
    const QString path = QString::fromStdString((folder.path() / "cell.station.json").string());
    files().save(path);
    ASSERT_FALSE(window().getMessageBar().isVisible()) << window().getMessageBar().getText().toStdString();

    openAndWait({path});

    EXPECT_EQ(rowCount(), rows);
    EXPECT_EQ(window().getState().shownOf(hidden), ViewState::Shown::Not);
    EXPECT_FALSE(window().getMessageBar().isVisible()) << window().getMessageBar().getText().toStdString();
    EXPECT_THAT(window().windowTitle().toStdString(), HasSubstr("cell.station.json"));
    shoot("reopened");
}

TEST_F(OpeningTest, StationOfTenThousandThingsStaysQuick)
{
    for (int i = 0; i < 10000; ++i) {
        const auto part =
            std::make_shared<vrk::layout::Part>(sdf::SdfManager::inst().generateId(), "Bolt " + std::to_string(i));
        Layout::inst().addPart(part);
        Scene::Get()->addPart(part.get());
    }
    Scene::Get()->processMsgs();
    settle();
    ViewState& state = window().getState();
    const auto took = [](const char* what, const std::function<void()>& work) {
        const double seconds = vrk::test::threadSecondsOf([&work] {
            work();
            QApplication::processEvents();
        });
        std::cout << what << ": " << 1e3 * seconds << " ms" << std::endl;
        EXPECT_LT(seconds, 4.0) << what; // what is quadratic takes minutes
    };

    took("entered", [&] { state.stationHasChanged(); });
    took("filtered", [] { window().getTreeDock().getFilter().setText("bolt 99"); });
    took("unfiltered", [] { window().getTreeDock().getFilter().clear(); });
    std::vector<unsigned> all;
    for (const StationTree::Row& row : state.getTree().getRows())
        all.push_back(row.id);
    took("selected", [&] { state.selectVisuals(all); });
    took("hidden", [&] { state.setVisible(all, false); });
    took("shown", [&] { state.showAll(); });
    took("cleared", [&] { state.clear(); });
}

} // namespace
} // namespace vrkview::test
