#include "visual/Picking.h"

#include "selection/VisualSelection.h"
#include "visual/SolidVisual.h"

#include <TopoDS_Shape.hxx>

namespace vrk::visual::picking {
namespace {

template <typename Call>
void tell(Call call)
{
    if (selection::VisualSelection* service = selection::VisualSelection::Get())
        call(*service);
}

} // namespace

void markDirty(Visual* visual)
{
    tell([&](auto& service) { service.markDirty(visual); });
}

void addShape(const TopoDS_Shape& shape, SolidVisual* visual, bool detectable)
{
    tell([&](auto& service) { service.addShape(shape, visual, detectable); });
}

void addCurveVisual(const TopoDS_Shape& shape, CurveVisual* visual, bool detectable)
{
    tell([&](auto& service) { service.addCurveVisual(shape, visual, detectable); });
}

void addMeshVisual(Visual* visual, bool detectable, bool priority)
{
    tell([&](auto& service) { service.addMeshVisual(visual, detectable, priority); });
}

void addPointVisual(PointVisual* visual, bool detectable)
{
    tell([&](auto& service) { service.addPointVisual(visual, detectable); });
}

void addPointCloudVisual(PointCloudVisual* visual, bool detectable)
{
    tell([&](auto& service) { service.addPointCloudVisual(visual, detectable); });
}

void setHiddenPoints(PointCloudVisual* visual)
{
    tell([&](auto& service) { service.setHiddenPoints(visual); });
}

void removeObject(Visual* visual)
{
    tell([&](auto& service) { service.removeObject(visual); });
}

void addLineVisual(LineVisual* visual)
{
    tell([&](auto& service) { service.addLineVisual(visual); });
}

void addFrameVisual(InstanceFrameVisual* visual)
{
    tell([&](auto& service) { service.addFrameVisual(visual); });
}

void removeCompoundObject(Visual* visual)
{
    tell([&](auto& service) { service.removeCompoundObject(visual); });
}

void setObjectEnabled(Visual* visual, bool enabled)
{
    tell([&](auto& service) { service.setObjectEnabled(visual, enabled); });
}

void setCompoundObjectEnabled(Visual* visual, bool enabled)
{
    tell([&](auto& service) { service.setCompoundObjectEnabled(visual, enabled); });
}

void updateShapeFaces(SolidVisual* visual)
{
    tell([&](auto& service) { service.updateShapeFaces(visual); });
}

} // namespace vrk::visual::picking
