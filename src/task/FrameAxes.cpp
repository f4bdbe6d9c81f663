// The frames of targets in the selection: of all its sources this one alone knows their class.

#include "scene/core/SceneCore.h"
#include "selection/LineObject.h"
#include "selection/SensitiveLine.h"
#include "selection/VisualSelection.h"
#include "task/InstanceFrameVisual.h"

namespace vrk::selection {

void VisualSelection::addFrameVisual(visual::InstanceFrameVisual* visual)
{
    if (!hasVisual(visual))
        enter(new LineObject(visual), true);
}

bool LineObject::appendFrameAxes()
{
    const auto* frame = dynamic_cast<const visual::InstanceFrameVisual*>(visual);
    if (!frame)
        return false;
    const float size = frame->getFrameSize();
    if (size == 0)
        return true;
    const rob::PosTemplate<float> origin;
    primitives.reserve(3);
    if (!visual::SceneCore::Get()->settings.drawTargetZAxisOnly) {
        primitives.push_back(new SensitiveLine(origin, {size, 0, 0}));
        primitives.push_back(new SensitiveLine(origin, {0, size, 0}));
    }
    primitives.push_back(new SensitiveLine(origin, {0, 0, size}));
    return true;
}

} // namespace vrk::selection
