#include "platform/common/Logger.h"
#include "station/support/TestStation.h"
#include "support/ProcessorTime.h"
#include "visual/Visual.h"

#include <Ogre.h>

#include <algorithm>
#include <random>
#include <set>

namespace vrk::visual {
namespace {

using testing::StrEq;
using testing::ThrowsMessage;

constexpr const char* unknownKey = "invalid unordered_map<K, T> key";

class Attachments : public test::SceneFixture {
protected:
    Attachments()
    {
        for (const auto& part : {carrier, carried}) {
            layout::Layout::inst().addPart(part);
            scene.addPart(part.get());
        }
        drain();
        carrierVisual = Scene::GetVisual(carrier->getId());
        carriedVisual = Scene::GetVisual(carried->getId());
    }
    void expectUnknown()
    {
        EXPECT_THAT([this] { drain(); }, ThrowsMessage<std::out_of_range>(StrEq(unknownKey)));
    }

    std::shared_ptr<layout::Part> carrier = test::makePart("carrier", {100, 0, 0});
    std::shared_ptr<layout::Part> carried = test::makePart("carried", {0, 50, 0});
    Visual* carrierVisual = nullptr;
    Visual* carriedVisual = nullptr;
    const rob::Posed pose{rob::Posd(1, 2, 3)};
};

TEST_F(Attachments, CarriedVisualHangsAtTheGivenPose)
{
    scene.addAttachment(carried->getId(), carrier->getId(), pose);
    drain();

    EXPECT_EQ(carriedVisual->getParent(), carrierVisual);
    EXPECT_EQ(carriedVisual->getPosition(), rob::Posf(1, 2, 3));
    EXPECT_EQ(carriedVisual->getWorldPosition(), rob::Posf(101, 2, 3));
    EXPECT_TRUE(carriedVisual->isAttached());
    EXPECT_EQ(carrierVisual->getBodiesNum(), 1u) << "what is attached does not count";
}

TEST_F(Attachments, RingIsRefusedWithAWarningAndNothingMoves)
{
    scene.addAttachment(carried->getId(), carrier->getId(), pose);
    drain();
    std::vector<std::string> warnings;
    AppLogger::inst()->setListener([&warnings](LogLevel, const std::string& message) { warnings.push_back(message); });
    const unsigned above = carrier->getId();
    const unsigned below = carried->getId();

    scene.addAttachment(above, below, pose);
    scene.addAttachment(above, above, pose);
    scene.deleteAttachment(above, 0, below, pose);
    scene.reparentVisual(above, below);
    scene.moveVisualToParent(above, below, rob::Posef(rob::Posf(5, 6, 7)));
    drain();

    AppLogger::inst()->setListener({});
    EXPECT_EQ(carrierVisual->getParent(), world);
    EXPECT_EQ(carrierVisual->getPosition(), rob::Posf(100, 0, 0));
    EXPECT_FALSE(carrierVisual->isAttached());
    EXPECT_EQ(carriedVisual->getParent(), carrierVisual);
    EXPECT_EQ(carriedVisual->getPosition(), rob::Posf(1, 2, 3));
    EXPECT_TRUE(carriedVisual->isAttached());
    EXPECT_EQ(warnings.size(), 5u);
    EXPECT_THAT(warnings.front(), testing::HasSubstr("cannot be attached"));
}

TEST_F(Attachments, UnknownChildOrParentFails)
{
    scene.addAttachment(4711, carrier->getId(), pose);
    expectUnknown();

    scene.addAttachment(carried->getId(), 4711, pose);
    expectUnknown();
    EXPECT_EQ(carriedVisual->getParent(), world);
}

TEST_F(Attachments, DetachedVisualGoesToTheWorldForParentZero)
{
    scene.addAttachment(carried->getId(), carrier->getId(), pose);
    scene.deleteAttachment(carried->getId(), carrier->getId(), 0, rob::Posed(rob::Posd(7, 8, 9)));
    drain();

    EXPECT_EQ(carriedVisual->getParent(), world);
    EXPECT_EQ(carriedVisual->getPosition(), rob::Posf(7, 8, 9));
    EXPECT_FALSE(carriedVisual->isAttached());
}

TEST_F(Attachments, DetachedVisualGoesToItsNewParentWhateverTheOldOneWas)
{
    scene.deleteAttachment(carried->getId(), 4711, carrier->getId(), pose);
    drain();

    EXPECT_EQ(carriedVisual->getParent(), carrierVisual);
}

TEST_F(Attachments, DetachingFromAnUnknownVisualToAnUnknownOneFails)
{
    scene.deleteAttachment(carried->getId(), carrier->getId(), 4711, pose);
    expectUnknown();

    scene.deleteAttachment(4711, carrier->getId(), 0, pose);
    expectUnknown();
}

TEST_F(Attachments, ReparentedVisualKeepsItsLocalPose)
{
    scene.reparentVisual(carried->getId(), carrier->getId());
    drain();
    EXPECT_EQ(carriedVisual->getPosition(), rob::Posf(0, 50, 0));
    EXPECT_EQ(carriedVisual->getWorldPosition(), rob::Posf(100, 50, 0));

    scene.reparentVisual(carried->getId(), 0);
    drain();
    EXPECT_EQ(carriedVisual->getParent(), world);
}

TEST_F(Attachments, ReparentingAnUnknownVisualFailsAndLeavesNoEntry)
{
    scene.reparentVisual(4711, carrier->getId());
    expectUnknown();
    EXPECT_FALSE(Scene::HasVisual(4711));

    scene.reparentVisual(carried->getId(), 4711);
    expectUnknown();
    EXPECT_FALSE(Scene::HasVisual(4711));
}

TEST_F(Attachments, VisualMovedToAParentKeepsTheGivenWorldPose)
{
    scene.moveVisualToParent(carried->getId(), carrier->getId(), rob::Posef(rob::Posf(5, 6, 7)));
    drain();

    EXPECT_EQ(carriedVisual->getParent(), carrierVisual);
    EXPECT_EQ(carriedVisual->getWorldPosition(), rob::Posf(5, 6, 7));
    EXPECT_EQ(carriedVisual->getPosition(), rob::Posf(-95, 6, 7));
}

TEST_F(Attachments, MovingAnUnknownVisualFailsAndLeavesNoEntry)
{
    scene.moveVisualToParent(4711, 0, {});
    expectUnknown();
    EXPECT_FALSE(Scene::HasVisual(4711));

    scene.moveVisualToParent(carried->getId(), 4711, {});
    expectUnknown();
    EXPECT_FALSE(Scene::HasVisual(4711));
}

TEST_F(Attachments, VisualsAreAttachedAndDetachedByPointer)
{
    scene.attachVisual(carrier->getId(), carriedVisual);
    drain();
    EXPECT_EQ(carriedVisual->getParent(), carrierVisual);

    scene.detachVisual(carriedVisual);
    drain();
    EXPECT_EQ(carriedVisual->getParent(), world) << "detaching hangs on the world";

    scene.attachVisual(4711, carriedVisual);
    expectUnknown();
}

TEST_F(Attachments, VisualThatIsRemovedFirstIsPassedOver)
{
    scene.removeVisual(carried->getId());
    scene.attachVisual(carrier->getId(), carriedVisual);
    scene.detachVisual(carriedVisual);

    EXPECT_NO_THROW(drain());
    EXPECT_EQ(carrierVisual->getBodiesNum(), 1u);
    EXPECT_THAT(addedToWorld(), testing::Not(testing::Contains(carriedVisual)));
}

TEST_F(Attachments, ChildrenOfAWideParentComeAndGoInAnyOrder)
{
    std::mt19937 random(20261122);
    auto* wide = new Visual(world);
    auto* other = new Visual(world);
    std::set<Visual*> children;
    while (children.size() < 300)
        children.insert(new Visual(wide));
    std::vector<Visual*> order(children.begin(), children.end());
    std::shuffle(order.begin(), order.end(), random);

    for (std::size_t i = 0; i < order.size(); ++i) {
        Visual* child = order[i];
        children.erase(child);
        if (i % 3 == 0)
            scene.deleteVisual(child);
        else
            other->attachVisual(child);
        if (i % 3 == 1) // and back, to the end
            wide->attachVisual(*children.insert(child).first);
        if (i % 7 == 0) // past the visuals, as a host may
            wide->getSceneNode()->addChild(wide->getSceneNode()->removeChild(static_cast<unsigned short>(i % 100)));
        ASSERT_EQ(std::set<Visual*>(wide->getChildren().begin(), wide->getChildren().end()), children) << i;
    }
    EXPECT_EQ(children.size(), 100u);
    EXPECT_EQ(other->getSceneNode()->numChildren(), 100u);
}

TEST_F(Attachments, RemovalOneByOneTakesAboutAsLongAsThatOfAllChildren)
{
    // In the order in which they were made OGRE looks at half of the children that are left for each that goes.
    constexpr unsigned count = 100'000;
    auto* wide = new Visual(world);
    const auto fill = [wide] {
        std::vector<Visual*> children;
        for (unsigned i = 0; i < count; ++i)
            children.push_back(new Visual(wide));
        return children;
    };

    fill();
    const double together = test::threadSecondsOf([wide] { wide->clearChildren(); });
    const std::vector<Visual*> children = fill();
    const double oneByOne = test::threadSecondsOf([&] {
        for (Visual* child : children)
            scene.deleteVisual(child);
    });

    EXPECT_LT(oneByOne, 4 * together);
}

TEST_F(Attachments, RemovedCarrierTakesWhatItCarriesAlong)
{
    scene.addAttachment(carried->getId(), carrier->getId(), pose);
    scene.removeVisual(carrier->getId());
    drain();

    EXPECT_FALSE(Scene::HasVisual(carried->getId()));
}

} // namespace
} // namespace vrk::visual
