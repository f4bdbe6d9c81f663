#include "edit/CloudPoints.h"

#include "BlockFixture.h"
#include "edit/ModelPlaces.h"

#include "platform/layout/Layout.h"
#include "platform/layout/Part.h"
#include "platform/sdf/SdfManager.h"
#include "platform/station/ExportCloud.h"
#include "platform/station/ImportCloud.h"

#include <gmock/gmock.h>

#include <numbers>

namespace vrkview::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using vrk::layout::Layout;
using vrk::layout::PointCloud;
using vrk::rob::Posd;
using vrk::rob::Posed;
using vrk::rob::Posf;
using vrk::rob::Vec3f;

/// Two scans on files, the first of them carried by the block.
class EditCloudsTest : public BlockFixture {
protected:
    void SetUp() override
    {
        BlockFixture::SetUp();
        first = add("first.xyz", "0 0 0 0 0 1\n1 0 0 0 1 0\n2 0 0 1 0 0\n3 0 0 0 0 -1\n");
        second = add("second.xyz", "0 5 0\n1 5 0\n2 5 0\n");
        first->setPose(Posed(Posd(10, 20, 30)));
        Layout::inst().addAttachment(first->getId(), block->getId(), Posed(Posd(1, 2, 3)));
        before = saved();
    }
    std::shared_ptr<PointCloud> add(const std::string& name, const std::string& text)
    {
        const auto cloud = vrk::station::ImportPointCloud(folder.write(name, text));
        Layout::inst().addPointCloud(cloud);
        return cloud;
    }
    static std::vector<std::uint32_t> hiddenOf(const PointCloud& cloud)
    {
        return cloud.getHiddenPoints() ? cloud.getHiddenPoints()->numbers() : std::vector<std::uint32_t>();
    }
    /// The cloud that the last cut made.
    static PointCloud& made() { return *Layout::inst().pointclouds.back(); }

    std::shared_ptr<PointCloud> first, second;
    std::string before;
};

TEST_F(EditCloudsTest, HiddenPointsJoinThoseThatAreHiddenAndComeBackStepByStep)
{
    history.push(HidePoints::Also({{first->getId(), {0}}}));
    history.push(HidePoints::Also({{first->getId(), {2, 3}}, {second->getId(), {1}}}));

    EXPECT_THAT(hiddenOf(*first), ElementsAre(0, 2, 3));
    EXPECT_THAT(hiddenOf(*second), ElementsAre(1));
    EXPECT_EQ(countHiddenPoints(), 4u);
    EXPECT_EQ(history.undoText(), "Hide 3 points");
    EXPECT_THAT(shownPointsOf(first->getId()), ElementsAre(1));
    const std::string with = saved();
    history.undo();
    EXPECT_THAT(hiddenOf(*first), ElementsAre(0));
    EXPECT_THAT(hiddenOf(*second), IsEmpty());
    EXPECT_EQ(history.undoText(), "Hide 1 point");
    history.undo();
    EXPECT_EQ(saved(), before);
    history.redo();
    history.redo();
    EXPECT_EQ(saved(), with);
}

TEST_F(EditCloudsTest, PointsShownAloneHideAllOthersOfCloudsThatAreSeen)
{
    history.push(HidePoints::AllBut({{first->getId(), {1, 2}}}, {first->getId(), second->getId()}));

    EXPECT_THAT(hiddenOf(*first), ElementsAre(0, 3));
    EXPECT_THAT(hiddenOf(*second), ElementsAre(0, 1, 2));
    history.undo();
    EXPECT_EQ(saved(), before);
    history.push(HidePoints::AllBut({{first->getId(), {1, 2}}}, {first->getId()}));
    EXPECT_THAT(hiddenOf(*second), IsEmpty()) << "which the user does not see";
}

TEST_F(EditCloudsTest, AllPointsComeBackAtOnce)
{
    history.push(HidePoints::Also({{first->getId(), {0}}, {second->getId(), {1}}}));

    history.push(HidePoints::None());

    EXPECT_EQ(countHiddenPoints(), 0u);
    EXPECT_EQ(saved(), before);
    history.undo();
    EXPECT_EQ(countHiddenPoints(), 2u);
}

TEST_F(EditCloudsTest, WhatHidesNothingNewMakesNoStep)
{
    history.push(HidePoints::None());
    history.push(HidePoints::Also({}));
    history.push(HidePoints::Also({{block->getId(), {0}}, {4'000'000'000u, {1}}}));
    history.push(HidePoints::AllBut({{first->getId(), {0, 1, 2, 3}}}, {}));
    history.push(std::make_unique<CutPoints>(PointsOfClouds{}));

    EXPECT_EQ(history.count(), 0);
}

TEST_F(EditCloudsTest, CutPointsAreACloudAtTheSamePlaceOnTheSameCarrier)
{
    const Posd place = worldPoseOfThing(first->getId()) * Posd(2, 0, 0);

    history.push(std::make_unique<CutPoints>(PointsOfClouds{{first->getId(), {2, 3}}}));

    ASSERT_THAT(Layout::inst().pointclouds, SizeIs(3));
    EXPECT_EQ(Layout::inst().pointclouds[0], first) << "the same cloud, with the same id and name";
    EXPECT_EQ(first->getName(), "first");
    EXPECT_THAT(first->getPoints(), ElementsAre(Posf(0, 0, 0), Posf(1, 0, 0)));
    EXPECT_THAT(first->getNormals(), ElementsAre(Vec3f(0, 0, 1), Vec3f(0, 1, 0)));
    EXPECT_EQ(made().getName(), "first cut");
    EXPECT_THAT(made().getPoints(), ElementsAre(Posf(2, 0, 0), Posf(3, 0, 0)));
    EXPECT_THAT(made().getNormals(), ElementsAre(Vec3f(1, 0, 0), Vec3f(0, 0, -1)));
    EXPECT_EQ(made().getPose(), first->getPose());
    EXPECT_EQ(carrierOf(made().getId()), block->getId());
    EXPECT_EQ(worldPoseOfThing(made().getId()) * Posd(made().getPoints()[0]), place);
    EXPECT_EQ(history.undoText(), "Cut off 2 points");
}

TEST_F(EditCloudsTest, CutThatIsTakenBackLeavesTheFileToTheByte)
{
    const unsigned cutFrom = first->getId();
    history.push(std::make_unique<CutPoints>(PointsOfClouds{{cutFrom, {0}}, {second->getId(), {1, 2}}}));
    const std::string with = saved();
    const unsigned id = made().getId();

    history.undo();
    EXPECT_EQ(saved(), before);
    EXPECT_EQ(sdf::SdfManager::inst().find(id), nullptr);
    EXPECT_THAT(first->getPoints(), SizeIs(4));
    history.redo();
    EXPECT_EQ(saved(), with);
    EXPECT_EQ(made().getId(), id);
}

TEST_F(EditCloudsTest, CutCloudsAreSavedWithTheStation)
{
    history.push(HidePoints::Also({{first->getId(), {0, 3}}}));
    history.push(std::make_unique<CutPoints>(PointsOfClouds{{first->getId(), {1}}}));
    EXPECT_THAT(hiddenOf(*first), ElementsAre(0, 2)) << "the same points with other numbers";
    const std::string with = saved();
    Layout::inst().clear();

    vrk::station::LoadStationFile(folder / "cell.station.json");

    ASSERT_THAT(Layout::inst().pointclouds, SizeIs(3));
    EXPECT_THAT(Layout::inst().pointclouds[0]->getPoints(), ElementsAre(Posf(0, 0, 0), Posf(2, 0, 0), Posf(3, 0, 0)));
    EXPECT_THAT(hiddenOf(*Layout::inst().pointclouds[0]), ElementsAre(0, 2));
    EXPECT_THAT(Layout::inst().pointclouds[2]->getPoints(), ElementsAre(Posf(1, 0, 0)));
    EXPECT_EQ(saved(), with);
}

TEST_F(EditCloudsTest, CloudIsNotCutToNothing)
{
    try {
        history.push(std::make_unique<CutPoints>(PointsOfClouds{{first->getId(), {0}}, {second->getId(), {0, 1, 2}}}));
        ADD_FAILURE() << "nothing was refused";
    } catch (const std::invalid_argument& failure) {
        EXPECT_STREQ(failure.what(), "all points of 'second' are selected, so that nothing would be left of it");
    }
    EXPECT_EQ(history.count(), 0);
    EXPECT_EQ(saved(), before);
}

TEST_F(EditCloudsTest, PointsAreSavedAsTheyLieInTheWorld)
{
    savePoints({{first->getId(), {0, 3}}}, (folder / "some.ply").string());
    const auto read = vrk::station::ImportPointCloud(folder / "some.ply");
    const Posed pose = worldPoseOfThing(first->getId());
    EXPECT_THAT(read->getPoints(), ElementsAre(Posf(pose * Posd(0, 0, 0)), Posf(pose * Posd(3, 0, 0))));
    EXPECT_THAT(read->getNormals(), ElementsAre(Vec3f(0, 0, 1), Vec3f(0, 0, -1)));

    // Of two clouds, one of which has no normals
    savePoints({{first->getId(), {0}}, {second->getId(), {2}}}, (folder / "both.xyz").string());
    const auto both = vrk::station::ImportPointCloud(folder / "both.xyz");
    EXPECT_THAT(both->getPoints(), ElementsAre(Posf(pose * Posd(0, 0, 0)), Posf(2, 5, 0)));
    EXPECT_THAT(both->getNormals(), IsEmpty());
    EXPECT_THROW(savePoints({}, (folder / "none.ply").string()), vrk::station::ExportError);
    EXPECT_EQ(saved(), before);
}

} // namespace
} // namespace vrkview::test
