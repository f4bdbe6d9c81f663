#include "platform/task/SeamPath.h"

#include "platform/sdf/SdfManager.h"
#include "platform/task/Instruction.h"
#include "platform/task/Path.h"

#include <fmt/format.h>

#include <stdexcept>

namespace vrk::task {
namespace {

constexpr double samePlace = 1e-4; // model units; where edges meet within their tolerance
constexpr double sameTurn = 2e-3;  // radians; below it a corner is none
constexpr const char* stop = "fine";

bool isSame(const rob::Posed& a, const rob::Posed& b)
{
    if ((a.position - b.position).length() > samePlace)
        return false;
    for (const rob::Dird axis : {rob::Dird(1, 0, 0), rob::Dird(0, 0, 1)})
        if ((rob::Vec3d(a.rotation() * axis) - rob::Vec3d(b.rotation() * axis)).length() > sameTurn)
            return false;
    return true;
}

/// The places of the tool, in the coordinates of the seam.
std::vector<rob::Posed> posesOf(const EdgeMfgShape& seam)
{
    std::vector<rob::Posed> poses;
    for (const EdgeMfgShape::PathPoint& point : seam.getPathPointsForRender()) {
        const rob::Posed pose = seam.getMfgVector(point).getToolPose(seam.getEdge(point.edge));
        if (poses.empty() || !isSame(poses.back(), pose))
            poses.push_back(pose);
    }
    return poses;
}

} // namespace

SeamPath MakeSeamPath(const EdgeMfgShape& seam, const std::string& name, const SeamPathOptions& options)
{
    const std::vector<rob::Posed> poses = posesOf(seam);
    if (poses.empty())
        throw std::invalid_argument("a run without edges makes no path");
    sdf::SdfManager& model = sdf::SdfManager::inst();
    SeamPath made{std::make_shared<Path>(model.generateId(), name), {}};
    for (std::size_t i = 0; i < poses.size(); ++i) {
        auto target =
            std::make_shared<RobTargetDataItem>(model.generateId(), fmt::format("{}_{}", seam.getName(), 10 * (i + 1)));
        target->setPose(options.seamInFrame * poses[i]);
        target->setOwnerId(options.wobj ? options.wobj->getId() : 0);
        auto move =
            std::make_shared<MoveInst>(model.generateId(), "MoveL " + target->getName(), Motion::Linear, target);
        move->setWObjItem(options.wobj);
        move->setToolItem(options.tool);
        move->speed = options.speed;
        move->zone = i == 0 || i + 1 == poses.size() ? stop : options.zone;
        made.targets.push_back(std::move(target));
        made.path->addInstruction(std::move(move));
    }
    return made;
}

} // namespace vrk::task
