#include "recording/Session.h"

#include "support/TempFolder.h"

#include <gmock/gmock.h>

namespace vrkview::test {
namespace {

using nlohmann::ordered_json;
using testing::ElementsAre;
using testing::Pair;
using vrk::test::TempFolder;

SessionHead headOf(const ordered_json& line)
{
    const TempFolder folder;
    return readSession(folder.write("session.jsonl", line.dump() + "\n")).head;
}

SessionHead someHead()
{
    SessionHead head;
    head.station = "Cell";
    head.view = {640, 480};
    head.clickRadius = 4;
    head.display = "shaded";
    return head;
}

TEST(SessionHead, KeepsWhatIsDrawnOfPrograms)
{
    SessionHead head = someHead();
    head.programParts = {{ProgramPart::Targets, true}, {ProgramPart::Lines, false}, {ProgramPart::ZAxesOnly, true}};

    EXPECT_THAT(headOf(toJson(head)).programParts,
                ElementsAre(Pair(ProgramPart::Targets, true), Pair(ProgramPart::Lines, false),
                            Pair(ProgramPart::ZAxesOnly, true)));
}

TEST(SessionHead, KeepsWhatIsPicked)
{
    SessionHead head = someHead();
    head.pickGroups = {{PickGroup::Bodies, false}, {PickGroup::Points, true}};

    EXPECT_THAT(headOf(toJson(head)).pickGroups,
                ElementsAre(Pair(PickGroup::Bodies, false), Pair(PickGroup::Faces, true), Pair(PickGroup::Edges, true),
                            Pair(PickGroup::Vertices, true), Pair(PickGroup::Points, true),
                            Pair(PickGroup::Frames, true)));
}

TEST(SessionHead, KeepsTheStepsOfMoves)
{
    SessionHead head = someHead();
    head.moveSteps = {1, 15};
    EXPECT_EQ(headOf(toJson(head)).moveSteps, (MoveSteps{1, 15}));

    ordered_json older = toJson(head);
    older.erase("moveSteps");
    EXPECT_EQ(headOf(older).moveSteps, MoveSteps());
}

TEST(SessionHead, OfAnOlderRecordingTellsNothingOfProgramsAndLeavesNothingOut)
{
    ordered_json line = toJson(someHead());
    line.erase("programs");
    line.erase("picks");

    const SessionHead head = headOf(line);

    EXPECT_TRUE(head.programParts.empty());
    for (const auto& [group, isTaken] : head.pickGroups)
        EXPECT_TRUE(isTaken);
}

TEST(SessionStep, KeysHeldAreKept)
{
    const Qt::KeyboardModifiers held = Qt::ControlModifier | Qt::ShiftModifier;

    EXPECT_EQ(modifiersFrom(toJson(held)), held);
    EXPECT_EQ(modifiersFrom(toJson(Qt::KeyboardModifiers())), Qt::NoModifier);
}

} // namespace
} // namespace vrkview::test
