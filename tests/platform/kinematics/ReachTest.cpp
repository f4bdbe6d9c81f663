#include "platform/kinematics/Reach.h"

#include "platform/layout/Frame.h"
#include "support/ProcessorTime.h"
#include "support/ThrowsExactly.h"

#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <unordered_map>

namespace vrk::kinematics {
namespace {

using layout::JointType;
using test::throwsExactly;
using testing::SizeIs;

constexpr double degree = std::numbers::pi / 180;
constexpr unsigned armId = 1000;

struct JointCase {
    rob::Posd origin;
    rob::Dird axis;
    double lower;
    double upper;
    JointType type = JointType::Revolute;
    rob::Rotationd turn{}; // of the origin
};

/// An arm whose links hang on each other one by one, with the wrist at `wrist` in the last.
std::shared_ptr<layout::Manipulator> armOf(const std::vector<JointCase>& joints, const rob::Posd& wrist = {},
                                           const rob::Posed& firstLink = {})
{
    auto arm = std::make_shared<layout::Manipulator>(armId, "arm", armId + 1, armId + 2);
    unsigned next = armId + 10;
    auto link = std::make_shared<layout::Link>(next, "base");
    link->setPose(firstLink);
    arm->addLink(link);
    for (const JointCase& each : joints) {
        arm->addLink(std::make_shared<layout::Link>(++next, "link"));
        layout::Joint joint;
        joint.type = each.type;
        joint.parentLink = next - 1;
        joint.childLink = next;
        joint.origin = {each.origin, each.turn};
        joint.axis = each.axis;
        joint.lower = each.lower;
        joint.upper = each.upper;
        arm->addJoint(joint);
    }
    arm->placeWrist(next, rob::Posed(wrist));
    return arm;
}

/// A common arm of six axes: 1,500 units, the last three of them meeting in the middle of its wrist.
std::vector<JointCase> sixAxes(double firstTurn)
{
    return {
        {{0, 0, 400}, {0, 0, 1}, -firstTurn, firstTurn},       {{180, 0, 0}, {0, 1, 0}, -65 * degree, 140 * degree},
        {{0, 0, 600}, {0, 1, 0}, -180 * degree, 70 * degree},  {{200, 0, 120}, {1, 0, 0}, -300 * degree, 300 * degree},
        {{440, 0, 0}, {0, 1, 0}, -120 * degree, 120 * degree}, {{0, 0, 0}, {1, 0, 0}, -360 * degree, 360 * degree}};
}

/// An arm as they stand beside people: three axes side by side, then two that meet, and the plane aside of the first axis.
std::vector<JointCase> sideBySide()
{
    const double turn = 360 * degree;
    return {{{0, 0, 163}, {0, 0, 1}, -turn, turn},    {{0, 138, 0}, {0, 1, 0}, -turn, turn},
            {{0, -131, 425}, {0, 1, 0}, -turn, turn}, {{0, 0, 392}, {0, 1, 0}, -turn, turn},
            {{0, 127, 0}, {0, 0, 1}, -turn, turn},    {{0, 0, 100}, {0, 1, 0}, -turn, turn}};
}

struct ReachCase {
    const char* name;
    std::vector<JointCase> joints;
    rob::Posd wrist{90, 0, 0};
    rob::Posed firstLink{};
};

std::vector<ReachCase> arms()
{
    std::vector<JointCase> flipped = sixAxes(1);
    flipped[0] = {{0, 0, 400}, {0, 0, -1}, -100 * degree, 40 * degree};
    std::vector<JointCase> telescope = sixAxes(120 * degree);
    telescope.resize(2);
    telescope.push_back({{0, 0, 300}, {0, 0, 1}, 100, 700, JointType::Prismatic});
    std::vector<JointCase> aside = sixAxes(150 * degree);
    aside[1].origin = {180, 75, 0};
    std::vector<JointCase> endless = sixAxes(1);
    endless[0].type = JointType::Continuous;
    std::vector<JointCase> fixedFirst = sixAxes(170 * degree);
    fixedFirst.insert(fixedFirst.begin(), {{30, 0, 50}, {0, 0, 1}, 0, 0, JointType::Fixed});
    fixedFirst.insert(fixedFirst.begin() + 4, {{0, 0, 10}, {0, 1, 0}, 0.3, 0.3});
    return {{"SixAxes", sixAxes(170 * degree)},
            {"WholeTurn", sixAxes(180 * degree)},
            {"EndlessTurn", endless},
            {"FirstAxisDownwards", flipped},
            {"PlaneAside", aside},
            {"SideBySide", sideBySide()},
            {"Telescope", telescope, {0, 0, 0}},
            {"FixedAndLockedJoints", fixedFirst},
            {"Leaning",
             sixAxes(170 * degree),
             {90, 0, 0},
             rob::Posed(rob::Posd(300, -200, 100), rob::Rotationd(0.6, rob::Dird(0, 1, 0)))},
            {"BesideTheOrigin", sixAxes(170 * degree), {90, 0, 0}, rob::Posed(rob::Posd(300, -200, 100))}};
}

struct Flat {
    double u;
    double v;
};

double distanceToPiece(const Flat& p, const Flat& a, const Flat& b)
{
    const double du = b.u - a.u;
    const double dv = b.v - a.v;
    const double square = du * du + dv * dv;
    const double part = square > 0 ? std::clamp(((p.u - a.u) * du + (p.v - a.v) * dv) / square, 0.0, 1.0) : 0.0;
    return std::hypot(p.u - a.u - part * du, p.v - a.v - part * dv);
}

class ReachOfAnArm : public testing::TestWithParam<ReachCase> {
protected:
    ReachOfAnArm()
        : arm(armOf(GetParam().joints, GetParam().wrist, GetParam().firstLink)), chain(ArmChain::ToWristCentre(*arm))
    {
        reach = computeReach(chain).value();
        isHalf = reach.to - reach.from > 2 * std::numbers::pi - 1e-9;
        for (const Reach::Curve& curve : reach.curves)
            for (const rob::Posd& p : curve.points)
                if (std::hypot(p.x, p.y) > std::hypot(farthest.x, farthest.y))
                    farthest = p;
        for (const Reach::Curve& curve : reach.curves) {
            flat.emplace_back();
            for (const rob::Posd& p : curve.points)
                flat.back().push_back(flatOf(p));
            // What is open ends on the axis.
            if (isHalf)
                flat.back().push_back(flat.back().front());
        }
    }
    /// A place in the plane of the curves; the arms are built so that this is that of x and z while all joints are 0.
    Flat flatOf(const rob::Posd& p) const { return {isHalf ? std::hypot(p.x, p.y) : p.x, p.z}; }
    std::vector<double> anyValues(std::mt19937& random) const
    {
        std::vector<double> values;
        for (const ChainJoint& joint : chain.joints) {
            const double lower = joint.type == JointType::Continuous ? -std::numbers::pi : joint.lower;
            values.push_back(std::uniform_real_distribution(lower, lower + joint.span())(random));
        }
        return values;
    }
    /// The place for these values, turned back by what the first joint turned it.
    rob::Posd placeOf(std::vector<double> values) const
    {
        values.front() = 0;
        return reach.base.inverse() * chain.pointAt(values);
    }
    bool isInside(const Flat& p) const
    {
        bool inside = false;
        for (const auto& line : flat)
            for (std::size_t i = 1; i < line.size(); ++i) {
                const Flat& a = line[i - 1];
                const Flat& b = line[i];
                if ((a.v > p.v) != (b.v > p.v) && p.u < a.u + (p.v - a.v) / (b.v - a.v) * (b.u - a.u))
                    inside = !inside;
            }
        return inside;
    }
    double distanceToBorder(const Flat& p) const
    {
        double least = std::numeric_limits<double>::max();
        for (const auto& line : flat)
            for (std::size_t i = 1; i < line.size(); ++i)
                least = std::min(least, distanceToPiece(p, line[i - 1], line[i]));
        return least;
    }

    std::shared_ptr<layout::Manipulator> arm;
    ArmChain chain;
    Reach reach;
    bool isHalf;
    rob::Posd farthest;
    std::vector<std::vector<Flat>> flat;
};

TEST_P(ReachOfAnArm, HoldsEveryPlaceOfAHundredThousand)
{
    std::mt19937 random(20261122);
    double outmost = 0;
    for (int i = 0; i < 100'000; ++i) {
        const Flat p = flatOf(placeOf(anyValues(random)));
        if (!isInside(p))
            outmost = std::max(outmost, distanceToBorder(p));
    }
    EXPECT_LT(outmost, 1.0) << "units outside of the surface";
}

TEST_P(ReachOfAnArm, LiesNowhereFarFromAPlaceThatIsReached)
{
    // Places of a net of values, so close that the next one lies within a few units.
    constexpr double netStep = 4;
    constexpr double square = 25;
    std::unordered_map<std::int64_t, std::vector<Flat>> places;
    const auto keyOf = [](double u, double v) {
        return static_cast<std::int64_t>(std::floor(u / square)) * 1'000'003 +
               static_cast<std::int64_t>(std::floor(v / square));
    };
    std::vector<double> values(chain.joints.size());
    const std::function<void(std::size_t)> walk = [&](std::size_t joint) {
        if (joint == chain.joints.size()) {
            const Flat p = flatOf(placeOf(values));
            places[keyOf(p.u, p.v)].push_back(p);
            return;
        }
        double length = chain.point.length() + 1;
        for (std::size_t i = joint + 1; i < chain.joints.size(); ++i)
            length += chain.joints[i].origin.position.length();
        const double arm = chain.joints[joint].turns() ? length : 1;
        // Three joints side by side come to each place in many ways.
        const double step = (chain.joints.size() > 3 ? 3 : 1) * netStep;
        const int count = static_cast<int>(std::ceil(chain.joints[joint].span() * arm / step));
        for (int i = 0; i <= count; ++i) {
            values[joint] = chain.joints[joint].lower + chain.joints[joint].span() * i / count;
            walk(joint + 1);
        }
    };
    walk(1);

    double farthestFrom = 0;
    for (const auto& line : flat)
        for (std::size_t i = 1; i < line.size(); ++i) {
            if (isHalf && line[i].u < 1e-9 && line[i - 1].u < 1e-9)
                continue; // along the axis: no part of the surface
            for (const double part : {0.0, 0.25, 0.5, 0.75}) {
                const Flat p{line[i - 1].u + part * (line[i].u - line[i - 1].u),
                             line[i - 1].v + part * (line[i].v - line[i - 1].v)};
                double least = std::numeric_limits<double>::max();
                for (int du = -1; du <= 1; ++du)
                    for (int dv = -1; dv <= 1; ++dv)
                        if (const auto found = places.find(keyOf(p.u + du * square, p.v + dv * square));
                            found != places.end())
                            for (const Flat& q : found->second)
                                least = std::min(least, std::hypot(p.u - q.u, p.v - q.v));
                farthestFrom = std::max(farthestFrom, least);
            }
        }
    EXPECT_LT(farthestFrom, 20.0);
    EXPECT_LT(farthestFrom, reach.margin + netStep) << "which is told";
}

TEST_P(ReachOfAnArm, CurvesHaveNormalsOutwards)
{
    for (const Reach::Curve& curve : reach.curves) {
        ASSERT_EQ(curve.normals.size(), curve.points.size());
        ASSERT_GT(curve.points.size(), 8u);
        for (std::size_t i = 1; i + 1 < curve.points.size(); ++i) {
            EXPECT_NEAR(curve.normals[i].length(), 1, 1e-9);
            const Flat p = flatOf(curve.points[i]);
            const Flat n = flatOf(curve.points[i] + curve.normals[i] * 2.0);
            EXPECT_FALSE(isInside(n)) << p.u << " " << p.v;
        }
    }
}

TEST_P(ReachOfAnArm, CurvesAreClosedOrEndOnTheAxis)
{
    for (const Reach::Curve& curve : reach.curves)
        for (const rob::Posd& end : {curve.points.front(), curve.points.back()})
            EXPECT_TRUE(curve.points.front() == curve.points.back() || std::hypot(end.x, end.y) < 1e-9);
}

TEST_P(ReachOfAnArm, PointOfTheChainStaysInItsLinkAndIsWhereTheModelPutsIt)
{
    std::mt19937 random(7);
    for (int i = 0; i < 100; ++i) {
        std::vector<double> values;
        for (const layout::Joint& joint : arm->getJoints())
            if (joint.isMoving())
                values.push_back(std::uniform_real_distribution(joint.lower, std::nextafter(joint.upper, 1e9))(random));
        arm->setJointValues(values);
        std::erase_if(values, [&, at = 0u](double) mutable {
            unsigned moving = 0;
            for (const layout::Joint& joint : arm->getJoints())
                if (joint.isMoving() && moving++ == at) {
                    ++at;
                    return joint.hasLimits() && joint.lower == joint.upper;
                }
            return false;
        });
        values.resize(chain.joints.size());

        rob::Posed link;
        for (const auto& each : arm->getLinks())
            if (each->getId() == chain.joints.back().link)
                link = each->getPose();
        EXPECT_LT((link * chain.point - chain.pointAt(values)).length(), 1e-6);
    }
}

INSTANTIATE_TEST_SUITE_P(Table, ReachOfAnArm, testing::ValuesIn(arms()),
                         [](const auto& info) { return std::string(info.param.name); });

TEST(ArmChainTest, AxesThatMeetInTheWristAreLeftOut)
{
    const ArmChain chain = ArmChain::ToWristCentre(*armOf(sixAxes(1), {90, 0, 0}));

    ASSERT_THAT(chain.joints, SizeIs(3));
    EXPECT_LT((chain.point - rob::Posd(640, 0, 120)).length(), 1e-9);
}

TEST(ArmChainTest, AxesThatDoNotMeetLeaveAllJointsButTheLast)
{
    std::vector<JointCase> joints = sixAxes(1);
    joints[4].origin = {440, 0, 30};
    joints[5].origin = {0, 20, 5};
    const ArmChain chain = ArmChain::ToWristCentre(*armOf(joints, {90, 7, 8}));

    ASSERT_THAT(chain.joints, SizeIs(5));
    EXPECT_LT((chain.point - rob::Posd(90, 20, 5)).length(), 1e-9) << "beside the wrist, on the last axis";
}

TEST(ArmChainTest, ArmOfFewJointsKeepsItsWrist)
{
    std::vector<JointCase> joints = sixAxes(1);
    joints.resize(2);
    const ArmChain chain = ArmChain::ToWristCentre(*armOf(joints, {1, 2, 3}));

    ASSERT_THAT(chain.joints, SizeIs(2));
    EXPECT_EQ(chain.point, rob::Posd(1, 2, 3));
}

TEST(ArmChainTest, FixedAndLockedJointsKeepTheirPlace)
{
    std::vector<JointCase> joints = sixAxes(1);
    joints.insert(joints.begin() + 3, {{0, 0, 10}, {0, 1, 0}, 0.3, 0.3});
    joints.insert(joints.begin() + 1, {{0, 5, 20}, {0, 1, 0}, 0, 0, JointType::Fixed});
    const auto arm = armOf(joints, {90, 0, 0}, rob::Posed(rob::Posd(7, 8, 9)));
    const ArmChain chain = ArmChain::ToWristCentre(*arm);

    ASSERT_THAT(chain.joints, SizeIs(3));
    const rob::Posd middle = arm->getLinks().at(7)->getPose().position; // where the fifth axis begins, all joints at 0
    EXPECT_LT((chain.pointAt({0, 0, 0}) - middle).length(), 1e-9);
}

TEST(Reach, TurnsAboutTheMechanismWhereItsAxisDoes)
{
    const Reach upright = computeReach(ArmChain::ToWristCentre(*armOf(sixAxes(170 * degree)))).value();
    EXPECT_EQ(upright.base, rob::Posed());
    EXPECT_DOUBLE_EQ(upright.from, -170 * degree);
    EXPECT_DOUBLE_EQ(upright.to, 170 * degree);

    std::vector<JointCase> joints = sixAxes(1);
    joints[0] = {{0, 0, 400}, {0, 0, -1}, -100 * degree, 40 * degree};
    const Reach flipped = computeReach(ArmChain::ToWristCentre(*armOf(joints))).value();
    EXPECT_EQ(flipped.base, rob::Posed());
    EXPECT_DOUBLE_EQ(flipped.from, -40 * degree);
    EXPECT_DOUBLE_EQ(flipped.to, 100 * degree);

    const Reach whole = computeReach(ArmChain::ToWristCentre(*armOf(sixAxes(200 * degree)))).value();
    EXPECT_DOUBLE_EQ(whole.to - whole.from, 2 * std::numbers::pi);
}

TEST(Reach, OfAnArmOfTwoStraightPiecesIsARing)
{
    std::vector<JointCase> joints{
        {{0, 0, 0}, {0, 0, 1}, -4, 4}, {{0, 0, 0}, {0, 1, 0}, -4, 4}, {{0, 0, 300}, {0, 1, 0}, -4, 4}};
    const Reach reach = computeReach(ArmChain::ToWristCentre(*armOf(joints, {0, 0, 200}))).value();

    ASSERT_THAT(reach.curves, SizeIs(2));
    for (const rob::Posd& p : reach.curves[0].points) {
        EXPECT_GE(p.length(), 500);
        EXPECT_LE(p.length(), 500 + reach.margin);
    }
    for (const rob::Posd& p : reach.curves[1].points) {
        EXPECT_LE(p.length(), 100);
        EXPECT_GE(p.length(), 100 - reach.margin);
    }
    EXPECT_LT(reach.margin, 3);
}

TEST(Reach, OfAnArmThatTakesLessThanAWholeTurnCountsWhatGoesAside)
{
    // Two upright axes: the wrist goes aside by up to a quarter turn each way.
    std::vector<JointCase> joints{{{0, 0, 0}, {0, 0, 1}, -1, 1}, {{300, 0, 0}, {0, 0, 1}, -2, 2}};
    const Reach reach = computeReach(ArmChain::ToWristCentre(*armOf(joints, {300, 0, 50}))).value();

    EXPECT_NEAR(reach.from, -2, 0.02) << "half of 2, and 1";
    EXPECT_NEAR(reach.to, 2, 0.02);
}

TEST(Reach, ArmsThatTurnAboutNothingAreRefused)
{
    const auto reachOf = [](const std::vector<JointCase>& joints, const rob::Posd& wrist) {
        return computeReach(ArmChain::ToWristCentre(*armOf(joints, wrist)));
    };
    EXPECT_THAT(
        [&] {
            reachOf({}, {1, 2, 3});
        },
        throwsExactly<std::invalid_argument>("no joint moves the wrist of the arm"));
    EXPECT_THAT(
        [&] {
            reachOf({{{0, 0, 1}, {0, 0, 1}, 0, 0, JointType::Fixed}}, {1, 2, 3});
        },
        throwsExactly<std::invalid_argument>("no joint moves the wrist of the arm"));
    EXPECT_THAT(
        [&] {
            reachOf({{{0, 0, 1}, {0, 0, 1}, 0.5, 0.5}}, {1, 2, 3});
        },
        throwsExactly<std::invalid_argument>("no joint moves the wrist of the arm"));
    ArmChain follower = ArmChain::ToWristCentre(*armOf(sixAxes(1), {0, 0, 100}));
    follower.hasFollower = true;
    EXPECT_THAT([&] { computeReach(follower); },
                throwsExactly<std::invalid_argument>("a joint of the arm follows another one"));
    std::vector<JointCase> onARail = sixAxes(1);
    onARail.insert(onARail.begin(), {{0, 0, 0}, {1, 0, 0}, 0, 5000, JointType::Prismatic});
    EXPECT_THAT(
        [&] {
            reachOf(onARail, {1, 2, 3});
        },
        throwsExactly<std::invalid_argument>("the first joint of the arm slides: its reach is no surface that turns"));
    const std::string onAxis = "the wrist of the arm does not leave the axis of its first joint";
    EXPECT_THAT(
        [&] {
            reachOf({{{0, 0, 1}, {0, 0, 1}, -1, 1}}, {0, 0, 3});
        },
        throwsExactly<std::invalid_argument>(onAxis));
    EXPECT_THAT(
        [&] {
            reachOf({{{0, 0, 1}, {0, 0, 1}, -1, 1}}, {0, 0, 0});
        },
        throwsExactly<std::invalid_argument>(onAxis));
    EXPECT_THAT(
        [&] {
            reachOf({{{0, 0, 1}, {0, 0, 1}, -1, 1}, {{0, 0, 9}, {0, 0, 1}, -1, 1}}, {0, 0, 3});
        },
        throwsExactly<std::invalid_argument>(onAxis));
}

TEST(Reach, OfSevenAxesLeavesThePlaneOfTheArm)
{
    // Shoulder, elbow and wrist, each of axes that meet: the wrist leaves the plane of the arm.
    const double half = 170 * degree;
    const ArmChain chain = ArmChain::ToWristCentre(*armOf({{{0, 0, 360}, {0, 0, 1}, -180 * degree, 180 * degree},
                                                           {{0, 0, 0}, {0, 1, 0}, -2, 2},
                                                           {{0, 0, 420}, {0, 0, 1}, -half, half},
                                                           {{0, 0, 0}, {0, -1, 0}, -2, 2},
                                                           {{0, 0, 400}, {0, 0, 1}, -half, half},
                                                           {{0, 0, 0}, {0, 1, 0}, -2, 2},
                                                           {{0, 0, 126}, {0, 0, 1}, -half, half}}));
    ASSERT_THAT(chain.joints, SizeIs(4));
    const Reach reach = computeReach(chain).value();

    // Between two balls about the shoulder, as far as the elbow opens and closes.
    ASSERT_FALSE(reach.curves.empty());
    const rob::Posd shoulder(0, 0, 360);
    for (const rob::Posd& p : reach.curves.front().points)
        EXPECT_LE((p - shoulder).length(), 820 + reach.margin);
    double highest = 0;
    for (const rob::Posd& p : reach.curves.front().points)
        highest = std::max(highest, p.z);
    EXPECT_GE(highest, 360 + 820);
    EXPECT_LE(highest, 360 + 820 + reach.margin);
    EXPECT_LT(reach.margin, 20);
}

TEST(Reach, IsToldHowFarItIsAndStopsWhenItIsAsked)
{
    const ArmChain chain = ArmChain::ToWristCentre(*armOf(sixAxes(1)));
    std::vector<double> told;
    EXPECT_TRUE(computeReach(chain, {}, [&](double part) { told.push_back(part); }));
    EXPECT_GE(told.size(), 2u);
    EXPECT_TRUE(std::ranges::is_sorted(told));
    EXPECT_EQ(told.back(), 1);

    std::stop_source stop;
    stop.request_stop();
    EXPECT_FALSE(computeReach(chain, stop.get_token()));
}

TEST(Reach, OfSixAxesTakesLessThanASecond)
{
    for (const auto& joints : {sixAxes(170 * degree), sixAxes(180 * degree), sideBySide()}) {
        const ArmChain chain = ArmChain::ToWristCentre(*armOf(joints));

        const double seconds = test::threadSecondsOf([&] { ASSERT_TRUE(computeReach(chain)); });

        std::cout << "reach in " << 1e3 * seconds << " ms\n";
#ifdef NDEBUG // what is built for debugging is not timed
        EXPECT_LT(seconds, 1.0);
#endif
    }
}

} // namespace
} // namespace vrk::kinematics
