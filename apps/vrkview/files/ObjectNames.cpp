#include "files/ObjectNames.h"

#include "platform/sdf/SdfManager.h"
#include "platform/sdf/SdfObject.h"
#include "task/bands/VectorBandVisual.h"

namespace vrkview {

using vrk::VisualType;

const char* typeName(VisualType type)
{
    switch (type) {
    case VisualType::Manipulator:
        return "manipulator";
    case VisualType::Tool:
        return "tool";
    case VisualType::Device:
        return "device";
    case VisualType::Link:
        return "link";
    case VisualType::Assembly:
        return "assembly";
    case VisualType::Wrist:
        return "wrist";
    case VisualType::WObj:
        return "work object";
    case VisualType::Tcp:
        return "tool data";
    case VisualType::Part:
        return "part";
    case VisualType::Solid:
        return "solid";
    case VisualType::Mesh:
        return "mesh";
    case VisualType::Curve:
        return "curve";
    case VisualType::Point:
        return "point";
    case VisualType::PointCloud:
        return "cloud";
    case VisualType::Frame:
        return "frame";
    default:
        return nullptr;
    }
}

const char* kindOf(const vrk::visual::Visual& visual)
{
    if (dynamic_cast<const vrk::visual::VectorBandVisual*>(&visual))
        return "band"; // which has no type of its own
    return typeName(visual.getType());
}

std::string nameOf(const vrk::visual::Visual& visual)
{
    const sdf::SdfObject* object = sdf::SdfManager::inst().find(visual.getId());
    return object ? object->getName() : visual.getName();
}

} // namespace vrkview
