#include "canvas/ReachVisuals.h"

#include "platform/layout/Layout.h"
#include "platform/sdf/SdfManager.h"
#include "preview/annotation/WorkEnvelopeVisuals.h"
#include "scene/Scene.h"

#include <shared_mutex>
#include <vector>

namespace vrkview {
namespace {

using vrk::VisualType;
using vrk::rob::Posed;
using vrk::rob::Posef;
using vrk::visual::Scene;
using vrk::visual::Visual;
using vrk::visual::WorkEnvelope2DVisual;
using vrk::visual::WorkEnvelope3DVisual;

void collectOn(const Visual& visual, std::vector<Visual*>& found)
{
    for (Visual* child : visual.getChildren())
        if (child->getType() == VisualType::WorkEnvelope)
            found.push_back(child);
}

/// On the robot and on its links; what it carries may be another robot.
std::vector<Visual*> drawnOf(const Visual& robot)
{
    std::vector<Visual*> found;
    collectOn(robot, found);
    for (const Visual* link : robot.getChildren())
        if (!link->isAttached())
            collectOn(*link, found);
    return found;
}

void draw(Visual& robot, const RobotReach& what)
{
    const vrk::kinematics::ChainJoint& first = what.chain.joints.front();
    Visual& turned = Scene::HasVisual(first.link) ? *Scene::GetVisual(first.link) : robot;
    const Posed onTurned = &turned == &robot ? what.reach.base : first.poseAt(0).inverse() * what.reach.base;
    for (const vrk::kinematics::Reach::Curve& curve : what.reach.curves) {
        auto* surface = new WorkEnvelope3DVisual("reach_surface_", &robot);
        surface->setSurface(curve.points, curve.normals, what.reach.from, what.reach.to);
        surface->setPose(Posef(what.reach.base));
        surface->setVisible(robot.isVisible(), true);
        auto* line = new WorkEnvelope2DVisual("reach_line_", &turned);
        line->setCurve(curve.points);
        line->setPose(Posef(onTurned));
        line->setVisible(turned.isVisible(), true);
    }
}

/// The joints of a robot stay as they are while its visual lives, so that what is drawn needs no second look.
void match(unsigned id, const DrawnReaches& wanted)
{
    if (!Scene::HasVisual(id))
        return;
    Visual& robot = *Scene::GetVisual(id);
    const std::vector<Visual*> drawn = drawnOf(robot);
    const auto reach = wanted.find(id);
    if (reach != wanted.end() && drawn.empty())
        draw(robot, *reach->second);
    else if (reach == wanted.end())
        for (Visual* each : drawn)
            Visual::Delete(each);
}

} // namespace

void drawReaches(DrawnReaches reaches)
{
    Scene::Get()->addRenderTask(
        [reaches = std::move(reaches)] {
            std::vector<unsigned> robots;
            {
                const std::shared_lock lock(sdf::SdfManager::inst().mutex());
                for (const auto& robot : vrk::layout::Layout::inst().manipulators)
                    robots.push_back(robot->getId());
            }
            for (const unsigned robot : robots)
                match(robot, reaches);
        },
        0);
}

int reachVisualsOf(unsigned robot)
{
    return Scene::HasVisual(robot) ? static_cast<int>(drawnOf(*Scene::GetVisual(robot)).size()) : 0;
}

} // namespace vrkview
