#include "selection/geometry/BVHPrimitive.h"

namespace vrk::selection {

void BVHPrimitive::intersectLine(Result& result, const rob::LineTemplate<float>&) const
{
    result = Result();
}

void BVHPrimitive::intersectTriangle(Result& result, const rob::TriangleTemplate<float>&) const
{
    result = Result();
}

void BVHPrimitive::intersectRay(Result& result, const visual::Ray&) const
{
    result = Result();
}

void BVHPrimitive::forEachInBox(const visual::Box&, std::function<void(unsigned)>) const {}

BVHPrimitive::~BVHPrimitive() = default;

} // namespace vrk::selection
