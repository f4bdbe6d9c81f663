#include "scene/ShownCorners.h"

#include "platform/task/DataItem.h"
#include "platform/task/Instruction.h"
#include "scene/Scene.h"
#include "task/MoveInstructionVisual.h"
#include "visual/PointCloudVisual.h"

#include <Ogre.h>

#include <algorithm>

namespace vrk::visual {
namespace {

using rob::Posf;

constexpr std::size_t mostPointsOfACloud = 100000; // as many tell where it ends

/// Of a solid the faces or the edges may be hidden, each by itself.
bool isSeen(const Visual& visual)
{
    const auto isSeenWireFrame = [](const Visual* child) {
        return child->getType() == VisualType::WireFrame && child->isVisible();
    };
    switch (visual.getType()) {
    case VisualType::Mesh:
    case VisualType::Curve:
    case VisualType::Point:
    case VisualType::PointCloud:
        return visual.isVisible();
    case VisualType::Solid:
        return visual.isVisible() || std::ranges::any_of(visual.getChildren(), isSeenWireFrame);
    default:
        return false;
    }
}

/// A scan fills its box badly: its corners would leave the picture half empty.
void addPoints(const PointCloudVisual& cloud, std::vector<Posf>& corners)
{
    const rob::Posef pose = cloud.getWorldPose();
    const std::vector<Posf>& points = cloud.getPoints();
    const Box drawn = cloud.getBoundingBox(); // not all are
    const std::size_t step = points.size() / mostPointsOfACloud + 1;
    for (std::size_t i = 0; i < points.size(); i += step)
        if (drawn.isPointInside(points[i].x, points[i].y, points[i].z))
            corners.push_back(pose * points[i]);
}

/// Of a move the places that it goes to, whatever of it is drawn: lines go there without targets, too, and the boxes of its
/// parts hold more than is seen.
void addPlaces(const MoveInstructionVisual& move, std::vector<Posf>& corners)
{
    corners.push_back(move.getTargetInWorld());
    if (const auto& via = move.getMove()->getCircleItem())
        corners.push_back(move.getWorldPose() * Posf(via->getPose().position));
}

void addCorners(const Visual& visual, std::vector<Posf>& corners)
{
    if (const auto* move = dynamic_cast<const MoveInstructionVisual*>(&visual)) {
        if (move->isVisible())
            addPlaces(*move, corners);
        return;
    }
    if (isSeen(visual) && visual.getType() == VisualType::PointCloud) {
        addPoints(dynamic_cast<const PointCloudVisual&>(visual), corners);
    } else if (isSeen(visual)) {
        const Ogre::AxisAlignedBox& box = visual.getSceneNode()->_getWorldAABB();
        if (box.isFinite())
            for (const Ogre::Vector3& corner : box.getAllCorners())
                corners.emplace_back(corner.x, corner.y, corner.z);
    }
    for (const Visual* child : visual.getChildren())
        addCorners(*child, corners);
}

void addBodies(const Visual& visual, Box& box)
{
    const bool isBody = visual.getType() == VisualType::Solid || visual.getType() == VisualType::Mesh;
    const Ogre::AxisAlignedBox& own = visual.getSceneNode()->_getWorldAABB();
    if (isBody && isSeen(visual) && own.isFinite())
        for (const Ogre::Vector3& corner : own.getAllCorners())
            box.addPoint(Posf(corner.x, corner.y, corner.z));
    for (const Visual* child : visual.getChildren())
        addBodies(*child, box);
}

} // namespace

std::vector<Posf> ShownCorners()
{
    const Visual& world = *Scene::GetWorldVisual();
    world.getSceneNode()->_update(true, false); // the boxes are else those of the last frame
    std::vector<Posf> corners;
    addCorners(world, corners);
    // A single point has no size, but there must be a way back from it to look at it.
    if (!corners.empty() && std::ranges::all_of(corners, [&](const Posf& p) { return p == corners.front(); })) {
        const Posf middle = corners.front();
        for (unsigned i = 0; i < 8; ++i)
            corners.push_back(middle + Posf(i & 1 ? 1.0f : -1.0f, i & 2 ? 1.0f : -1.0f, i & 4 ? 1.0f : -1.0f));
    }
    return corners;
}

Box BoxOfShown()
{
    Box box;
    box.addPoints(ShownCorners());
    return box;
}

Box BoxOfShownBodies()
{
    const Visual& world = *Scene::GetWorldVisual();
    world.getSceneNode()->_update(true, false);
    Box box;
    addBodies(world, box);
    return box;
}

} // namespace vrk::visual
