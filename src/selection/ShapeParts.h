#pragma once

#include "platform/layout/Body.h" // the type of a face map
#include "selection/geometry/PrimitiveContainer.h"

#include <TopoDS_Shape.hxx>

#include <functional>
#include <memory>
#include <mutex>

namespace vrk::selection {

class ShapeBorders;

/// The faces of a shape that have triangles, as `SensitiveFace`s in the shape's own coordinates, with the hierarchy over
/// them: what all bodies of one shape have in common, wherever they stand.
///
/// Thread: made by one; any may ask then, and let go of it.
class VRK_EXPORT ShapeParts : public PrimitiveContainer {
public:
    using FaceFilter = std::function<bool(unsigned)>;

    /// Those that others have of the same shape, as long as the faces still have the triangles that they were made of;
    /// else new ones. Any thread, but for what the map is said to bear.
    static std::shared_ptr<const ShapeParts> Of(const TopoDS_Shape& shape, const layout::FaceMap& faces);

    /// @param shape      whose edges and vertices the borders number.
    /// @param isWanted   of the faces by their number, from 1.
    ShapeParts(const TopoDS_Shape& shape, const layout::FaceMap& faces, const FaceFilter& isWanted);
    ~ShapeParts() override;

    /// The edges and vertices of the faces. They are gathered by the first who asks.
    const ShapeBorders& getBorders() const;

private:
    bool isMadeOf(const layout::FaceMap& faces) const;

    TopoDS_Shape shape;
    mutable std::once_flag bordersAsked;
    mutable std::unique_ptr<const ShapeBorders> borders;
};

} // namespace vrk::selection
