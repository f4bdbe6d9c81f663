#include "platform/program/ProgramParts.h"

#include "platform/common/Checks.h"
#include "platform/program/ProgramText.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vrk::program {
namespace {

constexpr double shortestRotation = 1e-6;

} // namespace

std::string_view textOf(Placing placing)
{
    switch (placing) {
    case Placing::RunTime:
        return "not known before it runs";
    case Placing::Missing:
        return "its target is not in the files";
    case Placing::Faulty:
        return "its numbers are no place";
    case Placing::NoRobot:
        return "a posture, and no robot of as many joints";
    default:
        return "placed";
    }
}

rob::Rotationd fromZyx(double aboutZ, double aboutY, double aboutX)
{
    return rob::Rotationd(toRadians(aboutZ), rob::Dird(0, 0, 1)) *
           rob::Rotationd(toRadians(aboutY), rob::Dird(0, 1, 0)) *
           rob::Rotationd(toRadians(aboutX), rob::Dird(1, 0, 0));
}

rob::Rotationd fromXyz(double aboutX, double aboutY, double aboutZ)
{
    return rob::Rotationd(toRadians(aboutX), toRadians(aboutY), toRadians(aboutZ));
}

double toRadians(double degrees)
{
    return degrees * std::numbers::pi / 180;
}

bool makePlace(rob::Posed& pose)
{
    const rob::Orientd& o = pose.orientation;
    const double length = std::sqrt(o.w * o.w + o.x * o.x + o.y * o.y + o.z * o.z);
    const rob::Posd& p = pose.position;
    const double farthest = std::max({std::abs(p.x), std::abs(p.y), std::abs(p.z)});
    if (!p.isFinite() || farthest > common::farthestPlace || !std::isfinite(length) || length < shortestRotation)
        return false;
    pose.orientation = {o.w / length, o.x / length, o.y / length, o.z / length};
    return true;
}

Place enterTarget(Program& program, Target target)
{
    program.targets.push_back(std::move(target));
    return {Placing::Placed, static_cast<int>(program.targets.size()) - 1};
}

Place enterFault(Program& program, const std::string& name, unsigned line)
{
    program.notes.push_back(
        {line, fmt::format("{}: numbers that are no place (not finite, too far out, or a rotation of length 0)",
                           inQuotes(name))});
    return {Placing::Faulty, none};
}

bool isPosture(const Program& program, int target)
{
    return !program.targets[static_cast<std::size_t>(target)].joints.empty();
}

Step& addStep(Program& program, std::string_view text, unsigned line)
{
    std::vector<Step>& steps = program.routines.back().steps;
    steps.emplace_back();
    steps.back().text = onOneLine(text);
    steps.back().line = line;
    return steps.back();
}

void setPlace(Step& step, const Place& target, const std::optional<Place>& via)
{
    step.placing = target.placing;
    step.target = target.target;
    if (!via)
        return;
    step.via = via->target;
    if (step.placing == Placing::Placed)
        step.placing = via->placing;
}

} // namespace vrk::program
