#include "platform/cam/Remesh.h"

#include "platform/cam/Remesher.h"

#include <cmath>
#include <stdexcept>

namespace vrk::cam {
namespace {

double areaOf(const TriangleSurface& surface)
{
    double area = 0;
    for (const auto& [a, b, c] : surface.triangles) {
        const rob::Posd& corner = surface.vertices[a];
        area += (surface.vertices[b] - corner).cross(surface.vertices[c] - corner).length() / 2;
    }
    return area;
}

} // namespace

std::optional<TriangleSurface> remesh(const TriangleSurface& surface, const RemeshOptions& options)
{
    if (!(options.edgeLength > 0) || !std::isfinite(options.edgeLength))
        throw std::invalid_argument("an edge length is above 0 and finite");
    // Even triangles are known beforehand; what needles need besides is found out on the way.
    const double areaOfOne = std::sqrt(3.0) / 4 * options.edgeLength * options.edgeLength;
    if (areaOf(surface) > areaOfOne * static_cast<double>(mostRemeshed))
        throw std::length_error(tooManyTriangles);
    return Remesher(surface, options).run();
}

} // namespace vrk::cam
