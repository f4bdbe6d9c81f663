#include "visual/FrameVisual.h"

#include "platform/sdf/SdfObject.h"
#include "scene/core/SceneCore.h"
#include "selection/VisualSelection.h"
#include "support/SceneFixture.h"
#include "visual/Edges.h"

#include <Ogre.h>

#include <algorithm>

namespace vrk::visual {
namespace {

using test::uploaded;
using testing::ElementsAre;
using testing::StartsWith;

class FrameVisualTest : public test::SceneFixture {
protected:
    selection::VisualSelection& picking = *selection::VisualSelection::Get();
};

const DynamicLines& axis(const FrameVisual& frame, unsigned index)
{
    return *frame.getLines().at(index);
}

/// Where the points of the x axis lie on it.
std::vector<float> alongX(const FrameVisual& frame)
{
    std::vector<float> places;
    for (const rob::Posf& point : uploaded(axis(frame, 0)))
        places.push_back(point.x);
    return places;
}

std::vector<std::string> materialsOf(const FrameVisual& frame)
{
    std::vector<std::string> names;
    for (const auto& line : frame.getLines())
        names.push_back(line->getMaterial()->getName());
    return names;
}

TEST_F(FrameVisualTest, AxesAreThreeLinesFromTheOrigin)
{
    const FrameVisual frame(world, 25.5f);

    EXPECT_EQ(frame.getType(), VisualType::Frame);
    ASSERT_EQ(frame.getLines().size(), 3u);
    EXPECT_THAT(uploaded(axis(frame, 0)), ElementsAre(rob::Posf(0, 0, 0), rob::Posf(25.5f, 0, 0)));
    EXPECT_THAT(uploaded(axis(frame, 1)), ElementsAre(rob::Posf(0, 0, 0), rob::Posf(0, 25.5f, 0)));
    EXPECT_THAT(uploaded(axis(frame, 2)), ElementsAre(rob::Posf(0, 0, 0), rob::Posf(0, 0, 25.5f)));
    EXPECT_EQ(axis(frame, 0).getRenderOpType(), RenderOpType::Lines);
    EXPECT_THAT(materialsOf(frame), ElementsAre("RedFrameLine", "GreenFrameLine", "BlueFrameLine"));
}

struct SizeCase {
    const char* name;
    VisualType asked;
    VisualType given;
    float size;
};
class FrameVisualSize : public FrameVisualTest, public testing::WithParamInterface<SizeCase> {};

TEST_P(FrameVisualSize, IsTheScenesForTheType)
{
    const FrameVisual solid(world, 500, "sized", GetParam().asked);
    const FrameVisual dashed(world, "sized", GetParam().asked, 1);

    EXPECT_EQ(solid.getType(), GetParam().given);
    EXPECT_EQ(dashed.getType(), GetParam().given);
    EXPECT_THAT(alongX(solid), ElementsAre(0, GetParam().size));
    EXPECT_THAT(alongX(dashed), ElementsAre(0, GetParam().size)) << "one dash is a solid line";
}

// A type without a size has axes of two equal points.
INSTANTIATE_TEST_SUITE_P(Table, FrameVisualSize,
                         testing::Values(SizeCase{"None", VisualType::None, VisualType::Frame, 100},
                                         SizeCase{"Plain", VisualType::Frame, VisualType::Frame, 100},
                                         SizeCase{"Tool", VisualType::Tcp, VisualType::Tcp, 70},
                                         SizeCase{"RobotTarget", VisualType::Robtarget, VisualType::Robtarget, 50},
                                         SizeCase{"JointTarget", VisualType::JointTarget, VisualType::JointTarget, 60},
                                         SizeCase{"UserFrame", VisualType::UserFrame, VisualType::UserFrame, 80},
                                         SizeCase{"ObjectFrame", VisualType::ObjectFrame, VisualType::ObjectFrame, 80},
                                         SizeCase{"WorkObject", VisualType::WObj, VisualType::WObj, 0},
                                         SizeCase{"Unknown", static_cast<VisualType>(99), static_cast<VisualType>(99),
                                                  0}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(FrameVisualTest, DashesEndAtWholeUnits)
{
    const FrameVisual frame(world, "dashed", VisualType::Frame, 3);

    // A gap of 14.59 units and a dash of 23.61, cut down at each end.
    EXPECT_THAT(alongX(frame), ElementsAre(0, 23, 37, 60, 74, 100));
    EXPECT_THAT(uploaded(axis(frame, 1)).at(3), rob::Posf(0, 60, 0));
    EXPECT_THAT(uploaded(axis(frame, 2)).at(3), rob::Posf(0, 0, 60));
    EXPECT_THAT(materialsOf(frame), ElementsAre("RedFrameLine", "GreenFrameLine", "BlueFrameLine"));
    EXPECT_EQ(axis(frame, 1).getRenderOpType(), RenderOpType::Lines);
}

TEST_F(FrameVisualTest, SizeIsBroughtToTheGpuByTheFramesOwnUpdate)
{
    class UpdatedFrame : public FrameVisual {
    public:
        using FrameVisual::FrameVisual;
        void update() override { ++updates; }
        int updates = 0;
    };
    UpdatedFrame frame(world, 10.0f);
    ASSERT_EQ(frame.updates, 0);

    frame.setFrameSize(40);

    EXPECT_EQ(frame.updates, 1);
    EXPECT_EQ(axis(frame, 0).getPoints().at(1), rob::Posf(40, 0, 0));
    EXPECT_THAT(alongX(frame), ElementsAre(0, 10)) << "this one uploads nothing";
}

TEST_F(FrameVisualTest, NoDashesMeanOne)
{
    const FrameVisual frame(world, "dashed", VisualType::Frame, 0);

    EXPECT_THAT(alongX(frame), ElementsAre(0, 100));
}

TEST_F(FrameVisualTest, NameMayBeLeftToTheFrame)
{
    const FrameVisual named(world, 7, "Local Frame", VisualType::Frame);
    const FrameVisual nameless(world, 0, "", VisualType::Frame);

    EXPECT_THAT(named.getName(), StartsWith("Local Frame"));
    EXPECT_EQ(named.getId(), 7u);
    EXPECT_THAT(nameless.getName(), StartsWith("__FRAME_0__"));
    EXPECT_EQ(nameless.getId(), 0u);
}

TEST_F(FrameVisualTest, TwoFramesOfOneNameStandSideBySide)
{
    const FrameVisual first(world, 7, "Local Frame", VisualType::Frame);
    const FrameVisual second(world, 7, "Local Frame", VisualType::Frame);

    EXPECT_NE(first.getName(), second.getName());
    EXPECT_THAT(second.getName(), StartsWith("Local Frame"));
}

TEST_F(FrameVisualTest, LastLookWins)
{
    FrameVisual frame(world, 10.0f);

    frame.setSelected();
    EXPECT_THAT(materialsOf(frame),
                ElementsAre("RedFrameLineSelected", "GreenFrameLineSelected", "BlueFrameLineSelected"));
    frame.setHighlighted();
    EXPECT_THAT(materialsOf(frame), ElementsAre("WhiteFrameLine", "WhiteFrameLine", "WhiteFrameLine"));
    frame.clearHighlightOrSelect();
    EXPECT_THAT(materialsOf(frame), ElementsAre("RedFrameLine", "GreenFrameLine", "BlueFrameLine"));
}

TEST_F(FrameVisualTest, MaterialsOfTheParentLeaveTheAxesTheirColours)
{
    auto* part = new Visual(world);
    auto* frame = new FrameVisual(part, 10.0f);

    part->setMaterial("Body", "BodySelected", "BodyHighlighted");

    EXPECT_THAT(materialsOf(*frame), ElementsAre("RedFrameLine", "GreenFrameLine", "BlueFrameLine"));
}

TEST_F(FrameVisualTest, SizeMovesTheEndOfEachAxis)
{
    FrameVisual frame(world, 10.0f);

    frame.setFrameSize(40);

    EXPECT_EQ(uploaded(axis(frame, 0)).at(1), rob::Posf(40, 0, 0));
    EXPECT_EQ(uploaded(axis(frame, 1)).at(1), rob::Posf(0, 40, 0));
    EXPECT_EQ(uploaded(axis(frame, 2)).at(1), rob::Posf(0, 0, 40));
}

TEST_F(FrameVisualTest, SizeOfADashedFrameMovesTheEndOfTheFirstDashOnly)
{
    FrameVisual frame(world, "dashed", VisualType::Frame, 3);

    frame.setFrameSize(200);

    EXPECT_THAT(alongX(frame), ElementsAre(0, 200, 37, 60, 74, 100));
}

TEST_F(FrameVisualTest, PreviewFrameIsHiddenSelectedAndKnownToNobody)
{
    FrameVisual* frame = FrameVisual::Build(world, 5);

    EXPECT_THAT(frame->getName(), StartsWith("frame"));
    EXPECT_FALSE(frame->isVisible());
    EXPECT_EQ(materialsOf(*frame).front(), "RedFrameLineSelected");
    EXPECT_EQ(alongX(*frame).size(), 10u);
    EXPECT_FALSE(Scene::HasVisual(frame->getId()));
    EXPECT_FALSE(picking.hasVisual(frame));
}

TEST_F(FrameVisualTest, FrameOfAModelObjectIsRegisteredAndSelectable)
{
    sdf::SdfNode node(sdf::ModelType::Frame, 81, "fixture");
    node.setPose({{1, 2, 3}, rob::Rotationd(0.5, 0.5, 0.5, 0.5)});

    FrameVisual::Build(world, &node);

    Visual* frame = Scene::GetVisual(81);
    EXPECT_EQ(frame->getType(), VisualType::Frame);
    EXPECT_EQ(frame->getName(), "fixture_81");
    EXPECT_EQ(frame->getPose(), rob::Posef({1, 2, 3}, rob::Rotationf(0.5f, 0.5f, 0.5f, 0.5f)));
    EXPECT_TRUE(picking.hasVisual(frame));
    EXPECT_TRUE(picking.isDetectable(frame));
}

TEST_F(FrameVisualTest, MissingMaterialFailsAndLeavesNothingBehind)
{
    Ogre::MaterialManager& materials = Ogre::MaterialManager::getSingleton();
    const Ogre::MaterialPtr blue = materials.getByName("BlueFrameLine");
    const Ogre::MaterialPtr kept = blue->clone("kept blue");
    materials.remove(blue->getName(), blue->getGroup());
    const std::size_t children = test::childrenOf(*world).size();

    EXPECT_THROW(FrameVisual(world, 10.0f), Ogre::ItemIdentityException);
    EXPECT_EQ(test::childrenOf(*world).size(), children);

    kept->clone("BlueFrameLine");
    materials.remove(kept->getName(), kept->getGroup());
    EXPECT_NO_THROW(FrameVisual(world, 10.0f));
}

TEST_F(FrameVisualTest, FramesOfOneSizeShareTheirAxesUntilOneIsGivenAnother)
{
    FrameVisual first(world, 50.0f);
    const FrameVisual second(world, 50.0f), third(world, 60.0f);
    EXPECT_EQ(&test::vertexDataOf(axis(first, 0)), &test::vertexDataOf(axis(second, 0)));
    EXPECT_NE(&test::vertexDataOf(axis(first, 0)), &test::vertexDataOf(axis(first, 1)));
    EXPECT_NE(&test::vertexDataOf(axis(first, 0)), &test::vertexDataOf(axis(third, 0)));

    first.setFrameSize(70);

    EXPECT_THAT(alongX(first), ElementsAre(0, 70));
    EXPECT_THAT(alongX(second), ElementsAre(0, 50));
}

int attachedTo(const FrameVisual& frame)
{
    return static_cast<int>(frame.getSceneNode()->getAttachedObjects().size());
}

bool isAnyShown(const FrameVisual& frame)
{
    return std::ranges::any_of(frame.getSceneNode()->getAttachedObjects(),
                               [](const Ogre::MovableObject* axis) { return axis->getVisible(); });
}

TEST_F(FrameVisualTest, HiddenFrameGetsItsAxesWhenItIsShown)
{
    FrameVisual* frame = FrameVisual::BuildHidden(world, "Local Frame");
    EXPECT_FALSE(frame->isVisible());
    EXPECT_EQ(frame->getType(), VisualType::Frame);
    EXPECT_EQ(frame->getId(), 0u);
    EXPECT_EQ(attachedTo(*frame), 0);

    frame->setVisible(true, true);
    EXPECT_EQ(attachedTo(*frame), 3);
    EXPECT_TRUE(isAnyShown(*frame));
    EXPECT_EQ(alongX(*frame), alongX(FrameVisual(world, 0, "other", VisualType::Frame)));

    frame->setVisible(false, true);
    EXPECT_FALSE(isAnyShown(*frame));
    EXPECT_EQ(attachedTo(*frame), 3);
}

TEST_F(FrameVisualTest, HiddenFrameThatIsAskedForItsAxesStaysHidden)
{
    FrameVisual* frame = FrameVisual::BuildHidden(world, "Local Frame");
    EXPECT_EQ(frame->getLines().size(), 3u);
    EXPECT_EQ(attachedTo(*frame), 3);
    EXPECT_FALSE(isAnyShown(*frame));
}

TEST_F(FrameVisualTest, HiddenFrameIsShownInTheSizeAndTheLookThatItWasGiven)
{
    FrameVisual* frame = FrameVisual::BuildHidden(world, "Local Frame");
    frame->setSelected();
    EXPECT_EQ(attachedTo(*frame), 0);
    EXPECT_THAT(materialsOf(*frame),
                ElementsAre("RedFrameLineSelected", "GreenFrameLineSelected", "BlueFrameLineSelected"));

    FrameVisual* other = FrameVisual::BuildHidden(world, "Local Frame");
    other->setFrameSize(77);
    other->setVisible(true, false);
    other->update();
    EXPECT_THAT(alongX(*other), ElementsAre(0, 77));
}

TEST_F(FrameVisualTest, CopyOfAHiddenFrameHasTheAxesOfItsNode)
{
    FrameVisual* frame = FrameVisual::BuildHidden(world, "Local Frame");
    FrameVisual copy(*frame);
    EXPECT_EQ(attachedTo(*frame), 3);
    EXPECT_TRUE(copy.getLines().empty()) << "the lines stay with the one that made them";
    copy.setFrameSize(55);
    EXPECT_THAT(axis(*frame, 0).getPoints(), ElementsAre(rob::Posf(0, 0, 0), rob::Posf(55, 0, 0)));
}

} // namespace
} // namespace vrk::visual
