#include "measure/StationDimensions.h"

#include "edit/ModelPlaces.h"
#include "measure/MeasuredThings.h"

#include "platform/layout/Body.h"
#include "platform/layout/Layout.h"
#include "platform/sdf/SdfManager.h"
#include "scene/Scene.h"

#include <Standard_Failure.hxx>
#include <TopoDS_TShape.hxx>

#include <algorithm>
#include <shared_mutex>
#include <utility>

namespace vrkview {
namespace {

using vrk::layout::Dimension;
using vrk::layout::DimensionEnd;
using vrk::layout::Layout;
using vrk::visual::DimensionDrawing;
using vrk::visual::DimensionsVisual;
using vrk::visual::Scene;
using Look = DimensionDrawing::Look;

const void* contentOf(unsigned id)
{
    sdf::SdfManager& model = sdf::SdfManager::inst();
    const std::shared_lock lock(model.mutex());
    const auto* body = dynamic_cast<const vrk::layout::Body*>(model.find(id));
    return body && !body->getShape().IsNull() ? body->getShape().TShape().get() : nullptr;
}

/// From any thread: has a frame drawn, with what is new in it.
void askForFrame()
{
    if (Scene* scene = Scene::Get())
        scene->addRenderTask([] {}, 0);
}

} // namespace

std::string StationDimensions::Entry::text() const
{
    if (!failure.empty())
        return failure;
    return measured ? vrk::measure::textOf(*measured) : std::string();
}

StationDimensions& StationDimensions::Get()
{
    static StationDimensions dimensions;
    return dimensions;
}

StationDimensions::StationDimensions() : nearest(askForFrame) {}

void StationDimensions::update()
{
    isChanged = takeList();
    if (!entries.empty()) {
        takeAnswers();
        objects.clear();
        for (std::size_t i = 0; i < entries.size(); ++i)
            follow(i);
        pieces.clear();
    }
    if (std::exchange(isChanged, false))
        changed();
}

void StationDimensions::updateWhole()
{
    update();
    nearest.finish();
    update();
}

void StationDimensions::setPixelRatio(double ratio)
{
    pixelRatio = ratio;
    if (visual)
        visual->setPixelRatio(static_cast<float>(ratio));
}

/// Whether there are others than before.
bool StationDimensions::takeList()
{
    const auto isShown = [](const DimensionPointer& dimension, const Entry& entry) {
        return dimension == entry.dimension;
    };
    std::vector<DimensionPointer> wanted;
    {
        const std::shared_lock lock(sdf::SdfManager::inst().mutex());
        const std::vector<DimensionPointer>& all = Layout::inst().dimensions;
        if (std::ranges::equal(all, entries, isShown))
            return false;
        wanted = all;
    }
    std::unordered_map<const Dimension*, std::size_t> places;
    for (std::size_t i = 0; i < entries.size(); ++i)
        places.emplace(entries[i].dimension.get(), i);
    std::vector<Entry> after;
    std::vector<std::vector<Object>> afterAt;
    for (const DimensionPointer& dimension : wanted) {
        const auto place = places.find(dimension.get());
        after.push_back(place == places.end() ? Entry{dimension, {}, {}} : std::move(entries[place->second]));
        afterAt.push_back(place == places.end() ? std::vector<Object>() : std::move(measuredAt[place->second]));
        if (place != places.end())
            places.erase(place);
    }
    for (const auto& [gone, place] : places)
        nearest.forget(entries[place].dimension);
    entries = std::move(after);
    measuredAt = std::move(afterAt);
    if (!visual) {
        visual = new DimensionsVisual(Scene::GetWorldVisual());
        setPixelRatio(pixelRatio);
    }
    visual->setCount(entries.size());
    for (std::size_t i = 0; i < entries.size(); ++i)
        draw(i);
    return true;
}

/// Asked once for each object, of which many dimensions may be.
const StationDimensions::Object& StationDimensions::objectOf(unsigned id)
{
    const auto [found, isNew] = objects.try_emplace(id);
    if (isNew) {
        const bool isHidden = Scene::HasVisual(id) && !Scene::GetVisual(id)->isVisible();
        found->second = {worldPoseOfThing(id), contentOf(id), !isHidden};
    }
    return found->second;
}

void StationDimensions::follow(std::size_t index)
{
    Entry& entry = entries[index];
    std::vector<Object>& before = measuredAt[index];
    const std::vector<DimensionEnd>& ends = entry.dimension->ends;
    bool isVisible = true, isSame = before.size() == ends.size();
    for (std::size_t i = 0; i < ends.size(); ++i) {
        const Object& object = objectOf(ends[i].object);
        isVisible = isVisible && object.isVisible;
        isSame = isSame && before[i].isSame(object);
    }
    const bool wasHidden = std::exchange(entry.isHidden, !isVisible);
    if (isSame && wasHidden == entry.isHidden)
        return;
    if (!isSame) {
        before.clear();
        for (const DimensionEnd& end : ends)
            before.push_back(objectOf(end.object));
        measure(index);
        isChanged = true;
    }
    draw(index);
}

void StationDimensions::measure(std::size_t index)
{
    Entry& entry = entries[index];
    entry.failure.clear();
    if (entry.dimension->type == Dimension::Type::Nearest) {
        entry.isOutdated = true;
        std::vector<Pose> poses;
        for (const DimensionEnd& end : entry.dimension->ends)
            poses.push_back(objectOf(end.object).pose);
        nearest.ask(entry.dimension, std::move(poses));
        return;
    }
    try {
        std::vector<vrk::measure::MeasuredThing> things;
        for (const DimensionEnd& end : entry.dimension->ends)
            things.push_back(measuredThing(
                end, [this](unsigned id) { return objectOf(id).pose; }, pieces));
        entry.measured = vrkview::measure(entry.dimension->type, things);
    } catch (const std::exception& failure) {
        entry.measured.reset();
        entry.failure = failure.what();
    } catch (const Standard_Failure& failure) {
        entry.measured.reset();
        entry.failure = failure.GetMessageString();
    }
}

void StationDimensions::takeAnswers()
{
    for (NearestPlaces::Answer& answer : nearest.take()) {
        const auto entry = std::ranges::find(entries, answer.dimension, &Entry::dimension);
        if (entry == entries.end())
            continue;
        entry->measured = std::move(answer.measured);
        entry->failure = std::move(answer.failure);
        entry->isOutdated = false;
        draw(static_cast<std::size_t>(entry - entries.begin()));
        isChanged = true;
    }
}

void StationDimensions::draw(std::size_t index)
{
    const Entry& entry = entries[index];
    visual->set(index, entry.measured && !entry.isHidden ? drawingOf(*entry.measured) : DimensionDrawing());
    look(index);
}

void StationDimensions::look(std::size_t index)
{
    const Entry& entry = entries[index];
    visual->setLook(index, entry.isSelected             ? Look::Selected
                           : entry.dimension == hovered ? Look::Hovered
                           : entry.isOutdated           ? Look::Outdated
                                                        : Look::Plain);
}

void StationDimensions::giveUpNearest()
{
    nearest.giveUp();
    askForFrame();
}

// What the user points at

void StationDimensions::select(const std::vector<DimensionPointer>& wanted)
{
    bool isOther = false;
    for (std::size_t i = 0; i < entries.size(); ++i) {
        const bool isWanted = std::ranges::find(wanted, entries[i].dimension) != wanted.end();
        if (std::exchange(entries[i].isSelected, isWanted) == isWanted)
            continue;
        look(i);
        isOther = true;
    }
    if (!isOther)
        return;
    askForFrame();
    changed();
}

std::vector<DimensionPointer> StationDimensions::getSelected() const
{
    std::vector<DimensionPointer> selected;
    for (const Entry& entry : entries)
        if (entry.isSelected)
            selected.push_back(entry.dimension);
    return selected;
}

void StationDimensions::setHovered(const DimensionPointer& dimension)
{
    if (hovered == dimension)
        return;
    hovered = dimension;
    for (std::size_t i = 0; i < entries.size(); ++i)
        look(i);
    askForFrame();
}

DimensionPointer StationDimensions::textAt(double x, double y) const
{
    const std::optional<std::size_t> found = visual ? visual->textAt(x, y) : std::nullopt;
    return found && *found < entries.size() ? entries[*found].dimension : nullptr;
}

} // namespace vrkview
