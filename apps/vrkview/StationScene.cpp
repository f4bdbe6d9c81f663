#include "StationScene.h"

#include "Station.h"

#include "platform/layout/Body.h"
#include "platform/layout/Layout.h"
#include "platform/layout/Part.h"
#include "platform/layout/PointCloud.h"
#include "platform/sdf/SdfManager.h"
#include "scene/Scene.h"
#include "visual/CurveVisual.h"
#include "visual/FrameVisual.h"
#include "visual/MeshVisual.h"
#include "visual/PointVisual.h"
#include "visual/SolidVisual.h"

#include <BRep_Tool.hxx>
#include <Standard_Failure.hxx>
#include <TopoDS.hxx>
#include <TopoDS_Vertex.hxx>

#include <fmt/format.h>

#include <mutex>
#include <stdexcept>

namespace vrkview {
namespace {

using vrk::layout::Body;
using vrk::layout::Part;
using vrk::visual::CurveVisual;
using vrk::visual::FrameVisual;
using vrk::visual::MeshVisual;
using vrk::visual::PointVisual;
using vrk::visual::Scene;
using vrk::visual::SolidVisual;
using vrk::visual::Visual;

void buildBody(Visual* parent, Body& body)
{
    if (body.getFileType() == "stl") {
        MeshVisual::Build(parent, &body);
        return;
    }
    body.ensureShapeLoaded();
    const TopoDS_Shape shape = body.getShape(); // a solid's visual hands it back to the body
    switch (shape.ShapeType()) {
    case TopAbs_WIRE:
    case TopAbs_EDGE:
        CurveVisual::Build(parent, &body, shape);
        break;
    case TopAbs_VERTEX: {
        const gp_Pnt point = BRep_Tool::Pnt(TopoDS::Vertex(shape));
        PointVisual::Build(parent, &body, vrk::rob::Posf(vrk::rob::Posd(point.X(), point.Y(), point.Z())));
        break;
    }
    default:
        SolidVisual::Build(parent, &body, shape);
        break;
    }
}

/// A body whose geometry cannot be drawn ends the start; the text says which one it is.
void buildPart(Part& part)
{
    auto* visual = new Visual(&part, Scene::GetWorldVisual());
    visual->setType(vrk::VisualType::Part);
    for (const std::shared_ptr<Body>& body : part.getBodies()) {
        try {
            buildBody(visual, *body);
        } catch (const Standard_Failure& failure) {
            throw std::runtime_error(fmt::format("{}: {}", body->getName(), failure.GetMessageString()));
        } catch (const std::exception& failure) {
            throw std::runtime_error(fmt::format("{}: {}", body->getName(), failure.what()));
        }
    }
}

/// The layout has no list of frames; the object table keeps them.
void addToModel(const std::shared_ptr<sdf::SdfNode>& frame)
{
    sdf::SdfManager& model = sdf::SdfManager::inst();
    const std::unique_lock lock(model.mutex());
    model.add(frame);
}

} // namespace

void showStation(const Station& station)
{
    Scene& scene = *Scene::Get();
    for (const std::shared_ptr<Part>& part : station.parts) {
        vrk::layout::Layout::inst().addPart(part);
        scene.addRenderTask([part] { buildPart(*part); }, 0);
    }
    for (const std::shared_ptr<vrk::layout::PointCloud>& cloud : station.clouds) {
        vrk::layout::Layout::inst().addPointCloud(cloud);
        scene.addPointCloud(cloud.get());
    }
    for (const std::shared_ptr<sdf::SdfNode>& frame : station.frames) {
        addToModel(frame);
        scene.addRenderTask([frame] { FrameVisual::Build(Scene::GetWorldVisual(), frame.get()); }, 0);
    }
    for (const unsigned curve : station.arrowedCurves)
        for (const bool forward : {false, true})
            scene.addCurveArrow(curve, forward);
}

} // namespace vrkview
