#include "platform/cam/Remesh.h"

#include "platform/cam/Remesher.h"

#include <cmath>
#include <stdexcept>

namespace vrk::cam {

std::optional<TriangleSurface> remesh(const TriangleSurface& surface, const RemeshOptions& options)
{
    if (!(options.edgeLength > 0) || !std::isfinite(options.edgeLength))
        throw std::invalid_argument("an edge length is above 0 and finite");
    return Remesher(surface, options).run();
}

} // namespace vrk::cam
