#include "handles/DragAnswer.h"

#include <cmath>

namespace vrk::visual {

const char* reasonOf(DragRefusal refusal)
{
    switch (refusal) {
    case DragRefusal::NoPixels:
        return "the view has no area to drag in";
    case DragRefusal::NotFinite:
        return "the mouse, the object or the camera is at no finite place";
    case DragRefusal::TowardsViewer:
        return "the axis points at the viewer";
    case DragRefusal::SeenEdgeOn:
        return "the ring is seen from its edge";
    case DragRefusal::BehindViewer:
        return "the place under the mouse lies behind the viewer";
    case DragRefusal::AtCentre:
        return "the mouse is at the centre of the ring";
    case DragRefusal::None:
        break;
    }
    return "";
}

rob::Dird dragDirection(const rob::Posed& pose, unsigned axis, DragAxes axes)
{
    const rob::Dird unit(axis == 0 ? 1.0 : 0.0, axis == 1 ? 1.0 : 0.0, axis == 2 ? 1.0 : 0.0);
    return axes == DragAxes::World ? unit : pose.rotation().normalized() * unit;
}

double toStep(double value, double step)
{
    return step > 0 && std::isfinite(step) ? std::round(value / step) * step : value;
}

} // namespace vrk::visual
