// What the pieces of code in the guide name without telling where it comes from: an application has it.
#pragma once

#include <vrk/handles/AxisDrag.h>
#include <vrk/handles/DragHandle.h>
#include <vrk/mesh/MeshManager.h>
#include <vrk/mesh/paint/PaintMesh.h>
#include <vrk/platform/kinematics/ArmChain.h>
#include <vrk/platform/kinematics/Reach.h>
#include <vrk/platform/layout/Assembly.h>
#include <vrk/platform/layout/Body.h>
#include <vrk/platform/layout/Layout.h>
#include <vrk/platform/layout/Mechanism.h>
#include <vrk/platform/layout/Part.h>
#include <vrk/platform/process/Coat.h>
#include <vrk/platform/process/ThicknessMap.h>
#include <vrk/platform/sdf/SdfManager.h>
#include <vrk/platform/station/BareShapes.h>
#include <vrk/platform/station/CadReader.h>
#include <vrk/platform/station/Import.h>
#include <vrk/preview/annotation/DimensionsVisual.h>
#include <vrk/preview/marks/PreviewVisualsHelper.h>
#include <vrk/scene/Init.h>
#include <vrk/scene/Scene.h>
#include <vrk/scene/StartUp.h>
#include <vrk/scene/ViewLook.h>
#include <vrk/selection/ModelHit.h>
#include <vrk/selection/VisualSelection.h>
#include <vrk/selection/pick/PickQuery.h>
#include <vrk/view/Camera.h>
#include <vrk/view/Navigator.h>
#include <vrk/view/OffscreenTarget.h>
#include <vrk/view/OrbitViewController.h>
#include <vrk/view/RenderFrame.h>
#include <vrk/view/WindowTarget.h>
#include <vrk/visual/PaintVisual.h>
#include <vrk/visual/SolidVisual.h>

#include <BRepPrimAPI_MakeBox.hxx>
#include <TopoDS.hxx>

#include <iostream>
#include <memory>
#include <mutex>
#include <optional>
#include <shared_mutex>
#include <vector>

namespace guide {

struct Widget {
    unsigned long winId() const;
};
extern Widget* widget;
struct Timer {
    void startAt(vrk::visual::CoarseWhileMoving::Clock::time_point time);
};
extern Timer timer;
extern unsigned width, height, newWidth, newHeight, margin;
extern float x, y, x1, y1, x2, y2, dx, dy, notches, wheelDelta;
extern double devicePixelRatio;
extern bool isShiftDown;
extern unsigned id, bodyId, spray;
extern std::vector<std::uint8_t> legend; // red, green, blue and alpha
extern std::size_t vertex;
extern double from, to;
extern vrk::rob::Posef pose;
extern vrk::rob::Posed modelPose;
extern vrk::rob::Posf position, middle;
extern vrk::rob::Posf a, b, c;
extern vrk::visual::Scene& scene;
extern vrk::visual::Camera& camera;
extern vrk::visual::Visual* child;
extern vrk::visual::PaintVisual* paint;
extern vrk::visual::PaintMesh& skin;
extern vrk::selection::VisualSelection& picking;
extern vrk::selection::Result hit;
extern std::shared_ptr<vrk::layout::Part> part;
extern std::shared_ptr<vrk::layout::Manipulator> arm;
extern std::stop_token stop;
extern std::function<void(double)> progress;
void showToUser(const std::string& text);
void tell(const std::string& text);
void log(std::string_view kind, unsigned visual, unsigned sub, const std::string& reason);
bool isLocked(unsigned id);
template <typename... Anything>
void use(const Anything&... what);
void choose(const std::shared_ptr<sdf::SdfObject>& object);
void moveThing(const vrk::rob::Posed& pose);

} // namespace guide
