#include "selection/CurveObject.h"

#include "selection/SensitiveEdge.h"
#include "visual/CurveVisual.h"
#include "visual/EdgeVisual.h"

namespace vrk::selection {

CurveObject::CurveObject(const TopoDS_Shape& shape, visual::CurveVisual* visual)
    : SelectableObject(ObjectKind::Curve, visual), shape(shape)
{
}

void CurveObject::buildPrimitives()
{
    for (visual::Visual* child : visual->getChildren())
        if (child->getType() == VisualType::Edge) {
            auto* edge = static_cast<visual::EdgeVisual*>(child);
            primitives.push_back(new SensitiveEdge(edge, edge->getEdge()));
        }
    buildHierarchy();
}

void CurveObject::intersectRay(Result& result, const visual::Ray& ray) const
{
    closestHitRay(result, ray.transformed(inverseWorldPose));
    if (!result.hit)
        return;
    finish(result);
    result.shape = shape;
    result.pose = worldPose;
}

} // namespace vrk::selection
