#include "PreviewFixture.h"

#include "platform/broker/SignalBroker.h"
#include "preview/marks/PreviewedMarks.h"
#include "support/ThrowsExactly.h"
#include "visual/MeshVisual.h"

#include <functional>

/// Frames and the axis of a joint that are previewed by themselves.
namespace vrk::visual {
namespace {

using test::throwsExactly;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class PreviewedFrame : public test::WithPreviews<test::SceneFixture> {
protected:
    ~PreviewedFrame() override
    {
        scene.removeAllPositionVisuals();
        drain();
    }
    static auto& frames() { return SceneCore::Get()->record<PreviewedFrames>().byId; }
    static PreviewedJointVisual* joint() { return SceneCore::Get()->record<PreviewedJoint>().get(); }
    static int postsOf(const std::function<void()>& call)
    {
        int posts = 0;
        const boost::signals2::scoped_connection connection = broker::SignalBroker::onUpdateScene([&] { ++posts; });
        call();
        return posts;
    }
    void expectUnknownId()
    {
        EXPECT_THAT([this] { drain(); }, throwsExactly<std::out_of_range>("invalid unordered_map<K, T> key"));
    }
    static std::size_t pointsPerAxis(const FrameVisual& frame) { return frame.getLines().at(0)->getPoints().size(); }
};

TEST_F(PreviewedFrame, HasOneDashOrThreeForEachAxisAndIsHidden)
{
    scene.createPreviewedFrameVisual(5, true);
    EXPECT_THAT(frames(), IsEmpty()) << "it is posted";
    scene.createPreviewedFrameVisual(6, false);
    drain();

    EXPECT_EQ(pointsPerAxis(*frames().at(5)), 2u);
    EXPECT_EQ(pointsPerAxis(*frames().at(6)), 6u);
    EXPECT_EQ(frames().at(5)->getParent(), world);
    EXPECT_FALSE(frames().at(5)->isVisible());
    EXPECT_THAT(frames().at(5)->getName(), testing::StartsWith("frame"));
    EXPECT_EQ(test::materialOf(*frames().at(5)), "RedFrameLineSelected");
    EXPECT_FALSE(Scene::HasVisual(5));
}

TEST_F(PreviewedFrame, IsShownAtAPoseInTheWorldAndHidden)
{
    const rob::Posed pose({1, 2, 3}, rob::Rotationd(0.5, 0.5, 0.5, 0.5));
    scene.createPreviewedFrameVisual(5, true);
    scene.setPreviewedFrameVisible(5, pose);
    drain();
    EXPECT_TRUE(frames().at(5)->isVisible());
    EXPECT_EQ(frames().at(5)->getWorldPose(), rob::Posef(pose));

    scene.setPreviewedFrameInvisible(5);
    drain();
    EXPECT_FALSE(frames().at(5)->isVisible());
}

TEST_F(PreviewedFrame, SecondOfAnIdTakesThePlaceOfTheFirstWhichStays)
{
    scene.createPreviewedFrameVisual(5, true);
    drain();
    FrameVisual* first = frames().at(5);
    scene.createPreviewedFrameVisual(5, false);
    drain();

    EXPECT_NE(frames().at(5), first);
    EXPECT_THAT(kindsOn<FrameVisual>(*world), testing::Contains(first));
}

TEST_F(PreviewedFrame, RemovalEndsItAndForgetsTheId)
{
    scene.createPreviewedFrameVisual(5, true);
    scene.createPreviewedFrameVisual(6, true);
    scene.removePreviewedFrameVisual(5);
    drain();

    EXPECT_THAT(frames(), SizeIs(1));
    EXPECT_THAT(addedToWorld(), SizeIs(1));
    scene.removePreviewedFrameVisual(5);
    expectUnknownId();
}

TEST_F(PreviewedFrame, UnknownIdFailsAndIsNotEntered)
{
    scene.setPreviewedFrameVisible(5, {});
    expectUnknownId();
    scene.setPreviewedFrameInvisible(5);
    expectUnknownId();
    scene.removePreviewedFrameVisual(5);
    expectUnknownId();

    EXPECT_THAT(frames(), IsEmpty());
}

TEST_F(PreviewedFrame, OneThatIsDeletedAsAVisualIsForgotten)
{
    scene.createPreviewedFrameVisual(5, true);
    drain();

    scene.deleteVisual(frames().at(5));

    EXPECT_THAT(frames(), IsEmpty());
}

using PreviewedJointAxis = PreviewedFrame;

TEST_F(PreviewedJointAxis, IsHiddenAlongXWithItsArrowAtFirst)
{
    scene.createPreviewedJointVisual();
    EXPECT_EQ(joint(), nullptr) << "it is posted";
    drain();

    ASSERT_NE(joint(), nullptr);
    EXPECT_THAT(joint()->getName(), testing::StartsWith("previewed_joint"));
    EXPECT_EQ(joint()->getParent(), world);
    EXPECT_FALSE(joint()->isVisible());
    EXPECT_FALSE(joint()->getArrow()->isVisible());
    EXPECT_THAT(test::uploaded(joint()->getLine()), ElementsAre(rob::Posf(-1000, 0, 0), rob::Posf(1000, 0, 0)));
    EXPECT_EQ(joint()->getLine().getMaterial()->getName(), "JointAxis");
    const MeshVisual& arrow = *joint()->getArrow();
    EXPECT_THAT(arrow.getName(), testing::StartsWith("joint_arrow"));
    EXPECT_EQ(arrow.getMeshName(), "joint_arrow_head");
    EXPECT_EQ(arrow.getEntity()->getRenderQueueGroup(), 80);
    EXPECT_EQ(arrow.getEntity()->getSubEntity(0)->getMaterialName(), "Axis");
    const Ogre::Vector4 color = arrow.getEntity()->getSubEntity(0)->getCustomParameter(0);
    EXPECT_EQ(color, Ogre::Vector4(1, 0xA7 / 255.0f, 0x25 / 255.0f, 1));
}

TEST_F(PreviewedJointAxis, RunsBetweenTwoPointsWithTheArrowAtTheEnd)
{
    scene.createPreviewedJointVisual();
    scene.setPreviewedJointVisible({1, 2, 3}, {1, 52, 3});
    drain();

    EXPECT_TRUE(joint()->isVisible());
    EXPECT_TRUE(joint()->getArrow()->isVisible());
    EXPECT_THAT(test::uploaded(joint()->getLine()), ElementsAre(rob::Posf(1, 2, 3), rob::Posf(1, 52, 3)));
    EXPECT_EQ(joint()->getArrow()->getPosition(), rob::Posf(1, 52, 3));
    EXPECT_LT((joint()->getArrow()->getPose() * rob::Dirf(0, 0, 1) - rob::Dirf(0, 1, 0)).length(), 1e-6f);

    scene.setPreviewedJointInvisible();
    drain();
    EXPECT_FALSE(joint()->isVisible());
    EXPECT_FALSE(joint()->getArrow()->isVisible());
}

TEST_F(PreviewedJointAxis, EqualPointsFail)
{
    scene.createPreviewedJointVisual();
    scene.setPreviewedJointVisible({1, 2, 3}, {1, 2, 3});

    EXPECT_THAT([this] { drain(); }, throwsExactly<std::overflow_error>("0-length vector cannot be normalized."));
    EXPECT_FALSE(joint()->isVisible());
}

TEST_F(PreviewedJointAxis, RemovalPostsNothingWithoutOneAndElseEndsIt)
{
    EXPECT_EQ(postsOf([this] { scene.removePreviewedJointVisual(); }), 0);
    scene.createPreviewedJointVisual();
    drain();

    EXPECT_EQ(postsOf([this] {
                  scene.removePreviewedJointVisual();
                  scene.removePreviewedJointVisual();
              }),
              2);
    drain();

    EXPECT_EQ(joint(), nullptr);
    EXPECT_THAT(addedToWorld(), IsEmpty());
}

TEST_F(PreviewedJointAxis, ArrowGoesWithTheAxis)
{
    const std::size_t before = entities();
    scene.createPreviewedJointVisual();
    drain();
    ASSERT_EQ(entities(), before + 1);

    scene.removePreviewedJointVisual();
    drain();

    EXPECT_EQ(entities(), before);
}

TEST_F(PreviewedJointAxis, ShowingWithoutOneIsToldInTheLogAndHidingIsNot)
{
    scene.setPreviewedJointVisible({0, 0, 0}, {1, 0, 0});
    scene.setPreviewedJointInvisible();
    drain();

    EXPECT_THAT(lines, ElementsAre("the axis of a joint is not previewed: it was not created"));
}

TEST_F(PreviewedJointAxis, SecondTakesThePlaceOfTheFirstWhichStays)
{
    scene.createPreviewedJointVisual();
    drain();
    const Visual* first = joint();
    scene.createPreviewedJointVisual();
    drain();

    EXPECT_NE(joint(), first);
    EXPECT_THAT(addedToWorld(), SizeIs(2));
}

TEST_F(PreviewedFrame, AllPositionVisualsAreTheFramesAndTheJoint)
{
    scene.removeAllPositionVisuals();
    drain();
    scene.createPreviewedFrameVisual(5, true);
    scene.createPreviewedFrameVisual(6, false);
    scene.createPreviewedJointVisual();
    drain();
    ASSERT_THAT(addedToWorld(), SizeIs(3));

    scene.removeAllPositionVisuals();
    EXPECT_THAT(frames(), SizeIs(2)) << "it is posted";
    drain();

    EXPECT_THAT(frames(), IsEmpty());
    EXPECT_EQ(joint(), nullptr);
    EXPECT_THAT(addedToWorld(), IsEmpty());
}

} // namespace
} // namespace vrk::visual
