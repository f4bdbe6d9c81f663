// Where a body gets its shape from: the model below knows no files.

#include "platform/layout/Body.h"
#include "platform/station/Import.h"

namespace vrk::layout {

void Body::ensureShapeLoaded()
{
    if (shape.IsNull())
        setShape(station::ImportShape(getGeometryUri()));
    else if (const std::string uri = getGeometryUri(); uri.empty() || uri.starts_with(madeInMemory) || hasOwnUri())
        station::meshShape(shape);
}

} // namespace vrk::layout
