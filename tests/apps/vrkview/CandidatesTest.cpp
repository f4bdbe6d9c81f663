#include "CrateFixture.h"
#include "FakeInput.h"
#include "canvas/CandidateList.h"

#include "platform/layout/Layout.h"
#include "platform/layout/PointCloud.h"

#include <gmock/gmock.h>

#include <QAction>
#include <QDeadlineTimer>
#include <QGuiApplication>
#include <QSignalSpy>
#include <QStyleHints>

namespace vrkview::test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;
using vrk::layout::Layout;

/// Two boxes above the station, one behind the other as seen from the left: a place shows the one, and hides the other.
class CandidatesTest : public WithCrates<> {
protected:
    void SetUp() override
    {
        WithCrates::SetUp();
        front = addCrate("Front crate");
        back = addCrate("Back crate", demo::at(0, 600, 2300));
        after("1"); // from the front
        place = placeOf("Front crate");
        moveTo(place);
    }
    void TearDown() override
    {
        mouse().closeCandidates();
        for (const PickGroupName& each : allPickGroups())
            mouse().getPick().setTaken(each.group, true);
        WithCrates::TearDown();
    }
    static const CandidateList& list() { return mouse().getCandidates(); }
    /// A second click on one place at once would be a double click, which has the camera fly.
    static void letADoubleClickPass()
    {
        const QDeadlineTimer apart(QGuiApplication::styleHints()->mouseDoubleClickInterval());
        EXPECT_TRUE(waitFor([&apart] { return apart.hasExpired(); }));
    }
    static std::vector<unsigned> listed()
    {
        std::vector<unsigned> things;
        for (const Picked& picked : list().getAll())
            things.push_back(picked.thing);
        return things;
    }
    static unsigned current() { return list().current() ? list().current()->thing : 0; }
    static std::string text() { return mouse().getHover().getText().toStdString(); }
    static void takeOnly(std::initializer_list<PickGroup> groups)
    {
        for (const PickGroupName& each : allPickGroups())
            mouse().getPick().setTaken(each.group, std::ranges::find(groups, each.group) != groups.end());
    }

    unsigned front = 0;
    unsigned back = 0;
    QPoint place;
};

TEST_F(CandidatesTest, KeyListsWhatLiesThereAndGoesOnThroughTheList)
{
    typeKey("q");
    ASSERT_TRUE(waitFor([] { return list().isOpen(); }));
    settle();
    shoot("candidates");

    EXPECT_TRUE(list().isVisible());
    ASSERT_THAT(listed(), SizeIs(testing::Ge(2)));
    EXPECT_EQ(listed()[0], front);
    EXPECT_EQ(listed()[1], back);
    EXPECT_EQ(current(), front);
    EXPECT_THAT(list().item(1)->text().toStdString(),
                testing::MatchesRegex("Back crate.*\\(behind by 6[0-9][0-9] mm\\)"));

    typeKey("q");
    EXPECT_TRUE(waitFor([this] { return current() == back; }));
    EXPECT_THAT(text(), StartsWith("Back crate"));
    mouse().listCandidates(-1);
    EXPECT_EQ(current(), front);
    mouse().listCandidates(-1);
    EXPECT_EQ(current(), listed().back()) << "around the end";
}

TEST_F(CandidatesTest, ClickTakesTheCurrentOneAndClosesTheList)
{
    mouse().listCandidates();
    mouse().listCandidates();

    clickAt(place);

    EXPECT_FALSE(list().isOpen());
    EXPECT_FALSE(list().isVisible());
    EXPECT_THAT(state().getSelected(), ElementsAre(back));
    clickAt(place);
    EXPECT_THAT(state().getSelected(), ElementsAre(front)) << "without a list the nearest";
}

TEST_F(CandidatesTest, ClickWithControlAddsTheCurrentOne)
{
    state().selectVisuals({front});
    mouse().listCandidates();
    mouse().listCandidates();
    const HeldKey control("Control_L");

    clickAt(place);

    EXPECT_THAT(state().getSelected(), ElementsAre(front, back));
}

TEST_F(CandidatesTest, RowIsTakenByItself)
{
    mouse().listCandidates();

    mouse().takeCandidate(1);

    EXPECT_FALSE(list().isOpen());
    EXPECT_THAT(state().getSelected(), ElementsAre(back));
    mouse().takeCandidate(1); // there is no list any more
    EXPECT_THAT(state().getSelected(), ElementsAre(back));
}

TEST_F(CandidatesTest, MoveAwayAndEscapeAndAChangeCloseTheList)
{
    mouse().listCandidates();
    moveTo(place + QPoint(3, 2));
    EXPECT_TRUE(list().isOpen()) << "a hand is not still";
    moveTo(place + QPoint(40, 0));
    EXPECT_FALSE(list().isOpen());

    moveTo(place);
    mouse().listCandidates();
    typeKey("Escape");
    EXPECT_TRUE(waitFor([] { return !list().isOpen(); }));

    mouse().listCandidates();
    state().setVisible({back}, false);
    EXPECT_FALSE(list().isOpen());
    mouse().listCandidates();
    EXPECT_THAT(listed(), testing::Not(testing::Contains(back))) << "what is hidden cannot be taken";
}

TEST_F(CandidatesTest, ListClosesWhenOneOfItsThingsGoes)
{
    mouse().listCandidates();
    ASSERT_TRUE(list().isOpen());

    removeFromScene(back);

    EXPECT_FALSE(list().isOpen());
}

TEST_F(CandidatesTest, ListClosesWhenOneOfItsThingsIsShownAnewUnderItsId)
{
    mouse().listCandidates();
    ASSERT_TRUE(list().isOpen());

    vrkview::removeFromScene(back); // both between two pictures
    addToScene(back);
    view().drain();

    EXPECT_FALSE(list().isOpen());
    mouse().listCandidates();
    EXPECT_THAT(listed(), testing::Contains(back));
}

TEST_F(CandidatesTest, LongPressListsAndItsReleaseTakesNothing)
{
    mouse().setLongPress(50);

    pressButton(1);
    ASSERT_TRUE(waitFor([] { return list().isOpen(); }));
    releaseButton(1);
    settle();

    EXPECT_TRUE(list().isOpen());
    EXPECT_THAT(state().getSelected(), IsEmpty());
    clickAt(place);
    EXPECT_THAT(state().getSelected(), ElementsAre(front));
}

TEST_F(CandidatesTest, NothingIsListedWhereNothingLies)
{
    moveTo(emptyPlace());

    typeKey("q");
    settle();

    EXPECT_FALSE(list().isOpen());
}

TEST_F(CandidatesTest, FacesAloneAreTakenByAPlainClick)
{
    takeOnly({PickGroup::Faces});

    moveTo(place + QPoint(1, 0));
    EXPECT_THAT(text(), HasSubstr(", face "));
    clickAt(place);

    EXPECT_THAT(state().getSelected(), IsEmpty());
    ASSERT_THAT(state().getSelectedFaces(), SizeIs(1));
    letADoubleClickPass();
    clickAt(place);
    EXPECT_THAT(state().getSelectedFaces(), SizeIs(1)) << "a click replaces";
    const HeldKey control("Control_L");
    clickAt(place);
    EXPECT_THAT(state().getSelectedFaces(), IsEmpty()) << "with Ctrl it toggles";
}

TEST_F(CandidatesTest, PointsAloneAreTakenOneByOne)
{
    const auto& scan = *Layout::inst().pointclouds.front();
    after("0");
    const QPoint first = placeOf(scan.getName());
    std::optional<QPoint> second;
    takeOnly({PickGroup::Points});
    const std::int64_t number = pickedAt(first)->candidate.subId;
    for (int step = 4; step < 60 && !second; step += 4)
        if (const auto other = pickedAt(first + QPoint(step, 0)); other && other->candidate.subId != number)
            second = first + QPoint(step, 0);
    ASSERT_TRUE(second);
    state().selectVisuals({front});
    QSignalSpy changes(&state(), &ViewState::selectionChanged);

    clickAt(first);

    EXPECT_EQ(changes.size(), 1) << "what was selected before goes with it";
    EXPECT_THAT(state().getSelected(), IsEmpty());
    EXPECT_THAT(state().getSelectedPoints(),
                ElementsAre(testing::Pair(scan.getId(), ElementsAre(static_cast<std::uint32_t>(number)))));
    {
        const HeldKey control("Control_L");
        clickAt(*second);
        EXPECT_THAT(state().getSelectedPoints(), ElementsAre(testing::Pair(scan.getId(), SizeIs(2))));
        clickAt(first);
    }
    EXPECT_THAT(state().getSelectedPoints(), ElementsAre(testing::Pair(scan.getId(), SizeIs(1))));
    letADoubleClickPass();
    clickAt(first);
    EXPECT_THAT(state().getSelectedPoints(),
                ElementsAre(testing::Pair(scan.getId(), ElementsAre(static_cast<std::uint32_t>(number)))));
}

TEST_F(CandidatesTest, VerticesAreNamedByTheirPlace)
{
    takeOnly({PickGroup::Vertices});
    std::optional<Picked> vertex;
    QPoint corner;
    for (int step = 0; step < 10000 && !vertex; ++step) {
        corner = place + QPoint(step % 100 * 4 - 200, step / 100 * 4 - 200);
        if (view().rect().contains(corner))
            vertex = pickedAt(corner);
        if (vertex && vertex->thing != front)
            vertex.reset();
    }
    ASSERT_TRUE(vertex);

    EXPECT_THAT(vertex->text.toStdString(),
                testing::MatchesRegex("Front crate.*, vertex at \\(-?150.00, -150.00, 2[36]00.00\\)"));
    clickAt(corner);
    EXPECT_THAT(state().getSelected(), ElementsAre(front)) << "a vertex stands for its thing";
}

TEST_F(CandidatesTest, WhatIsLeftOutIsNotFound)
{
    takeOnly({PickGroup::Frames});
    EXPECT_FALSE(pickedAt(place));
    clickAt(place);
    EXPECT_THAT(state().getSelected(), IsEmpty());

    takeOnly({});
    EXPECT_FALSE(pickedAt(place));
    EXPECT_FALSE(pickedAt(place, PickAim::Face));
    mouse().listCandidates();
    EXPECT_FALSE(list().isOpen());
}

TEST_F(CandidatesTest, SwitchesOfTheToolBarShowWhatIsTaken)
{
    QAction* bodies = nullptr;
    for (QAction* action : window().QWidget::actions())
        if (action->text() == "Pick &bodies")
            bodies = action;
    ASSERT_NE(bodies, nullptr);
    EXPECT_TRUE(bodies->isChecked());
    shoot("pick-switches");

    bodies->trigger();

    EXPECT_FALSE(bodies->isChecked());
    EXPECT_TRUE(mouse().getPick().takesPieces());
    {
        const HeldKey control("Control_L");
        typeKey("1");
    }
    EXPECT_TRUE(waitFor([&] { return bodies->isChecked(); }));
    EXPECT_FALSE(mouse().getPick().takesPieces());
}

} // namespace
} // namespace vrkview::test
