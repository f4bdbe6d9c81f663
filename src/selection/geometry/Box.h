#pragma once

#include "platform/common/Export.h"
#include "scene/math/Shapes.h"

#include <iosfwd>
#include <limits>
#include <span>

namespace vrk::visual {

struct Ray;

/// An axis-aligned box. The default box is empty: adding anything to it gives that thing's extent.
///
/// Thread: reading a settled box is safe from any thread; getCenter() writes the cached centre while it is dirty.
/// Units: whatever the owner's coordinates are; expand() grows by one of them.
///
/// A number that is NaN never moves a corner. Touching counts as meeting in every intersect().
struct VRK_EXPORT Box {
    rob::PosTemplate<float> min{largest, largest, largest};
    rob::PosTemplate<float> max{-largest, -largest, -largest};
    rob::PosTemplate<float> center; ///< of min and max, unless centerDirty
    bool centerDirty = false;       ///< set by addPoint: the centre is stale until getCenter() or updateCenter()

    Box() = default;
    Box(const Box&) = default;
    Box(float minX, float minY, float minZ, float maxX, float maxY, float maxZ)
    {
        set(minX, minY, minZ, maxX, maxY, maxZ);
    }
    /// Takes the corners and settles the centre.
    Box& operator=(const Box& o)
    {
        min = o.min;
        max = o.max;
        updateCenter();
        return *this;
    }
    void set(float minX, float minY, float minZ, float maxX, float maxY, float maxZ)
    {
        min = {minX, minY, minZ};
        max = {maxX, maxY, maxZ};
        updateCenter();
    }

    /// The union; the centre is settled.
    void addBox(const Box& o)
    {
        cover(o);
        updateCenter();
    }
    /// The union, with the centre left dirty.
    void cover(const Box& o)
    {
        min = lower(min, o.min);
        max = upper(max, o.max);
        centerDirty = true;
    }
    /// Leaves the centre dirty, so that many points cost one update.
    void addPoint(const rob::PosTemplate<float>& p)
    {
        min = lower(min, p);
        max = upper(max, p);
        centerDirty = true;
    }
    void addPoints(std::span<const rob::PosTemplate<float>> points)
    {
        for (const rob::PosTemplate<float>& p : points)
            addPoint(p);
    }
    /// One unit more on each side. The centre stays as it is.
    void expand()
    {
        min = {min.x - growth, min.y - growth, min.z - growth};
        max = {max.x + growth, max.y + growth, max.z + growth};
    }

    void updateCenter()
    {
        center = {(min.x + max.x) * 0.5f, (min.y + max.y) * 0.5f, (min.z + max.z) * 0.5f};
        centerDirty = false;
    }
    const rob::PosTemplate<float>& getCenter()
    {
        if (centerDirty)
            updateCenter();
        return center;
    }
    /// Corners 0 to 3 go round the lower z face from min, 4 to 7 round the upper one. Any other index gives (0, 0, 0).
    rob::PosTemplate<float> getCorner(unsigned index) const;
    /// Along x for 0, y for 1 and z for any other axis.
    float getExtent(unsigned axis) const
    {
        return axis == 0 ? max.x - min.x : axis == 1 ? max.y - min.y : max.z - min.z;
    }
    float getArea() const
    {
        const float dx = max.x - min.x, dy = max.y - min.y, dz = max.z - min.z;
        return (dx + dx) * dz + (dx + dx) * dy + (dy + dy) * dz;
    }
    /// getArea() from the half sizes; rounding may tell the two apart.
    float getSurfaceArea() const
    {
        const float hx = (max.x - min.x) * 0.5f, hy = (max.y - min.y) * 0.5f, hz = (max.z - min.z) * 0.5f;
        return (hz * hy + hy * hx + hz * hx) * 8.0f;
    }
    /// The longest axis; of equal ones the last.
    unsigned maxDim() const
    {
        const float dx = max.x - min.x, dy = max.y - min.y, dz = max.z - min.z;
        if (dx > dy)
            return dx > dz ? 0 : 2;
        return dy > dz ? 1 : 2;
    }
    bool isValid() const { return max.x >= min.x && max.y >= min.y && max.z >= min.z; }
    /// The faces belong to the inside.
    bool isPointInside(float x, float y, float z) const
    {
        return x >= min.x && x <= max.x && y >= min.y && y <= max.y && z >= min.z && z <= max.z;
    }

    void transform(const rob::PoseTemplate<float>& pose) { *this = transformed(pose); }
    /// The box of the eight corners moved by `pose`. That of an empty box means nothing: ask isValid() first.
    Box transformed(const rob::PoseTemplate<float>& pose) const;

    /// Writes the corners as text, for a developer to read.
    void dump(std::ostream& out) const;

    bool intersect(const Box& o) const
    {
        return min.x <= o.max.x && o.min.x <= max.x && min.y <= o.max.y && o.min.y <= max.y && min.z <= o.max.z &&
               o.min.z <= max.z;
    }
    /// @throws std::overflow_error "0-length vector cannot be normalized." if the line has no length.
    bool intersect(const rob::LineTemplate<float>& line) const;
    /// Only the part of the ray from its origin to its length.
    bool intersect(const Ray& ray) const;
    /// The plane with this normal through `point`, which is relative to the centre of the box.
    bool intersect(const rob::Vec3Template<float>& normal, const rob::PosTemplate<float>& point) const;
    /// The centre must be settled.
    bool intersect(const rob::TriangleTemplate<float>& triangle) const;

private:
    static constexpr float largest = std::numeric_limits<float>::max();
    static constexpr float growth = 1.0f;

    // Written so that each component is one machine instruction, and NaN in the newcomer loses.
    static rob::PosTemplate<float> lower(const rob::PosTemplate<float>& a, const rob::PosTemplate<float>& b)
    {
        return {b.x < a.x ? b.x : a.x, b.y < a.y ? b.y : a.y, b.z < a.z ? b.z : a.z};
    }
    static rob::PosTemplate<float> upper(const rob::PosTemplate<float>& a, const rob::PosTemplate<float>& b)
    {
        return {b.x > a.x ? b.x : a.x, b.y > a.y ? b.y : a.y, b.z > a.z ? b.z : a.z};
    }
};

} // namespace vrk::visual

namespace vrk::selection {
using visual::Box;
}
