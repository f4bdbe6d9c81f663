#pragma once

#include "visual/Visual.h"

namespace vrk::visual {

/// The base of what the user takes hold of in the view.
///
/// It hangs nowhere until it is attached: `Scene::attachGuiTo`. When the visual that it hangs on, or one above that, is
/// removed by its id, the one attached last is taken off first and lives on. Others die with it, but for those that start-up makes.
///
/// Owner: who made it. Thread: render thread.
class VRK_EXPORT GuiVisual : public Visual {
public:
    explicit GuiVisual(const std::string& name);
    /// Names the same node, as a copy of any visual does.
    GuiVisual(const GuiVisual&) = default;
    GuiVisual& operator=(const GuiVisual&) = default;

    /// How far a drag of the mouse moves something along an axis of its pose, in the world and in model units.
    ///
    /// It goes by the main camera as it was last published, and jumps or fails where the axis points at the viewer: see
    /// `AxisDrag` for a drag that does neither. Any thread.
    ///
    /// @param from, to  pixels from the top left corner of the view.
    /// @param axes  the component of the axis is positive. Of several z goes before x; x and y together give an answer that
    ///              is not of use.
    /// @return zero where there is no camera, a view without pixels, or no finite answer; the log tells which.
    /// @throws std::logic_error "The line is parallel with the plane" where a ray is within 0.001 of it.
    /// @throws std::overflow_error "0-length vector cannot be normalized." for axes without a positive component.
    static rob::Vec3Template<float> MouseDisplacement(const rob::Vec2Template<float>& from,
                                                      const rob::Vec2Template<float>& to,
                                                      const rob::PoseTemplate<float>& pose,
                                                      const rob::Vec3Template<float>& axes);
};

} // namespace vrk::visual
