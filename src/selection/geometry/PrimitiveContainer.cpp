#include "selection/geometry/PrimitiveContainer.h"

#include "selection/geometry/BVHBuilder.h"
#include "selection/geometry/BVHWalk.h"

#include <mutex>
#include <utility>

namespace vrk::selection {
namespace {

auto appendTo(std::vector<BVHPrimitive*>& out)
{
    return [&out](BVHPrimitive* primitive) { out.push_back(primitive); };
}

} // namespace

/// A build that is put off. A failed one is tried again by the next question.
struct PrimitiveContainer::Later {
    std::once_flag once;
    PrimitiveContainer* container;
};

PrimitiveContainer::PrimitiveContainer() = default;

PrimitiveContainer::~PrimitiveContainer()
{
    for (BVHPrimitive* primitive : primitives)
        delete primitive;
}

void PrimitiveContainer::queryLine(const rob::LineTemplate<float>& line, std::vector<BVHPrimitive*>& out) const
{
    walkLine(getRoot(), line, appendTo(out));
}

void PrimitiveContainer::queryTriangle(const rob::TriangleTemplate<float>& triangle,
                                       std::vector<BVHPrimitive*>& out) const
{
    walkTriangle(getRoot(), triangle, appendTo(out));
}

void PrimitiveContainer::queryRay(const visual::Ray& ray, std::vector<BVHPrimitive*>& out) const
{
    walkRay(getRoot(), ray, appendTo(out));
}

void PrimitiveContainer::queryBox(const visual::Box& box, std::vector<BVHPrimitive*>& out) const
{
    walkBox(getRoot(), box, appendTo(out));
}

void PrimitiveContainer::closestHitLine(Result& result, const rob::LineTemplate<float>& line) const
{
    result = Result();
    Result found;
    walkLine(getRoot(), line, [&](const BVHPrimitive* primitive) {
        primitive->intersectLine(found, line);
        if (found.hit && result.distance > found.distance)
            result = std::move(found);
    });
}

void PrimitiveContainer::closestHitRay(Result& result, const visual::Ray& ray) const
{
    result = Result();
    Result found;
    walkRay(getRoot(), ray, [&](const BVHPrimitive* primitive) {
        primitive->intersectRay(found, ray);
        if (found.hit && result.distance > found.distance)
            result = std::move(found);
    });
}

void PrimitiveContainer::firstHitTriangle(Result& result, const rob::TriangleTemplate<float>& triangle) const
{
    result = Result();
    Result found;
    walkTriangle(getRoot(), triangle, [&](const BVHPrimitive* primitive) {
        primitive->intersectTriangle(found, triangle);
        if (found.hit)
            result = std::move(found);
        return !result.hit;
    });
}

void PrimitiveContainer::forEachInBox(const visual::Box& box, std::function<void(unsigned)> callback) const
{
    walkBox(getRoot(), box, [&](const BVHPrimitive* primitive) { primitive->forEachInBox(box, callback); });
}

const BVHNode* PrimitiveContainer::getRoot() const
{
    if (later)
        std::call_once(later->once, [all = later->container] { all->bvh = BVHBuilder(all).build(); });
    return bvh.root;
}

void PrimitiveContainer::buildWhenAsked()
{
    bvh = BVH();
    later = std::make_unique<Later>();
    later->container = this;
}

} // namespace vrk::selection
