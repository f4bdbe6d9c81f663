#include "selection/SensitiveEdge.h"

#include "selection/SensitiveLine.h"
#include "selection/geometry/BVHBuilder.h"
#include "visual/DynamicLines.h"
#include "visual/EdgeVisual.h"

#include <cmath>

namespace vrk::selection {
namespace {

bool isIdentity(const rob::PoseTemplate<float>& pose)
{
    const auto isBelow = [](double v) { return std::abs(v) < 0.001; };
    const rob::OrientTemplate<float>& q = pose.orientation;
    return pose.position.length() < 0.01 && isBelow(q.w - 1.0) && isBelow(q.x) && isBelow(q.y) && isBelow(q.z);
}

} // namespace

SensitiveEdge::SensitiveEdge(visual::EdgeVisual* visual, const TopoDS_Shape& edge) : edge(edge)
{
    constexpr float samePoint = 1e-6f;
    if (const rob::PoseTemplate<float> own = visual->getPose(); !isIdentity(own)) {
        hasPose = true;
        pose = own;
        inversePose = own.inverse();
    }
    const std::vector<rob::PosTemplate<float>>& points = visual->getLines().getPoints();
    const rob::PosTemplate<float>* last = nullptr;
    for (const rob::PosTemplate<float>& point : points) {
        if (last && !((point - *last).length() >= samePoint))
            continue;
        if (last)
            primitives.push_back(new SensitiveLine(*last, point));
        last = &point;
    }
    bvh = BVHBuilder(this).build();
    if (bvh.root == nullptr)
        return;
    box = bvh.root->box;
    if (hasPose)
        box.transform(pose);
}

void SensitiveEdge::intersectRay(Result& result, const visual::Ray& ray) const
{
    closestHitRay(result, ray.transformed(inversePose));
    if (!result.hit)
        return;
    // Both in the frame of the curve, in which the edge lies that a parameter is looked for on.
    result.localPosition = pose * result.localPosition;
    result.position = result.localPosition;
    result.edge = edge;
}

} // namespace vrk::selection
