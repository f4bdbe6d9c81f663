#include "station/PartVisual.h"

#include "platform/common/Hash.h"
#include "platform/common/Logger.h"
#include "platform/layout/Body.h"
#include "platform/layout/Part.h"
#include "platform/sdf/SdfManager.h"
#include "scene/core/SceneCore.h"
#include "visual/CurveVisual.h"
#include "visual/MeshVisual.h"
#include "visual/PointVisual.h"
#include "visual/SolidVisual.h"

#include <BRep_Tool.hxx>
#include <Standard_Failure.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Vertex.hxx>
#include <gp_Pnt.hxx>

#include <fmt/format.h>

#include <shared_mutex>
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

void buildByFileType(Visual* parent, layout::Body& body)
{
    const std::string fileType = body.getFileType();
    if (body.isMesh())
        MeshVisual::Build(parent, &body);
    else if (fileType == "brep")
        buildShape(parent, body);
    else
        throw std::runtime_error("File format is not brep or stl");
}

void tellFailure(const layout::Body& body, const char* cause)
{
    AppLogger::inst()->error(fmt::format("body '{}' ({}): {}", body.getName(), body.getId(), cause));
}

} // namespace

PartVisual::PartVisual(sdf::SdfNode* node, Visual* parent) : CompoundVisual(node, parent, VisualType::Part)
{
    createOwnFrame("Local Frame");
}

void PartVisual::Build(Visual* parent, sdf::SdfNode* node)
{
    const auto& part = dynamic_cast<layout::Part&>(*node);
    Visual* visual = BuildBare(parent, node);
    for (const std::shared_ptr<layout::Body>& body : part.getBodies())
        BuildBody(visual, *body);
}

PartVisual* PartVisual::BuildBare(Visual* parent, sdf::SdfNode* node)
{
    auto* visual = new PartVisual(node, parent);
    SceneCore::Get()->visuals.enter(visual);
    return visual;
}

void PartVisual::BuildBody(Visual* parent, layout::Body& body)
{
    try {
        buildByFileType(parent, body);
    } catch (const Standard_Failure& failure) {
        tellFailure(body, failure.GetMessageString());
        throw;
    } catch (const std::exception& failure) {
        tellFailure(body, failure.what());
        throw;
    }
    const VisualRegistry& visuals = SceneCore::Get()->visuals;
    if (!visuals.has(body.getId()))
        return; // there was nothing to show
    const std::shared_lock lock(sdf::SdfManager::inst().mutex());
    if (auto* visual = dynamic_cast<BodyVisual*>(visuals.get(body.getId())))
        visual->setSource(SourceOf(body));
}

BodySource PartVisual::SourceOf(const layout::Body& body)
{
    const sdf::Element& element = *body.getElement();
    common::Hash geometry, colors;
    geometry.addNumber(&body); // visuals keep the body that they were made from
    geometry.add(sdf::textAt(element, "geometry/uri"));
    geometry.add(body.getFileType());
    geometry.add(body.getMaterialName());
    const std::shared_ptr<sdf::Element> part = element.getParent();
    geometry.addNumber(part && sdf::boolAt(*part, "detectable"));
    colors.add(sdf::textAt(element, "visual/color"));
    if (const std::shared_ptr<sdf::Element> faces = element.get("visual/face_colors"))
        for (const std::shared_ptr<sdf::Element>& face : faces->getChildren()) {
            colors.add(face->getName());
            colors.add(face->asString());
        }
    return {geometry.value(), colors.value()};
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
