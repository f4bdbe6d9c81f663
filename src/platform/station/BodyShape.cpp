// Where a body gets its shape from: the model below knows no files.

#include "platform/layout/Body.h"
#include "platform/station/Import.h"

namespace vrk::layout {

void Body::ensureShapeLoaded()
{
    if (shape.IsNull())
        setShape(station::ImportShape(getGeometryUri()));
}

} // namespace vrk::layout
