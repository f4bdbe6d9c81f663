#include "canvas/FaceDirections.h"

#include "canvas/ViewState.h"
#include "edit/History.h"
#include "edit/ModelPlaces.h"

#include "handles/UVIndicatorVisual.h"
#include "scene/Scene.h"
#include "scene/math/Trsf.h"
#include "visual/SolidVisual.h"

#include <BRepTools.hxx>
#include <BRep_Tool.hxx>
#include <Geom_Surface.hxx>
#include <Precision.hxx>
#include <TopoDS_Face.hxx>

#include <algorithm>
#include <optional>

namespace vrkview {

using vrk::visual::Scene;
using vrk::visual::SolidVisual;
using vrk::visual::UVIndicatorVisual;

namespace {

constexpr double share = 0.45; // of the face's shorter way through the middle, that an arrow takes

/// How long the arrows on a face are to be; empty where U and V do not span a plane in the middle, as at the tip of a cone.
std::optional<double> arrowLengthOn(const TopoDS_Face& face)
{
    const Handle(Geom_Surface) surface = BRep_Tool::Surface(face);
    if (surface.IsNull())
        return {};
    double u0 = 0, u1 = 0, v0 = 0, v1 = 0;
    BRepTools::UVBounds(face, u0, u1, v0, v1);
    gp_Pnt point;
    gp_Vec du, dv;
    surface->D1((u0 + u1) / 2, (v0 + v1) / 2, point, du, dv);
    constexpr double parallel = 1e-6;
    const double lengths = du.Magnitude() * dv.Magnitude();
    if (!(lengths > 0) || !(du.CrossMagnitude(dv) > parallel * lengths))
        return {};
    const double way = std::min(du.Magnitude() * (u1 - u0), dv.Magnitude() * (v1 - v0));
    return way > 0 && !Precision::IsInfinite(way) ? way * share : std::optional<double>();
}

} // namespace

FaceDirections::FaceDirections(const ViewState& state, QObject* parent) : QObject(parent), state(state)
{
    connect(&state, &ViewState::selectionChanged, this, &FaceDirections::follow);
    connect(&state, &ViewState::stationChanged, this, &FaceDirections::follow);
    connect(&state.getHistory(), &History::changed, this, &FaceDirections::follow);
}

void FaceDirections::setShown(bool wanted)
{
    if (on == wanted)
        return;
    on = wanted;
    follow();
}

void FaceDirections::follow()
{
    const auto& faces = state.getSelectedFaces();
    const bool isWanted = on && !faces.empty();
    if (!isWanted && !isMarked)
        return;
    isMarked = isWanted;
    if (!isWanted) {
        Scene::Get()->hideUVIndicatorVisual();
        return;
    }
    // Behind the posts that move the body and make its visual.
    Scene::Get()->addRenderTask(
        [body = faces.back().first, number = faces.back().second] {
            auto* solid = Scene::HasVisual(body) ? dynamic_cast<SolidVisual*>(Scene::GetVisual(body)) : nullptr;
            if (!solid)
                return;
            TopoDS_Face face = solid->getFace(static_cast<int>(number));
            face.Move(TopLoc_Location(vrk::rob::toTrsf(worldPoseOfThing(body))));
            const std::optional<double> length = arrowLengthOn(face);
            if (!length) {
                Scene::Get()->hideUVIndicatorVisual();
                return;
            }
            Scene::Get()->showUVIndicatorVisual(face);
            Scene::Get()->addRenderTask(
                [length] {
                    if (UVIndicatorVisual* mark = UVIndicatorVisual::Get())
                        mark->setLength(static_cast<float>(*length));
                },
                0);
        },
        0);
}

} // namespace vrkview
