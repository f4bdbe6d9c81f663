#include "CrateFixture.h"
#include "FakeInput.h"

#include "platform/layout/Layout.h"
#include "platform/layout/PointCloud.h"
#include "scene/Scene.h"

#include <gmock/gmock.h>

#include <QApplication>
#include <QLabel>
#include <QMouseEvent>
#include <QStatusBar>

namespace vrkview::test {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::StartsWith;
using vrk::visual::Scene;

class HoverTest : public MouseFixture {
protected:
    void SetUp() override
    {
        MouseFixture::SetUp();
        leaveViewFully();
    }
    static void leaveViewFully()
    {
        moveTo({40, 60});
        leaveView();
        settle();
    }
    static std::string text() { return mouse().getHover().getText().toStdString(); }
    static std::string statusLine()
    {
        QString all;
        for (const QLabel* label : window().statusBar()->findChildren<QLabel*>())
            all += label->text() + "|";
        return all.toStdString();
    }
    /// Two places on one face, one far from its edges and one near to one of them.
    static std::pair<QPoint, QPoint> placesOnAFace()
    {
        const int step = 5;
        for (int y = step; y < view().height(); y += step)
            for (int x = 2 * step; x < view().width(); x += step) {
                const auto left = pickedAt({x - step, y}, PickAim::Face), here = pickedAt({x, y}, PickAim::Face);
                if (!left || !here || left->candidate.visualId != here->candidate.visualId ||
                    left->face() != here->face() || pickedAt({x - step, y}, PickAim::Edge))
                    continue;
                const auto edge = pickedAt({x, y}, PickAim::Edge);
                if (edge && edge->candidate.visualId == here->candidate.visualId)
                    return {{x - step, y}, {x, y}};
            }
        ADD_FAILURE() << "all faces are narrow";
        return {};
    }
    /// How often something was picked while this was done.
    static int picksDuring(const std::function<void()>& act)
    {
        int picks = 0;
        const auto counting = QObject::connect(&mouse(), &Mouse::picked, [&picks] { ++picks; });
        act();
        QObject::disconnect(counting);
        return picks;
    }
};

TEST_F(HoverTest, StatusLineNamesTheThingWithItsBodyAndFace)
{
    moveTo(placeOf("Gear unit"));

    EXPECT_THAT(text(), MatchesRegex("Gear unit › [A-Z].*, face [0-9]+"));
    EXPECT_THAT(statusLine(), HasSubstr(text()));
    settle();
    shoot("hover");
}

TEST_F(HoverTest, StatusLineNamesThePointOfACloud)
{
    moveTo(placeOf(vrk::layout::Layout::inst().pointclouds.front()->getName()));

    EXPECT_THAT(text(), MatchesRegex(".*, point [0-9]+"));
}

TEST_F(HoverTest, ThingUnderTheMouseIsHighlightedAndNoLongerWhenTheMouseLeaves)
{
    const QPoint place = placeOf("Controller");
    moveTo(place);
    leaveViewFully();
    const QImage before = seen();

    moveTo(place);
    settle();
    const QImage during = seen();
    shoot("hover-thing");
    leaveView();
    settle();

    EXPECT_NE(during, before);
    EXPECT_EQ(seen(), before);
    EXPECT_THAT(text(), IsEmpty());
}

TEST_F(HoverTest, WithAltTheFaceIsHighlightedAndNotTheRest)
{
    const QPoint place = placeOf("Controller");
    moveTo(place);
    settle();
    const QImage thing = seen();
    const HeldKey alt("Alt_L");

    moveTo(place + QPoint(1, 0));
    settle();
    const QImage face = seen();
    shoot("hover-face");

    EXPECT_NE(face, thing);
}

TEST_F(HoverTest, WithAltTheEdgeNearTheMouseIsHighlightedAndNamed)
{
    const auto [inside, atEdge] = placesOnAFace();
    const HeldKey alt("Alt_L");
    moveTo(inside);
    settle();
    const std::string faceText = text();
    const QImage face = seen();
    EXPECT_THAT(faceText, MatchesRegex(".*, face [0-9]+"));

    moveTo(atEdge);
    settle();
    shoot("hover-edge");

    EXPECT_THAT(text(), MatchesRegex(faceText + ", edge [0-9]+"));
    EXPECT_NE(seen(), face);

    moveTo(inside);
    settle();
    EXPECT_EQ(text(), faceText);
    EXPECT_EQ(seen(), face);
}

TEST_F(HoverTest, EmptySpaceShowsNothing)
{
    const QImage before = seen();
    moveTo(placeOf("Controller"));

    moveTo(emptyPlace());
    settle();

    EXPECT_THAT(text(), IsEmpty());
    EXPECT_EQ(seen(), before);
}

TEST_F(HoverTest, DragShowsNothing)
{
    const QPoint place = placeOf("Controller");
    moveTo(place);
    ASSERT_THAT(text(), StartsWith("Controller"));
    pressButton(1);

    moveTo(place + QPoint(30, 0));

    EXPECT_THAT(text(), IsEmpty());
    EXPECT_EQ(picksDuring([&] { moveTo(place + QPoint(33, 0)); }), 0);
    releaseButton(1);
    moveTo(place);
    EXPECT_THAT(text(), StartsWith("Controller"));
}

TEST_F(HoverTest, ManyMovesInOneTurnMakeOnePick)
{
    moveTo(placeOf("Controller"));
    const QPointF last(210, 110);

    const int picks = picksDuring([&] {
        for (int i = 0; i <= 10; ++i) {
            QMouseEvent event(QEvent::MouseMove, QPointF(200 + i, 110), view().mapToGlobal(QPointF(200 + i, 110)),
                              Qt::NoButton, Qt::NoButton, Qt::NoModifier);
            QApplication::sendEvent(&view(), &event);
        }
        EXPECT_TRUE(mouse().isMoveWaiting());
        EXPECT_TRUE(waitFor([] { return !mouse().isMoveWaiting(); }));
    });

    EXPECT_EQ(picks, 1);
}

TEST_F(HoverTest, StillMouseMakesNoPickAndNoFrame)
{
    moveTo(placeOf("Controller"));
    settle();
    const int before = frames();

    const int picks = picksDuring([] { settle(); });

    EXPECT_EQ(picks, 0);
    EXPECT_EQ(frames(), before);
}

TEST_F(HoverTest, MoveOverTheSameThingDrawsNoFrame)
{
    const QPoint place = placeOf("Controller");
    moveTo(place);
    settle();
    const int before = frames();

    moveTo(place + QPoint(1, 1));
    settle();

    EXPECT_EQ(frames(), before);
}

TEST_F(HoverTest, MouseIsIgnoredWhileTheCameraFlies)
{
    moveTo(emptyPlace());
    typeKey("5");
    ASSERT_TRUE(waitFor([] { return window().getFlight().isFlying(); }));

    const int picks = picksDuring([] {
        QMouseEvent event(QEvent::MouseMove, QPointF(300, 300), view().mapToGlobal(QPointF(300, 300)), Qt::NoButton,
                          Qt::NoButton, Qt::NoModifier);
        QApplication::sendEvent(&view(), &event);
        mouse().isMoveWaiting() ? void(waitFor([] { return !mouse().isMoveWaiting(); })) : void();
    });

    EXPECT_EQ(picks, 0);
}

TEST_F(HoverTest, SelectedThingStaysInItsSelectionColour)
{
    clickAt(placeOf("Controller"));
    leaveView();
    settle();
    const QImage selected = seen();

    moveTo(placeOf("Controller"));
    settle();

    EXPECT_EQ(seen(), selected);
    EXPECT_THAT(text(), StartsWith("Controller"));
}

TEST_F(HoverTest, OutlineOfTheHoverGoesWhereTheThingIsSelected)
{
    const QPoint place = placeOf("Controller");
    clickAt(place);
    leaveView();
    settle();
    const QImage selected = seen();
    state().clear();
    moveTo(place);
    settle();
    ASSERT_NE(seen(), selected);

    clickAt(place);
    settle();

    EXPECT_EQ(seen(), selected);
}

/// A box high above the station, which a test may take away.
class HoverOfWhatGoes : public WithCrates<HoverTest> {
protected:
    void SetUp() override
    {
        WithCrates::SetUp();
        crate = addCrate("Crate");
    }
    void remove() const { removeFromScene(crate); }

    unsigned crate = 0;
};

TEST_F(HoverOfWhatGoes, ThingRemovedUnderTheMouseIsNoLongerNamed)
{
    const QPoint place = placeOf("Crate");
    moveTo(place);
    ASSERT_THAT(text(), AllOf(StartsWith("Crate"), HasSubstr("face")));

    remove();

    EXPECT_THAT(text(), IsEmpty());
    moveTo(place + QPoint(1, 0)); // what lies behind, or nothing
    EXPECT_THAT(text(), testing::Not(StartsWith("Crate")));
}

TEST_F(HoverOfWhatGoes, ThingRemovedWhileSelectedIsNoLongerSelected)
{
    clickAt(placeOf("Crate"));
    ASSERT_THAT(state().getSelected(), ElementsAre(crate));

    remove();
    state().stationHasChanged();

    EXPECT_THAT(state().getSelected(), IsEmpty());
    clickAt(placeOf("Controller"));
    EXPECT_THAT(state().getSelected(), ElementsAre(thing("Controller")));
}

TEST_F(HoverOfWhatGoes, ThingRemovedWithASelectedFaceIsNoLongerSelected)
{
    {
        const HeldKey alt("Alt_L");
        clickAt(placeOf("Crate"));
    }
    ASSERT_TRUE(state().isAnySelected());

    remove();
    state().stationHasChanged();

    EXPECT_FALSE(state().isAnySelected());
}

TEST_F(HoverOfWhatGoes, ThingRemovedDuringAnOrbitLeavesTheOrbitGoing)
{
    const QPoint place = placeOf("Crate");
    moveTo(place);
    pressButton(2);
    moveTo(place + QPoint(20, 0));
    const auto before = camera();

    remove();
    moveTo(place + QPoint(40, 0));
    releaseButton(2);
    settle();

    EXPECT_NE(camera(), before);
}

} // namespace
} // namespace vrkview::test
