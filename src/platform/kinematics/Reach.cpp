#include "platform/kinematics/Reach.h"

#include "platform/kinematics/ReachBorder.h"
#include "platform/kinematics/SweptPoints.h"

#include <algorithm>
#include <bitset>
#include <cmath>
#include <memory>
#include <numbers>
#include <stdexcept>
#include <tuple>

namespace vrk::kinematics {
namespace {

constexpr double fullTurn = 2 * std::numbers::pi;
constexpr double alike = 1e-4; // sines of directions, and parts of the reach, below which two are the same
// How fine all is counted, as parts of what the arm would reach if it were stretched. The places of an arm that moves in a
// plane lie in one, and cost little.
constexpr double fineStep = 1.0 / 1200;
constexpr double coarseStep = 1.0 / 200;
constexpr double fineCell = 1.0 / 1000; // of the border
constexpr double coarseCell = 1.0 / 400;
// Of a cell of the border: how far its lines may lie inside of what they stand for, and by how much more where points of
// them are left out.
constexpr double lineError = 0.25;
constexpr double leftOut = 0.75;
constexpr const char* staysOnAxis = "the wrist of the arm does not leave the axis of its first joint";

bool areParallel(const rob::Vec3d& a, const rob::Vec3d& b)
{
    return a.cross(b).length() < alike;
}

double farthestSlide(const ChainJoint& joint)
{
    return joint.turns() ? 0 : std::max(std::abs(joint.lower), std::abs(joint.upper));
}

/// How far the point can be at most from the origin of what a joint moves.
double stretchedFrom(const ArmChain& chain, std::size_t joint)
{
    double length = chain.point.length();
    for (std::size_t i = joint + 1; i < chain.joints.size(); ++i)
        length += chain.joints[i].origin.position.length() + farthestSlide(chain.joints[i]);
    return length;
}

/// The frame about whose z the first joint turns.
struct Base {
    explicit Base(const ChainJoint& first)
    {
        const rob::Dird up(0, 0, 1);
        const rob::Dird axis = first.origin * first.axis;
        const rob::Vec3d origin(first.origin.position);
        rob::Posd foot(origin - axis * origin.dot(axis));
        if (foot.length() <= alike * alike * origin.length())
            foot = {};
        const bool isUpright = areParallel(rob::Vec3d(axis), rob::Vec3d(up));
        isFlipped = isUpright && axis.z < 0;
        pose = {foot, isUpright ? rob::Rotationd() : rob::Rotationd::From2Dirs(up, axis)};
        fromFirst = pose.inverse() * first.origin;
    }

    rob::Posed pose;
    rob::Posed fromFirst;   ///< what the first joint moves, while its value is 0
    bool isFlipped = false; ///< the joint turns the other way
};

/// The upright plane in which all joints but the first move the point; no value where there is none.
std::optional<rob::Vec3d> normalOfPlane(const ArmChain& chain, const Base& base)
{
    std::vector<rob::Vec3d> turning;
    std::vector<rob::Vec3d> sliding;
    rob::Posed at = base.fromFirst;
    for (std::size_t i = 1; i < chain.joints.size(); ++i) {
        const ChainJoint& joint = chain.joints[i];
        at = at * joint.origin;
        (joint.turns() ? turning : sliding).emplace_back(at * joint.axis);
    }
    const rob::Posd point = at * chain.point;
    rob::Vec3d normal(-point.y, point.x, 0);
    if (!turning.empty())
        normal = turning.front();
    else if (!sliding.empty() && !areParallel(sliding.front(), {0, 0, 1}))
        normal = {-sliding.front().y, sliding.front().x, 0};
    if (std::hypot(normal.x, normal.y) <= rob::zeroLength)
        normal = {0, 1, 0}; // on the axis, up and down
    normal = rob::Vec3d(rob::normalized(normal));
    const bool isPlane =
        std::abs(normal.z) < alike &&
        std::ranges::all_of(turning, [&](const auto& axis) { return areParallel(axis, normal); }) &&
        std::ranges::all_of(sliding, [&](const auto& axis) { return std::abs(axis.dot(normal)) < alike; });
    return isPlane ? std::optional(rob::Vec3d(rob::normalized(rob::Vec3d(normal.x, normal.y, 0)))) : std::nullopt;
}

/// The half plane, or the plane, that is turned about the axis.
struct ArmPlane {
    ArmPlane(const ArmChain& chain, const Base& base) : turnsWholly(chain.joints.front().span() >= fullTurn)
    {
        const std::optional<rob::Vec3d> found = normalOfPlane(chain, base);
        isPlanar = found.has_value();
        isHalf = turnsWholly || !isPlanar;
        if (!isPlanar)
            return;
        rob::Posd point = chain.point;
        for (std::size_t i = chain.joints.size(); i-- > 1;) {
            const ChainJoint& joint = chain.joints[i];
            point = joint.poseAt((joint.lower + joint.upper) / 2) * point;
        }
        point = base.fromFirst * point;
        normal = *found;
        along = {normal.y, -normal.x, 0};
        if (rob::Vec3d(point).dot(along) < 0) {
            normal = -normal;
            along = -along;
        }
        offset = isHalf ? 0 : rob::Vec3d(point).dot(normal);
    }

    bool turnsWholly;
    bool isPlanar;             ///< all joints but the first move the point in it
    bool isHalf;               ///< of a place only the distance from the axis counts
    rob::Vec3d along{1, 0, 0}; ///< level, towards where the arm is most
    rob::Vec3d normal{0, 1, 0};
    double offset = 0; ///< of the plane from the axis
};

/// Which ways from the axis there are places: of a turn that is not a whole one they lie before and behind its ends.
class Ways {
public:
    void note(double x, double y)
    {
        const double part = (std::atan2(y, x) + std::numbers::pi) / fullTurn;
        seen.set(std::min(static_cast<std::size_t>(part * count), count - 1));
    }
    /// The first and the last one, in radians: all but the widest gap.
    std::pair<double, double> ends() const
    {
        std::size_t widest = 0;
        std::size_t after = 0; // of the widest gap
        std::size_t gap = 0;
        for (std::size_t i = 0; i < 2 * count; ++i) {
            gap = seen.test(i % count) ? 0 : gap + 1;
            if (gap > widest && gap <= count) {
                widest = gap;
                after = i + 1;
            }
        }
        const double from = static_cast<double>(after % count) / count * fullTurn - std::numbers::pi;
        const double way = static_cast<double>(count - widest) / count * fullTurn;
        return from > std::numbers::pi - way / 2 ? std::pair(from - fullTurn, from - fullTurn + way)
                                                 : std::pair(from, from + way);
    }

private:
    static constexpr std::size_t count = 1440;
    std::bitset<count> seen;
};

/// Leaves out points of a line that lie near the straight piece between those that stay: Douglas and Peucker.
ReachBorder::Line simplified(const ReachBorder::Line& line, double tolerance)
{
    std::vector<bool> stays(line.size());
    stays.front() = stays.back() = true;
    std::vector<std::pair<std::size_t, std::size_t>> open{{0, line.size() - 1}};
    while (!open.empty()) {
        const auto [first, last] = open.back();
        open.pop_back();
        const double du = line[last].u - line[first].u;
        const double dv = line[last].v - line[first].v;
        const double length = std::hypot(du, dv);
        double farthest = tolerance;
        std::size_t found = 0;
        for (std::size_t i = first + 1; i < last; ++i) {
            const double pu = line[i].u - line[first].u;
            const double pv = line[i].v - line[first].v;
            // A closed line begins and ends in one point.
            const double distance = length > tolerance ? std::abs(du * pv - dv * pu) / length : std::hypot(pu, pv);
            if (distance > farthest) {
                farthest = distance;
                found = i;
            }
        }
        if (found == 0)
            continue;
        stays[found] = true;
        open.emplace_back(first, found);
        open.emplace_back(found, last);
    }
    ReachBorder::Line left;
    for (std::size_t i = 0; i < line.size(); ++i)
        if (stays[i])
            left.push_back(line[i]);
    return left;
}

double lengthOf(const ReachBorder::Line& line)
{
    double length = 0;
    for (std::size_t i = 1; i < line.size(); ++i)
        length += std::hypot(line[i].u - line[i - 1].u, line[i].v - line[i - 1].v);
    return length;
}

/// To the right of the way from one point to another.
rob::Vec3d rightOf(const ReachBorder::Point& from, const ReachBorder::Point& to)
{
    const double length = std::hypot(to.u - from.u, to.v - from.v);
    return length > 0 ? rob::Vec3d((to.v - from.v) / length, 0, (from.u - to.u) / length) : rob::Vec3d();
}

Reach::Curve curveOf(const ReachBorder::Line& line, const ArmPlane& plane, double height)
{
    Reach::Curve curve;
    const std::size_t last = line.size() - 1;
    const bool isClosed = line.front().u == line.back().u && line.front().v == line.back().v;
    for (std::size_t i = 0; i <= last; ++i) {
        const rob::Vec3d before = i > 0      ? rightOf(line[i - 1], line[i])
                                  : isClosed ? rightOf(line[last - 1], line[last])
                                             : rob::Vec3d();
        const rob::Vec3d after = i < last   ? rightOf(line[i], line[i + 1])
                                 : isClosed ? rightOf(line[0], line[1])
                                            : rob::Vec3d();
        rob::Vec3d right = before + after;
        if (right.length() < alike)
            right = after; // a tip
        const rob::Vec3d outward = plane.along * right.x + rob::Vec3d(0, 0, right.z);
        curve.normals.push_back(rob::normalized(outward));
        curve.points.emplace_back(plane.along * line[i].u + plane.normal * plane.offset +
                                  rob::Vec3d(0, 0, line[i].v + height));
    }
    return curve;
}

void check(const ArmChain& chain)
{
    if (chain.joints.empty())
        throw std::invalid_argument("no joint moves the wrist of the arm");
    if (chain.hasFollower)
        throw std::invalid_argument("a joint of the arm follows another one");
    if (!chain.joints.front().turns())
        throw std::invalid_argument("the first joint of the arm slides: its reach is no surface that turns");
}

/// Calls `take` with the places that the joints behind the first one take the point to, in what the first one moves.
/// @return false if it was stopped.
template <typename Take>
bool visitPlaces(const ArmChain& chain, double step, const std::stop_token& stop,
                 const std::function<void(double)>& progress, const Take& take)
{
    if (chain.joints.size() == 1) {
        take(chain.point);
        return true;
    }
    const double cell = step / std::numbers::sqrt2;
    // The middle of a cell may lie farther out than what is in it, and again at each joint.
    const double beyond = static_cast<double>(chain.joints.size()) * cell;
    const auto setOf = [&](std::size_t joint) {
        return std::make_unique<SweptPoints>(chain.joints[joint], cell, stretchedFrom(chain, joint) + beyond);
    };
    std::size_t joint = chain.joints.size() - 1;
    std::unique_ptr<SweptPoints> places = setOf(joint);
    places->add(chain.point);
    for (; joint > 1; --joint) {
        std::unique_ptr<SweptPoints> next = setOf(joint - 1);
        if (!places->sweep(step, stop, [&](const rob::Posd& p) { next->add(p); }))
            return false;
        places = std::move(next);
        if (progress)
            progress(1.0 - static_cast<double>(joint) / static_cast<double>(chain.joints.size() + 1));
    }
    return places->sweep(step, stop, take);
}

/// How fine an arm is counted.
struct Counting {
    Counting(const ArmChain& chain, const ArmPlane& plane, double stretched)
        : step(stretched * (plane.isPlanar ? fineStep : coarseStep)),
          cell(stretched * (plane.isPlanar ? fineCell : coarseCell))
    {
        // What is visited is told by its cells and in steps: each place that is reached has a visited one near it, and each
        // visited one a place that is reached.
        const auto stages = static_cast<double>(chain.joints.size() - 1);
        astray = std::max(stages - 1, 0.0) * step / 2 + alike * stretched;
        const double between = astray + stages * step / 2;
        distance = between + ReachBorder::MarkError(cell) + (lineError + leftOut) * cell;
    }
    double margin() const { return distance + ReachBorder::MarkError(cell) + astray; }

    double step;
    double cell;     // of the border
    double astray;   // of a visited place from what is reached
    double distance; // of the border from visited places, so that it holds all that is reached
};

/// How far the first joint turns the plane about the z of the base.
std::pair<double, double> turnOf(const ChainJoint& first, const Base& base, const ArmPlane& plane, const Ways& ways)
{
    if (plane.turnsWholly)
        return {-std::numbers::pi, std::numbers::pi};
    const auto [foremost, last] = plane.isHalf ? ways.ends() : std::pair(0.0, 0.0);
    const double from = (base.isFlipped ? -first.upper : first.lower) + foremost;
    const double to = (base.isFlipped ? -first.lower : first.upper) + last;
    return {from, std::min(to, from + fullTurn)};
}

} // namespace

std::optional<Reach> computeReach(const ArmChain& chain, const std::stop_token& stop,
                                  const std::function<void(double)>& progress)
{
    check(chain);
    const double stretched = stretchedFrom(chain, 0);
    if (stretched <= rob::zeroLength)
        throw std::invalid_argument(staysOnAxis);
    const Base base(chain.joints.front());
    const ArmPlane plane(chain, base);
    const Counting counting(chain, plane, stretched);

    ReachBorder border(stretched + counting.astray, counting.cell, counting.distance);
    Ways ways;
    const bool countsWays = plane.isHalf && !plane.turnsWholly;
    double farthest = std::abs(plane.offset);
    // The rows of the turn into the base, which is made millions of times.
    const rob::Rotationd back = base.fromFirst.rotation().inverse();
    const rob::Vec3d toX = back * rob::Vec3d(1, 0, 0);
    const rob::Vec3d toY = back * rob::Vec3d(0, 1, 0);
    const rob::Vec3d toZ = back * rob::Vec3d(0, 0, 1);
    const rob::Vec3d toU = back * plane.along;
    const auto mark = [&](const rob::Posd& p) {
        const double x = p.dot(toX);
        const double y = p.dot(toY);
        const double v = p.dot(toZ);
        const double u = plane.isHalf ? std::sqrt(x * x + y * y) : p.dot(toU);
        farthest = std::max(farthest, std::abs(u));
        border.mark(u, v);
        if (plane.isHalf)
            border.mark(-u, v);
        if (countsWays)
            ways.note(x, y);
    };
    if (!visitPlaces(chain, counting.step, stop, progress, mark))
        return std::nullopt;
    if (farthest <= alike * stretched)
        throw std::invalid_argument(staysOnAxis);

    Reach reach;
    reach.base = base.pose;
    reach.margin = counting.margin();
    std::vector<ReachBorder::Line> lines = border.lines(plane.isHalf);
    std::ranges::sort(lines, std::ranges::greater(), lengthOf);
    const double height = base.fromFirst.position.z;
    for (const ReachBorder::Line& line : lines)
        reach.curves.push_back(curveOf(simplified(line, leftOut * counting.cell), plane, height));
    std::tie(reach.from, reach.to) = turnOf(chain.joints.front(), base, plane, ways);
    if (progress)
        progress(1);
    return reach;
}

} // namespace vrk::kinematics
