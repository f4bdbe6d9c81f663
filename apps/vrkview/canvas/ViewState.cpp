#include "canvas/ViewState.h"

#include "canvas/BodyEdge.h"
#include "canvas/DrawMode.h"
#include "canvas/ProgramThings.h"
#include "canvas/Visibility.h"
#include "edit/HideThings.h"
#include "edit/History.h"
#include "edit/ModelPlaces.h"

#include "platform/layout/Layout.h"
#include "platform/sdf/SdfManager.h"
#include "scene/Scene.h"
#include "visual/PointCloudVisual.h"

#include <TopoDS_Edge.hxx>

#include <algorithm>
#include <mutex>

namespace vrkview {
namespace {

using vrk::layout::Layout;
using vrk::visual::Scene;

/// Posts it. The scene's own selection of points would build the whole cloud anew.
void markPoints(unsigned cloud, const std::vector<std::uint32_t>& numbers)
{
    Scene::Get()->addRenderTask(
        [cloud, numbers] {
            if (Scene::HasVisual(cloud))
                dynamic_cast<vrk::visual::PointCloudVisual&>(*Scene::GetVisual(cloud)).markPoints(numbers);
        },
        0);
}

} // namespace

ViewState::ViewState(const DrawMode& mode, std::vector<HiddenFace> hiddenFaces)
    : history(std::make_unique<History>()), drawMode(&mode), hiddenFaces(std::move(hiddenFaces)),
      tree(StationTree::OfScene())
{
    readHidden();
    connect(history.get(), &History::changed, this, &ViewState::follow);
}

ViewState::~ViewState() = default;

// Selection

bool ViewState::isSelected(unsigned id) const
{
    return std::ranges::find(selected, id) != selected.end();
}

void ViewState::selectVisuals(std::vector<unsigned> ids)
{
    std::erase_if(ids, [this](unsigned id) { return isHidden(id); });
    if (ids == selected && selectedFaces.empty() && selectedEdges.empty() && selectedPoints.empty())
        return;
    replaceSelected(std::move(ids));
    emit selectionChanged();
}

void ViewState::replaceSelected(std::vector<unsigned> ids)
{
    selected = std::move(ids);
    clearEdges();
    clearPoints();
    selectedFaces.clear(); // as the scene does
    toldScene = ownersFirst();
    Scene& scene = *Scene::Get();
    scene.setVisualsSelected(toldScene);
    // The outline costs a pass over the picture, so that it goes with the last thing that it is drawn around.
    scene.addRenderTask([&scene, any = !toldScene.empty()] { scene.setBorderHighlightEnabled(any); }, 0);
}

std::vector<unsigned> ViewState::ownersFirst() const
{
    std::vector<unsigned> ids = selected;
    // A row comes behind what it hangs on; what has no row stands for itself.
    std::ranges::stable_sort(ids, {}, [this](unsigned id) { return tree.find(id); });
    return visualsOf(ids);
}

void ViewState::toggle(unsigned id)
{
    std::vector<unsigned> wanted = selected;
    if (std::erase(wanted, id) == 0)
        wanted.push_back(id);
    selectVisuals(std::move(wanted));
}

void ViewState::followScene()
{
    const std::vector<unsigned>& inScene = Scene::Get()->getSelectedVisuals();
    if (inScene == toldScene)
        return;
    selected = toldScene = inScene;
    emit selectionChanged();
}

bool ViewState::isFaceSelected(unsigned body, unsigned face) const
{
    return std::ranges::find(selectedFaces, std::pair(body, face)) != selectedFaces.end();
}

void ViewState::toggleFace(unsigned body, unsigned face, FaceUse use)
{
    if (!Scene::HasVisual(body) || Scene::GetVisual(body)->getType() != vrk::VisualType::Solid || isHidden(body))
        return;
    Scene& scene = *Scene::Get();
    if (std::erase(selectedFaces, std::pair(body, face)) > 0) {
        scene.clearSelectedFace(body, face);
    } else {
        selectedFaces.emplace_back(body, face);
        if (use == FaceUse::Base)
            scene.selectBaseFace(body, face);
        else
            scene.selectSideFace(body, face);
    }
    emit selectionChanged();
}

void ViewState::toggleEdge(unsigned body, unsigned edge)
{
    const TopoDS_Edge shape = edgeOfBody(body, edge);
    if (shape.IsNull() || isHidden(body))
        return;
    if (std::erase(selectedEdges, std::pair(body, edge)) > 0) {
        Scene::Get()->removeGeneratedEdge(body, shape);
    } else {
        selectedEdges.emplace_back(body, edge);
        Scene::Get()->addGeneratedEdge(body, shape);
    }
    emit selectionChanged();
}

void ViewState::clearEdges()
{
    for (const auto& [body, edge] : std::exchange(selectedEdges, {}))
        if (const TopoDS_Edge shape = edgeOfBody(body, edge); !shape.IsNull())
            Scene::Get()->removeGeneratedEdge(body, shape);
}

void ViewState::selectPoints(CloudPoints points)
{
    for (auto& [id, numbers] : points) {
        const auto* cloud = Scene::HasVisual(id) && !isHidden(id)
                                ? dynamic_cast<const vrk::visual::PointCloudVisual*>(Scene::GetVisual(id))
                                : nullptr;
        const std::size_t count = cloud ? cloud->getPoints().size() : 0;
        const auto gone = cloud ? cloud->getHiddenPoints() : nullptr;
        std::erase_if(numbers,
                      [&](std::uint32_t number) { return number >= count || (gone && gone->contains(number)); });
    }
    std::erase_if(points, [](const auto& cloud) { return cloud.second.empty(); });
    if (points == selectedPoints)
        return;
    if (!selected.empty() || !selectedFaces.empty() || !selectedEdges.empty())
        replaceSelected({});
    const CloudPoints before = std::exchange(selectedPoints, std::move(points));
    for (const auto& [id, numbers] : before)
        if (!selectedPoints.contains(id))
            markPoints(id, {});
    for (const auto& [id, numbers] : selectedPoints)
        markPoints(id, numbers);
    emit selectionChanged();
}

void ViewState::clearPoints()
{
    for (const auto& [id, numbers] : std::exchange(selectedPoints, {}))
        markPoints(id, {});
}

// Visibility

ViewState::Shown ViewState::shownOf(unsigned id) const
{
    if (hidden.contains(id) || hiddenWithCarrier.contains(id))
        return Shown::Not;
    const int row = tree.find(id);
    return row != StationTree::none && hiddenBelow[static_cast<std::size_t>(row)] > 0 ? Shown::Partly : Shown::Whole;
}

void ViewState::setVisible(const std::vector<unsigned>& ids, bool visible)
{
    const std::unordered_set<unsigned> before = hidden, carriedBefore = hiddenWithCarrier;
    for (const unsigned id : ids)
        if (const int row = tree.find(id); row != StationTree::none)
            mark(row, visible);
    hiddenWithCarrier = carriedBefore;
    pushHidden((visible ? tr("Show %1") : tr("Hide %1")).arg(nameOfThings(ids)), before);
}

void ViewState::hideSelected()
{
    const std::vector<unsigned> ids = selected;
    setVisible(ids, false);
}

void ViewState::showAll()
{
    const std::unordered_set<unsigned> before = std::exchange(hidden, {});
    pushHidden(tr("Show all"), before);
}

void ViewState::hideOnly(const std::vector<unsigned>& ids)
{
    const std::unordered_set<unsigned> before = std::exchange(hidden, {});
    for (const unsigned id : ids)
        if (const int row = tree.find(id); row != StationTree::none)
            markBelow(row, false);
    pushHidden(tr("Hide %1").arg(nameOfThings(ids)), before);
}

/// Makes a step of what is marked now; that it is hidden comes back from the model.
void ViewState::pushHidden(const QString& text, std::unordered_set<unsigned> before)
{
    const bool isOther = hidden != before;
    std::vector<unsigned> list = listForModel();
    hidden = std::move(before);
    if (isOther)
        history->push(std::make_unique<HideThings>(text, std::move(list)));
}

std::vector<unsigned> ViewState::listForModel() const
{
    std::vector<unsigned> list;
    {
        const std::shared_lock lock(sdf::SdfManager::inst().mutex());
        list = Layout::inst().visibilities;
    }
    std::erase_if(list, [this](unsigned id) { return tree.find(id) != StationTree::none; }); // others stay: groups
    std::vector<bool> rows;
    for (const StationTree::Row& row : tree.getRows())
        rows.push_back(hidden.contains(row.id));
    const std::vector<unsigned> things = topmostOf(rows);
    list.insert(list.end(), things.begin(), things.end());
    return list;
}

/// Of the rows that are marked those that do not go with a marked one above them.
std::vector<unsigned> ViewState::topmostOf(const std::vector<bool>& marked) const
{
    const std::vector<StationTree::Row>& rows = tree.getRows();
    std::vector<unsigned> ids;
    for (std::size_t i = 0; i < rows.size(); ++i) {
        const bool goesWithParent = rows[i].followsParent && rows[i].parent != StationTree::none &&
                                    marked[static_cast<std::size_t>(rows[i].parent)];
        if (marked[i] && !goesWithParent)
            ids.push_back(rows[i].id);
    }
    return ids;
}

void ViewState::mark(int row, bool visible)
{
    if (visible)
        uncover(row);
    markBelow(row, visible);
}

/// With one thing shown in it nothing is wholly hidden. What else was hidden with that stays so, each for itself now.
void ViewState::uncover(int row)
{
    const std::vector<StationTree::Row>& rows = tree.getRows();
    std::vector<unsigned> opened;
    for (int from = row, above = rows[static_cast<std::size_t>(row)].parent; above != StationTree::none;
         from = above, above = rows[static_cast<std::size_t>(above)].parent) {
        const StationTree::Row& owner = rows[static_cast<std::size_t>(above)];
        if (!isHidden(owner.id))
            continue;
        markBelow(above, false);
        for (const int child : owner.children)
            if (child != from && !rows[static_cast<std::size_t>(child)].followsParent)
                markBelow(child, false);
        opened.push_back(owner.id);
    }
    for (const unsigned id : opened) {
        hidden.erase(id);
        hiddenWithCarrier.erase(id);
    }
}

void ViewState::markBelow(int row, bool visible)
{
    const std::vector<StationTree::Row>& rows = tree.getRows();
    for (int i = row; i < rows[static_cast<std::size_t>(row)].end;) {
        const StationTree::Row& below = rows[static_cast<std::size_t>(i)];
        if (i != row && !below.followsParent) {
            i = below.end;
            continue;
        }
        if (visible) {
            hidden.erase(below.id);
            hiddenWithCarrier.erase(below.id); // the next one that is marked may hang on it
        } else {
            hidden.insert(below.id);
        }
        ++i;
    }
}

void ViewState::followCarriers()
{
    hiddenWithCarrier.clear();
    const std::vector<StationTree::Row>& rows = tree.getRows();
    for (const unsigned id : carriedByHidden()) {
        const int top = tree.find(id);
        if (top == StationTree::none)
            continue;
        for (int i = top; i < rows[static_cast<std::size_t>(top)].end;) {
            const StationTree::Row& below = rows[static_cast<std::size_t>(i)];
            const bool isApart = i != top && !below.followsParent; // carried in turn, or hidden itself
            if (!isApart && !hidden.contains(below.id))
                hiddenWithCarrier.insert(below.id);
            i = isApart ? below.end : i + 1;
        }
    }
}

void ViewState::sum()
{
    const std::vector<StationTree::Row>& rows = tree.getRows();
    hiddenBelow.assign(rows.size(), 0);
    for (std::size_t i = rows.size(); i-- > 0;)
        if (rows[i].parent != StationTree::none)
            hiddenBelow[static_cast<std::size_t>(rows[i].parent)] +=
                hiddenBelow[i] + (shownOf(rows[i].id) == Shown::Not ? 1 : 0);
}

void ViewState::deselectHidden()
{
    const auto faces = std::erase_if(selectedFaces, [this](const auto& face) {
        if (!isHidden(face.first))
            return false;
        Scene::Get()->clearSelectedFace(face.first, face.second);
        return true;
    });
    const auto edges = std::erase_if(selectedEdges, [this](const auto& edge) {
        if (!isHidden(edge.first))
            return false;
        Scene::Get()->removeGeneratedEdge(edge.first, edgeOfBody(edge.first, edge.second));
        return true;
    });
    CloudPoints points = selectedPoints;
    if (std::erase_if(points, [this](const auto& cloud) { return isHidden(cloud.first); }) > 0)
        selectPoints(std::move(points));
    std::vector<unsigned> left = selected;
    std::erase_if(left, [this](unsigned id) { return isHidden(id); });
    if (left != selected)
        selectVisuals(std::move(left));
    else if (faces > 0 || edges > 0)
        emit selectionChanged();
}

void ViewState::readHidden()
{
    hidden.clear();
    std::vector<unsigned> ids;
    {
        const std::shared_lock lock(sdf::SdfManager::inst().mutex());
        ids = Layout::inst().visibilities;
    }
    for (const unsigned id : ids)
        if (const int row = tree.find(id); row != StationTree::none)
            mark(row, false);
    followCarriers();
    sum();
}

// Drawing and station

void ViewState::setDrawMode(const DrawMode& mode)
{
    drawMode = &mode;
    drawAnew();
    emit drawModeChanged();
}

void ViewState::drawAnew() const
{
    showAs(*drawMode, hiddenFaces); // but for what the model says is hidden
}

void ViewState::follow(Touches touches)
{
    if (touches.testFlag(Touched::Things)) {
        if (touches.testFlag(Touched::Points) && !selectedPoints.empty()) { // the numbers may be those of other points
            clearPoints();
            emit selectionChanged();
        }
        stationHasChanged(); // what is hidden is read anew, too
    } else {
        if (touches.testFlag(Touched::Visibility))
            followVisibility();
        if (touches.testFlag(Touched::Points))
            followPoints();
    }
}

/// Points are hidden or shown: those that are hidden are no longer selected.
void ViewState::followPoints()
{
    selectPoints(selectedPoints);
    emit visibilityChanged();
}

std::unordered_set<unsigned> ViewState::allHidden() const
{
    std::unordered_set<unsigned> all = hidden;
    all.insert(hiddenWithCarrier.begin(), hiddenWithCarrier.end());
    return all;
}

void ViewState::followVisibility()
{
    const std::unordered_set<unsigned> before = allHidden();
    readHidden();
    deselectHidden();
    std::vector<bool> shown, gone;
    for (const StationTree::Row& row : tree.getRows()) {
        shown.push_back(before.contains(row.id) && !isHidden(row.id));
        gone.push_back(!before.contains(row.id) && isHidden(row.id));
    }
    if (const std::vector<unsigned> ids = topmostOf(shown); !ids.empty()) {
        showThings(ids); // with all that is in them: what is still hidden goes again
        drawAnew();
    } else {
        hideThings(topmostOf(gone));
    }
    emit visibilityChanged();
}

void ViewState::stationHasChanged()
{
    const std::unordered_set<unsigned> before = allHidden();
    tree = StationTree::OfScene();
    readHidden();
    forgetWhatIsGone();
    std::vector<bool> shown; // with another carrier, or without it
    for (const StationTree::Row& row : tree.getRows())
        shown.push_back(before.contains(row.id) && !isHidden(row.id));
    if (const std::vector<unsigned> ids = topmostOf(shown); !ids.empty())
        showThings(ids);
    drawAnew(); // what is new has faces and edges
    emit stationChanged();
}

void ViewState::stationWasReplaced(std::vector<HiddenFace> itsHiddenFaces)
{
    history->forget();
    hiddenFaces = std::move(itsHiddenFaces);
    tree = StationTree::OfScene();
    readHidden();
    forgetWhatIsGone();
    drawAnew();
    emit stationChanged();
}

void ViewState::forgetWhatIsGone()
{
    const auto isGone = [this](unsigned id) { return tree.find(id) == StationTree::none && !isOfProgram(id); };
    std::erase_if(selectedFaces, [&](const auto& face) { return isGone(face.first); });
    std::erase_if(selectedEdges, [&](const auto& edge) { return isGone(edge.first); });
    std::erase_if(selectedPoints, [&](const auto& cloud) { return isGone(cloud.first); });
    std::vector<unsigned> left = selected;
    std::erase_if(left, isGone);
    if (left != selected)
        selectVisuals(std::move(left));
    deselectHidden();
}

} // namespace vrkview
