#pragma once

#include "platform/common/Export.h"
#include "selection/geometry/Box.h"
#include "selection/geometry/Ray.h"
#include "selection/geometry/Result.h"

#include <functional>

namespace vrk::selection {

/// What a leaf of a hierarchy holds: a box, and answers to the questions that reach it.
///
/// Owner: a PrimitiveContainer.
/// Thread: the questions only read, and may be asked on several threads at once.
/// Units: those of the hierarchy that holds it.
///
/// A question assigns all of its `result`, with the hit flag clear where nothing is met; by default nothing ever is.
class VRK_EXPORT BVHPrimitive {
public:
    BVHPrimitive() = default;
    BVHPrimitive(const BVHPrimitive&) = delete;
    BVHPrimitive& operator=(const BVHPrimitive&) = delete;

    virtual void intersectLine(Result& result, const rob::LineTemplate<float>& line) const;
    virtual void intersectTriangle(Result& result, const rob::TriangleTemplate<float>& triangle) const;
    virtual void intersectRay(Result& result, const visual::Ray& ray) const;
    /// Calls back with the number of each part whose box meets `box`, in any order and possibly on several threads.
    virtual void forEachInBox(const visual::Box& box, std::function<void(unsigned)> callback) const;
    virtual ~BVHPrimitive();

    // The flag, and what a derived class adds, may use the bytes that pad the box: there are millions of triangles.
    [[no_unique_address]] visual::Box box;
    bool enabled = true; ///< whether the next build takes it in
};

} // namespace vrk::selection

namespace vrk::visual {
using selection::BVHPrimitive;
}
