#include "selection/region/RegionQuery.h"

#include "platform/common/ParallelFor.h"
#include "scene/core/CameraSnapshot.h"
#include "selection/CloudPoints.h"
#include "selection/MeshObject.h"
#include "selection/PointCloudObject.h"
#include "selection/ViewPixels.h"
#include "selection/VisualSelection.h"
#include "selection/region/RegionObjects.h"
#include "selection/region/RegionPoints.h"
#include "selection/region/RegionWork.h"
#include "selection/region/SeenMap.h"
#include "visual/Visual.h"

#include <algorithm>
#include <cmath>
#include <mutex>
#include <optional>
#include <stdexcept>
#include <tuple>
#include <utility>

namespace vrk::selection {
namespace {

constexpr std::size_t objectsOfStep = 16;
constexpr std::size_t worthThreads = 64; // objects; fewer are done sooner on one

RegionView::Matrix widened(const visual::CameraSnapshot::Matrix& m)
{
    RegionView::Matrix wide;
    std::ranges::copy(m, wide.begin());
    return wide;
}

void check(const RegionQuery& query, const RegionView& view)
{
    const auto isFinite = [](double number) { return std::isfinite(number); };
    if (!(view.width > 0 && view.height > 0))
        throw std::invalid_argument("the view has no pixels");
    if (!std::ranges::all_of(view.view, isFinite) || !std::ranges::all_of(view.projection, isFinite) ||
        !isFinite(view.width) || !isFinite(view.height))
        throw std::invalid_argument("the view is not finite");
    if (std::isnan(query.nearest) || std::isnan(query.farthest))
        throw std::invalid_argument("the window of depth is not a number");
}

bool isBody(const SelectableObject& object)
{
    return object.kind == SelectableObject::ObjectKind::Shape || object.kind == SelectableObject::ObjectKind::Mesh;
}

template <typename T>
void append(std::vector<T>& to, std::vector<T>&& more)
{
    to.insert(to.end(), std::make_move_iterator(more.begin()), std::make_move_iterator(more.end()));
}

void add(RegionAnswer& to, RegionAnswer&& more)
{
    append(to.bodies, std::move(more.bodies));
    append(to.faces, std::move(more.faces));
    append(to.edges, std::move(more.edges));
    append(to.frames, std::move(more.frames));
    append(to.curves, std::move(more.curves));
    append(to.singlePoints, std::move(more.singlePoints));
}

void sort(RegionAnswer& answer)
{
    const auto byId = [](const auto& a, const auto& b) {
        return std::tie(a.id, a.visual) < std::tie(b.id, b.visual); // two visuals of one id occur
    };
    const auto byPart = [](const RegionAnswer::Part& a, const RegionAnswer::Part& b) {
        return std::tie(a.id, a.visual, a.part) < std::tie(b.id, b.visual, b.part);
    };
    for (std::vector<RegionAnswer::Whole>* each :
         {&answer.bodies, &answer.frames, &answer.curves, &answer.singlePoints})
        std::ranges::sort(*each, byId);
    std::ranges::sort(answer.clouds, byId);
    std::ranges::sort(answer.faces, byPart);
    std::ranges::sort(answer.edges, byPart);
}

/// All objects that may be asked: handles are tools, not things in the station, and paint belongs to its body.
std::vector<const SelectableObject*> askedOf(const PrimitiveContainer& container)
{
    std::vector<const SelectableObject*> objects;
    for (const BVHPrimitive* primitive : container.primitives) {
        const auto* object = static_cast<const SelectableObject*>(primitive);
        if (object->enabled && !object->priority && !isPaint(*object))
            objects.push_back(object);
    }
    return objects;
}

void askObjects(const std::vector<const SelectableObject*>& objects, const RegionQuery& query, const RegionView& view,
                const ScreenRegion& region, const SeenMap* seen, RegionWork& work, RegionAnswer& answer)
{
    std::mutex merging;
    const auto askSome = [&](std::size_t begin, std::size_t end) {
        RegionAnswer some;
        for (; begin < end; ++begin) {
            if (begin % objectsOfStep == 0)
                work.advance(1);
            askObject(*objects[begin], query, view, region, seen, some);
        }
        const std::lock_guard lock(merging);
        add(answer, std::move(some));
    };
    if (objects.size() < worthThreads)
        askSome(0, objects.size());
    else
        parallelFor(objects.size(), askSome);
}

} // namespace

RegionView::RegionView(const visual::CameraSnapshot& camera)
    : view(widened(camera.view)), projection(widened(camera.projection)), width(camera.width), height(camera.height)
{
}

RegionView RegionView::OfMainCamera()
{
    const auto camera = cameraWithPixels();
    if (!camera)
        throw std::logic_error("there is no camera with a render target");
    return RegionView(*camera);
}

RegionQuery RegionQuery::Rectangle(double x1, double y1, double x2, double y2)
{
    return Polygon({{x1, y1}, {x2, y1}, {x2, y2}, {x1, y2}});
}

RegionQuery RegionQuery::Polygon(std::vector<rob::Vec2Template<double>> corners)
{
    RegionQuery query;
    query.corners = std::move(corners);
    return query;
}

RegionAnswer VisualSelection::askRegion(const RegionQuery& query, const RegionView& view) const
{
    check(query, view);
    const ScreenRegion region(query.corners, view.width, view.height);
    const std::shared_lock held(access);
    if (dirty)
        throw std::logic_error("the selection is not up to date");
    RegionAnswer answer;
    if (region.getBounds().isEmpty() || !(query.nearest <= query.farthest))
        return answer;
    RegionWork work(query);
    try {
        const RegionQuery::Kinds& kinds = query.kinds;
        const bool anyObject =
            kinds.bodies || kinds.faces || kinds.edges || kinds.frames || kinds.curves || kinds.singlePoints;
        const bool sightMatters = query.sight != RegionQuery::Sight::Through;
        const auto objects =
            anyObject || sightMatters ? askedOf(containers[0]) : std::vector<const SelectableObject*>();
        const auto ofClouds = kinds.points ? askedOf(containers[clouds]) : std::vector<const SelectableObject*>();
        const auto pointsOf = [](const SelectableObject* cloud) -> const CloudPoints& {
            return *static_cast<const PointCloudObject*>(cloud)->getPoints();
        };
        work.expect(1 + (anyObject ? objects.size() / objectsOfStep + 1 : 0));
        for (const SelectableObject* cloud : ofClouds)
            work.expect(RegionPoints::StepsOf(pointsOf(cloud)));
        work.advance(0);

        std::optional<SeenMap> seen;
        if (sightMatters) {
            std::vector<const SelectableObject*> bodies;
            std::ranges::copy_if(objects, std::back_inserter(bodies), [](auto* object) { return isBody(*object); });
            seen.emplace(query, view, region, bodies, work);
        }
        const SeenMap* sight = seen ? &*seen : nullptr;
        if (anyObject)
            askObjects(objects, query, view, region, sight, work, answer);
        for (const SelectableObject* cloud : ofClouds) {
            const RegionTest test(
                query, region,
                ObjectInView(view, rob::Posed(cloud->worldPose), rob::Vec3Template<double>(cloud->worldScale)));
            const layout::PointSet* hidden = static_cast<const PointCloudObject*>(cloud)->hidden.get();
            RegionPoints points(pointsOf(cloud), hidden, test, sight, work);
            work.advance(0);
            if (auto numbers = points.takeNumbers(); !numbers.empty())
                answer.clouds.push_back({cloud->visual, cloud->visual->getId(), points.isWhole(), std::move(numbers)});
        }
        sort(answer);
        work.finish();
    } catch (const RegionStopped&) {
        answer = {};
        answer.isStopped = true;
    }
    return answer;
}

} // namespace vrk::selection
