#include "handles/VectorHandle.h"

#include "HandleFixture.h"

#include "visual/RenderGroups.h"

#include <numbers>

namespace vrk::visual {
namespace {

constexpr double degree = std::numbers::pi / 180;

class VectorHandleTest : public test::WithHandles<test::SceneFixture> {
protected:
    ~VectorHandleTest() override
    {
        handle.setTilt(0.0);
        handle.setTwist(0.0);
    }
    static const Ogre::ManualObject& fanOf(const AngleHandle& angle)
    {
        for (Ogre::MovableObject* object : angle.getSceneNode()->getAttachedObjects())
            if (auto* fan = dynamic_cast<Ogre::ManualObject*>(object))
                return *fan;
        throw std::logic_error("no fan");
    }
    /// The origin, one for each end of a triangle; none without a fan.
    static std::size_t verticesOf(const AngleHandle& angle)
    {
        const auto& sections = fanOf(angle).getSections();
        return sections.empty() ? 0 : sections.front()->getRenderOperation()->vertexData->vertexCount;
    }

    VectorHandle& handle = *VectorHandle::Get();
};

TEST_F(VectorHandleTest, IsAChainOfTwistTiltAndArrow)
{
    EXPECT_EQ(handle.getName(), "VectorHandle");
    EXPECT_EQ(handle.getTwist()->getParent(), &handle);
    EXPECT_EQ(handle.getTilt()->getParent(), handle.getTwist());
    EXPECT_EQ(handle.getDirHandle()->getParent(), handle.getTilt());
}

TEST_F(VectorHandleTest, EveryPartIsDrawnWithTheHandles)
{
    for (const MeshVisual* part :
         {static_cast<MeshVisual*>(handle.getTilt()), static_cast<MeshVisual*>(handle.getTwist()),
          static_cast<MeshVisual*>(handle.getDirHandle())})
        for (const Ogre::MovableObject* object : part->getSceneNode()->getAttachedObjects())
            EXPECT_EQ(object->getRenderQueueGroup(), renderGroup::handles) << part->getName();
}

TEST_F(VectorHandleTest, HalfADegreeTurnsTheHandleWithoutAFan)
{
    handle.setTilt(0.5 * degree);

    EXPECT_EQ(verticesOf(*handle.getTilt()), 0u);
    EXPECT_TRUE(handle.getTilt()->getPose().rotation().isApprox(
        rob::Rotationf(static_cast<float>(0.5 * degree), rob::Dirf(0, 1, 0))));
}

struct FanCase {
    const char* name;
    double degrees;
    std::size_t steps;
};
class VectorHandleFan : public VectorHandleTest, public testing::WithParamInterface<FanCase> {};

TEST_P(VectorHandleFan, HasAtMostFiveDegreesPerTriangle)
{
    for (const double sign : {1.0, -1.0}) {
        handle.setTwist(sign * GetParam().degrees * std::numbers::pi / 180);

        EXPECT_EQ(verticesOf(*handle.getTwist()), GetParam().steps + 2);
    }
}
INSTANTIATE_TEST_SUITE_P(Table, VectorHandleFan,
                         testing::Values(FanCase{"JustBelowFive", 4.9, 1}, FanCase{"Five", 5, 2},
                                         FanCase{"ThirtyTwo", 32, 7}),
                         [](const auto& info) { return std::string(info.param.name); });

TEST_F(VectorHandleTest, AngleOfZeroEndsTheFan)
{
    handle.setTilt(1.0);
    ASSERT_GT(verticesOf(*handle.getTilt()), 0u);

    handle.setTilt(0.0);

    EXPECT_EQ(verticesOf(*handle.getTilt()), 0u);
}

TEST_F(VectorHandleTest, NegativeAngleMirrorsTheFan)
{
    handle.setTilt(1.0);
    const Ogre::AxisAlignedBox forth = fanOf(*handle.getTilt()).getBoundingBox();
    handle.setTilt(-1.0);
    const Ogre::AxisAlignedBox back = fanOf(*handle.getTilt()).getBoundingBox();

    EXPECT_NEAR(forth.getMinimum().x, -back.getMaximum().x, 1e-3);
    EXPECT_NEAR(forth.getMaximum().z, 150, 1e-3);
    EXPECT_LT(forth.getMinimum().x, -100); // back to where zero is
}

TEST_F(VectorHandleTest, TwistCarriesTiltAndArrowAndTiltTheArrowAlone)
{
    const rob::Rotationf tiltBefore = handle.getTilt()->getWorldRotation();
    handle.setTwist(0.5);
    EXPECT_FALSE(handle.getTilt()->getWorldRotation().isApprox(tiltBefore));

    const rob::Rotationf twist = handle.getTwist()->getWorldRotation();
    const rob::Rotationf arrow = handle.getDirHandle()->getWorldRotation();
    handle.setTilt(0.5);
    EXPECT_TRUE(handle.getTwist()->getWorldRotation().isApprox(twist));
    EXPECT_FALSE(handle.getDirHandle()->getWorldRotation().isApprox(arrow));
}

TEST_F(VectorHandleTest, SelectingAnAngleChangesNothing)
{
    handle.setTilt(0.5);
    const rob::Posef before = handle.getTilt()->getPose();

    handle.selectTilt();
    handle.selectTwist();

    EXPECT_EQ(handle.getTilt()->getPose(), before);
    EXPECT_EQ(handle.getTilt()->getEntity()->getSubEntity(0)->getMaterialName(), "Axis");
}

TEST_F(VectorHandleTest, HighlightIsAMaterialAndItsEndBringsTheColourBack)
{
    const Ogre::Vector4 color = test::colorOf(*handle.getTilt());

    handle.getTilt()->setHighlighted();
    EXPECT_EQ(handle.getTilt()->getEntity()->getSubEntity(0)->getMaterialName(), "HandleHighlight");
    handle.getTilt()->clearHighlightOrSelect();

    EXPECT_EQ(handle.getTilt()->getEntity()->getSubEntity(0)->getMaterialName(), "Axis");
    EXPECT_EQ(test::colorOf(*handle.getTilt()), color);
    EXPECT_EQ(handle.getTilt()->getEntity()->getRenderQueueGroup(), renderGroup::handles);
}

} // namespace
} // namespace vrk::visual
