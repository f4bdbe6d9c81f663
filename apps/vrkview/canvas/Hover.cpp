#include "canvas/Hover.h"

#include "canvas/Picked.h"
#include "canvas/ViewState.h"

#include "scene/Scene.h"
#include "selection/geometry/Result.h"
#include "visual/SolidVisual.h"

#include <TopoDS.hxx>
#include <TopoDS_Edge.hxx>

namespace vrkview {

using vrk::selection::Result;
using vrk::visual::Scene;
using vrk::visual::SolidVisual;

Hover::Hover(const ViewState& state, QObject* parent) : QObject(parent), state(state)
{
    connect(&state, &ViewState::stationChanged, this, &Hover::clear);
    connect(&state, &ViewState::visibilityChanged, this, [this] {
        if (thing != 0 && this->state.isHidden(thing))
            clear(); // with the thing its highlight goes
    });
}

void Hover::show(const Result& result, Of what)
{
    const unsigned found = thingOf(state.getTree(), result);
    if (found == 0 || state.isHidden(found) || state.isHidden(result.visual->getId())) {
        clear();
        return;
    }
    thing = found;
    Scene& scene = *Scene::Get();
    QString words = describeForUser(state.getTree(), result);
    const unsigned face = what == Of::Face ? faceOf(result) : 0;
    if (face != 0)
        words += showFace(result, face);
    else if (what == Of::Thing && Scene::HasVisual(thing) && hasHighlight(*Scene::GetVisual(thing)))
        scene.setVisualHighlighted(thing);
    else
        scene.clearHighlightedVisual();
    hit = result.visual->getId();
    setText(words);
}

QString Hover::showFace(const Result& result, unsigned face)
{
    Scene& scene = *Scene::Get();
    scene.highlightFace(dynamic_cast<SolidVisual*>(result.visual), face); // never null: its face has a number
    const auto edge = result.getFaceEdge();
    if (!edge) {
        scene.clearHighlightedEdge();
        return {};
    }
    scene.highlightEdge(result.visual, TopoDS::Edge(edge->edge));
    return QStringLiteral(", edge %1").arg(edge->index);
}

void Hover::clear()
{
    hit = thing = 0;
    Scene::Get()->clearHighlightedVisual();
    setText({});
}

void Hover::followScene()
{
    if (hit != 0 && !Scene::HasVisual(hit))
        clear();
}

void Hover::setText(const QString& wanted)
{
    if (text == wanted)
        return;
    text = wanted;
    emit textChanged(text);
}

} // namespace vrkview
