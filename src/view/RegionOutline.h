#pragma once

#include "platform/common/Export.h"
#include "scene/math/Vec.h"

#include <memory>
#include <span>

namespace vrk::visual {

class Camera;

/// The outline of a region that the user draws, over the picture of one camera. It says how the region is read: one line and a
/// blue ground for what lies wholly inside, dashes and a green ground for what is touched. The mark of a place is a dark line,
/// which like all of them lies in a white one.
///
/// Owner: who draws it; the camera outlives it. Thread: render thread. Places are pixels of the camera's target, from its top
/// left corner: what is shown keeps its place in the picture when that gets another size.
class VRK_EXPORT RegionOutline {
public:
    using Place = rob::Vec2Template<double>;
    enum class Look { Line, Dashes, Mark };

    explicit RegionOutline(Camera& camera);
    ~RegionOutline();
    RegionOutline(const RegionOutline&) = delete;
    RegionOutline& operator=(const RegionOutline&) = delete;

    /// Replaces what is shown; by nothing with fewer than two corners, and while the camera has no pixels. The line from the
    /// last corner to the first is always dashed where the outline is open.
    /// @param ratio  pixels in one that the user sees as one: dashes are as long on every screen.
    void show(std::span<const Place> corners, bool isClosed, Look look, double ratio = 1);
    /// The same with a ground, for an upright rectangle.
    void showRectangle(const Place& from, const Place& to, Look look, double ratio = 1);
    void hide();
    bool isShown() const { return drawing != nullptr; }

private:
    class Drawing;

    Camera& camera;
    std::unique_ptr<Drawing> drawing; // only while something is shown
};

} // namespace vrk::visual
