#include "handles/GuiVisual.h"

#include "handles/MouseDisplacement.h"
#include "platform/common/Logger.h"
#include "view/Camera.h"

namespace vrk::visual {

GuiVisual::GuiVisual(const std::string& name) : Visual(name)
{
    type = VisualType::Gui;
}

rob::Vec3f GuiVisual::MouseDisplacement(const rob::Vec2f& from, const rob::Vec2f& to, const rob::Posef& pose,
                                        const rob::Vec3f& axes)
{
    const std::shared_ptr<const CameraSnapshot> camera = Camera::Published();
    if (!camera || !camera->hasPixels()) {
        AppLogger::inst()->warn("nothing was moved by the mouse: there is no view with pixels");
        return {};
    }
    const rob::Vec3f moved(displacementAlong(camera->rayThrough(from.x, from.y), camera->rayThrough(to.x, to.y),
                                             rob::Posed(pose), rob::Vec3d(axes)));
    if (!moved.isFinite()) {
        AppLogger::inst()->warn("nothing was moved by the mouse: its places or the pose are not finite");
        return {};
    }
    return moved;
}

} // namespace vrk::visual
