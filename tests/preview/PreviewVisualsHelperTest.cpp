#include "preview/marks/PreviewVisualsHelper.h"

#include "PreviewFixture.h"

#include "platform/broker/SignalBroker.h"
#include "preview/marks/PickedMarks.h"

#include <functional>
#include <set>

namespace vrk::visual {
namespace {

using Pos = rob::Posf;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

const Pos a(100, 0, 0);
const Pos b(0, 200, 0);
const Pos c(0, 0, 300);

std::vector<Pos> pointsOf(const DynamicLines& line)
{
    return line.getPoints();
}

class PreviewHelper : public test::WithPreviews<test::SceneFixture> {
protected:
    ~PreviewHelper() override
    {
        helper.setPrimaryLineSelected(false);
        helper.setAxisXLineSelected(false);
        helper.setAxisYLineSelected(false);
        helper.removeAllVisuals();
        drain();
    }
    /// The marks that are shown, by the names of the helper's fields.
    std::set<std::string> shown()
    {
        drain();
        std::set<std::string> names;
        const auto note = [&](const Visual& mark, const std::string& name) {
            EXPECT_EQ(mark.isVisible(), isDrawn(mark)) << name;
            if (mark.isVisible())
                names.insert(name);
        };
        for (std::size_t i = 0; i < PreviewVisualsHelper::pointCount; ++i)
            note(helper.getPoint(i), "point" + std::to_string(i));
        note(helper.getPrimaryLine(), "primary");
        note(helper.getAxisXLine(), "x");
        note(helper.getAxisYLine(), "y");
        note(helper.getUserFrame(), "user");
        note(helper.getObjectFrame(), "object");
        return names;
    }
    static bool isDrawn(const Visual& mark)
    {
        const auto& objects = mark.getSceneNode()->getAttachedObjects();
        return std::ranges::any_of(objects, [](const Ogre::MovableObject* object) { return object->getVisible(); });
    }
    static std::vector<Pos> lineOf(const FromToLineVisual& line)
    {
        EXPECT_EQ(test::uploaded(line.getLine()), line.getLine().getPoints());
        return line.getLine().getPoints();
    }
    /// How often a frame is asked for while what was posted runs.
    int signalsOf(const std::function<void()>& post)
    {
        drain();
        post();
        int count = 0;
        const boost::signals2::scoped_connection connection = broker::SignalBroker::onUpdateScene([&] { ++count; });
        drain();
        return count;
    }

    PreviewVisualsHelper& helper = *PreviewVisualsHelper::Get();
};

TEST_F(PreviewHelper, StandsHiddenOnTheWorldFromTheStart)
{
    EXPECT_THAT(shown(), IsEmpty());
    for (const Visual* mark : std::initializer_list<const Visual*>{
             &helper.getPoint(0), &helper.getPoint(5), &helper.getPrimaryLine(), &helper.getAxisXLine(),
             &helper.getAxisYLine(), &helper.getUserFrame(), &helper.getObjectFrame()}) {
        EXPECT_EQ(mark->getParent(), world);
        EXPECT_EQ(mark->getType(), VisualType::Gui);
        EXPECT_FALSE(Scene::HasVisual(mark->getId()));
    }
}

TEST_F(PreviewHelper, CrossIsLongerAlongZ)
{
    const SelectPointVisual& cross = helper.getPoint(0);

    EXPECT_THAT(pointsOf(cross.getLineX()), ElementsAre(Pos(-15, 0, 0), Pos(15, 0, 0)));
    EXPECT_THAT(pointsOf(cross.getLineY()), ElementsAre(Pos(0, -15, 0), Pos(0, 15, 0)));
    EXPECT_THAT(pointsOf(cross.getLineZ()), ElementsAre(Pos(0, 0, -25), Pos(0, 0, 25)));
    EXPECT_EQ(cross.getLineY().getMaterial()->getName(), "WhiteFrameLine");
    EXPECT_EQ(test::uploaded(cross.getLineZ()).size(), 2u);
}

TEST_F(PreviewHelper, FrameHasThreeWhiteAxesOfThirtyUnits)
{
    const PreviewFrameVisual& frame = helper.getUserFrame();

    EXPECT_THAT(pointsOf(frame.getLineX()), ElementsAre(Pos(0, 0, 0), Pos(30, 0, 0)));
    EXPECT_THAT(pointsOf(frame.getLineY()), ElementsAre(Pos(0, 0, 0), Pos(0, 30, 0)));
    EXPECT_THAT(pointsOf(frame.getLineZ()), ElementsAre(Pos(0, 0, 0), Pos(0, 0, 30)));
    EXPECT_EQ(frame.getLineX().getMaterial()->getName(), "WhiteFrameLine");
    EXPECT_EQ(test::uploaded(frame.getLineZ()).size(), 2u);
}

TEST_F(PreviewHelper, LineFromWhatIsNoMaterialIsRefused)
{
    EXPECT_THROW(FromToLineVisual(world, "NoSuchMaterial"), Ogre::Exception);
}

TEST_F(PreviewHelper, LinesAreRedGreenAndBlue)
{
    EXPECT_EQ(test::materialOf(helper.getPrimaryLine()), "RedFrameLine");
    EXPECT_EQ(test::materialOf(helper.getAxisXLine()), "GreenFrameLine");
    EXPECT_EQ(test::materialOf(helper.getAxisYLine()), "BlueFrameLine");
}

TEST_F(PreviewHelper, FromThenToShowsOneLineAtTheSecondCall)
{
    helper.addPrimaryFrom(a);
    EXPECT_FALSE(helper.getPoint(0).isVisible()) << "it is posted";
    EXPECT_THAT(shown(), ElementsAre("point0"));
    EXPECT_EQ(helper.getPoint(0).getWorldPosition(), a);

    helper.addPrimaryTo(b);

    EXPECT_THAT(shown(), ElementsAre("point0", "point1", "primary"));
    EXPECT_THAT(lineOf(helper.getPrimaryLine()), ElementsAre(a, b));
}

TEST_F(PreviewHelper, ToThenFromDrawsFromWhereTheOtherPointStoodAndCorrectsIt)
{
    helper.addPrimaryFrom(c);
    drain();
    helper.removeAllVisuals();
    helper.addPrimaryTo(b);

    EXPECT_THAT(shown(), ElementsAre("point1", "primary"));
    EXPECT_THAT(lineOf(helper.getPrimaryLine()), ElementsAre(Pos(), b)) << "the removal moved it to the origin";

    helper.addPrimaryFrom(a);

    EXPECT_THAT(shown(), ElementsAre("point0", "point1", "primary"));
    EXPECT_THAT(lineOf(helper.getPrimaryLine()), ElementsAre(a, b));
}

TEST_F(PreviewHelper, FromLeavesAHiddenLineHiddenAndUpToDate)
{
    helper.addAxisXFrom(a);
    helper.addAxisXTo(b);
    drain();
    const_cast<FromToLineVisual&>(helper.getAxisXLine()).setVisible(false, true);

    helper.addAxisXFrom(c);

    EXPECT_THAT(shown(), ElementsAre("point2", "point3"));
    EXPECT_THAT(lineOf(helper.getAxisXLine()), ElementsAre(c, b));
}

TEST_F(PreviewHelper, AxesHavePointsAndLinesOfTheirOwn)
{
    helper.addAxisXFrom(a);
    helper.addAxisXTo(b);
    EXPECT_THAT(shown(), ElementsAre("point2", "point3", "x"));
    EXPECT_THAT(lineOf(helper.getAxisXLine()), ElementsAre(a, b));

    helper.removeAllVisuals();
    helper.addAxisYFrom(b);
    helper.addAxisYTo(c);
    EXPECT_THAT(shown(), ElementsAre("point4", "point5", "y"));
    EXPECT_THAT(lineOf(helper.getAxisYLine()), ElementsAre(b, c));

    helper.addAxisYFrom(a);
    EXPECT_THAT(shown(), ElementsAre("point4", "point5", "y"));
    EXPECT_THAT(lineOf(helper.getAxisYLine()), ElementsAre(a, c));
}

TEST_F(PreviewHelper, ThirdPointAloneShowsOneCrossAndNoLine)
{
    helper.addSelectPoint3(a);

    EXPECT_THAT(shown(), ElementsAre("point2"));
}

TEST_F(PreviewHelper, ThreePointsMakeATriangleOfThreeColoursInAnyOrder)
{
    using Add = void (PreviewVisualsHelper::*)(const Pos&);
    std::vector<std::pair<Add, Pos>> picks{{&PreviewVisualsHelper::addSelectPoint1, a},
                                           {&PreviewVisualsHelper::addSelectPoint2, b},
                                           {&PreviewVisualsHelper::addSelectPoint3, c}};
    std::vector<int> order{0, 1, 2};
    do {
        helper.removeAllVisuals();
        for (const int i : order)
            (helper.*picks[i].first)(picks[i].second);

        EXPECT_THAT(shown(), UnorderedElementsAre("point0", "point1", "point2", "primary", "x", "y"));
        EXPECT_THAT(lineOf(helper.getPrimaryLine()), ElementsAre(a, b));
        EXPECT_THAT(lineOf(helper.getAxisXLine()), ElementsAre(b, c));
        EXPECT_THAT(lineOf(helper.getAxisYLine()), ElementsAre(c, a));
    } while (std::ranges::next_permutation(order).found);
}

TEST_F(PreviewHelper, OriginAndTwoPointsGiveTwoLinesFromTheOrigin)
{
    helper.addSelectFramePoint1(a);
    EXPECT_THAT(shown(), ElementsAre("point0"));
    helper.addSelectFramePoint2(b);
    EXPECT_THAT(shown(), ElementsAre("point0", "point1", "primary"));
    helper.addSelectFramePoint3(c);

    EXPECT_THAT(shown(), UnorderedElementsAre("point0", "point1", "point2", "primary", "x"));
    EXPECT_THAT(lineOf(helper.getPrimaryLine()), ElementsAre(a, b));
    EXPECT_THAT(lineOf(helper.getAxisXLine()), ElementsAre(c, a));
}

TEST_F(PreviewHelper, OriginThatComesLastDrawsBothLines)
{
    helper.addSelectFramePoint2(b);
    helper.addSelectFramePoint3(c);
    EXPECT_THAT(shown(), ElementsAre("point1", "point2"));

    helper.addSelectFramePoint1(a);

    EXPECT_THAT(shown(), UnorderedElementsAre("point0", "point1", "point2", "primary", "x"));
    EXPECT_THAT(lineOf(helper.getPrimaryLine()), ElementsAre(a, b));
    EXPECT_THAT(lineOf(helper.getAxisXLine()), ElementsAre(a, c));
}

TEST_F(PreviewHelper, FramesStandWhereTheyArePreviewed)
{
    const rob::Posef pose(a, rob::Rotationf(0.5f, 0.5f, 0.5f, 0.5f));

    helper.addPreviewUserFrame(pose);
    EXPECT_THAT(shown(), ElementsAre("user"));
    EXPECT_EQ(helper.getUserFrame().getWorldPose(), pose);

    helper.addPreviewObjectFrame(rob::Posef(b));
    EXPECT_THAT(shown(), UnorderedElementsAre("user", "object"));
    EXPECT_EQ(helper.getObjectFrame().getWorldPose(), rob::Posef(b));
}

TEST_F(PreviewHelper, RemovalHidesAllAndMovesTheCrossesAndLeavesTheLines)
{
    helper.addPrimaryFrom(a);
    helper.addPrimaryTo(b);
    helper.addAxisYTo(c);
    helper.addPreviewUserFrame(rob::Posef(a));
    helper.removeAllVisuals();

    EXPECT_THAT(shown(), IsEmpty());
    EXPECT_EQ(helper.getPoint(1).getWorldPosition(), Pos());
    EXPECT_THAT(lineOf(helper.getPrimaryLine()), ElementsAre(a, b));
}

TEST_F(PreviewHelper, LookOfALineStaysThroughARemoval)
{
    helper.setPrimaryLineSelected(true);
    helper.setAxisXLineSelected(true);
    helper.setAxisYLineSelected(true);
    EXPECT_EQ(test::materialOf(helper.getPrimaryLine()), "RedFrameLine") << "it is posted";
    helper.removeAllVisuals();
    drain();

    EXPECT_EQ(test::materialOf(helper.getPrimaryLine()), "RedFrameLineSelected");
    EXPECT_EQ(test::materialOf(helper.getAxisXLine()), "GreenFrameLineSelected");
    EXPECT_EQ(test::materialOf(helper.getAxisYLine()), "BlueFrameLineSelected");

    helper.setAxisXLineSelected(false);
    drain();
    EXPECT_EQ(test::materialOf(helper.getAxisXLine()), "GreenFrameLine");
}

TEST_F(PreviewHelper, LineLooksTheSameHoweverItIsMarked)
{
    const std::vector<FromToLineVisual*> known = kindsOn<FromToLineVisual>(*world);
    const auto line = std::ranges::find(known, &helper.getPrimaryLine());
    ASSERT_NE(line, known.end());
    for (const bool selected : {true, false}) {
        helper.setPrimaryLineSelected(selected);
        drain();

        for (const auto mark : {&Visual::setSelected, &Visual::setHighlighted, &Visual::resetAppearance}) {
            ((*line)->*mark)();
            EXPECT_EQ(test::materialOf(**line), selected ? "RedFrameLineSelected" : "RedFrameLine");
        }
    }
}

TEST_F(PreviewHelper, PicksAndTheRemovalAskForAFrameAndTheRestDoesNot)
{
    using Add = void (PreviewVisualsHelper::*)(const Pos&);
    for (const Add add :
         {&PreviewVisualsHelper::addPrimaryFrom, &PreviewVisualsHelper::addPrimaryTo,
          &PreviewVisualsHelper::addAxisXFrom, &PreviewVisualsHelper::addAxisXTo, &PreviewVisualsHelper::addAxisYFrom,
          &PreviewVisualsHelper::addAxisYTo, &PreviewVisualsHelper::addSelectPoint1,
          &PreviewVisualsHelper::addSelectPoint2, &PreviewVisualsHelper::addSelectPoint3})
        EXPECT_EQ(signalsOf([&] { (helper.*add)(a); }), 1);
    EXPECT_EQ(signalsOf([&] { helper.removeAllVisuals(); }), 1);

    for (const Add add : {&PreviewVisualsHelper::addSelectFramePoint1, &PreviewVisualsHelper::addSelectFramePoint2,
                          &PreviewVisualsHelper::addSelectFramePoint3})
        EXPECT_EQ(signalsOf([&] { (helper.*add)(a); }), 0);
    EXPECT_EQ(signalsOf([&] { helper.addPreviewUserFrame({}); }), 0);
    EXPECT_EQ(signalsOf([&] { helper.addPreviewObjectFrame({}); }), 0);
    EXPECT_EQ(signalsOf([&] { helper.setPrimaryLineSelected(false); }), 0);
}

} // namespace
} // namespace vrk::visual
