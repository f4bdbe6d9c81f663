#include "platform/cam/Remesh.h"
#include "platform/cam/Simplify.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>

namespace {

using vrk::cam::TriangleSurface;

void require(bool condition)
{
    if (!condition)
        std::abort(); // what a fuzzer takes for a finding
}

void requireSound(const TriangleSurface& surface)
{
    for (const auto& place : surface.vertices)
        require(place.isFinite());
    for (const auto& [a, b, c] : surface.triangles)
        require(std::max({a, b, c}) < surface.vertices.size() && a != b && b != c && c != a);
}

} // namespace

/// Two bytes tell a length, then each nine tell a triangle on a coarse grid, so that edges and corners meet in every way; a
/// byte of 255 is a coordinate that is not a number.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 11)
        return 0;
    const double length = 0.5 + data[0] / 32.0, tolerance = data[1] / 64.0;
    TriangleSurface soup;
    for (std::size_t at = 2; at + 9 <= std::min<std::size_t>(size, 2 + 9 * 200); at += 9) {
        const auto first = static_cast<std::uint32_t>(soup.vertices.size());
        for (std::size_t k = at; k < at + 9; k += 3) {
            const auto part = [&](std::size_t i) { return data[i] == 255 ? std::nan("") : double(data[i] % 5); };
            soup.vertices.emplace_back(part(k), part(k + 1), part(k + 2));
        }
        soup.triangles.push_back({first, first + 1, first + 2});
    }
    const TriangleSurface welded = vrk::cam::weld(soup);
    requireSound(welded);

    vrk::cam::SimplifyOptions coarser;
    coarser.tolerance = tolerance;
    requireSound(vrk::cam::simplify(welded, coarser).value());
    vrk::cam::SimplifyOptions fewer;
    fewer.triangles = data[1];
    requireSound(vrk::cam::simplify(welded, fewer).value());
    vrk::cam::RemeshOptions even;
    even.edgeLength = length;
    even.iterations = 2;
    requireSound(vrk::cam::remesh(welded, even).value());
    return 0;
}
