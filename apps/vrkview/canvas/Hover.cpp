#include "canvas/Hover.h"

#include "canvas/BodyEdge.h"
#include "canvas/Picked.h"
#include "canvas/ViewState.h"

#include "scene/Scene.h"
#include "scene/ViewLook.h"
#include "visual/SolidVisual.h"

namespace vrkview {

using vrk::visual::Scene;
using vrk::visual::SolidVisual;
using vrk::visual::Visual;

namespace {

/// By itself, or with what it is below.
bool isInSelection(const ViewState& state, unsigned thing)
{
    for (const Visual* visual = Scene::GetVisual(thing); visual; visual = visual->getParent())
        if (state.isSelected(visual->getId()))
            return true;
    return false;
}

} // namespace

Hover::Hover(const ViewState& state, QObject* parent) : QObject(parent), state(state)
{
    connect(&state, &ViewState::stationChanged, this, &Hover::clear);
    connect(&state, &ViewState::visibilityChanged, this, [this] {
        if (thing != 0 && this->state.isHidden(thing))
            clear(); // with the thing its highlight goes
    });
    connect(&state, &ViewState::selectionChanged, this, &Hover::outline);
}

void Hover::show(const Picked& found, Of what, const Picked* edge)
{
    const unsigned visual = found.candidate.visualId;
    if (found.thing == 0 || !Scene::HasVisual(visual) || state.isHidden(found.thing) || state.isHidden(visual)) {
        clear();
        return;
    }
    hit = visual;
    thing = found.thing;
    Scene& scene = *Scene::Get();
    isPiece = what == Of::Piece && (found.face() != 0 || found.edge() != 0);
    outline();
    if (isPiece)
        showPiece(found, edge);
    else if (Scene::HasVisual(thing) && hasHighlight(*Scene::GetVisual(thing)))
        scene.setVisualHighlighted(thing);
    else
        scene.clearHighlightedVisual();
    const QString name = edge ? found.text + tr(", edge %1").arg(edge->edge()) : found.text;
    const QString more = remark ? remark(found) : QString();
    setText(more.isEmpty() ? name : tr("%1:  %2").arg(name, more));
}

void Hover::showPiece(const Picked& found, const Picked* edge)
{
    Scene& scene = *Scene::Get();
    Visual* solid = Scene::GetVisual(hit);
    if (found.face() != 0) {
        scene.highlightFace(dynamic_cast<SolidVisual*>(solid), found.face()); // never null: its faces have numbers
    } else {
        scene.clearHighlightedBody();
        scene.clearHighlightedFace();
    }
    const unsigned number = edge ? edge->edge() : found.edge();
    if (number == 0) {
        scene.clearHighlightedEdge();
        return;
    }
    if (lastEdge.body != hit || lastEdge.number != number) // a mouse follows the same edge for a while
        lastEdge = {hit, number, edgeOfBody(hit, number)};
    scene.highlightEdge(solid, lastEdge.shape);
}

/// What is selected has an outline already, which this one would lie on.
void Hover::outline()
{
    const bool isOutlined = Scene::HasVisual(thing) && !isPiece && !isInSelection(state, thing);
    vrk::visual::SetOutlined(isOutlined ? std::vector{thing} : std::vector<unsigned>());
}

void Hover::clear()
{
    if (hit == 0) // each post costs a frame, and over what has no highlight the mouse moves on and on
        return;
    hit = thing = 0;
    lastEdge = {};
    outline();
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
