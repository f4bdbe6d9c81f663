#pragma once

#include "platform/common/Export.h"
#include "selection/geometry/BVH.h"
#include "selection/geometry/BVHPrimitive.h"

#include <functional>
#include <memory>
#include <vector>

namespace vrk::selection {

class SelectionVolume;

/// Primitives and a hierarchy over them.
///
/// Owner: owns its primitives and deletes them.
/// Thread: the queries may run on several threads at once.
///
/// The hierarchy does not follow the vector: after a change, ask nothing until a BVHBuilder has made a new one. Each
/// query appends every primitive of the hierarchy whose box meets the question, near ones first as far as the split
/// axes tell; nothing ends a query early. An empty hierarchy answers nothing, whatever the question.
class VRK_EXPORT PrimitiveContainer {
public:
    PrimitiveContainer();
    virtual ~PrimitiveContainer();
    PrimitiveContainer(const PrimitiveContainer&) = delete;
    PrimitiveContainer& operator=(const PrimitiveContainer&) = delete;

    /// @throws std::overflow_error "0-length vector cannot be normalized." if the line has no length.
    void queryLine(const rob::LineTemplate<float>& line, std::vector<BVHPrimitive*>& out) const;
    void queryTriangle(const rob::TriangleTemplate<float>& triangle, std::vector<BVHPrimitive*>& out) const;
    void queryRay(const visual::Ray& ray, std::vector<BVHPrimitive*>& out) const;
    void queryBox(const visual::Box& box, std::vector<BVHPrimitive*>& out) const;
    /// Every enabled primitive of the leaves that are not outside, far children first: the boxes of the primitives
    /// themselves are not asked.
    void queryVolume(const SelectionVolume& volume, std::vector<BVHPrimitive*>& out) const;

    /// The nearest hit of any primitive, the first that the query reaches among equally near ones. A default result if
    /// there is none.
    /// @throws std::overflow_error "0-length vector cannot be normalized." if the line has no length.
    void closestHitLine(Result& result, const rob::LineTemplate<float>& line) const;
    void closestHitRay(Result& result, const visual::Ray& ray) const;
    /// The first hit in the order of the query, or a default result.
    void firstHitTriangle(Result& result, const rob::TriangleTemplate<float>& triangle) const;
    /// Hands a copy of `callback` to each primitive whose box meets `box`.
    void forEachInBox(const visual::Box& box, std::function<void(unsigned)> callback) const;

    /// The top node of the hierarchy, for one's own walk; null without primitives.
    const BVHNode* getRoot() const;

    std::vector<BVHPrimitive*> primitives; ///< owned
    BVH bvh; ///< where its building was put off, empty until it is first asked for: see getRoot()

protected:
    /// Has the hierarchy built by the first question that needs it, whichever thread asks it. The primitives, their boxes
    /// and whether they are enabled must stay as they are from here on.
    void buildWhenAsked();

private:
    struct Later;

    std::unique_ptr<Later> later; // null where nothing is put off
};

} // namespace vrk::selection

namespace vrk::visual {
using selection::PrimitiveContainer;
}
