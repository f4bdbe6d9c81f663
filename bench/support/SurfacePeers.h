#pragma once

#include "platform/cam/TriangleSurface.h"

#include <cstddef>
#include <functional>

/// Other programs' ways of making a surface coarser or covering it anew.
namespace vrk::bench {

/// Makes the peer's own mesh at once; what is returned does the work, and what that returns gives the result back.
using SurfaceWork = std::function<std::function<cam::TriangleSurface()>()>;

SurfaceWork cgalRemesh(const cam::TriangleSurface& surface, double edgeLength, unsigned iterations);
#ifdef VRK_BENCH_HAS_OPENMESH
SurfaceWork openMeshDecimate(const cam::TriangleSurface& surface, std::size_t triangles);
#endif
#ifdef VRK_BENCH_HAS_MESHOPTIMIZER
SurfaceWork meshoptimizerDecimate(const cam::TriangleSurface& surface, std::size_t triangles);
#endif
#ifdef VRK_BENCH_HAS_VTK
SurfaceWork vtkDecimate(const cam::TriangleSurface& surface, std::size_t triangles);
/// How many edges there are between triangles that are bent by more than so many degrees, with those at borders and of more than
/// two triangles, of a surface whose vertices are joined first.
std::function<std::size_t()> vtkFeatureEdgesOf(const cam::TriangleSurface& surface, double degrees);
#endif

} // namespace vrk::bench
