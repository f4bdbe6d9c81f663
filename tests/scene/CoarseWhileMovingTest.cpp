#include "scene/CoarseWhileMoving.h"

#include <gmock/gmock.h>

#include <chrono>
#include <vector>

namespace vrk::visual {
namespace {

using namespace std::chrono_literals;
using enum Coarseness;
using testing::Each;
using testing::ElementsAre;
using Clock = CoarseWhileMoving::Clock;

/// A clock of its own, and a view that takes as long for its frames as a test says.
class CoarseWhileMovingTest : public testing::Test {
protected:
    Coarseness draw(Clock::duration takes)
    {
        const Coarseness drawn = levels.begin(now);
        now += takes;
        levels.end(now);
        return drawn;
    }
    Coarseness moveAndDraw(Clock::duration takes)
    {
        levels.noteMove(now);
        return draw(takes);
    }
    /// Of each of these frames, one on the other.
    std::vector<Coarseness> moveAndDrawAll(const std::vector<Clock::duration>& takes)
    {
        std::vector<Coarseness> drawn;
        for (const Clock::duration each : takes)
            drawn.push_back(moveAndDraw(each));
        return drawn;
    }
    /// Waits until the whole frame is due.
    Coarseness restAndDraw(Clock::duration takes)
    {
        now = levels.getWholeDue().value_or(now + 1s);
        return draw(takes);
    }

    CoarseWhileMoving levels;
    Clock::time_point now = Clock::time_point(1000s);
};

TEST_F(CoarseWhileMovingTest, FirstFrameIsWhole)
{
    EXPECT_EQ(draw(5s), Whole);
    EXPECT_EQ(moveAndDraw(5s), Whole) << "nothing is known of frames while it moves";
}

TEST_F(CoarseWhileMovingTest, EachSlowFrameMakesTheNextOneCoarser)
{
    EXPECT_THAT(moveAndDrawAll({900ms, 400ms, 200ms, 150ms, 150ms}),
                ElementsAre(Whole, NoEdges, FewerSamples, FewerBodies, FewerBodies));
}

TEST_F(CoarseWhileMovingTest, FramesOfATenthOfASecondAreFastEnough)
{
    EXPECT_THAT(moveAndDrawAll({100ms, 100ms, 101ms, 100ms, 100ms}),
                ElementsAre(Whole, Whole, Whole, NoEdges, NoEdges));
}

TEST_F(CoarseWhileMovingTest, NothingGetsFinerDuringAMovement)
{
    moveAndDrawAll({900ms, 400ms});
    EXPECT_THAT(moveAndDrawAll(std::vector<Clock::duration>(50, 1ms)), Each(FewerSamples));
}

TEST_F(CoarseWhileMovingTest, SlowFramesOfAViewThatStandsStillAreWhole)
{
    for (int i = 0; i < 5; ++i)
        EXPECT_EQ(draw(900ms), Whole);
    EXPECT_FALSE(levels.getWholeDue());
}

TEST_F(CoarseWhileMovingTest, WholeFrameIsDueWithinAFifthOfASecondOfTheLastMove)
{
    moveAndDrawAll({900ms, 20ms});
    const Clock::time_point last = now;
    EXPECT_EQ(moveAndDraw(20ms), NoEdges);
    ASSERT_TRUE(levels.getWholeDue());
    EXPECT_GT(*levels.getWholeDue(), last + 100ms) << "a hand stops for a moment";
    EXPECT_LT(*levels.getWholeDue(), last + 200ms);
    EXPECT_EQ(restAndDraw(900ms), Whole);
    EXPECT_FALSE(levels.getWholeDue());
}

TEST_F(CoarseWhileMovingTest, FrameAheadOfThatIsAsCoarseAsTheOthers)
{
    moveAndDrawAll({900ms, 20ms});
    now += 80ms;
    EXPECT_EQ(draw(20ms), NoEdges);
}

TEST_F(CoarseWhileMovingTest, MovesThatCameDuringALongFrameGoOnWithTheMovement)
{
    moveAndDrawAll({900ms, 500ms});
    EXPECT_GT(*levels.getWholeDue(), now) << "else a whole frame would come between them";
    now += 20ms;
    EXPECT_EQ(moveAndDraw(500ms), FewerSamples);
}

TEST_F(CoarseWhileMovingTest, MoveDuringAWholeFrameBeginsAMovement)
{
    moveAndDrawAll({900ms, 400ms, 90ms});
    EXPECT_EQ(restAndDraw(900ms), Whole);
    EXPECT_EQ(moveAndDraw(90ms), FewerSamples);
}

TEST_F(CoarseWhileMovingTest, MovementBeginsAsTheOneBeforeWentOn)
{
    moveAndDrawAll({900ms, 400ms, 90ms});
    restAndDraw(900ms);
    now += 1h;
    EXPECT_THAT(moveAndDrawAll({90ms, 90ms}), Each(FewerSamples));
}

TEST_F(CoarseWhileMovingTest, MovementBeginsWholeWhereWholeFramesAreFastByNow)
{
    moveAndDrawAll({900ms, 400ms, 200ms, 90ms});
    restAndDraw(100ms);
    EXPECT_EQ(moveAndDraw(30ms), Whole);
}

TEST_F(CoarseWhileMovingTest, MovementAfterOneOfVeryFastFramesBeginsFiner)
{
    moveAndDrawAll({900ms, 400ms, 10ms});
    restAndDraw(900ms);
    EXPECT_THAT(moveAndDrawAll({101ms, 10ms}), ElementsAre(NoEdges, FewerSamples));
    restAndDraw(900ms);
    EXPECT_EQ(moveAndDraw(60ms), NoEdges);
}

} // namespace
} // namespace vrk::visual
