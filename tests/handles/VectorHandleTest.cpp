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

struct FanLookCase {
    const char* name;
    bool ofTilt;
    rob::Dird axis;
    Ogre::Vector4 color;
};
class VectorHandleFanLook : public VectorHandleTest, public testing::WithParamInterface<FanLookCase> {};

TEST_P(VectorHandleFanLook, RunsFromTheHandleBackToZeroInItsColour)
{
    const FanLookCase& c = GetParam();
    const AngleHandle& angle = c.ofTilt ? static_cast<AngleHandle&>(*handle.getTilt()) : *handle.getTwist();
    const double radians = -12 * degree; // three steps
    c.ofTilt ? handle.setTilt(radians) : handle.setTwist(radians);

    Ogre::ManualObject::ManualObjectSection& section = *fanOf(angle).getSections().at(0);
    EXPECT_EQ(section.getMaterialName(), "TransparentHandle");
    EXPECT_EQ(section.getRenderOperation()->operationType, Ogre::RenderOperation::OT_TRIANGLE_FAN);
    EXPECT_EQ(section.getCustomParameter(0), c.color);
    const Ogre::VertexData& data = *section.getRenderOperation()->vertexData;
    ASSERT_EQ(data.vertexCount, 5u);
    const Ogre::HardwareVertexBufferSharedPtr& buffer = data.vertexBufferBinding->getBuffer(0);
    ASSERT_EQ(buffer->getVertexSize(), 6 * sizeof(float));
    const Ogre::HardwareBufferLockGuard lock(buffer, Ogre::HardwareBuffer::HBL_READ_ONLY);
    const auto* at = static_cast<const float*>(lock.pData);
    for (int i = 0; i < 5; ++i, at += 6) {
        const rob::Posd expected =
            i == 0 ? rob::Posd() : rob::Rotationd((i - 1) * -radians / 3, c.axis) * rob::Posd(0, 0, 150);
        EXPECT_LT((rob::Posd(at[0], at[1], at[2]) - expected).length(), 1e-4) << i;
        EXPECT_EQ(rob::Dird(at[3], at[4], at[5]), rob::Dird(-c.axis)) << i;
    }
}
INSTANTIATE_TEST_SUITE_P(
    Table, VectorHandleFanLook,
    testing::Values(FanLookCase{"Tilt", true, {0, 1, 0}, {242 / 255.0f, 12 / 255.0f, 0, 0.4f}},
                    FanLookCase{"Twist", false, {1, 0, 0}, {26 / 255.0f, 251 / 255.0f, 121 / 255.0f, 0.4f}}),
    [](const auto& info) { return std::string(info.param.name); });

TEST_F(VectorHandleTest, PartsHaveTheirMaterialsAndColours)
{
    const std::pair<const MeshVisual*, std::pair<const char*, Ogre::Vector4>> parts[] = {
        {handle.getTilt(), {"TiltHandle", {0xF2 / 255.0f, 0x0C / 255.0f, 0, 1}}},
        {handle.getTwist(), {"TwistHandle", {0x16 / 255.0f, 0xA9 / 255.0f, 0x51 / 255.0f, 1}}},
        {handle.getDirHandle(), {"VectorDirHandle", {0x41 / 255.0f, 0x8A / 255.0f, 0xB4 / 255.0f, 1}}}};
    for (const auto& [part, expected] : parts) {
        EXPECT_EQ(part->getMeshName(), expected.first);
        EXPECT_TRUE(part->getName().starts_with(expected.first));
        EXPECT_TRUE(test::colorOf(*part).positionEquals(expected.second, 1e-6f)) << expected.first;
        EXPECT_EQ(part->getEntity()->getSubEntity(0)->getMaterialName(), "Axis");
    }
}

TEST_F(VectorHandleTest, ArrowHasNoLookForAHighlight)
{
    handle.getDirHandle()->setHighlighted();
    handle.getDirHandle()->setSelected();

    EXPECT_EQ(handle.getDirHandle()->getEntity()->getSubEntity(0)->getMaterialName(), "Axis");
    EXPECT_EQ(handle.getDirHandle()->getEntity()->getRenderQueueGroup(), renderGroup::handles);
}

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
