#include "canvas/FaceDirections.h"

#include "canvas/ViewState.h"
#include "edit/History.h"
#include "edit/ModelPlaces.h"

#include "scene/Scene.h"
#include "scene/math/Trsf.h"
#include "visual/SolidVisual.h"

#include <BRepTools.hxx>
#include <BRep_Tool.hxx>
#include <Geom_Surface.hxx>
#include <TopoDS_Face.hxx>

namespace vrkview {

using vrk::visual::Scene;
using vrk::visual::SolidVisual;

namespace {

/// Whether U and V span a plane in the middle, which they do not at the tip of a cone.
bool hasDirections(const TopoDS_Face& face)
{
    const Handle(Geom_Surface) surface = BRep_Tool::Surface(face);
    if (surface.IsNull())
        return false;
    double u0 = 0, u1 = 0, v0 = 0, v1 = 0;
    BRepTools::UVBounds(face, u0, u1, v0, v1);
    gp_Pnt point;
    gp_Vec du, dv;
    surface->D1((u0 + u1) / 2, (v0 + v1) / 2, point, du, dv);
    constexpr double parallel = 1e-6;
    const double lengths = du.Magnitude() * dv.Magnitude();
    return lengths > 0 && du.CrossMagnitude(dv) > parallel * lengths;
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
            if (hasDirections(face))
                Scene::Get()->showUVIndicatorVisual(face);
            else
                Scene::Get()->hideUVIndicatorVisual();
        },
        0);
}

} // namespace vrkview
