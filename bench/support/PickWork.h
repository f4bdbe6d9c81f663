#pragma once

#include "bench/support/Workloads.h"

#include "scene/math/Vec.h"
#include "selection/geometry/Ray.h"

#include <cstdint>
#include <vector>

/// What is picked at, and by which rays.
namespace vrk::bench {

/// FNV-1a over 32-bit numbers.
struct Checksum {
    void add(std::uint32_t number) { value = (value ^ number) * 1099511628211u; }
    std::uint64_t value = 1469598103934665603u;
};

/// Solids in their places, meshed coarsely, and their triangles as they lie in the shapes.
struct PickStation {
    struct Triangles {
        std::vector<rob::Posf> vertices; ///< each face has its own
        std::vector<unsigned> indices;
        std::vector<unsigned> faces; ///< of each triangle: the number in the whole station, from 0
    };

    std::vector<PosedSolid> solids;
    std::vector<Triangles> triangles; ///< of each solid
    std::vector<unsigned> firstFace;  ///< of each solid: the number of its first face
};

constexpr unsigned pickStationSolids = 1000;

/// The first `solidCount` of the thousand solids.
/// @throws std::logic_error unless all of them have 20,000 faces, 1,374,428 triangles and 1,167,028 vertices.
PickStation makePickStation(unsigned solidCount = pickStationSolids);

/// A camera of 1920 x 1080 pixels that looks at the station, and the middle of one of its pixels.
struct PickPixel {
    rob::Vec3d eye, forward, right, up; ///< of unit length
    double x, y;
};

constexpr double pickFovY = 0.78539816339744831; ///< radians

/// 10,000 pixels of ten cameras around the station.
std::vector<PickPixel> makePickPixels();
/// The rays from the eyes through them.
std::vector<visual::Ray> makePickRays();
/// 10,000 rays at the big mesh, from all around.
std::vector<visual::Ray> makeBigMeshRays();

} // namespace vrk::bench
