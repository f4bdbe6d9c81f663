#include "canvas/RegionTool.h"

#include "canvas/Counted.h"
#include "canvas/Picked.h"
#include "canvas/ViewPlaces.h"
#include "canvas/ViewWidget.h"

#include "scene/Scene.h"
#include "selection/VisualSelection.h"
#include "selection/geometry/Result.h"
#include "selection/region/RegionQuery.h"
#include "view/Camera.h"
#include "visual/Visual.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>
#include <utility>

#include <time.h>

namespace vrkview {
namespace {

using vrk::VisualType;
using vrk::selection::RegionAnswer;
using vrk::selection::RegionQuery;
using vrk::selection::RegionView;
using vrk::selection::VisualSelection;
using vrk::visual::RegionOutline;
using vrk::visual::Scene;
using vrk::visual::Visual;

constexpr double previewLimit = 30; // milliseconds of work for what would be selected, at a move of a drag
constexpr double freehandStep = 3;  // logical pixels: a hand's line needs no more corners

/// Of a processor, by this thread: that others take their turns in between says nothing about the work.
double usedMilliseconds()
{
    timespec used{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &used);
    return 1e3 * static_cast<double>(used.tv_sec) + 1e-6 * static_cast<double>(used.tv_nsec);
}

QString describe(const RegionContent& content)
{
    if (!content.things.empty())
        return RegionTool::tr("%1 inside")
            .arg(counted(content.things.size(), RegionTool::tr("thing"), RegionTool::tr("things")));
    if (!content.points.empty())
        return RegionTool::tr("%1 inside")
            .arg(counted(content.pointCount(), RegionTool::tr("point"), RegionTool::tr("points")));
    return RegionTool::tr("Nothing inside");
}

/// What is in one of the two lists, both ascending.
std::vector<std::uint32_t> joined(const std::vector<std::uint32_t>& a, const std::vector<std::uint32_t>& b)
{
    std::vector<std::uint32_t> all;
    std::ranges::set_union(a, b, std::back_inserter(all));
    return all;
}

std::vector<std::uint32_t> without(const std::vector<std::uint32_t>& a, const std::vector<std::uint32_t>& b)
{
    std::vector<std::uint32_t> rest;
    std::ranges::set_difference(a, b, std::back_inserter(rest));
    return rest;
}

/// What is selected after these points were added or, where all of them are selected already, taken out.
ViewState::CloudPoints toggled(ViewState::CloudPoints selected, const ViewState::CloudPoints& points)
{
    const bool areAll = std::ranges::all_of(points, [&selected](const auto& cloud) {
        const auto found = selected.find(cloud.first);
        return found != selected.end() && std::ranges::includes(found->second, cloud.second);
    });
    for (const auto& [id, numbers] : points) {
        std::vector<std::uint32_t>& has = selected[id];
        has = areAll ? without(has, numbers) : joined(has, numbers);
    }
    std::erase_if(selected, [](const auto& cloud) { return cloud.second.empty(); });
    return selected;
}

std::vector<unsigned> toggled(std::vector<unsigned> selected, const std::vector<unsigned>& things)
{
    const auto isSelected = [&selected](unsigned id) { return std::ranges::find(selected, id) != selected.end(); };
    if (std::ranges::all_of(things, isSelected)) {
        std::erase_if(selected, [&things](unsigned id) { return std::ranges::find(things, id) != things.end(); });
        return selected;
    }
    std::vector<unsigned> added;
    std::ranges::remove_copy_if(things, std::back_inserter(added), isSelected);
    selected.insert(selected.end(), added.begin(), added.end());
    return selected;
}

} // namespace

std::size_t RegionContent::pointCount() const
{
    std::size_t count = 0;
    for (const auto& [id, numbers] : points)
        count += numbers.size();
    return count;
}

RegionTool::RegionTool(ViewWidget& view, ViewState& state, QObject* parent)
    : QObject(parent), view(view), state(state), drawn(*vrk::visual::Camera::Get())
{
    connect(&state, &ViewState::stationChanged, this, [this] {
        if (isDrawing())
            end();
    });
}

RegionTool::~RegionTool() = default;

void RegionTool::setLassoOn(bool on)
{
    if (lassoOn == on)
        return;
    lassoOn = on;
    if (!on && isDrawing())
        end();
    emit changed();
}

void RegionTool::setForPointsOnly(bool only)
{
    if (pointsOnly == only)
        return;
    pointsOnly = only;
    emit changed();
}

// Drawing

void RegionTool::begin(Shape wanted, const QPointF& at, Effect wantedEffect)
{
    shape = wanted;
    effect = wantedEffect;
    corners = {at};
    next.reset();
    isQuick = true;
    countPieces();
    emit changed();
}

void RegionTool::follow(const QPointF& place)
{
    if (!isDrawing())
        return;
    switch (*shape) {
    case Shape::Rectangle:
        corners.resize(1);
        corners.push_back(place);
        break;
    case Shape::Freehand: {
        const QPointF way = place - corners.back();
        if (std::hypot(way.x(), way.y()) >= freehandStep * view.devicePixelRatioF())
            corners.push_back(place);
        break;
    }
    case Shape::Polygon:
        next = place;
        break;
    }
    show();
    preview();
}

void RegionTool::addCorner(const QPointF& place)
{
    if (corners.empty() || corners.back() != place)
        corners.push_back(place);
    next.reset();
    show();
    preview();
}

void RegionTool::removeLastCorner()
{
    if (shape != Shape::Polygon)
        return;
    if (corners.size() > 1) {
        corners.pop_back();
        show();
        preview();
    } else {
        end();
    }
}

std::vector<QPointF> RegionTool::outline() const
{
    std::vector<QPointF> all = corners;
    if (next && *next != all.back())
        all.push_back(*next);
    return all;
}

bool RegionTool::takesWhatIsTouched() const
{
    return shape == Shape::Rectangle && corners.size() == 2 && corners[1].x() < corners[0].x();
}

void RegionTool::show()
{
    const double ratio = view.devicePixelRatioF();
    const auto look = takesWhatIsTouched() ? RegionOutline::Look::Dashes : RegionOutline::Look::Line;
    if (shape == Shape::Rectangle && corners.size() == 2)
        drawn.showRectangle(toPlace(corners[0]), toPlace(corners[1]), look, ratio);
    else
        drawn.show(toPlaces(outline()), false, look, ratio);
    view.requestFrame();
}

void RegionTool::finish(Effect wantedEffect)
{
    if (!isDrawing())
        return;
    effect = wantedEffect;
    next.reset();
    RegionContent content;
    try {
        content = ask();
    } catch (const std::exception& failure) {
        end();
        emit failed(QString::fromUtf8(failure.what()));
        return;
    }
    end(); // first: a highlight that goes would take the look of the selection with it
    select(content);
    emit taken(content);
}

bool RegionTool::cancel()
{
    if (isDrawing())
        end();
    else if (lassoOn)
        setLassoOn(false);
    else
        return false;
    return true;
}

void RegionTool::end()
{
    shape.reset();
    corners.clear();
    next.reset();
    marks.clear();
    drawn.hide();
    view.requestFrame();
    emit textChanged({});
    emit changed();
}

// What is inside

/// Of each thing the bodies, curves and points that a region can find: what is hidden is not among them.
void RegionTool::countPieces()
{
    pieces.clear();
    view.drain();
    VisualSelection& service = *VisualSelection::Get();
    service.update();
    for (Visual* visual : service.registeredVisuals()) {
        const VisualType type = visual->getType();
        const bool isPiece = type == VisualType::Solid || type == VisualType::Mesh || type == VisualType::Curve ||
                             type == VisualType::Point;
        if (isPiece && service.isEnabled(visual))
            ++pieces[thingOf(state.getTree(), *visual)];
    }
}

RegionContent RegionTool::ask()
{
    const std::vector<QPointF> places = outline();
    RegionContent content;
    RegionQuery query;
    if (shape == Shape::Rectangle) {
        if (places.size() < 2)
            return content;
        query = RegionQuery::Rectangle(places[0].x(), places[0].y(), places[1].x(), places[1].y());
    } else {
        if (places.size() < 3)
            return content;
        query = RegionQuery::Polygon(toPlaces(places));
    }
    const bool isTouching = takesWhatIsTouched();
    query.cover = isTouching ? RegionQuery::Cover::Touching : RegionQuery::Cover::WhollyInside;
    query.kinds = {.bodies = !pointsOnly,
                   .faces = false,
                   .edges = false,
                   .frames = !pointsOnly,
                   .points = true,
                   .curves = !pointsOnly,
                   .singlePoints = !pointsOnly};
    view.drain();
    VisualSelection::Get()->update();
    RegionAnswer answer = VisualSelection::Get()->askRegion(query, RegionView::OfMainCamera());

    std::map<unsigned, unsigned> found; // by thing, ascending
    const StationTree& tree = state.getTree();
    for (const auto* wholes : {&answer.bodies, &answer.curves, &answer.singlePoints})
        for (const RegionAnswer::Whole& piece : *wholes)
            ++found[thingOf(tree, *piece.visual)];
    if (!isTouching)
        std::erase_if(found, [this](const auto& thing) { return thing.second < pieces[thing.first]; });
    for (const RegionAnswer::Whole& frame : answer.frames)
        ++found[thingOf(tree, *frame.visual)];
    for (const RegionAnswer::Cloud& cloud : answer.clouds)
        if (cloud.isWhole)
            ++found[thingOf(tree, *cloud.visual)];
    found.erase(0);
    for (const auto& [thing, count] : found)
        content.things.push_back(thing);
    std::ranges::stable_sort(content.things, {}, [&tree](unsigned id) {
        const int row = tree.find(id);
        return row == StationTree::none ? std::numeric_limits<int>::max() : row;
    });
    if (content.things.empty())
        for (RegionAnswer::Cloud& cloud : answer.clouds)
            content.points.emplace(cloud.id, std::move(cloud.points));
    return content;
}

void RegionTool::preview()
{
    if (!isQuick)
        return;
    const double begin = usedMilliseconds();
    RegionContent content;
    try {
        content = ask();
        mark(content.things);
    } catch (const std::exception& failure) {
        isQuick = false;
        emit failed(QString::fromUtf8(failure.what()));
        return;
    }
    emit textChanged(describe(content));
    if (usedMilliseconds() - begin <= previewLimit)
        return;
    // Too much for every move of the mouse: what is inside is told at the end.
    isQuick = false;
    marks.clear();
    emit textChanged({});
}

/// Highlights these and no others.
void RegionTool::mark(const std::vector<unsigned>& things)
{
    std::erase_if(marks, [&things](const auto& each) { return std::ranges::find(things, each.first) == things.end(); });
    for (const unsigned id : things)
        if (!marks.contains(id) && Scene::HasVisual(id) && hasHighlight(*Scene::GetVisual(id)))
            marks.emplace(id, std::make_unique<vrk::visual::HighlightedVisual>(Scene::GetVisual(id)));
}

void RegionTool::select(RegionContent content)
{
    if (effect == Effect::Replace) {
        if (content.points.empty())
            state.selectVisuals(std::move(content.things));
        else
            state.selectPoints(std::move(content.points));
    } else if (!content.things.empty()) {
        state.selectVisuals(toggled(state.getSelected(), content.things));
    } else if (!content.points.empty()) {
        state.selectPoints(toggled(state.getSelectedPoints(), content.points));
    }
}

} // namespace vrkview
