#include "edit/Bands.h"

#include "BlockFixture.h"
#include "demo/DemoStation.h"
#include "edit/RemoveThings.h"

#include "platform/layout/Body.h"
#include "platform/layout/Layout.h"
#include "platform/layout/Part.h"
#include "platform/sdf/SdfManager.h"
#include "platform/task/DataItem.h"
#include "platform/task/Instruction.h"
#include "platform/task/Path.h"
#include "platform/task/Task.h"

#include <TopExp.hxx>
#include <TopTools_IndexedMapOfShape.hxx>

#include <gmock/gmock.h>

#include <algorithm>

namespace vrkview::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using vrk::layout::Layout;
using vrk::rob::Dird;
using vrk::rob::Posd;
using vrk::rob::Posed;
using vrk::task::EdgeMfgShape;

class EditBandsTest : public BlockFixture {
protected:
    void SetUp() override
    {
        BlockFixture::SetUp();
        body = block->getBodies().front()->getId();
        before = saved();
    }
    unsigned addBand(const std::vector<unsigned>& edges = {1})
    {
        auto change = std::make_unique<AddBand>(body, edges, vrk::task::SeamOptions());
        const unsigned band = change->getBand();
        history.push(std::move(change));
        return band;
    }
    static vrk::task::Task& program() { return *Layout::inst().tasks.at(0); }

    unsigned body = 0;
    std::string before;
};

TEST(TangentChainOfTheBracket, IsARunWhereverItBegins)
{
    const Station demo = demoStation();
    const auto part =
        std::ranges::find(demo.parts, "Bracket as drawn", [](const auto& each) { return each->getName(); });
    ASSERT_NE(part, demo.parts.end());
    const TopoDS_Shape shape = (*part)->getBodies().front()->getShape();
    TopTools_IndexedMapOfShape edges;
    TopExp::MapShapes(shape, TopAbs_EDGE, edges);
    ASSERT_GT(edges.Size(), 60);

    for (unsigned first = 1; first <= static_cast<unsigned>(edges.Size()); ++first) {
        const std::vector<unsigned> chain = vrk::task::TangentChain(shape, first, 0.02);
        EXPECT_THAT(chain, testing::Contains(first));
        try {
            vrk::task::MakeSeam(1, "seam", shape, 2, chain, {});
        } catch (const std::invalid_argument& refusal) { // for its faces it may be refused
            EXPECT_THAT(refusal.what(), testing::Not(testing::ContainsRegex("chain|branches")))
                << "edge " << first << ": " << testing::PrintToString(chain);
        }
    }
    Layout::inst().clear();
}

TEST_F(EditBandsTest, FirstBandBringsAProgramAndBothGoAgain)
{
    const unsigned band = addBand();

    ASSERT_THAT(Layout::inst().tasks, SizeIs(1));
    ASSERT_TRUE(isBand(band));
    EXPECT_EQ(bandOf(band)->getName(), "Band on Block");
    EXPECT_EQ(bandOf(band)->getMfgVectors()[0].body, body);
    EXPECT_THAT(program().getMfgShapes(), ElementsAre(bandOf(band)));
    const std::string with = saved();

    history.undo();
    EXPECT_FALSE(isBand(band));
    EXPECT_EQ(saved(), before);
    history.redo();
    EXPECT_EQ(saved(), with);
}

TEST_F(EditBandsTest, NextBandJoinsTheProgramThatIsThere)
{
    addBand();
    const std::string one = saved();

    const unsigned second = addBand({2});

    EXPECT_THAT(Layout::inst().tasks, SizeIs(1));
    EXPECT_THAT(program().getMfgShapes(), SizeIs(2));
    history.undo();
    EXPECT_FALSE(isBand(second));
    EXPECT_EQ(saved(), one);
}

TEST_F(EditBandsTest, BandIsSavedWithTheStation)
{
    const unsigned band = addBand({1});
    const std::string with = saved();
    Layout::inst().clear();

    vrk::station::LoadStationFile(folder / "cell.station.json");

    ASSERT_TRUE(isBand(band));
    EXPECT_THAT(bandOf(band)->getPathPointsForRender(), SizeIs(2));
    EXPECT_EQ(saved(), with);
}

TEST_F(EditBandsTest, RefusedBandLeavesTheStationAsItWas)
{
    EXPECT_THROW(addBand({1, 99}), std::invalid_argument);
    EXPECT_THROW(addBand({}), std::invalid_argument);
    EXPECT_THROW(AddBand(block->getId(), {1}, {}), std::invalid_argument) << "which is no body";

    EXPECT_FALSE(history.canUndo());
    EXPECT_EQ(saved(), before);
}

TEST_F(EditBandsTest, BandThatIsDeletedComesBackToItsPlace)
{
    const unsigned first = addBand({1});
    addBand({2});
    Layout::inst().setHidden(first, true);
    const std::string both = saved();

    history.push(std::make_unique<RemoveBand>(first));
    EXPECT_FALSE(isBand(first));
    EXPECT_THAT(program().getMfgShapes(), SizeIs(1));
    EXPECT_THAT(Layout::inst().visibilities, IsEmpty());
    const std::string one = saved();
    history.undo();

    EXPECT_EQ(program().getMfgShapes()[0]->getId(), first);
    EXPECT_EQ(saved(), both);
    history.redo();
    EXPECT_EQ(saved(), one);
}

TEST_F(EditBandsTest, BandGoesWithItsPartAndComesBackWithIt)
{
    const unsigned band = addBand();
    addBand({2});
    const std::string with = saved();

    history.push(std::make_unique<RemoveThings>(std::vector{block->getId()}));
    EXPECT_FALSE(isBand(band));
    history.undo();

    EXPECT_TRUE(isBand(band));
    EXPECT_EQ(saved(), with);
}

TEST_F(EditBandsTest, PathStandsOnThePartWithTheToolInTheEdge)
{
    block->getBodies().front()->setPose(Posed(Posd(0, 5, 0)));
    const unsigned band = addBand();
    const std::string without = saved();

    history.push(std::make_unique<AddSeamPath>(band));

    ASSERT_THAT(program().getOwnPaths(), SizeIs(1));
    const vrk::task::Path& path = *program().getOwnPaths()[0];
    ASSERT_EQ(path.moveInstructionCount(), 2u);
    const auto& of = bandOf(band)->getMfgVectors()[0];
    for (std::size_t i = 0; i < 2; ++i) {
        const vrk::task::MoveInst& move = *path.getMoveInstructions()[i];
        ASSERT_NE(move.getWObjItem(), nullptr);
        EXPECT_EQ(move.getWObjItem()->getOwnerId(), block->getId()) << "so that it goes with the part";
        const Posed pose = move.getTargetItem()->getPose();
        const Posd told = of.vectors[i].getPos(of.edge) + vrk::rob::Vec3d(0, 5, 0);
        EXPECT_NEAR((pose.position - told).length(), 0, 1e-9);
        EXPECT_NEAR((pose * Dird(0, 0, 1)).dot(of.vectors[i].direction), -1, 1e-9);
        EXPECT_NEAR((pose * Dird(1, 0, 0)).dot(of.vectors[i].getEdgeTangent(of.edge)), 1, 1e-9);
    }
    const std::string with = saved();
    Layout::inst().clear();
    vrk::station::LoadStationFile(folder / "cell.station.json");
    EXPECT_EQ(saved(), with) << "it is saved with the station";
    EXPECT_NE(with, without);
}

TEST_F(EditBandsTest, PathIsTakenBackWithItsTargetsAndItsWorkObject)
{
    const unsigned band = addBand();
    const std::string without = saved();
    history.push(std::make_unique<AddSeamPath>(band));
    const std::string with = saved();
    history.push(std::make_unique<AddSeamPath>(band));
    std::size_t workObjects = 0;
    for (const auto& item : program().getDataItems())
        workObjects += item->asType(sdf::ModelType::WObjData) ? 1 : 0;
    EXPECT_EQ(workObjects, 1u) << "the second path uses that of the first";

    history.undo();
    EXPECT_EQ(saved(), with);
    history.undo();
    EXPECT_EQ(saved(), without);
    history.redo();
    EXPECT_EQ(saved(), with);
}

TEST_F(EditBandsTest, PathOfWhatIsNoBandIsNoStep)
{
    history.push(std::make_unique<AddSeamPath>(block->getId()));
    history.push(std::make_unique<RemoveBand>(block->getId()));

    EXPECT_FALSE(history.canUndo());
}

TEST_F(EditBandsTest, TangentChainsOfSeveralEdgesAreOneList)
{
    EXPECT_THAT(tangentChainOf(body, {3, 1, 3}), ElementsAre(3u, 1u));
    EXPECT_THROW(tangentChainOf(block->getId(), {1}), std::invalid_argument);
}

} // namespace
} // namespace vrkview::test
