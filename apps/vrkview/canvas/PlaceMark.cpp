#include "canvas/PlaceMark.h"

#include "canvas/BodyEdge.h"
#include "canvas/ViewPlaces.h"
#include "canvas/ViewWidget.h"

#include "scene/Scene.h"
#include "view/Camera.h"
#include "visual/SolidVisual.h"

#include <TopoDS_Edge.hxx>

#include <array>

namespace vrkview {
namespace {

using vrk::visual::Camera;
using vrk::visual::RegionOutline;
using vrk::visual::Scene;
using vrk::visual::SolidVisual;

constexpr double markRadius = 7; // logical pixels

/// Device pixels; none for what lies behind the viewer.
std::optional<QPointF> onScreen(const vrk::rob::Posd& place)
{
    const vrk::visual::CameraSnapshot camera = Camera::Get()->getSnapshot();
    using Column = std::array<double, 4>;
    const auto times = [](const vrk::visual::CameraSnapshot::Matrix& matrix, const Column& column) {
        Column result{};
        for (std::size_t i = 0; i < 4; ++i)
            for (std::size_t k = 0; k < 4; ++k)
                result[i] += static_cast<double>(matrix[4 * i + k]) * column[k];
        return result;
    };
    const Column seen = times(camera.projection, times(camera.view, {place.x, place.y, place.z, 1}));
    if (!camera.hasPixels() || seen[3] <= 0)
        return std::nullopt;
    return QPointF((1 + seen[0] / seen[3]) / 2 * camera.width, (1 - seen[1] / seen[3]) / 2 * camera.height);
}

} // namespace

PlaceMark::PlaceMark(ViewWidget& view) : view(view), mark(*Camera::Get()) {}

void PlaceMark::show(const std::optional<SnapPlace>& place)
{
    Scene& scene = *Scene::Get();
    const auto isSame = [](const SnapPlace& a, const SnapPlace& b) {
        return a.body == b.body && a.face == b.face && a.edge == b.edge;
    };
    if (shown && (!place || !isSame(*place, *shown)))
        scene.clearHighlightedVisual();
    if (place && !(shown && isSame(*place, *shown))) {
        if (auto* solid = place->face != 0 ? dynamic_cast<SolidVisual*>(Scene::GetVisual(place->body)) : nullptr)
            scene.highlightFace(solid, place->face);
        else if (const TopoDS_Edge edge = edgeOfBody(place->body, place->edge); !edge.IsNull())
            scene.highlightEdge(Scene::GetVisual(place->body), edge);
    }
    const double ratio = view.devicePixelRatioF();
    const std::optional<QPointF> middle = place ? onScreen(place->place) : std::nullopt;
    if (middle)
        mark.show(toPlaces(signOf(place->kind, *middle, markRadius * ratio)), true, RegionOutline::Look::Mark, ratio);
    else
        mark.hide();
    if (place || shown)
        view.requestFrame();
    shown = place;
}

} // namespace vrkview
