#include "Matrix.h"

#include "platform/layout/Frame.h"
#include "platform/layout/Layout.h"
#include "platform/layout/Mechanism.h"
#include "platform/layout/Part.h"
#include "platform/sdf/SdfManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <shared_mutex>

namespace vrk::layout {
namespace {

using test::Matrix;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StrEq;
using testing::ThrowsMessage;

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

unsigned newId()
{
    return sdf::SdfManager::inst().generateId();
}

/// A mechanism with links to be joined.
class MechanismTest : public testing::Test {
protected:
    ~MechanismTest() override
    {
        connection.disconnect();
        Layout::inst().clear();
    }

    unsigned addLink(const std::string& name = "link")
    {
        const auto link = std::make_shared<Link>(newId(), name);
        arm->addLink(link);
        return link->getId();
    }
    rob::Posed poseOf(unsigned link) const
    {
        for (const auto& candidate : arm->getLinks())
            if (candidate->getId() == link)
                return candidate->getPose();
        ADD_FAILURE() << "no link " << link;
        return {};
    }
    static Joint joint(JointType type, unsigned parent, unsigned child)
    {
        Joint made;
        made.name = "joint";
        made.type = type;
        made.parentLink = parent;
        made.childLink = child;
        made.lower = -3;
        made.upper = 3;
        return made;
    }
    void expectRefused(const Joint& joint, const std::string& text)
    {
        const std::size_t before = arm->getJoints().size();
        EXPECT_THAT([&] { arm->addJoint(joint); }, ThrowsMessage<std::invalid_argument>(StrEq(text)));
        EXPECT_EQ(arm->getJoints().size(), before);
    }

    std::shared_ptr<Manipulator> arm = std::make_shared<Manipulator>(newId(), "arm");
    boost::signals2::scoped_connection connection;
};

TEST_F(MechanismTest, LinksAreItsPiecesInOrder)
{
    const unsigned base = addLink("base");
    const unsigned upper = addLink("upper");

    EXPECT_THAT(arm->getObjChildren(), ElementsAre(base, upper));
    EXPECT_EQ(arm->getLinks()[1]->getName(), "upper");
    EXPECT_EQ(arm->getLinks()[0]->getParentId(), arm->getId());
    EXPECT_FALSE(arm->getLinks()[0]->isStandalone());
    EXPECT_EQ(arm->getLinks()[0]->getModelType(), sdf::ModelType::Link);
    EXPECT_TRUE(arm->asType(sdf::ModelType::Mechanism));
    EXPECT_TRUE(arm->asType(sdf::ModelType::Manipulator));
    EXPECT_FALSE(arm->asType(sdf::ModelType::Tool));
}

TEST_F(MechanismTest, ManipulatorHasItsModelTypeAndAnEmptyVendorAtFirst)
{
    EXPECT_EQ(arm->getModelType(), sdf::ModelType::Manipulator);
    EXPECT_EQ(static_cast<unsigned>(arm->getModelType()), 9u);
    ASSERT_NE(arm->getElement()->get("vendor"), nullptr);
    EXPECT_EQ(arm->getVendor(), "");

    arm->setVendor("kuka");

    EXPECT_EQ(sdf::textAt(*arm->getElement(), "vendor"), "kuka");
}

TEST_F(MechanismTest, WristLiesOnTheManipulatorUntilItIsPlacedOnALink)
{
    const unsigned link = addLink();
    EXPECT_EQ(arm->getWrist()->getParentId(), arm->getId());

    arm->placeWrist(link, rob::Posed(rob::Posd(0, 0, 80)));

    EXPECT_EQ(arm->getWrist()->getParentId(), link);
    EXPECT_EQ(arm->getWrist()->getPose(), rob::Posed(rob::Posd(0, 0, 80)));
    EXPECT_THAT([&] { arm->placeWrist(999999, {}); },
                ThrowsMessage<std::invalid_argument>("the wrist lies on its manipulator or one of its links"));
    EXPECT_EQ(arm->getWrist()->getParentId(), link);
}

TEST_F(MechanismTest, PlainChildIsAPieceWithAPose)
{
    const auto flange = std::make_shared<Frame>(newId(), "flange", rob::Posed(rob::Posd(1, 2, 3)));

    arm->addPlainChild(flange);

    EXPECT_THAT(arm->getPlainChildren(), ElementsAre(flange));
    EXPECT_EQ(flange->getParentId(), arm->getId());
}

TEST_F(MechanismTest, LinkFollowsARevoluteJoint)
{
    const unsigned base = addLink();
    const unsigned turned = addLink();
    Joint hinge = joint(JointType::Revolute, base, turned);
    hinge.origin = rob::Posed(rob::Posd(0, 0, 400));
    arm->addJoint(hinge);
    EXPECT_EQ(poseOf(turned), hinge.origin);

    arm->setJointValues(std::vector{1.5});

    EXPECT_LT((Matrix::Move(0, 0, 400) * Matrix::Turn(1.5, {0, 0, 1})).distance(poseOf(turned)), 1e-9);
}

TEST_F(MechanismTest, LinkFollowsAPrismaticJointAlongItsOwnAxis)
{
    const unsigned base = addLink();
    const unsigned slide = addLink();
    Joint rail = joint(JointType::Prismatic, base, slide);
    rail.origin = rob::Posed(rob::Posd(10, 0, 0), rob::Rotationd(0, 0, 1.5707963267948966));
    rail.axis = {1, 0, 0};
    rail.upper = 500;
    arm->addJoint(rail);

    arm->setJointValues(std::vector{200.0});

    EXPECT_LT((poseOf(slide).position - rob::Posd(10, 200, 0)).length(), 1e-9);
}

TEST_F(MechanismTest, LinksMayComeBeforeTheOnesTheyHangOn)
{
    const unsigned last = addLink();
    const unsigned middle = addLink();
    const unsigned base = addLink();
    Joint upper = joint(JointType::Fixed, middle, last);
    upper.origin = rob::Posed(rob::Posd(0, 0, 5));
    Joint lower = joint(JointType::Fixed, base, middle);
    lower.origin = rob::Posed(rob::Posd(0, 0, 70));

    arm->addJoint(upper);
    arm->addJoint(lower);

    EXPECT_EQ(poseOf(last).position, rob::Posd(0, 0, 75));
}

TEST_F(MechanismTest, RootKeepsThePoseThatItWasGivenAndCarriesTheRest)
{
    const unsigned base = addLink();
    const unsigned next = addLink();
    arm->getLinks()[0]->setPose(rob::Posed(rob::Posd(1, 2, 3)));

    arm->addJoint(joint(JointType::Continuous, base, next));
    arm->setJointValues(std::vector{0.5});

    EXPECT_EQ(poseOf(base), rob::Posed(rob::Posd(1, 2, 3)));
    EXPECT_EQ(poseOf(next).position, rob::Posd(1, 2, 3));
}

TEST_F(MechanismTest, EveryLinkOfARandomTreeIsWhereMatricesPutIt)
{
    for (unsigned seed = 0; seed < 50; ++seed) {
        SCOPED_TRACE(testing::Message() << "seed " << seed);
        std::mt19937 random(seed);
        std::uniform_real_distribution<double> number(-2, 2);
        arm = std::make_shared<Manipulator>(newId(), "arm");
        std::vector<unsigned> ids;
        for (int i = 0; i < 12; ++i)
            ids.push_back(addLink());

        // Each link hangs on an earlier one; the joints come in any order.
        struct Placed {
            Joint joint;
            Matrix origin;
            std::size_t parent, child;
        };
        std::vector<Placed> joints;
        for (std::size_t child = 1; child < ids.size(); ++child) {
            const std::size_t parent = random() % child;
            Placed placed{joint(JointType(random() % 4), ids[parent], ids[child]), {}, parent, child};
            const double x = number(random), y = number(random), z = number(random), angle = number(random);
            const rob::Dird axis = rob::normalized(rob::Vec3d(x + 3, y, z));
            placed.joint.axis = rob::normalized(rob::Vec3d(z, x + 3, y));
            placed.joint.origin = rob::Posed(rob::Posd(100 * x, 100 * y, 100 * z), rob::Rotationd(angle, axis));
            placed.origin = Matrix::Move(100 * x, 100 * y, 100 * z) * Matrix::Turn(angle, {axis.x, axis.y, axis.z});
            joints.push_back(placed);
        }
        std::ranges::shuffle(joints, random);
        std::vector<double> values;
        for (const Placed& placed : joints) {
            arm->addJoint(placed.joint);
            if (placed.joint.isMoving())
                values.push_back(number(random));
        }

        arm->setJointValues(values);

        std::vector<Matrix> expected(ids.size());
        std::ranges::sort(joints, {}, &Placed::child); // parents first
        for (const Placed& placed : joints) {
            const auto found = std::ranges::find(arm->getJoints(), ids[placed.child],
                                                 [](const Joint& made) { return made.childLink; });
            const rob::Dird& axis = placed.joint.axis;
            const double value = found->value;
            Matrix motion;
            if (placed.joint.type == JointType::Prismatic)
                motion = Matrix::Move(axis.x * value, axis.y * value, axis.z * value);
            else if (placed.joint.isMoving())
                motion = Matrix::Turn(value, {axis.x, axis.y, axis.z});
            expected[placed.child] = expected[placed.parent] * placed.origin * motion;
        }
        for (std::size_t i = 0; i < ids.size(); ++i)
            EXPECT_LT(expected[i].distance(poseOf(ids[i])), 1e-9) << "link " << i;
    }
}

class MechanismOfThreeJoints : public MechanismTest {
protected:
    MechanismOfThreeJoints()
    {
        for (int i = 0; i < 5; ++i)
            ids.push_back(addLink());
        arm->addJoint(joint(JointType::Revolute, ids[0], ids[1]));
        arm->addJoint(joint(JointType::Fixed, ids[1], ids[2]));
        arm->addJoint(joint(JointType::Continuous, ids[2], ids[3]));
        arm->addJoint(joint(JointType::Prismatic, ids[3], ids[4]));
    }

    std::vector<unsigned> ids;
};

TEST_F(MechanismOfThreeJoints, ValuesAreThoseOfTheJointsThatMove)
{
    arm->setJointValues(std::vector{1.0, 2.0, -0.5});

    EXPECT_EQ(arm->jointValueCount(), 3u);
    EXPECT_THAT(arm->getJointValues(), ElementsAre(1.0, 2.0, -0.5));
}

TEST_F(MechanismOfThreeJoints, ValuesAreHeldToTheirLimits)
{
    arm->setJointValues(std::vector{5.0, 50.0, -7.0}); // a continuous joint has none

    EXPECT_THAT(arm->getJointValues(), ElementsAre(3.0, 50.0, -3.0));
}

TEST_F(MechanismOfThreeJoints, ValuesThatAreNoNumbersMoveNothing)
{
    arm->setJointValues(std::vector{1.0, 2.0, -0.5});
    const rob::Posed before = poseOf(ids[4]);

    for (const double bad : {notANumber, infinity, -infinity})
        EXPECT_THAT(
            [&] {
                arm->setJointValues(std::vector{0.0, bad, 0.0});
            },
            ThrowsMessage<std::invalid_argument>("joint values must be finite"));

    EXPECT_THAT(arm->getJointValues(), ElementsAre(1.0, 2.0, -0.5));
    EXPECT_EQ(poseOf(ids[4]), before);
}

TEST_F(MechanismOfThreeJoints, AnotherNumberOfValuesMovesNothing)
{
    for (const std::vector<double>& values : {std::vector{1.0, 2.0}, std::vector{1.0, 2.0, 3.0, 4.0}, {}})
        EXPECT_THAT([&] { arm->setJointValues(values); },
                    ThrowsMessage<std::invalid_argument>("one value for each joint that moves"));

    EXPECT_THAT(arm->getJointValues(), ElementsAre(0.0, 0.0, 0.0));
}

TEST_F(MechanismOfThreeJoints, ListenerIsToldOfEveryLinkThatHangsOnAJoint)
{
    std::vector<LinkPose> told;
    connection = Mechanism::OnLinksMoved([&](const std::vector<LinkPose>& poses) {
        // The lock is free: whoever listens may look at the model.
        const std::shared_lock lock(sdf::SdfManager::inst().mutex());
        told = poses;
    });

    arm->setJointValues(std::vector{1.0, 2.0, -0.5});

    ASSERT_EQ(told.size(), 4u);
    for (std::size_t i = 0; i < told.size(); ++i) {
        EXPECT_EQ(told[i].id, ids[i + 1]);
        EXPECT_EQ(told[i].pose, poseOf(ids[i + 1]));
    }
}

TEST_F(MechanismOfThreeJoints, ListenerIsNotToldOfValuesThatAreRefused)
{
    int calls = 0;
    connection = Mechanism::OnLinksMoved([&](const std::vector<LinkPose>&) { ++calls; });

    EXPECT_THROW(arm->setJointValues(std::vector{notANumber, 0.0, 0.0}), std::invalid_argument);

    EXPECT_EQ(calls, 0);
}

TEST_F(MechanismTest, FirstValueOfAJointIsHeldToItsLimits)
{
    Joint hinge = joint(JointType::Revolute, addLink(), addLink());
    hinge.lower = 1;

    arm->addJoint(hinge);

    EXPECT_THAT(arm->getJointValues(), ElementsAre(1.0));
}

TEST_F(MechanismTest, JointOfStrangeLinksIsRefused)
{
    const unsigned link = addLink();
    expectRefused(joint(JointType::Fixed, link, 999999), "a joint connects links of its mechanism");
    expectRefused(joint(JointType::Fixed, 999999, link), "a joint connects links of its mechanism");
}

TEST_F(MechanismTest, SecondJointOfALinkIsRefused)
{
    const unsigned a = addLink(), b = addLink(), c = addLink();
    arm->addJoint(joint(JointType::Fixed, a, c));

    expectRefused(joint(JointType::Fixed, b, c), "a link hangs on one joint only");
}

TEST_F(MechanismTest, LoopOfJointsIsRefused)
{
    const unsigned a = addLink(), b = addLink(), c = addLink();
    expectRefused(joint(JointType::Fixed, a, a), "joints must not form a loop");
    arm->addJoint(joint(JointType::Fixed, a, b));
    arm->addJoint(joint(JointType::Fixed, b, c));

    expectRefused(joint(JointType::Fixed, c, a), "joints must not form a loop");
}

TEST_F(MechanismTest, JointOfNumbersThatAreNotFiniteIsRefused)
{
    const unsigned a = addLink(), b = addLink();
    const std::string text = "a joint needs finite numbers";
    Joint bad = joint(JointType::Revolute, a, b);
    bad.upper = infinity;
    expectRefused(bad, text);
    bad = joint(JointType::Revolute, a, b);
    bad.origin.orientation.y = notANumber;
    expectRefused(bad, text);
    bad = joint(JointType::Revolute, a, b);
    bad.axis = {notANumber, 0, 0};
    expectRefused(bad, text);
    bad = joint(JointType::Revolute, a, b);
    bad.value = notANumber;
    expectRefused(bad, text);
}

TEST_F(MechanismTest, AxisOfAnotherLengthThanOneIsRefused)
{
    Joint bad = joint(JointType::Revolute, addLink(), addLink());
    bad.axis = {0, 0, 2};
    expectRefused(bad, "a joint's axis has length 1");
}

TEST_F(MechanismTest, LimitsTheWrongWayRoundAreRefused)
{
    Joint bad = joint(JointType::Prismatic, addLink(), addLink());
    bad.lower = 4;
    expectRefused(bad, "the lower limit of a joint lies above the upper one");
}

TEST_F(MechanismTest, SlideFartherOutThanAnyStationReachesIsRefused)
{
    Joint bad = joint(JointType::Prismatic, addLink(), addLink());
    bad.lower = -2e12;
    expectRefused(bad, "a joint slides up to 1e12 either way");
    bad.lower = 0;
    bad.upper = 2e12;
    expectRefused(bad, "a joint slides up to 1e12 either way");
}

TEST(Tool, FramesLieOnIt)
{
    Tool tool(newId(), "gripper");
    const auto tip = std::make_shared<Frame>(newId(), "tip", rob::Posed(rob::Posd(0, 0, 120)));

    tool.addFrame(tip);

    EXPECT_EQ(static_cast<unsigned>(tool.getModelType()), 10u);
    EXPECT_THAT(tool.getFrames(), ElementsAre(tip));
    EXPECT_EQ(tip->getParentId(), tool.getId());
    EXPECT_THAT(tool.getPieces(), ElementsAre(tip));
}

TEST(Device, FramesLieOnItOrOnItsLinks)
{
    Device device(newId(), "table");
    const auto link = std::make_shared<Link>(newId(), "plate");
    device.addLink(link);
    const auto onDevice = std::make_shared<Frame>(newId(), "base");
    const auto onLink = std::make_shared<Frame>(newId(), "centre");
    const auto elsewhere = std::make_shared<Frame>(newId(), "elsewhere");

    device.addFrame(onDevice, device.getId());
    device.addFrame(onLink, link->getId());

    EXPECT_EQ(static_cast<unsigned>(device.getModelType()), 11u);
    EXPECT_EQ(onDevice->getParentId(), device.getId());
    EXPECT_EQ(onLink->getParentId(), link->getId());
    EXPECT_THAT([&] { device.addFrame(elsewhere, 999999); },
                ThrowsMessage<std::invalid_argument>("a device's frame lies on the device or one of its links"));
    EXPECT_THAT(device.getFrames(), ElementsAre(onDevice, onLink));
}

/// A device whose links hang side by side on the first one, by a joint each that turns without end.
std::shared_ptr<Device> newFan(const std::vector<std::pair<std::string, std::optional<JointFollowing>>>& joints)
{
    auto device = std::make_shared<Device>(newId(), "fan");
    const auto root = std::make_shared<Link>(newId(), "root");
    device->addLink(root);
    for (const auto& [name, follows] : joints) {
        const auto link = std::make_shared<Link>(newId(), "on " + name);
        device->addLink(link);
        Joint joint;
        joint.name = name;
        joint.type = JointType::Continuous;
        joint.parentLink = root->getId();
        joint.childLink = link->getId();
        joint.follows = follows;
        device->addJoint(joint);
    }
    return device;
}

TEST(JointFollowing, GoesOnAlongAChainWhateverTheOrder)
{
    const auto device =
        newFan({{"last", JointFollowing{"middle", 2, 0}}, {"middle", JointFollowing{"first", -1, 0.5}}, {"first", {}}});

    device->setJointValues(std::vector{0.25});

    EXPECT_EQ(device->jointValueCount(), 1u);
    EXPECT_DOUBLE_EQ(device->getJoints()[1].value, 0.25);
    EXPECT_DOUBLE_EQ(device->getJoints()[0].value, 0.5);
    EXPECT_EQ(device->driverOf(device->getJoints()[0]), &device->getJoints()[2]);
}

TEST(JointFollowing, RingAndUnknownNameStandStill)
{
    const auto device =
        newFan({{"a", JointFollowing{"b"}}, {"b", JointFollowing{"a"}}, {"c", JointFollowing{"nobody"}}, {"d", {}}});

    device->setJointValues(std::vector{0.25});

    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(device->driverOf(device->getJoints()[i]), nullptr);
        EXPECT_EQ(device->getJoints()[i].value, 0);
    }
}

TEST(JointFollowing, FixedJointFollowsNone)
{
    Device device(newId(), "fan");
    const auto root = std::make_shared<Link>(newId(), "root"), tip = std::make_shared<Link>(newId(), "tip");
    device.addLink(root);
    device.addLink(tip);
    Joint joint;
    joint.parentLink = root->getId();
    joint.childLink = tip->getId();
    joint.follows = JointFollowing{"other"};
    EXPECT_THAT([&] { device.addJoint(joint); }, ThrowsMessage<std::invalid_argument>("a fixed joint follows none"));
}

TEST(Link, OwnsPartsAndAssembliesInOrder)
{
    Link link(newId(), "link");
    const auto part = std::make_shared<Part>(newId(), "part");
    const auto assembly = std::make_shared<Assembly>(newId(), "assembly");

    link.addPart(part);
    link.addAssembly(assembly);

    EXPECT_THAT(link.getParts(), ElementsAre(part, assembly));
    EXPECT_THAT(link.getObjChildren(), ElementsAre(part->getId(), assembly->getId()));
    EXPECT_EQ(part->getParentId(), link.getId());
    EXPECT_FALSE(part->isStandalone());
    EXPECT_FALSE(assembly->isStandalone());
    EXPECT_EQ(static_cast<unsigned>(assembly->getModelType()), 2u);
    EXPECT_EQ(static_cast<unsigned>(part->getModelType()), 4u);
}

} // namespace
} // namespace vrk::layout
