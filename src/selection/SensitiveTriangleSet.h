#pragma once

#include "selection/geometry/BVHPrimitive.h"
#include "selection/geometry/NearestHitTree.h"
#include "selection/geometry/PrimitiveContainer.h"

#include <memory>

namespace vrk::selection {

/// One triangle in a hierarchy. It answers nothing by itself: its set tests it.
class VRK_EXPORT SensitiveTriangle : public BVHPrimitive {
public:
    unsigned reserved = 0; ///< always 0
};

/// A triangle by its number in what it was taken from, which is asked for the corners: there are millions of these.
class VRK_EXPORT SensitiveIndexedTriangle : public SensitiveTriangle {
public:
    unsigned index = 0; ///< from 1 in a triangulation of a shape, from 0 in a mesh
};

/// Triangles that are tested together, and the hierarchies over them: one of their own for the nearest hit of a ray, and
/// that of the container for all other questions and for the order of equally near hits. The container's is built
/// together with the other for a small set. For a large one it is built by the first question that needs it, as it takes
/// about as much time and several times as much memory.
///
/// Units: those of the triangles. What the queries are given and tell is in set coordinates, before `pose`, but for the
/// positions, which have gone through it.
/// Thread: built by one; the queries may run on several threads at once.
class VRK_EXPORT SensitiveTriangleSet : public PrimitiveContainer {
public:
    /// Where a ray meets a triangle.
    struct RayHit {
        float distance;
        rob::PosTemplate<float> point; // in set coordinates
    };

    ~SensitiveTriangleSet() override;
    /// The corners from the last to the first.
    virtual void getTriangle(rob::TriangleTemplate<float>& triangle,
                             const SensitiveIndexedTriangle& primitive) const = 0;
    /// What `getTriangle` gives, of the triangles with these indices: for a set that is quicker at several of them.
    virtual void getTriangles(rob::TriangleTemplate<float>* triangles, const unsigned* indices, unsigned count) const;
    /// The same of one triangle as it is stored, which may be in double precision.
    virtual rob::TriangleTemplate<double> getStoredTriangle(unsigned index) const;

    /// The hit nearest to the start of the line, by `Math::Intersect`.
    void nearestOfLine(Result& result, const rob::LineTemplate<float>& line) const;
    /// Whether some triangle has a point in common with this one; a hit says nothing else.
    void anyOfTriangle(Result& result, const rob::TriangleTemplate<float>& triangle) const;
    /// The hit nearest to the origin of the ray.
    void nearestOfRay(Result& result, const visual::Ray& ray) const;
    /// The same for callers that build their answer themselves. `hit` is written only when there is one nearer than
    /// `limit`, and then the result is true.
    bool nearestOfRay(RayHit& hit, const visual::Ray& ray, float limit) const;

    /// The triangles of the primitives `begin` to `begin` + `count`, as `getTriangle` gives them. @param count  up to 64.
    void readTriangles(std::size_t begin, unsigned count, rob::TriangleTemplate<float>* out) const;

    /// Whether there is no triangle in the hierarchies.
    bool isEmpty() const { return !bounds.isValid(); }
    /// The box of the boxes of all triangles in the hierarchies; invalid without any.
    const visual::Box& getBounds() const { return bounds; }
    /// Over the indices of the triangles, for one's own walk along a ray.
    const NearestHitTree& getRayTree() const { return forRays; }

    bool hasPose = false;
    rob::PoseTemplate<float> pose; ///< from set coordinates to those of the object
    rob::PoseTemplate<float> inversePose;

protected:
    /// Makes `count` triangles side by side and enters them. Index and box are the caller's to fill, the box with that of
    /// the corners, a unit larger on each side.
    SensitiveIndexedTriangle* makeTriangles(std::size_t count);
    /// Drops the triangles from `count` on, which were made but are not wanted.
    void keepFirst(std::size_t count);
    void buildHierarchy();
    void takePose(const rob::PoseTemplate<float>& newPose);

private:
    bool nearestInOrder(RayHit& hit, const visual::Ray& ray, float limit) const;
    visual::Box takeReferences(std::size_t begin, std::size_t end, NearestHitTree::Reference* out) const;

    NearestHitTree forRays; // over the indices of the triangles
    visual::Box bounds;
    std::unique_ptr<SensitiveIndexedTriangle[]> triangles; // owns what the container would delete one by one
};

} // namespace vrk::selection
