#pragma once

#include "selection/SensitiveTriangleSet.h"

namespace vrk::visual {
class Mesh;
class Visual;
} // namespace vrk::visual

namespace vrk::selection {

/// A whole mesh.
///
/// The mesh and the visual are not owned and must outlive it; the mesh must not change meanwhile.
/// Thread: as any primitive. The boxes of its triangles are computed on all cores.
class VRK_EXPORT SensitiveMesh : public BVHPrimitive, public SensitiveTriangleSet {
public:
    /// Unlike a face's, its triangles are taken as they are, with coordinates that are not finite.
    SensitiveMesh(visual::Mesh* mesh, visual::Visual* visual, const rob::PoseTemplate<float>& pose);

    void intersectLine(Result& result, const rob::LineTemplate<float>& line) const override;
    void intersectTriangle(Result& result, const rob::TriangleTemplate<float>& triangle) const override;
    /// Fills the visual as well.
    void intersectRay(Result& result, const visual::Ray& ray) const override;
    /// Calls back with the number, from 0, of each triangle whose box meets `box`: on several threads at once and in no
    /// order, where there are several triangles and cores.
    void forEachInBox(const visual::Box& box, std::function<void(unsigned)> callback) const override;
    void getTriangle(rob::TriangleTemplate<float>& triangle, const SensitiveIndexedTriangle& primitive) const override;
    void getTriangles(rob::TriangleTemplate<float>* triangles, const unsigned* indices, unsigned count) const override;

private:
    rob::PosTemplate<float> corner(std::size_t at) const;

    visual::Mesh* mesh;
    visual::Visual* visual;
};

} // namespace vrk::selection
