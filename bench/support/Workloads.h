#pragma once

#include "scene/math/Vec.h"

#include <TopoDS_Compound.hxx>
#include <TopoDS_Shape.hxx>
#include <gp_Trsf.hxx>

#include <filesystem>
#include <vector>

/// The generated work that the benchmarks measure. Lengths are millimetres. Each generator gives the same on every
/// machine; a benchmark checks the counts before it times.
namespace vrk::bench {

/// A closed, wavy torus.
struct TorusMesh {
    std::vector<rob::PosTemplate<float>> vertices; ///< vertex (i, j) at i * around + j
    std::vector<unsigned> indices;                 ///< three for each triangle
};

/// `along` * `around` vertices and twice as many triangles; 5,000,000 triangles with the numbers of the big mesh.
TorusMesh makeTorusMesh(unsigned along = 2500, unsigned around = 1000);

/// Writes the mesh as a binary STL file with computed facet normals.
void writeStl(const TorusMesh& mesh, const std::filesystem::path& file);

/// A machine part in local coordinates, and its place in the station.
struct PosedSolid {
    TopoDS_Shape shape;
    gp_Trsf pose;
};

/// Solid `number` of the thousand that are picked among: a shape of one of ten kinds, without triangles.
PosedSolid makeSolid(unsigned number);

/// The first of them in their places, meshed finely. Ten of them have 200 faces; a hundred have 2000, 548,152 triangles and
/// 375,010 nodes.
TopoDS_Compound makeFineCompound(unsigned solidCount = 100);

} // namespace vrk::bench
