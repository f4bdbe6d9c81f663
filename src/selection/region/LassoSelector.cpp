#include "selection/region/LassoSelector.h"

#include "platform/common/ParallelFor.h"
#include "selection/PointCloudObject.h"
#include "selection/SensitivePoints.h"
#include "visual/PointCloudVisual.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

namespace vrk::selection {
namespace {

constexpr std::uint32_t wholly = 0;
constexpr std::uint32_t partly = 1;
constexpr double parallelEdges = 1e-10;

using Point = rob::Vec2Template<float>;

/// a * b, summed up in the order in which OGRE does it.
visual::CameraSnapshot::Matrix product(const visual::CameraSnapshot::Matrix& a, const visual::CameraSnapshot::Matrix& b)
{
    visual::CameraSnapshot::Matrix result;
    for (unsigned row = 0; row < 4; ++row)
        for (unsigned column = 0; column < 4; ++column)
            result[4 * row + column] = a[4 * row] * b[column] + a[4 * row + 1] * b[4 + column] +
                                       a[4 * row + 2] * b[8 + column] + a[4 * row + 3] * b[12 + column];
    return result;
}

float cross(const Point& a, const Point& b)
{
    return a.x * b.y - a.y * b.x;
}

/// Whether two segments have a place in common. Parallel ones count as apart.
bool meet(const Point& a, const Point& b, const Point& c, const Point& d)
{
    const Point along = b - a, other = d - c, between = c - a;
    const float den = cross(along, other);
    if (std::abs(static_cast<double>(den)) < parallelEdges)
        return false;
    const float t = cross(between, other) / den;
    const float u = cross(between, along) / den;
    return t >= 0 && t <= 1 && u >= 0 && u <= 1;
}

} // namespace

LassoSelector::LassoSelector(const std::vector<rob::PosTemplate<float>>& points, const visual::CameraSnapshot& camera)
    : worldToCube(product(camera.projection, camera.view))
{
    polygon.reserve(points.size());
    const auto width = static_cast<float>(camera.width), height = static_cast<float>(camera.height);
    for (const rob::PosTemplate<float>& p : points)
        polygon.emplace_back((p.x + p.x) / width - 1, 1 - (p.y + p.y) / height);
}

Point LassoSelector::project(const rob::PosTemplate<float>& p) const
{
    const auto& m = worldToCube;
    // w as it falls: what lies behind the camera comes out mirrored.
    const float w = m[12] * p.x + m[13] * p.y + m[14] * p.z + m[15];
    return {(m[0] * p.x + m[1] * p.y + m[2] * p.z + m[3]) / w, (m[4] * p.x + m[5] * p.y + m[6] * p.z + m[7]) / w};
}

bool LassoSelector::isInsidePolygon(const Point& p) const
{
    if (polygon.size() < 3)
        return false;
    bool isInside = false;
    const Point* previous = &polygon.back();
    for (const Point& vertex : polygon) {
        if ((vertex.y > p.y) != (previous->y > p.y) &&
            (previous->x - vertex.x) * (p.y - vertex.y) / (previous->y - vertex.y) + vertex.x > p.x)
            isInside = !isInside;
        previous = &vertex;
    }
    return isInside;
}

bool LassoSelector::crossesRectangle(const Rectangle& r) const
{
    const std::array<Point, 4> corners{{{r.minX, r.minY}, {r.maxX, r.minY}, {r.maxX, r.maxY}, {r.minX, r.maxY}}};
    for (std::size_t i = 0; i < polygon.size(); ++i) {
        const Point& end = polygon[(i + 1) % polygon.size()];
        for (unsigned side = 0; side < 4; ++side) // bottom, right, top, left
            if (meet(polygon[i], end, corners[side], corners[(side + 1) % 4]))
                return true;
    }
    return false;
}

LassoCoverage LassoSelector::classifyBox(const visual::Box& box, const rob::PoseTemplate<float>& pose) const
{
    constexpr float infinity = std::numeric_limits<float>::infinity();
    Rectangle r{infinity, infinity, -infinity, -infinity};
    for (unsigned i = 0; i < 8; ++i) {
        const Point corner = project(pose * box.getCorner(i));
        r = {std::min(r.minX, corner.x), std::min(r.minY, corner.y), std::max(r.maxX, corner.x),
             std::max(r.maxY, corner.y)};
    }
    unsigned inside = 0;
    for (const Point& corner :
         {Point{r.minX, r.minY}, Point{r.maxX, r.minY}, Point{r.maxX, r.maxY}, Point{r.minX, r.maxY}})
        inside += isInsidePolygon(corner) ? 1 : 0;
    if (inside == 4)
        return crossesRectangle(r) ? LassoCoverage::Partial : LassoCoverage::Inside;
    if (inside > 0)
        return LassoCoverage::Partial;
    const bool holdsVertex = std::ranges::any_of(polygon, [&r](const Point& vertex) {
        return vertex.x >= r.minX && vertex.x <= r.maxX && vertex.y >= r.minY && vertex.y <= r.maxY;
    });
    return holdsVertex || crossesRectangle(r) ? LassoCoverage::Partial : LassoCoverage::Outside;
}

std::vector<LassoSelector::Found> LassoSelector::selectPrimitives(const BVHNode* root,
                                                                  const rob::PoseTemplate<float>& pose) const
{
    std::vector<Found> found;
    std::vector<const BVHNode*> pending;
    if (root)
        pending.push_back(root);
    while (!pending.empty()) {
        const BVHNode* node = pending.back();
        pending.pop_back();
        const LassoCoverage coverage = classifyBox(node->box, pose);
        if (coverage == LassoCoverage::Outside)
            continue;
        if (coverage == LassoCoverage::Inside) {
            std::vector<BVHPrimitive*> all;
            node->collectPrimitives(all);
            for (BVHPrimitive* primitive : all)
                found.emplace_back(wholly, primitive);
        } else if (node->kind == BVHNode::Leaf) {
            const auto* leaf = static_cast<const BVHLeaf*>(node);
            for (unsigned i = 0; i < leaf->count; ++i) {
                const LassoCoverage own = classifyBox(leaf->primitives[i]->box, pose);
                if (own != LassoCoverage::Outside)
                    found.emplace_back(own == LassoCoverage::Inside ? wholly : partly, leaf->primitives[i]);
            }
        } else {
            const auto* inner = static_cast<const BVHInnerNode*>(node);
            pending.push_back(inner->left);
            pending.push_back(inner->right);
        }
    }
    return found;
}

void LassoSelector::selectPointCloud(PointCloudObject* cloud, PointsOfClouds& result) const
{
    const std::vector<Found> groups = selectPrimitives(cloud->getRoot(), cloud->worldPose);
    const auto& points = static_cast<const visual::PointCloudVisual*>(cloud->visual)->getPoints();
    // Once for all threads: OGRE brings a node's place up to date when it is first asked for.
    const rob::PoseTemplate<float> pose = cloud->visual->getWorldPose();
    std::vector<std::vector<unsigned>> inside(groups.size());
    parallelFor(groups.size(), [&](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i) {
            const auto indices = static_cast<const SensitivePoints*>(groups[i].second)->getIndices();
            if (groups[i].first == wholly) {
                inside[i].assign(indices.begin(), indices.end());
                continue;
            }
            for (const unsigned index : indices)
                if (isInsidePolygon(project(pose * points[index])))
                    inside[i].push_back(index);
        }
    });

    std::vector<std::uint64_t>& all = result[cloud->visual->getId()];
    std::size_t count = all.size();
    for (const auto& group : inside)
        count += group.size();
    all.reserve(count);
    for (const auto& group : inside)
        all.insert(all.end(), group.begin(), group.end());
    if (cloud->hidden)
        std::erase_if(all, [cloud](std::uint64_t number) { return cloud->hidden->contains(number); });
}

} // namespace vrk::selection
