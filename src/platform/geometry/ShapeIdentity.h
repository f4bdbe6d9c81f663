#pragma once

#include <TopLoc_Location.hxx>
#include <TopoDS_Shape.hxx>

#include <cstddef>
#include <limits>

namespace vrk::geometry {

/// What makes two shapes one: `TopoDS_Shape::IsEqual`. It does not keep the shape alive, whose address another one may get
/// then: what is known by it keeps the shape.
struct ShapeIdentity {
    explicit ShapeIdentity(const TopoDS_Shape& shape)
        : tShape(shape.TShape().get()), location(shape.Location()), orientation(shape.Orientation())
    {
    }
    bool operator==(const ShapeIdentity& o) const
    {
        return tShape == o.tShape && orientation == o.orientation && location.IsEqual(o.location);
    }

    const void* tShape;
    TopLoc_Location location;
    TopAbs_Orientation orientation;
};

struct ShapeIdentityHash {
    std::size_t operator()(const ShapeIdentity& shape) const
    {
        const auto place = static_cast<std::size_t>(shape.location.HashCode(std::numeric_limits<int>::max()));
        return std::hash<const void*>()(shape.tShape) ^ (place << 4) ^ static_cast<std::size_t>(shape.orientation);
    }
};

} // namespace vrk::geometry
