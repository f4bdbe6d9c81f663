#include "CrateFixture.h"
#include "FakeInput.h"
#include "StepsFixture.h"
#include "canvas/Picked.h"
#include "edit/Bands.h"
#include "edit/ModelPlaces.h"
#include "edit/MoveThings.h"
#include "edit/RemoveThings.h"
#include "paint/BodyCoats.h"
#include "paint/PaintActions.h"
#include "paint/PaintDock.h"
#include "paint/SprayPaths.h"
#include "paint/SprayRun.h"
#include "paint/ThicknessLegend.h"

#include "support/TempFolder.h"

#include "platform/layout/Body.h"
#include "platform/process/ThicknessMap.h"
#include "platform/sdf/SdfManager.h"
#include "platform/task/DataItem.h"
#include "platform/task/Instruction.h"
#include "platform/task/Path.h"
#include "platform/task/Task.h"
#include "scene/Scene.h"
#include "visual/PaintVisual.h"

#include <gmock/gmock.h>

#include <QDockWidget>
#include <QDoubleSpinBox>
#include <QElapsedTimer>
#include <QLabel>
#include <QToolButton>

#include <algorithm>
#include <fstream>
#include <numeric>

namespace vrkview::test {
namespace {

using testing::Each;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using vrk::layout::Layout;
using vrk::rob::Posd;
using vrk::rob::Posed;
using vrk::rob::Rotationd;
using vrk::task::Motion;
using vrk::visual::Scene;

/// A crate above the station, and a path of a program over its top: a linear move of 200 along y, from above.
class PaintTest : public WithCrates<StepsFixture> {
protected:
    void SetUp() override
    {
        WithCrates::SetUp();
        window().getMessageBar().tell("");
        window().getMessageBar().hide();
        for (QDockWidget* dock : window().findChildren<QDockWidget*>())
            dock->hide();
        crate = addCrate("Crate", Posed(top));
        body = bodyOf(crate);
        task = std::make_shared<vrk::task::Task>(newId(), "Painting");
        path = std::make_shared<vrk::task::Path>(newId(), "paintTop");
        move(Motion::Joint, Posd(0, -100, 300));
        move(Motion::Linear, Posd(0, 100, 300));
        task->addPath(path);
        Layout::inst().addTask(task);
        start = camera();
        lookAt(Posd(top.x, top.y, top.z + 300));
        settle();
    }
    void TearDown() override
    {
        run().end();
        while (history().canUndo())
            history().undo();
        history().forget();
        coats().forget();
        Layout::inst().remove(task->getId());
        window().getPaintDock().hide();
        window().getMessageBar().tell("");
        window().getMessageBar().hide();
        Scene::Get()->setCameraPose(start);
        settle();
        WithCrates::TearDown();
    }

    static unsigned newId() { return sdf::SdfManager::inst().generateId(); }
    static BodyCoats& coats() { return window().getCoats(); }
    static SprayRun& run() { return window().getSprayRun(); }
    static PaintActions& paints() { return window().getPaints(); }
    static unsigned bodyOf(unsigned part)
    {
        return std::dynamic_pointer_cast<vrk::layout::Part>(sdf::Share(part))->getBodies().front()->getId();
    }
    /// To a place of the crate's frame, the tool pointing down.
    void move(Motion motion, const Posd& place, const Posd* via = nullptr)
    {
        const auto target = [&](const Posd& at) {
            auto item = std::make_shared<vrk::task::RobTargetDataItem>(newId(), "p");
            item->setPose(Posed(at + vrk::rob::Vec3d(top.x, top.y, top.z),
                                Rotationd::FromAxes({1, 0, 0}, {0, -1, 0}, {0, 0, -1})));
            task->addDataItem(item);
            return item;
        };
        auto made = std::make_shared<vrk::task::MoveInst>(newId(), "move", motion, target(place),
                                                          motion == Motion::Joint ? vrk::task::MoveLine::Dashed
                                                                                  : vrk::task::MoveLine::Solid);
        if (via)
            made->setCircleItem(target(*via));
        path->addInstruction(made);
    }
    void begin() const
    {
        state().selectVisuals({path->getId(), crate});
        ASSERT_EQ(state().getSelected().size(), 2u);
        paints().begin();
        ASSERT_EQ(run().getPath(), path->getId()) << message();
    }
    std::vector<float> coat() const { return coats().getThickness(body); }
    double sum() const
    {
        const std::vector<float> lies = coat();
        return std::accumulate(lies.begin(), lies.end(), 0.0);
    }
    std::optional<double> onTop(double x, double y) const
    {
        return coats().thicknessAt(body, Posd(top.x + x, top.y + y, top.z + 300), {0, 0, 1});
    }

    const Posd top{-1200, -1200, 1300};
    vrk::rob::Posef start;
    unsigned crate = 0, body = 0;
    std::shared_ptr<vrk::task::Task> task;
    std::shared_ptr<vrk::task::Path> path;
    vrk::test::TempFolder folder;
};

// Ways

TEST_F(PaintTest, GunIsLedAlongLinearMovesAtItsDistance)
{
    const SprayWays ways = sprayWaysOf(path->getId(), 150);

    ASSERT_THAT(ways, SizeIs(1));
    ASSERT_THAT(ways.front(), SizeIs(2));
    EXPECT_NEAR((ways[0][0].nozzle - Posd(top.x, top.y - 100, top.z + 450)).length(), 0, 1e-6);
    EXPECT_NEAR((ways[0][1].nozzle - Posd(top.x, top.y + 100, top.z + 450)).length(), 0, 1e-6);
    EXPECT_NEAR(ways[0][0].axis.z, -1, 1e-9);
}

TEST_F(PaintTest, JointMoveEndsAWayAndTheNextBeginsThere)
{
    move(Motion::Joint, Posd(50, 100, 300));
    move(Motion::Linear, Posd(50, -100, 300));

    const SprayWays ways = sprayWaysOf(path->getId(), 10);

    ASSERT_THAT(ways, SizeIs(2));
    EXPECT_NEAR((ways[1][0].nozzle - Posd(top.x + 50, top.y + 100, top.z + 310)).length(), 0, 1e-6);
    run().begin(path->getId(), {});
    EXPECT_NEAR(run().length(), 400, 1e-6) << "the joint move is no part of it";
}

TEST_F(PaintTest, CircularMoveIsAnArcThroughItsViaPoint)
{
    const Posd via(100, 0, 300); // half a circle about the middle, back to where the way began
    move(Motion::Circular, Posd(0, -100, 300), &via);

    const SprayWays ways = sprayWaysOf(path->getId(), 10);

    ASSERT_THAT(ways, SizeIs(1));
    ASSERT_GT(ways[0].size(), 20u);
    for (std::size_t i = 1; i < ways[0].size(); ++i)
        EXPECT_NEAR((ways[0][i].nozzle - Posd(top.x, top.y, top.z + 310)).length(), 100, 1e-3);
    const auto farthest = std::ranges::max(ways[0], {}, [](const auto& place) { return place.nozzle.x; });
    EXPECT_NEAR(farthest.nozzle.x, top.x + 100, 0.1);
}

TEST_F(PaintTest, MoveWhoseTargetIsNotKnownEndsAWay)
{
    auto unknown = std::make_shared<vrk::task::Instruction>(newId(), "MoveL Offs(p2,0,0,depth())");
    unknown->remark = "not known before it runs";
    path->addInstruction(unknown);
    move(Motion::Linear, Posd(50, -100, 300));

    EXPECT_THAT(sprayWaysOf(path->getId(), 10), SizeIs(1));
}

TEST_F(PaintTest, PathWithoutMovesIsToldAndNothingIsCovered)
{
    auto empty = std::make_shared<vrk::task::Path>(newId(), "thinking");
    task->addPath(empty);
    Layout::inst().remove(task->getId());
    Layout::inst().addTask(task);
    state().selectVisuals({empty->getId(), crate});

    paints().begin();

    EXPECT_THAT(message(), HasSubstr("thinking has no moves along which a gun could spray."));
    EXPECT_THAT(coats().getBodies(), IsEmpty());
}

// Painting

TEST_F(PaintTest, RunToTheEndPaintsBelowTheWayAndIsOneStep)
{
    begin();
    EXPECT_THAT(coat(), Each(0));
    const int steps = history().count();
    settle();
    const QImage bare = seen();

    run().stepToEnd();
    settle();

    EXPECT_EQ(history().count(), steps + 1);
    EXPECT_EQ(history().undoText().toStdString(), "Spray along paintTop");
    EXPECT_EQ(run().getPlace(), run().length());
    ASSERT_TRUE(onTop(0, 0));
    EXPECT_GT(*onTop(0, 0), 0.001);
    EXPECT_EQ(*onTop(140, 0), 0) << "the spot has a radius of 40";
    EXPECT_GT(differingShare(bare, seen()), 0.003);
    shoot("paint");

    history().undo();
    EXPECT_THAT(coat(), Each(0));
    EXPECT_EQ(run().getPlace(), 0);
    history().redo();
    EXPECT_GT(*onTop(0, 0), 0.001);
    EXPECT_EQ(run().getPlace(), run().length());
}

/// What leaves the gun ends on the body: the flow by the time, as the sum over the faces.
TEST_F(PaintTest, VolumeOnTheBodyIsThatOfTheFlow)
{
    begin();
    run().stepToEnd();

    const auto map = coats().mapOf(body);
    ASSERT_TRUE(map);
    double volume = 0;
    for (std::size_t i = 0; i + 2 < map->indices.size(); i += 3) {
        const auto corner = [&](std::size_t k) { return map->vertices[map->indices[i + k]]; };
        const auto lies = [&](std::size_t k) { return map->thickness[map->indices[i + k]]; };
        const double area = 0.5 * (corner(1) - corner(0)).cross(corner(2) - corner(0)).length();
        volume += area * (lies(0) + lies(1) + lies(2)) / 3;
    }
    const double told = run().getSettings().gun.flow * 200 / run().getSettings().speed;
    EXPECT_NEAR(volume / told, 1, 0.03);
}

TEST_F(PaintTest, StrokesLeaveTogetherWhatTheWholeRunLeaves)
{
    begin();
    run().stepToEnd();
    const std::vector<float> whole = coat();
    history().undo();

    int strokes = 0;
    for (; run().getPlace() < run().length() && strokes < 100; ++strokes)
        run().step(30);

    EXPECT_EQ(strokes, 7);
    const std::vector<float> pieces = coat();
    ASSERT_EQ(pieces.size(), whole.size());
    const float most = std::ranges::max(whole);
    for (std::size_t i = 0; i < whole.size(); ++i)
        ASSERT_NEAR(pieces[i], whole[i], 0.01 * most);
    for (int i = 0; i < 3; ++i)
        history().undo();
    EXPECT_NEAR(run().getPlace(), 120, 1e-9);
    EXPECT_LT(sum(), std::accumulate(whole.begin(), whole.end(), 0.0));
}

TEST_F(PaintTest, RunAtTheToldSpeedTakesItsTimeAndIsOneStep)
{
    begin();
    SprayRun& gun = run();
    SpraySettings settings = gun.getSettings();
    settings.speed = 400; // half a second
    gun.setSettings(settings);
    const int steps = history().count();
    QElapsedTimer clock;
    clock.start();

    gun.play();
    ASSERT_TRUE(gun.isPlaying());
    ASSERT_TRUE(waitFor([&] { return !gun.isPlaying(); }));

    EXPECT_GE(clock.elapsed(), 480);
    EXPECT_EQ(gun.getPlace(), gun.length());
    EXPECT_EQ(history().count(), steps + 1);
    const std::vector<float> played = coat();
    history().undo();
    EXPECT_THAT(coat(), Each(0));
    gun.stepToEnd();
    const std::vector<float> whole = coat();
    for (std::size_t i = 0; i < whole.size(); ++i)
        ASSERT_NEAR(played[i], whole[i], 0.02 * std::ranges::max(whole));
}

TEST_F(PaintTest, PauseKeepsWhatIsPaintedAndPlayGoesOnFromThere)
{
    begin();
    run().play();
    ASSERT_TRUE(waitFor([] { return run().getPlace() > 40; }));

    run().pause();

    EXPECT_FALSE(run().isPlaying());
    const double place = run().getPlace(), lies = sum();
    settle();
    EXPECT_EQ(run().getPlace(), place);
    EXPECT_EQ(sum(), lies);
    run().play();
    ASSERT_TRUE(waitFor([] { return !run().isPlaying(); }));
    EXPECT_EQ(run().getPlace(), run().length());
}

TEST_F(PaintTest, SecondRunLaysAsMuchOnTheFirst)
{
    begin();
    run().stepToEnd();
    const double once = sum();
    run().setPlace(0);
    run().stepToEnd();
    EXPECT_NEAR(sum() / once, 2, 1e-3);
}

TEST_F(PaintTest, SlowerGunPaintsThicker)
{
    begin();
    run().stepToEnd();
    const double fast = sum();
    history().undo();
    SpraySettings settings = run().getSettings();
    settings.speed /= 2;
    run().setSettings(settings);
    run().stepToEnd();
    EXPECT_NEAR(sum() / fast, 2, 1e-3);
    settings.speed *= 2;
    run().setSettings(settings);
}

TEST_F(PaintTest, BodyThatWasMovedIsPaintedWhereItStands)
{
    begin();
    history().push(std::make_unique<MoveThings>(crate, Posed(Posd(top.x + 100, top.y, top.z))));
    view().drain();

    run().stepToEnd();

    const auto at = [this](double x) {
        return coats().thicknessAt(body, Posd(top.x + x, top.y, top.z + 300), {0, 0, 1});
    };
    EXPECT_GT(*at(0), 0.001) << "below the way, which stayed";
    EXPECT_EQ(*at(100), 0);
}

/// The bracket of the demo station, by the path that welds it: moves from afar are joint moves, which paint nothing.
TEST_F(PaintTest, WorkpieceOfTheDemoIsPaintedAlongItsSeam)
{
    const auto& paths = Layout::inst().tasks.front()->getOwnPaths();
    const auto seam = std::ranges::find(paths, "weldBracket", [](const auto& each) { return each->getName(); });
    ASSERT_NE(seam, paths.end());
    const unsigned workpiece = thing("Workpiece");
    state().selectVisuals({(*seam)->getId(), workpiece});

    paints().begin();
    run().stepToEnd();
    const Posd place = worldPoseOfThing(workpiece).position;
    lookAt(Posd(place.x, place.y, place.z + 60));
    settle();
    shoot("paint_demo");

    EXPECT_EQ(message(), "");
    EXPECT_GT(coats().getShares().painted, 1000u);
    EXPECT_LT(run().length(), 1500);
}

TEST_F(PaintTest, BandAlonePaintsItsBody)
{
    auto change = std::make_unique<AddBand>(body, std::vector<unsigned>{1}, vrk::task::SeamOptions());
    const unsigned band = change->getBand();
    history().push(std::move(change));
    settle();
    state().selectVisuals({band});

    paints().begin();
    run().stepToEnd();

    EXPECT_THAT(run().getBodies(), testing::ElementsAre(body));
    EXPECT_NEAR(run().length(), 300, 1e-3);
    EXPECT_GT(sum(), 0);
}

TEST_F(PaintTest, GunThatCannotPaintIsToldAndNothingIsPainted)
{
    begin();
    SpraySettings settings = run().getSettings();
    const SpraySettings usual = settings;
    settings.gun.profile = 0.5;
    run().setSettings(settings);

    run().stepToEnd();

    EXPECT_NE(message(), "");
    EXPECT_THAT(coat(), Each(0));
    EXPECT_EQ(run().getPlace(), 0);
    run().setSettings(usual);
}

// What becomes of painted bodies

TEST_F(PaintTest, BodyThatComesBackHasItsPaint)
{
    begin();
    run().stepToEnd();
    const std::vector<float> lies = coat();
    history().push(std::make_unique<RemoveThings>(std::vector<unsigned>{crate}));
    settle();
    EXPECT_THAT(coats().getBodies(), IsEmpty());

    history().undo();
    settle();

    EXPECT_EQ(coat(), lies);
    EXPECT_THAT(coats().getBodies(), testing::ElementsAre(body));
}

TEST_F(PaintTest, RunOnABodyThatIsGonePaintsNothing)
{
    begin();
    history().push(std::make_unique<RemoveThings>(std::vector<unsigned>{crate}));
    view().drain();

    run().stepToEnd();

    EXPECT_EQ(message(), "");
    history().undo();
    history().undo();
    EXPECT_THAT(coat(), Each(0));
}

TEST_F(PaintTest, PathThatIsGoneLeadsNowhere)
{
    begin();
    const int steps = history().count();
    Layout::inst().remove(task->getId());

    run().stepToEnd();
    run().play();
    ASSERT_TRUE(waitFor([] { return !run().isPlaying(); }));

    EXPECT_EQ(run().length(), 0);
    EXPECT_THAT(coat(), Each(0));
    EXPECT_EQ(message(), "");
    EXPECT_EQ(history().count(), steps);
}

TEST_F(PaintTest, ClearingIsAStepOfWork)
{
    begin();
    run().stepToEnd();
    const std::vector<float> lies = coat();

    paints().clearPaint();

    EXPECT_THAT(coat(), Each(0));
    EXPECT_EQ(history().undoText().toStdString(), "Clear paint of Crate");
    history().undo();
    EXPECT_EQ(coat(), lies);
}

// Reading

TEST_F(PaintTest, MouseReadsTheThickness)
{
    begin();
    run().stepToEnd();
    settle();
    const QPoint place = onScreen(Posd(top.x, top.y, top.z + 300)).toPoint() / view().devicePixelRatioF();

    moveTo(place);

    const QString text = mouse().getHover().getText();
    EXPECT_THAT(text.toStdString(), HasSubstr("Crate"));
    EXPECT_THAT(text.toStdString(), HasSubstr(" µm, "));
    EXPECT_THAT(text.toStdString(), HasSubstr(coats().textOf(*onTop(0, 0)).toStdString().substr(0, 2)));
    leaveView();
}

TEST_F(PaintTest, ThicknessIsToldWithWhereItStandsToTheTarget)
{
    coats().setTarget({0.04, 0.25});
    EXPECT_EQ(coats().textOf(0).toStdString(), "bare");
    EXPECT_EQ(coats().textOf(0.012).toStdString(), "12.0 µm, below target");
    EXPECT_EQ(coats().textOf(0.045).toStdString(), "45.0 µm, on target");
    EXPECT_EQ(coats().textOf(0.06).toStdString(), "60.0 µm, above target");
}

TEST_F(PaintTest, TargetDividesWhatIsPainted)
{
    begin();
    run().stepToEnd();
    coats().setTarget({1000, 0.2});
    BodyCoats::Shares shares = coats().getShares();
    EXPECT_EQ(shares.below, 1);
    coats().setTarget({1e-9, 0.2});
    shares = coats().getShares();
    EXPECT_EQ(shares.above, 1);
    coats().setTarget({0.02, 0.5});
    shares = coats().getShares();
    EXPECT_GT(shares.on, 0.02);
    EXPECT_NEAR(shares.below + shares.on + shares.above, 1, 1e-9);
    coats().setTarget({});
}

/// The picture on the body follows: what is too thin is striped, and twice the target is another colour.
TEST_F(PaintTest, OtherTargetIsAnotherPicture)
{
    begin();
    run().stepToEnd();
    settle();
    const QImage usual = seen();
    coats().setTarget({0.5, 0.2});
    settle();
    EXPECT_GT(differingShare(usual, seen()), 0.002);
    coats().setTarget({});
    settle();
    EXPECT_EQ(differingShare(usual, seen()), 0);
}

// Maps

TEST_F(PaintTest, MapIsSavedAndOpenedAgain)
{
    begin();
    run().stepToEnd();
    const std::vector<float> lies = coat();
    const std::filesystem::path file = folder / "crate.ply";
    paints().saveMapTo(QString::fromStdString((folder / "crate").string()));
    ASSERT_TRUE(std::filesystem::exists(file)) << message();
    paints().clearPaint();
    ASSERT_THAT(coat(), Each(0));

    paints().openMap(QString::fromStdString(file.string()));

    EXPECT_EQ(coat(), lies) << message();
    history().undo();
    EXPECT_THAT(coat(), Each(0));
}

TEST_F(PaintTest, MapOpensOnASelectedBodyThatIsNotCovered)
{
    begin();
    run().stepToEnd();
    const std::vector<float> lies = coat();
    paints().saveMapTo(QString::fromStdString((folder / "crate.ply").string()));
    run().end();
    coats().forget();
    view().drain();
    state().selectVisuals({crate});

    paints().openMap(QString::fromStdString((folder / "crate.ply").string()));

    EXPECT_EQ(coat(), lies) << message();
}

TEST_F(PaintTest, MapOfAnotherBodyAndADamagedOneAreToldAndChangeNothing)
{
    begin();
    run().stepToEnd();
    const std::vector<float> lies = coat();
    const std::filesystem::path file = folder / "map.ply";
    vrk::process::saveThicknessMap(file, {{{0, 0, 0}, {1, 0, 0}, {0, 1, 0}}, {1, 1, 1}, {0, 1, 2}});
    const int steps = history().count();

    paints().openMap(QString::fromStdString(file.string()));
    EXPECT_THAT(message(), HasSubstr("map.ply"));
    EXPECT_THAT(message(), HasSubstr("The station is as before."));
    window().getMessageBar().hide();
    std::ofstream(file) << "ply\nrubbish";
    paints().openMap(QString::fromStdString(file.string()));
    EXPECT_THAT(message(), HasSubstr("map.ply"));
    window().getMessageBar().hide();
    paints().openMap(QString::fromStdString((folder / "none.ply").string()));
    EXPECT_THAT(message(), HasSubstr("none.ply"));

    EXPECT_EQ(history().count(), steps);
    EXPECT_EQ(coat(), lies);
}

TEST_F(PaintTest, MapThatCannotBeOpenedLeavesNoSkin)
{
    state().selectVisuals({crate});
    paints().openMap(QString::fromStdString((folder / "none.ply").string()));
    view().drain();
    EXPECT_THAT(coats().getBodies(), IsEmpty());
    for (const auto* child : Scene::GetVisual(body)->getChildren())
        EXPECT_NE(child->getType(), vrk::VisualType::Paint);
}

TEST_F(PaintTest, MapOfTwoBodiesIsRefused)
{
    const unsigned other = addCrate("Other", Posed(Posd(top.x + 400, top.y, top.z)));
    state().selectVisuals({path->getId(), crate, other});
    paints().begin();
    ASSERT_THAT(coats().getBodies(), SizeIs(2));
    state().clear();

    paints().saveMapTo(QString::fromStdString((folder / "two.ply").string()));

    EXPECT_THAT(message(), HasSubstr("A map is that of one body. Select it."));
    EXPECT_FALSE(std::filesystem::exists(folder / "two.ply"));
}

// The dock

TEST_F(PaintTest, DockLeadsTheGun)
{
    begin();
    PaintDock& dock = window().getPaintDock();
    EXPECT_TRUE(dock.isVisible());
    dock.findChild<QDoubleSpinBox*>("stroke")->setValue(50);

    dock.button("step")->click();

    EXPECT_NEAR(run().getPlace(), 50, 1e-9);
    const double lies = sum();
    EXPECT_GT(lies, 0);
    dock.button("end")->click();
    EXPECT_GT(sum(), lies);
    EXPECT_FALSE(dock.button("step")->isEnabled());
    dock.button("start")->click();
    EXPECT_EQ(run().getPlace(), 0);
    dock.findChild<QDoubleSpinBox*>("target")->setValue(100);
    EXPECT_NEAR(coats().getTarget().thickness, 0.1, 1e-12);
    dock.findChild<QDoubleSpinBox*>("target")->setValue(40);
    settle();
}

TEST_F(PaintTest, LegendShowsItsPatternsAlsoWithoutColours)
{
    ThicknessLegend legend;
    legend.resize(260, legend.sizeHint().height());
    legend.setTarget({0.04, 0.25});
    const QImage grey = legend.grab().toImage().convertToFormat(QImage::Format_Grayscale8);
    // Of the rows of the bar the one that goes up and down most often, below, on and above target.
    const auto turns = [&](double from, double to) {
        const int left = 22, wide = 260 - 44;
        int most = 0;
        for (int y = 3; y < 20; ++y) {
            int count = 0;
            for (int x = left + static_cast<int>(from * wide) + 3; x < left + static_cast<int>(to * wide) - 4; ++x)
                count += std::abs(qGray(grey.pixel(x, y)) - qGray(grey.pixel(x + 1, y))) > 8 ? 1 : 0;
            most = std::max(most, count);
        }
        return most;
    };
    EXPECT_GT(turns(0, 0.375), 6);
    EXPECT_EQ(turns(0.375, 0.625), 0);
    EXPECT_GT(turns(0.625, 1), 4);
}

} // namespace
} // namespace vrkview::test
