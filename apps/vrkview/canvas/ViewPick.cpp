#include "canvas/ViewPick.h"

#include "canvas/ViewWidget.h"

#include "selection/VisualSelection.h"

#include <algorithm>

namespace vrkview {
namespace {

using vrk::selection::PickAnswer;
using vrk::selection::PickCandidate;
using vrk::selection::PickKind;
using vrk::selection::PickKinds;
using vrk::selection::PickQuery;
using vrk::selection::PickVerdict;
using vrk::selection::VisualSelection;

constexpr double edgeRadius = 20; // logical pixels: edges are thin, and nothing else is meant

PickKinds kindsOf(PickGroup group)
{
    switch (group) {
    case PickGroup::Bodies:
        return {PickKind::Body};
    case PickGroup::Faces:
        return {PickKind::Face};
    case PickGroup::Edges:
        return {PickKind::Edge, PickKind::Curve, PickKind::Line};
    case PickGroup::Vertices:
        return {PickKind::Vertex, PickKind::Point};
    case PickGroup::Points:
        return {PickKind::CloudPoint};
    case PickGroup::Frames:
        return {PickKind::Frame, PickKind::Target};
    }
    return {};
}

constexpr std::array names = {
    PickGroupName{PickGroup::Bodies, "bodies"}, PickGroupName{PickGroup::Faces, "faces"},
    PickGroupName{PickGroup::Edges, "edges"},   PickGroupName{PickGroup::Vertices, "vertices"},
    PickGroupName{PickGroup::Points, "points"}, PickGroupName{PickGroup::Frames, "frames"}};

} // namespace

std::span<const PickGroupName> allPickGroups()
{
    return names;
}

ViewPick::ViewPick(const ViewWidget& view, const StationTree& tree, QObject* parent)
    : QObject(parent), view(view), tree(tree)
{
    taken.fill(true);
}

void ViewPick::setTaken(PickGroup group, bool isTaken)
{
    bool& mine = taken[static_cast<std::size_t>(group)];
    if (mine == isTaken)
        return;
    mine = isTaken;
    emit changed();
}

PickKinds ViewPick::kindsFor(PickAim aim) const
{
    PickKinds kinds;
    for (const PickGroupName& each : allPickGroups())
        if (takes(each.group))
            kinds.add(kindsOf(each.group));
    if (aim == PickAim::Face)
        return kinds & PickKinds{PickKind::Face};
    if (aim == PickAim::Edge)
        return kinds & PickKinds{PickKind::Edge};
    if (!takesPieces()) { // they would win over the body that is hit, and stand for another one's
        kinds.remove(PickKind::Edge);
        kinds.remove(PickKind::Vertex);
    }
    return kinds;
}

std::optional<PickQuery> ViewPick::queryAt(const QPointF& place, PickAim aim) const
{
    PickQuery query;
    query.camera = vrk::selection::PickCamera::Main(view.devicePixelRatioF());
    query.x = place.x();
    query.y = place.y();
    query.kinds = kindsFor(aim);
    if (aim == PickAim::Edge)
        query.radius = edgeRadius;
    if (!query.camera.hasPixels() || query.kinds.empty())
        return std::nullopt;
    VisualSelection::Get()->update();
    return query;
}

std::optional<Picked> ViewPick::at(const QPointF& place, PickAim aim) const
{
    const std::optional<PickQuery> query = queryAt(place, aim);
    const std::optional<PickCandidate> found = query ? query->askBest() : std::nullopt;
    return found ? std::optional(Picked(tree, *found)) : std::nullopt;
}

std::vector<Picked> ViewPick::allAt(const QPointF& place, PickAim aim) const
{
    std::vector<Picked> all;
    const std::optional<PickQuery> query = queryAt(place, aim);
    if (!query)
        return all;
    for (const PickCandidate& candidate : query->askAll().candidates) {
        const bool mayBeTaken = candidate.verdict == PickVerdict::Chosen ||
                                candidate.verdict == PickVerdict::Possible || candidate.verdict == PickVerdict::Behind;
        Picked picked(tree, candidate);
        if (!mayBeTaken || picked.thing == 0)
            continue;
        if (std::ranges::none_of(all, [&](const Picked& known) { return isSameForClick(known, picked, aim); }))
            all.push_back(std::move(picked));
    }
    return all;
}

bool ViewPick::isSameForClick(const Picked& a, const Picked& b, PickAim aim) const
{
    if (aim == PickAim::Thing && !takesPieces())
        return a.thing == b.thing;
    return a.candidate.kind == b.candidate.kind && a.candidate.visualId == b.candidate.visualId &&
           a.candidate.subId == b.candidate.subId;
}

} // namespace vrkview
