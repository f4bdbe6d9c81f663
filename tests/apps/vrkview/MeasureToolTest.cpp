#include "measure/MeasureTool.h"

#include "CrateFixture.h"
#include "FakeInput.h"
#include "canvas/DrawMode.h"
#include "canvas/FrameTool.h"
#include "canvas/MoveTool.h"
#include "demo/DemoShapes.h"
#include "edit/AddThings.h"
#include "edit/EditDimensions.h"
#include "edit/History.h"
#include "edit/ModelPlaces.h"
#include "edit/MoveThings.h"
#include "edit/RemoveThings.h"
#include "measure/DimensionDock.h"
#include "measure/StationDimensions.h"
#include "window/ProgressStrip.h"

#include "support/ProcessorTime.h"
#include "support/TempFolder.h"

#include "platform/layout/Body.h"
#include "platform/layout/Frame.h"
#include "platform/layout/PointCloud.h"
#include "platform/sdf/SdfManager.h"
#include "platform/station/Import.h"
#include "platform/station/ImportCloud.h"
#include "scene/Scene.h"

#include <gmock/gmock.h>

#include <QAction>
#include <QClipboard>
#include <QGuiApplication>
#include <QLabel>
#include <QPushButton>
#include <QStatusBar>
#include <QTreeWidget>

#include <cmath>

namespace vrkview::test {
namespace {

using testing::HasSubstr;
using testing::StartsWith;
using vrk::layout::Dimension;
using vrk::layout::DimensionEnd;
using vrk::layout::Layout;
using vrk::rob::Posd;
using vrk::rob::Posed;

/// A block and a drum above the station, near by in the view.
class MeasureToolTest : public WithCrates<> {
protected:
    void SetUp() override
    {
        // Each move draws some frames, and a small picture without edges and outlines is drawn quickly.
        for (QDockWidget* dock : window().findChildren<QDockWidget*>())
            dock->hide();
        window().getSettings().setClosedDocks({"dimensions"}); // it would come with the first one, and narrow the view
        window().resize(640, 560);
        state().setDrawMode(*findDrawMode("shaded"));
        WithCrates::SetUp();
        block = addCrate("Block", blockPose);
        drum = addShape("Drum", drumPose, demo::cylinder({0, 0, 0}, {0, 0, 1}, 120, 250));
        lookAt(Posd(-780, -1500, 1450));
        history().forget();
        measurer().setOn(true);
        settle();
    }
    void TearDown() override
    {
        measurer().setOn(false);
        while (history().canUndo())
            history().undo();
        history().forget();
        window().getSettings().setClosedDocks({});
        settle();
        WithCrates::TearDown();
    }
    static MeasureTool& measurer() { return window().getMeasurer(); }
    static History& history() { return state().getHistory(); }
    static const std::vector<StationDimensions::Entry>& entries() { return StationDimensions::Get().getEntries(); }
    static std::string textOfLast() { return entries().empty() ? "nothing" : entries().back().text(); }
    QPoint onBlock(const Posd& place) const { return onScreen(blockPose * place).toPoint(); }
    QPoint onDrum(const Posd& place) const { return onScreen(drumPose * place).toPoint(); }
    static void clickBoth(const QPoint& first, const QPoint& second)
    {
        clickAt(first);
        clickAt(second);
        settle();
    }
    static std::string hoverText(const QPoint& place)
    {
        moveTo(place);
        return measurer().getText().toStdString();
    }
    static QPoint placeOfText(std::size_t index) { return onScreen(entries().at(index).measured->textPlace).toPoint(); }

    static unsigned bodyOf(unsigned part)
    {
        return std::dynamic_pointer_cast<vrk::layout::Part>(sdf::Share(part))->getBodies().front()->getId();
    }
    /// Dimensions of the length of the block's edges.
    void addMany(unsigned count) const
    {
        std::vector<DimensionPointer> many;
        for (unsigned i = 0; i < count; ++i)
            many.push_back(std::make_shared<const Dimension>(
                Dimension{"", Dimension::Type::Length, {{DimensionEnd::Kind::Edge, bodyOf(block), 1 + i % 12, {}}}}));
        history().push(std::make_unique<EditDimensions>("Measure", many));
        settle();
    }
    void moveBlock(double up) const
    {
        Posed higher = poseOfThing(block);
        higher.position.z += up;
        history().push(std::make_unique<MoveThings>(std::vector<MoveThings::Place>{{block, higher}}, 1));
    }
    static std::string statusLine()
    {
        QStringList texts;
        for (const QLabel* label : window().statusBar()->findChildren<QLabel*>())
            texts << label->text();
        return texts.join('\n').toStdString();
    }
    static QRgb colourAt(const QPoint& place) { return seen().pixel(inPixels(place).toPoint()); }

    static void copy()
    {
        QGuiApplication::clipboard()->clear();
        const HeldKey control("Control_L");
        typeKey("c");
        settle();
    }

    const Posed blockPose{Posd(-650, -1300, 1300), vrk::rob::Rotationd(0.4, vrk::rob::Dird(0, 0, 1))};
    const Posed drumPose{Posd(-900, -1750, 1300)};
    const Posd corner{150, -150, 300}, otherCorner{-150, -150, 300}; // of the top of the block
    unsigned block = 0, drum = 0;
};

TEST_F(MeasureToolTest, HoverTellsWhatWouldBeTaken)
{
    EXPECT_THAT(hoverText(onBlock(corner)), StartsWith("vertex "));
    EXPECT_THAT(hoverText(onBlock(corner)), HasSubstr(" of Block, point at x "));
    EXPECT_THAT(hoverText(onBlock({150, -90, 300})), HasSubstr(" of Block, line, length 300.00 mm"));
    EXPECT_THAT(hoverText(onDrum({0, -120, 250})), HasSubstr(" of Drum, circle, diameter 240.00 mm"));
    EXPECT_THAT(hoverText(onBlock({20, -30, 300})), HasSubstr(" of Block, plane"));
    EXPECT_THAT(hoverText(onDrum({60, -100, 120})), HasSubstr(" of Drum, cylinder, diameter 240.00 mm"));
    shoot("measure-hover");
    leaveView();
    EXPECT_EQ(measurer().getText(), "");
}

TEST_F(MeasureToolTest, TwoCornersHaveTheirDistanceWhichIsDrawnListedAndTakenBack)
{
    clickAt(onBlock(otherCorner));
    ASSERT_TRUE(measurer().getFirst());
    // In one leap, onto the note of the first one
    EXPECT_THAT(hoverText(onBlock(corner)), StartsWith("300.00 mm (x "));
    shoot("measure-preview");
    clickAt(onBlock(corner));
    leaveView();
    settle();
    shoot("measure-distance");

    ASSERT_EQ(entries().size(), 1u);
    EXPECT_FALSE(measurer().getFirst());
    EXPECT_NEAR(entries()[0].measured->value, 300, 1e-9);
    EXPECT_THAT(textOfLast(), StartsWith("300.00 mm (x 276.32, y 116.83, z 0.00)"));
    const QTreeWidget& list = window().getDimensionDock().getList();
    ASSERT_EQ(list.topLevelItemCount(), 1);
    EXPECT_EQ(list.topLevelItem(0)->text(1), "300.00 mm");
    EXPECT_THAT(list.topLevelItem(0)->text(0).toStdString(), HasSubstr(" of Block to vertex "));
    EXPECT_EQ(history().count(), 1);
    history().undo();
    settle();
    EXPECT_TRUE(entries().empty());
    EXPECT_EQ(list.topLevelItemCount(), 0);
    history().redo();
    settle();
    EXPECT_THAT(textOfLast(), StartsWith("300.00 mm"));
}

TEST_F(MeasureToolTest, OneThingThatIsClickedTwiceIsMeasuredAlone)
{
    clickBoth(onDrum({0, -120, 250}), onDrum({0, -120, 250}));
    EXPECT_EQ(textOfLast(), "diameter 240.00 mm, radius 120.00 mm");
    clickBoth(onBlock({150, -90, 300}), onBlock({150, -90, 300}));
    EXPECT_EQ(textOfLast(), "length 300.00 mm");
    clickBoth(onBlock({20, -30, 300}), onBlock({20, -30, 300}));
    EXPECT_EQ(textOfLast(), "area 90000.00 mm²");
    leaveView();
    settle();
    shoot("measure-alone");

    EXPECT_EQ(entries().size(), 3u);
}

TEST_F(MeasureToolTest, ReturnMeasuresTheFirstThingAlone)
{
    clickAt(onDrum({60, -100, 120}));
    typeKey("Return");
    EXPECT_TRUE(waitFor([] { return !entries().empty(); }));

    EXPECT_EQ(textOfLast(), "diameter 240.00 mm, radius 120.00 mm");
}

TEST_F(MeasureToolTest, PlaceOfAPointIsToldAndStaysInNoList)
{
    clickBoth(onBlock(corner), onBlock(corner));

    EXPECT_TRUE(entries().empty());
    EXPECT_EQ(history().count(), 0);
    EXPECT_THAT(measurer().getToldOnly().toStdString(), HasSubstr("z 1600.00"));
    copy();
    EXPECT_TRUE(waitFor([] { return QGuiApplication::clipboard()->text() == measurer().getToldOnly(); }));
}

TEST_F(MeasureToolTest, FacesHaveDistanceOrAngle)
{
    clickBoth(onBlock({20, -30, 300}), onDrum({0, 0, 250}));
    EXPECT_NEAR(entries().at(0).measured->value, 50, 1e-9);
    EXPECT_EQ(entries()[0].dimension->type, Dimension::Type::Distance);
    clickBoth(onBlock({20, -30, 300}), onBlock({150, -20, 150}));
    EXPECT_NEAR(entries().at(1).measured->value, 90, 1e-9);
    EXPECT_EQ(entries()[1].dimension->type, Dimension::Type::Angle);
    leaveView();
    settle();
    shoot("measure-faces");
}

TEST_F(MeasureToolTest, DimensionFollowsWhatItMeasures)
{
    clickBoth(onBlock({20, -30, 300}), onDrum({0, 0, 250}));
    const Posd before = entries().at(0).measured->textPlace;

    moveBlock(70);
    settle();
    EXPECT_NEAR(entries().at(0).measured->value, 120, 1e-9);
    EXPECT_NEAR(entries()[0].measured->textPlace.z, before.z + 35, 1e-6);
    history().undo();
    settle();

    EXPECT_NEAR(entries().at(0).measured->value, 50, 1e-9);
}

TEST_F(MeasureToolTest, DimensionGoesWithWhatItMeasuresAndComesBack)
{
    clickBoth(onBlock({20, -30, 300}), onDrum({0, 0, 250}));

    history().push(std::make_unique<RemoveThings>(std::vector<unsigned>{drum}));
    settle();
    EXPECT_TRUE(entries().empty());
    history().undo();
    settle();

    EXPECT_THAT(textOfLast(), StartsWith("50.00 mm"));
}

TEST_F(MeasureToolTest, DimensionIsHiddenWithWhatItMeasures)
{
    clickBoth(onBlock({20, -30, 300}), onDrum({0, 0, 250}));

    state().setVisible({drum}, false);
    settle();
    EXPECT_TRUE(entries().at(0).isHidden);
    EXPECT_FALSE(StationDimensions::Get().textAt(inPixels(placeOfText(0)).x(), inPixels(placeOfText(0)).y()));
    state().setVisible({drum}, true);
    settle();

    EXPECT_FALSE(entries().at(0).isHidden);
}

TEST_F(MeasureToolTest, NumberIsSelectedByAClickAndDeletedByItsKey)
{
    clickBoth(onBlock(otherCorner), onBlock(corner));
    clickBoth(onDrum({0, -120, 250}), onDrum({0, -120, 250}));
    ASSERT_EQ(entries().size(), 2u);
    measurer().setOn(false);
    leaveView();
    settle();

    clickAt(placeOfText(0));
    settle();
    EXPECT_TRUE(entries()[0].isSelected);
    EXPECT_FALSE(entries()[1].isSelected);
    EXPECT_TRUE(state().getSelected().empty());
    shoot("measure-selected");
    copy();
    EXPECT_TRUE(waitFor([] { return QGuiApplication::clipboard()->text().startsWith("300.00 mm (x "); }));
    typeKey("Delete");

    ASSERT_TRUE(waitFor([] { return entries().size() == 1; }));
    EXPECT_EQ(textOfLast(), "diameter 240.00 mm, radius 120.00 mm");
    history().undo();
    settle();
    EXPECT_EQ(entries().size(), 2u);
}

TEST_F(MeasureToolTest, SelectionInTheListIsThatInTheViewAndEndsThatOfThings)
{
    clickBoth(onBlock(otherCorner), onBlock(corner));
    measurer().setOn(false);
    state().selectVisuals({block});

    window().getDimensionDock().getList().topLevelItem(0)->setSelected(true);
    EXPECT_TRUE(entries()[0].isSelected);
    EXPECT_FALSE(state().isAnySelected());
    state().selectVisuals({block});

    EXPECT_FALSE(entries()[0].isSelected);
}

TEST_F(MeasureToolTest, EscapeLetsGoOfTheFirstThingAndThenEnds)
{
    clickAt(onBlock(corner));
    EXPECT_TRUE(measurer().getFirst());

    typeKey("Escape");
    EXPECT_TRUE(waitFor([] { return !measurer().getFirst(); }));
    EXPECT_TRUE(measurer().isOn());
    typeKey("Escape");

    EXPECT_TRUE(waitFor([] { return !measurer().isOn(); }));
}

TEST_F(MeasureToolTest, KeySwitchesItAndOneToolHasTheMouse)
{
    typeKey("d");
    EXPECT_TRUE(waitFor([] { return !measurer().isOn(); }));
    typeKey("m");
    EXPECT_TRUE(waitFor([] { return window().getMover().isOn(); }));
    typeKey("d");

    EXPECT_TRUE(waitFor([] { return measurer().isOn(); }));
    EXPECT_FALSE(window().getMover().isOn());
}

TEST_F(MeasureToolTest, WithShiftBodiesHaveTheirMinimumDistance)
{
    {
        const HeldKey shift("Shift_L");
        EXPECT_EQ(hoverText(onBlock({20, -30, 300})), "Block");
        clickBoth(onBlock({20, -30, 300}), onDrum({0, 0, 250}));
    }
    leaveView();
    ASSERT_EQ(entries().size(), 1u);
    EXPECT_EQ(entries()[0].dimension->type, Dimension::Type::Nearest);
    ASSERT_TRUE(waitFor([] { return entries()[0].measured && !entries()[0].isOutdated; }));
    settle();
    shoot("measure-nearest");
    const double apart = entries()[0].measured->value;
    EXPECT_GT(apart, 50);
    EXPECT_THAT(textOfLast(), HasSubstr("nearest places"));

    Posed lower = poseOfThing(drum);
    lower.position.z -= 1000;
    history().push(std::make_unique<MoveThings>(std::vector<MoveThings::Place>{{drum, lower}}, 1));
    view().drain();
    EXPECT_TRUE(entries()[0].isOutdated) << "the old value is shown as such";
    EXPECT_EQ(entries()[0].measured->value, apart);
    ASSERT_TRUE(waitFor([] { return !entries()[0].isOutdated; }));
    EXPECT_GT(entries()[0].measured->value, 700);
}

TEST_F(MeasureToolTest, ThousandDimensionsThatRestCostNextToNothing)
{
    addMany(1000);
    ASSERT_EQ(entries().size(), 1000u);
    EXPECT_EQ(textOfLast(), "length 300.00 mm");

    constexpr int rounds = 50;
    const double seconds = vrk::test::threadSecondsOf([] {
        for (int i = 0; i < rounds; ++i)
            StationDimensions::Get().update();
    });
    RecordProperty("microseconds", static_cast<int>(seconds / rounds * 1e6));

    EXPECT_LT(seconds / rounds, 0.001);
}

TEST_F(MeasureToolTest, ThousandDimensionsOfABodyThatMovesAreMeasuredInAMoment)
{
    addMany(1000);
    const double before = entries().back().measured->textPlace.z;
    moveBlock(70);

    const double seconds = vrk::test::threadSecondsOf([] { StationDimensions::Get().update(); });
    RecordProperty("microseconds", static_cast<int>(seconds * 1e6));

    EXPECT_NEAR(entries().back().measured->textPlace.z, before + 70, 1e-3);
    EXPECT_LT(seconds, 0.2);
}

TEST_F(MeasureToolTest, NameIsGivenInTheListAndTakenBack)
{
    clickBoth(onBlock(otherCorner), onBlock(corner));
    QTreeWidgetItem& item = *window().getDimensionDock().getList().topLevelItem(0);
    const QString before = item.text(0);

    item.setText(0, "Width of the block");
    EXPECT_EQ(history().count(), 2);
    settle();
    EXPECT_EQ(entries()[0].dimension->name, "Width of the block");
    EXPECT_EQ(item.text(0), "Width of the block");
    EXPECT_THAT(textOfLast(), StartsWith("300.00 mm"));
    history().undo();
    settle();

    EXPECT_EQ(window().getDimensionDock().getList().topLevelItem(0)->text(0), before);
}

TEST_F(MeasureToolTest, DoubleClickInTheListLooksAtTheDimension)
{
    clickBoth(onBlock(otherCorner), onBlock(corner));
    const vrk::rob::Posef before = camera();
    QTreeWidget& list = window().getDimensionDock().getList();

    emit list.itemDoubleClicked(list.topLevelItem(0), 0);
    ASSERT_TRUE(waitFor([&] { return !(camera() == before); }));
    settle();

    const auto isInside = [](const QPoint& at) { return view().rect().adjusted(5, 5, -5, -5).contains(at); };
    EXPECT_TRUE(isInside(onBlock(corner)));
    EXPECT_TRUE(isInside(onBlock(otherCorner)));
    EXPECT_GT((onBlock(corner) - onBlock(otherCorner)).manhattanLength(), view().width() / 3);
}

TEST_F(MeasureToolTest, BodyUnderShiftIsHighlightedWhole)
{
    const QPoint ofBlock = onBlock({-110, 110, 300}), ofDrum = onDrum({-60, 60, 250}); // beside the mouse and its note
    leaveView();
    settle();
    const QRgb blockBefore = colourAt(ofBlock), drumBefore = colourAt(ofDrum);
    {
        const HeldKey shift("Shift_L");
        moveTo(onBlock({20, -30, 300}));
        settle();
        EXPECT_NE(colourAt(ofBlock), blockBefore);
        EXPECT_EQ(colourAt(ofDrum), drumBefore);
        moveTo(onDrum({0, 0, 250}));
        settle();
        EXPECT_EQ(colourAt(ofBlock), blockBefore);
        EXPECT_NE(colourAt(ofDrum), drumBefore);
    }
    leaveView();
    settle();

    EXPECT_EQ(colourAt(ofDrum), drumBefore);
}

TEST_F(MeasureToolTest, CornersOfMeshesPointsOfCloudsAndFramesAreMeasured)
{
    const vrk::test::TempFolder folder;
    const Posd onMesh(-450, -1700, 1500), ofCloud(-900, -1300, 1650), ofFrame(-550, -1550, 1700);
    Station station;
    station.parts = vrk::station::ImportFile(folder.write("plate.stl", R"(solid plate
facet normal 0 0 1 outer loop vertex 0 0 0 vertex 200 0 0 vertex 0 200 0 endloop endfacet
endsolid plate
)"));
    station.parts.front()->setPose(Posed(onMesh));
    station.clouds = {vrk::station::ImportPointCloud(folder.write("scan.xyz", "-900 -1300 1650\n-900 -1300 1850\n"))};
    station.frames = {
        std::make_shared<vrk::layout::Frame>(sdf::SdfManager::inst().generateId(), "Origin of it", Posed(ofFrame))};
    history().push(std::make_unique<AddThings>(std::make_shared<Station>(station)));
    settle();

    EXPECT_THAT(hoverText(onScreen(onMesh + vrk::rob::Vec3d(4, 4, 0)).toPoint()),
                StartsWith("mesh vertex 0 of plate, point at x -450.00"));
    EXPECT_THAT(hoverText(onScreen(ofCloud).toPoint()), StartsWith("point 0 of scan, point at x -900.00"));
    EXPECT_THAT(hoverText(onScreen(ofFrame).toPoint()), StartsWith("Origin of it, point at x -550.00"));
    clickBoth(onScreen(ofFrame).toPoint(), onScreen(ofCloud).toPoint());
    leaveView();
    settle();
    shoot("measure-scan");

    ASSERT_EQ(entries().size(), 1u);
    EXPECT_NEAR(entries()[0].measured->value, (ofCloud - ofFrame).length(), 1e-3);
}

TEST_F(MeasureToolTest, MeasuringAndDefiningAFrameEndEachOther)
{
    moveTo(onBlock({20, -30, 300}));
    EXPECT_NE(measurer().getText(), "");

    window().getFramer().start(FrameTool::Way::Axes);
    EXPECT_FALSE(measurer().isOn());
    EXPECT_TRUE(window().getFramer().isOn());
    EXPECT_THAT(statusLine(), HasSubstr("origin")) << "asks for its first place";
    measurer().setOn(true);

    EXPECT_FALSE(window().getFramer().isOn());
    EXPECT_TRUE(measurer().isOn());
    EXPECT_THAT(statusLine(), HasSubstr("Measure: "));
}

TEST_F(MeasureToolTest, LongMinimumDistanceTellsHowFarItIsAndCanBeGivenUp)
{
    const unsigned first = addShape("First gear", Posed(Posd(-900, -1700, 1800)), demo::spurGear(60, 4, 30, 20));
    const unsigned second = addShape("Second gear", Posed(Posd(-500, -1300, 1900)), demo::spurGear(60, 4, 30, 20));
    auto* strip = window().findChild<ProgressStrip*>("measure_progress");
    ASSERT_TRUE(strip);
    history().push(addDimension(std::make_shared<const Dimension>(Dimension{
        "Gap",
        Dimension::Type::Nearest,
        {{DimensionEnd::Kind::Body, bodyOf(first), 0, {}}, {DimensionEnd::Kind::Body, bodyOf(second), 0, {}}}})));

    ASSERT_TRUE(waitFor([&] { return strip->isVisible(); }));
    EXPECT_EQ(strip->findChild<QLabel*>()->text(), "Measuring Gap");
    shoot("measure-progress");
    strip->findChild<QPushButton*>("cancel")->click();
    ASSERT_TRUE(waitFor([&] { return !strip->isVisible(); }));
    settle();

    EXPECT_FALSE(StationDimensions::Get().getNearest().isBusy());
    EXPECT_FALSE(entries().at(0).measured);
    EXPECT_NE(entries()[0].failure, "");
}

TEST_F(MeasureToolTest, NumberIsAsLargeAsTheScreenIsFine)
{
    clickBoth(onBlock(otherCorner), onBlock(corner));
    leaveView();
    settle();
    const QPointF middle = inPixels(placeOfText(0));
    int rows = 0;
    for (int y = -100; y <= 100; ++y)
        rows += StationDimensions::Get().textAt(middle.x(), middle.y() + y) ? 1 : 0;

    EXPECT_NEAR(rows / view().devicePixelRatioF(), 21, 1.5);
}

} // namespace
} // namespace vrkview::test
