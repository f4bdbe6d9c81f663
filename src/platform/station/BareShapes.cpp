#include "platform/station/BareShapes.h"

#include "platform/geometry/ColorText.h"
#include "platform/layout/Body.h"
#include "platform/layout/Part.h"
#include "platform/sdf/SdfManager.h"
#include "platform/station/Import.h"

#include <TopoDS_Shape.hxx>

#include <mutex>
#include <stdexcept>

namespace vrk::station {

std::shared_ptr<layout::Part> PartOf(const std::string& name, const TopoDS_Shape& shape, const std::string& color)
{
    auto part = std::make_shared<layout::Part>(sdf::SdfManager::inst().generateId(), name);
    AddShape(*part, name, shape, color);
    return part;
}

std::shared_ptr<layout::Body> AddShape(layout::Part& part, const std::string& name, const TopoDS_Shape& shape,
                                       const std::string& color)
{
    if (shape.IsNull())
        throw std::invalid_argument(name + ": a body needs a shape");
    geometry::ParseColorText(color); // ahead of the body, which would else be left without one
    meshShape(shape);
    sdf::SdfManager& model = sdf::SdfManager::inst();
    const unsigned id = model.generateId(); // ahead of the lock, which it takes itself
    const std::unique_lock lock(model.mutex());
    const std::shared_ptr<layout::Body> body = part.addBody(id, name);
    body->setShape(shape);
    body->setColor(color);
    if (model.find(part.getId()) == &part) // where a part is in the table, its pieces are
        model.add(body);
    return body;
}

} // namespace vrk::station
