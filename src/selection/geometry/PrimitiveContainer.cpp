#include "selection/geometry/PrimitiveContainer.h"

#include "selection/geometry/BVHWalk.h"

#include <utility>

namespace vrk::selection {
namespace {

auto appendTo(std::vector<BVHPrimitive*>& out)
{
    return [&out](BVHPrimitive* primitive) { out.push_back(primitive); };
}

} // namespace

PrimitiveContainer::PrimitiveContainer() = default;

PrimitiveContainer::~PrimitiveContainer()
{
    for (BVHPrimitive* primitive : primitives)
        delete primitive;
}

void PrimitiveContainer::queryLine(const rob::LineTemplate<float>& line, std::vector<BVHPrimitive*>& out) const
{
    walkLine(bvh.root, line, appendTo(out));
}

void PrimitiveContainer::queryTriangle(const rob::TriangleTemplate<float>& triangle,
                                       std::vector<BVHPrimitive*>& out) const
{
    walkTriangle(bvh.root, triangle, appendTo(out));
}

void PrimitiveContainer::queryRay(const visual::Ray& ray, std::vector<BVHPrimitive*>& out) const
{
    walkRay(bvh.root, ray, appendTo(out));
}

void PrimitiveContainer::queryBox(const visual::Box& box, std::vector<BVHPrimitive*>& out) const
{
    walkBox(bvh.root, box, appendTo(out));
}

void PrimitiveContainer::closestHitLine(Result& result, const rob::LineTemplate<float>& line) const
{
    result = Result();
    Result found;
    walkLine(bvh.root, line, [&](const BVHPrimitive* primitive) {
        primitive->intersectLine(found, line);
        if (found.hit && result.distance > found.distance)
            result = std::move(found);
    });
}

void PrimitiveContainer::closestHitRay(Result& result, const visual::Ray& ray) const
{
    result = Result();
    Result found;
    walkRay(bvh.root, ray, [&](const BVHPrimitive* primitive) {
        primitive->intersectRay(found, ray);
        if (found.hit && result.distance > found.distance)
            result = std::move(found);
    });
}

void PrimitiveContainer::firstHitTriangle(Result& result, const rob::TriangleTemplate<float>& triangle) const
{
    result = Result();
    Result found;
    walkTriangle(bvh.root, triangle, [&](const BVHPrimitive* primitive) {
        primitive->intersectTriangle(found, triangle);
        if (found.hit)
            result = std::move(found);
        return !result.hit;
    });
}

void PrimitiveContainer::forEachInBox(const visual::Box& box, std::function<void(unsigned)> callback) const
{
    walkBox(bvh.root, box, [&](const BVHPrimitive* primitive) { primitive->forEachInBox(box, callback); });
}

} // namespace vrk::selection
