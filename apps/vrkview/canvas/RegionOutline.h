#pragma once

#include <QPointF>
#include <QSizeF>

#include <vector>

namespace Ogre {
class ManualObject;
class SceneNode;
} // namespace Ogre

namespace vrkview {

/// The outline of a region that the user draws, over the picture. It says how the region is read: one line and a blue ground
/// for what lies wholly inside, dashes and a green ground for what is touched. The mark of a
/// place is a dark line, which like all of them lies in a white one.
///
/// Thread: the application's, which is the render thread. Places are device pixels from the view's top left corner.
class RegionOutline {
public:
    enum class Look { Line, Dashes, Mark };

    RegionOutline() = default;
    ~RegionOutline();
    RegionOutline(const RegionOutline&) = delete;
    RegionOutline& operator=(const RegionOutline&) = delete;

    /// Replaces what is shown. The line from the last corner to the first is always dashed where the outline is open.
    /// @param view   the size of the view in device pixels.
    /// @param ratio  device pixels in a logical one.
    void show(const std::vector<QPointF>& corners, bool isClosed, Look look, const QSizeF& view, double ratio);
    /// The same with a ground, for an upright rectangle.
    void showRectangle(const QPointF& from, const QPointF& to, Look look, const QSizeF& view, double ratio);
    void hide();
    bool isShown() const { return node != nullptr; }

private:
    void begin();

    // OGRE's, only while something is shown
    Ogre::SceneNode* node = nullptr;
    Ogre::ManualObject* drawing = nullptr;
};

} // namespace vrkview
