#pragma once

#include "platform/common/Export.h"
#include "selection/geometry/Box.h"

#include <OgrePlane.h>

#include <array>
#include <vector>

namespace vrk::visual {
struct CameraSnapshot;
}

namespace vrk::selection {

/// Where a box lies to a volume.
enum class VolumeClass : unsigned { Inside = 0, Partial = 1, Outside = 2 };

/// A part of space between planes whose normals point out of it. That of a rectangle of the view has four, and no near or
/// far end: in a perspective view it goes on behind the camera's near plane until its planes meet.
///
/// Units: the world's. Thread: any, as a value.
class VRK_EXPORT SelectionVolume {
public:
    /// Where one plane leaves a box or a point. Of a point, `Both` means that it lies on the plane.
    enum class PlaneClass : unsigned { Outside = 0, Inside = 1, Both = 2 };

    SelectionVolume() = default;
    explicit SelectionVolume(std::vector<Ogre::Plane> planes) : planes(std::move(planes)) {}

    /// Where a box lies by the sides that the planes see of it. A box beyond no single plane counts as partial, even if it
    /// lies outside of a corner. A box that holds nothing is outside.
    VolumeClass classifyBox(const visual::Box& box) const;
    static PlaneClass classifyBox(const Ogre::Plane& plane, const visual::Box& box);
    static PlaneClass classifyPoint(const Ogre::Plane& plane, const rob::PosTemplate<float>& point);
    /// A point on a plane is not outside of it.
    bool holds(const rob::PosTemplate<float>& point) const;

    const std::vector<Ogre::Plane>& getPlanes() const { return planes; }

private:
    std::vector<Ogre::Plane> planes;
};

/// What a rectangle of the view covers. Its corners are pixels, counted from the view's top left corner, in any order. The
/// camera must have pixels.
VRK_EXPORT SelectionVolume buildSelectionVolume(const visual::CameraSnapshot& camera, float x1, float y1, float x2,
                                                float y2);

} // namespace vrk::selection

namespace vrk::visual {
using selection::SelectionVolume;
using selection::VolumeClass;
} // namespace vrk::visual
