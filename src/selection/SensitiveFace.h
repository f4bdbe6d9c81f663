#pragma once

#include "selection/SensitiveTriangleSet.h"

#include <Poly_Triangulation.hxx>
#include <TopoDS_Face.hxx>

namespace vrk::selection {

/// A face of a CAD shape, by its triangulation.
///
/// Units: those of the shape, whose coordinates the queries are asked in. The location of the face is the set's pose.
/// Thread: as any primitive.
class VRK_EXPORT SensitiveFace : public BVHPrimitive, public SensitiveTriangleSet {
public:
    /// A face without triangulation has no triangles and an empty box. A triangle with a coordinate that is not finite as
    /// a float is left out.
    /// @param face       a `TopoDS_Face`.
    /// @param faceIndex  its number in the map of faces, from 1.
    SensitiveFace(const TopoDS_Shape& face, unsigned faceIndex);

    // Each fills the face, of a miss too.
    void intersectLine(Result& result, const rob::LineTemplate<float>& line) const override;
    void intersectTriangle(Result& result, const rob::TriangleTemplate<float>& triangle) const override;
    void intersectRay(Result& result, const visual::Ray& ray) const override;
    /// The nearest hit below `limit` and its position in the shape's coordinates, without the cost of a whole result.
    bool nearestInShape(RayHit& hit, const visual::Ray& ray, float limit) const;
    void getTriangle(rob::TriangleTemplate<float>& triangle, const SensitiveIndexedTriangle& primitive) const override;
    void getTriangles(rob::TriangleTemplate<float>* triangles, const unsigned* indices, unsigned count) const override;
    rob::TriangleTemplate<double> getStoredTriangle(unsigned index) const override;

    unsigned getFaceIndex() const { return faceIndex; }
    const TopoDS_Face& getFace() const { return face; }
    bool isMadeOf(const Handle(Poly_Triangulation) & triangles) const { return triangulation == triangles; }

private:
    void buildTriangles();

    unsigned faceIndex;
    TopoDS_Face face;
    Handle(Poly_Triangulation) triangulation;
};

} // namespace vrk::selection
