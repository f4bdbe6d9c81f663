#include "selection/ModelHit.h"

#include "platform/layout/Body.h"
#include "platform/sdf/SdfManager.h"
#include "selection/geometry/Result.h"
#include "visual/SolidVisual.h"

#include <TopoDS.hxx>

namespace vrk::selection {

ModelHit ModelOf(const Result& result)
{
    ModelHit found;
    if (!result.hit)
        return found;
    const VisualType type = result.visual->getType();
    const bool isPartOfBody = type == VisualType::Paint || type == VisualType::WireFrame;
    found.object = sdf::Share((isPartOfBody ? result.visual->getParent() : result.visual)->getId());
    if (!found.object)
        return found;
    found.owner = sdf::Share(found.object->getParentId());
    found.body = std::dynamic_pointer_cast<const layout::Body>(found.object);
    const auto* solid = dynamic_cast<const visual::SolidVisual*>(result.visual);
    if (found.body && solid && !result.face.IsNull())
        found.face = solid->getFaceIndex(TopoDS::Face(result.face));
    return found;
}

} // namespace vrk::selection
