#include "selection/region/SelectionVolume.h"

#include "scene/core/CameraSnapshot.h"
#include "selection/geometry/BVHWalk.h"
#include "selection/geometry/PrimitiveContainer.h"

#include <OgreAxisAlignedBox.h>

#include <algorithm>

namespace vrk::selection {
namespace {

constexpr float planeReach = 100.0f; // how far along a corner's ray the third point of its plane lies

Ogre::Vector3 toVector(const rob::PosTemplate<float>& p)
{
    return {p.x, p.y, p.z};
}

SelectionVolume::PlaneClass classOf(Ogre::Plane::Side side)
{
    // The normals point outwards.
    switch (side) {
    case Ogre::Plane::POSITIVE_SIDE:
        return SelectionVolume::PlaneClass::Outside;
    case Ogre::Plane::NEGATIVE_SIDE:
        return SelectionVolume::PlaneClass::Inside;
    default:
        return SelectionVolume::PlaneClass::Both;
    }
}

} // namespace

SelectionVolume::PlaneClass SelectionVolume::classifyBox(const Ogre::Plane& plane, const visual::Box& box)
{
    return classOf(plane.getSide(Ogre::AxisAlignedBox(toVector(box.min), toVector(box.max))));
}

SelectionVolume::PlaneClass SelectionVolume::classifyPoint(const Ogre::Plane& plane,
                                                           const rob::PosTemplate<float>& point)
{
    return classOf(plane.getSide(toVector(point)));
}

VolumeClass SelectionVolume::classifyBox(const visual::Box& box) const
{
    if (!box.isValid()) // OGRE makes no box of it
        return VolumeClass::Outside;
    bool isInside = true;
    for (const Ogre::Plane& plane : planes) {
        const PlaneClass side = classifyBox(plane, box);
        if (side == PlaneClass::Outside)
            return VolumeClass::Outside;
        isInside = isInside && side == PlaneClass::Inside;
    }
    return isInside ? VolumeClass::Inside : VolumeClass::Partial;
}

bool SelectionVolume::holds(const rob::PosTemplate<float>& point) const
{
    return std::ranges::none_of(
        planes, [&](const Ogre::Plane& plane) { return classifyPoint(plane, point) == PlaneClass::Outside; });
}

SelectionVolume buildSelectionVolume(const visual::CameraSnapshot& camera, float x1, float y1, float x2, float y2)
{
    const auto [left, right] = std::minmax(x1, x2);
    const auto [top, bottom] = std::minmax(y1, y2);
    // From the near plane on: in a perspective view the four begin at four places, and the planes go through these.
    struct Corner {
        Ogre::Vector3 origin, point;
        explicit Corner(const visual::Ray& ray)
            : origin(toVector(ray.origin)),
              point(origin + Ogre::Vector3(ray.direction.x, ray.direction.y, ray.direction.z) * planeReach)
        {
        }
    };
    const Corner topLeft(camera.rayThrough(left, top));
    const Corner topRight(camera.rayThrough(right, top));
    const Corner bottomLeft(camera.rayThrough(left, bottom));
    const Corner bottomRight(camera.rayThrough(right, bottom));
    const auto through = [](const Corner& a, const Corner& b) { return Ogre::Plane(a.origin, b.origin, b.point); };
    return SelectionVolume({through(topLeft, topRight), through(bottomLeft, topLeft), through(bottomRight, bottomLeft),
                            through(topRight, bottomRight)});
}

/// Here and not beside the other questions, since volumes are made of OGRE's planes.
void PrimitiveContainer::queryVolume(const SelectionVolume& volume, std::vector<BVHPrimitive*>& out) const
{
    walkVolume(
        getRoot(), [&volume](const visual::Box& box) { return volume.classifyBox(box) != VolumeClass::Outside; },
        [&out](BVHPrimitive* primitive) {
            if (primitive->enabled)
                out.push_back(primitive);
        });
}

} // namespace vrk::selection
