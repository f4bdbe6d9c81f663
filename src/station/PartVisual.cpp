#include "station/PartVisual.h"

#include "platform/layout/Body.h"
#include "platform/layout/Part.h"
#include "scene/core/SceneCore.h"
#include "visual/CurveVisual.h"
#include "visual/MeshVisual.h"
#include "visual/PointVisual.h"
#include "visual/SolidVisual.h"

#include <BRep_Tool.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Vertex.hxx>
#include <gp_Pnt.hxx>

#include <stdexcept>

namespace vrk::visual {
namespace {

void buildShape(Visual* parent, layout::Body& body)
{
    body.ensureShapeLoaded();
    const TopoDS_Shape shape = body.getShape();
    if (shape.IsNull())
        return;
    switch (shape.ShapeType()) {
    case TopAbs_COMPOUND:
    case TopAbs_COMPSOLID:
    case TopAbs_SOLID:
    case TopAbs_SHELL:
    case TopAbs_FACE:
        SolidVisual::Build(parent, &body, shape);
        break;
    case TopAbs_WIRE:
    case TopAbs_EDGE:
        CurveVisual::Build(parent, &body, shape);
        break;
    case TopAbs_VERTEX: {
        const gp_Pnt point = BRep_Tool::Pnt(TopoDS::Vertex(shape));
        PointVisual::Build(parent, &body,
                           rob::PosTemplate<float>(static_cast<float>(point.X()), static_cast<float>(point.Y()),
                                                   static_cast<float>(point.Z())));
        break;
    }
    default:
        break;
    }
}

} // namespace

PartVisual::PartVisual(sdf::SdfNode* node, Visual* parent) : CompoundVisual(node, parent, VisualType::Part)
{
    createOwnFrame("Local Frame");
}

void PartVisual::Build(Visual* parent, sdf::SdfNode* node)
{
    const auto& part = dynamic_cast<layout::Part&>(*node);
    auto* visual = new PartVisual(node, parent);
    SceneCore::Get()->visuals.enter(visual);
    for (const std::shared_ptr<layout::Body>& body : part.getBodies())
        BuildBody(visual, *body);
}

void PartVisual::BuildBody(Visual* parent, layout::Body& body)
{
    const std::string fileType = body.getFileType();
    if (fileType == "stl")
        MeshVisual::Build(parent, &body);
    else if (fileType == "brep")
        buildShape(parent, body);
    else
        throw std::runtime_error("File format is not brep or stl");
}

bool PartVisual::canApplyMaterial(const Visual& child)
{
    switch (child.getType()) {
    case VisualType::Solid:
    case VisualType::Curve:
    case VisualType::Mesh:
    case VisualType::Point:
        return !child.isAttached();
    default:
        return false;
    }
}

} // namespace vrk::visual
