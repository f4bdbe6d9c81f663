#include "platform/cam/Simplify.h"

#include "platform/cam/EdgeCollapse.h"

#include <stdexcept>

namespace vrk::cam {

std::optional<TriangleSurface> simplify(const TriangleSurface& surface, const SimplifyOptions& options)
{
    if (!(options.tolerance >= 0))
        throw std::invalid_argument("a tolerance is 0 or more");
    return EdgeCollapse(surface, options).run();
}

} // namespace vrk::cam
