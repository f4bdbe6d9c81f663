#include "selection/pick/PickSearch.h"

#include "selection/CurveObject.h"
#include "selection/MeshObject.h"
#include "selection/PointCloudObject.h"
#include "selection/SensitiveEdge.h"
#include "selection/SensitiveFace.h"
#include "selection/SensitiveLine.h"
#include "selection/SensitiveMesh.h"
#include "selection/SensitivePoints.h"
#include "selection/ShapeBorders.h"
#include "selection/ShapeObject.h"
#include "selection/VisualSelection.h"
#include "selection/geometry/BVHWalk.h"
#include "selection/pick/BeamBoxTest.h"
#include "selection/pick/WatertightRay.h"
#include "visual/PointCloudVisual.h"

#include <TopExp.hxx>
#include <TopTools_IndexedMapOfShape.hxx>
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <stdexcept>
#include <tuple>

namespace vrk::selection {
namespace {

using Kind = SelectableObject::ObjectKind;

constexpr double infinite = std::numeric_limits<double>::infinity();
constexpr float everywhere = std::numeric_limits<float>::max();
constexpr PickKinds surfaceKinds{PickKind::Face, PickKind::Body, PickKind::MeshTriangle};

visual::Ray narrow(const PickRay& ray)
{
    return {rob::PosTemplate<float>(ray.origin), rob::DirTemplate<float>(ray.direction)};
}

bool isSurface(const SelectableObject& object)
{
    return (object.kind == Kind::Shape || object.kind == Kind::Mesh) && !isPaint(object);
}

ObjectPlace placeOf(const SelectableObject& object)
{
    if (object.kind == Kind::Mesh)
        return ObjectPlace(object.worldPose, static_cast<const MeshObject&>(object).getScale());
    return ObjectPlace(object.worldPose);
}

PickKind kindOfLine(const visual::Visual& visual)
{
    switch (visual.getType()) {
    case VisualType::Robtarget:
    case VisualType::JointTarget:
        return PickKind::Target;
    case VisualType::Frame:
    case VisualType::Tcp:
    case VisualType::WObj:
    case VisualType::UserFrame:
    case VisualType::ObjectFrame:
        return PickKind::Frame;
    default:
        return PickKind::Line;
    }
}

const SelectableObject& asObject(const BVHPrimitive* primitive)
{
    return *static_cast<const SelectableObject*>(primitive);
}

/// Visits every primitive whose box the beam may have something in common with.
template <typename Visit>
void walkBeam(const BVHNode* root, const PickRay& ray, const PickBeam& beam, double localUnits, Visit&& visit)
{
    if (root != nullptr)
        walkWithin(root, BeamBoxTest(ray, beam, localUnits), Reach(narrow(ray)), everywhere, visit);
}

double checked(double value, const char* complaint)
{
    if (!(value > 0) || !std::isfinite(value))
        throw std::invalid_argument(complaint);
    return value;
}

/// Throws what the query is to throw, in the order of its fields.
const PickQuery& checked(const PickQuery& query, const VisualSelection& service)
{
    if (!query.camera.hasPixels())
        throw std::invalid_argument("The camera of a pick has no pixels");
    checked(query.camera.devicePixelRatio, "The pixel ratio of a pick must be above 0 and finite");
    checked(query.radius, "The radius of a pick must be above 0 and finite");
    if (!std::isfinite(query.x) || !std::isfinite(query.y))
        throw std::invalid_argument("The pixel of a pick is not finite");
    if (service.isDirty())
        throw std::logic_error("The picking service is not up to date");
    return query;
}

} // namespace

PickSearch::PickSearch(const VisualSelection& service, const PickQuery& question)
    : service(service), query(checked(question, service)), lens(query.camera), ray(lens.rayThrough(query.x, query.y)),
      radius(query.radius * query.camera.devicePixelRatio)
{
}

// ---- what lies in the beam

std::vector<PickCandidate> PickSearch::gather(PickKinds kinds)
{
    beam = lens.beamThrough(query.x, query.y, radius);
    std::vector<PickCandidate> found;
    walkBeam(service.getObjectTree(), ray, beam, 1, [&](const BVHPrimitive* primitive) {
        const SelectableObject& object = asObject(primitive);
        switch (object.kind) {
        case Kind::Shape:
        case Kind::Mesh:
            if (isSurface(object))
                gatherSurface(object, kinds, found);
            break;
        case Kind::Curve:
            if (kinds.contains(PickKind::Curve))
                gatherCurve(object, found);
            break;
        case Kind::Line:
            if (kinds.contains(kindOfLine(*object.visual)))
                gatherLine(object, found);
            break;
        case Kind::Point:
            if (kinds.contains(PickKind::Point))
                gatherPoint(object, found);
            break;
        case Kind::PointCloud:
            break;
        }
    });
    if (kinds.contains(PickKind::CloudPoint))
        walkBeam(service.getCloudTree(), ray, beam, 1,
                 [&](const BVHPrimitive* primitive) { gatherCloud(asObject(primitive), found); });
    return found;
}

void PickSearch::gatherSurface(const SelectableObject& object, PickKinds kinds, std::vector<PickCandidate>& found)
{
    const Surface& surface = surfaces.emplace_back(Surface{&object, placeOf(object)});
    std::vector<Hit> hits;
    forHits(surface, ray, infinite, [&hits](const Hit& hit) { hits.push_back(hit); });
    // Of each face the nearest hit; of a mesh all triangles.
    const auto order = [](const Hit& hit) {
        return std::tuple(hit.face ? hit.face->getFaceIndex() : hit.triangle, hit.distance);
    };
    std::ranges::sort(hits, {}, order);
    const auto isOfOneThing = [](const Hit& a, const Hit& b) {
        return a.face ? a.face == b.face : a.triangle == b.triangle;
    };
    hits.erase(std::ranges::unique(hits, isOfOneThing).begin(), hits.end());
    const Hit* nearest = nullptr;
    for (const Hit& hit : hits) {
        found.push_back(candidateOf(hit, hit.face ? PickKind::Face : PickKind::MeshTriangle));
        noteFront(hit, surface.place);
        if (!nearest || hit.distance < nearest->distance)
            nearest = &hit;
    }
    if (nearest)
        found.push_back(candidateOf(*nearest, PickKind::Body));
    if (object.kind == Kind::Shape && kinds.containsAnyOf({PickKind::Edge, PickKind::Vertex}))
        gatherBorders(surface, kinds, found);
}

void PickSearch::gatherBorders(const Surface& surface, PickKinds kinds, std::vector<PickCandidate>& found) const
{
    struct Border {
        PickKind kind;
        unsigned number;
        Nearest nearest;
    };
    std::vector<Border> borders;
    const PickMatrix toClip = product(lens.getWorldToClip(), surface.place.getToWorld());
    const auto& shape = static_cast<const ShapeObject&>(*surface.object);
    const auto take = [&borders](PickKind kind, unsigned number, const std::optional<Nearest>& nearest) {
        if (!nearest)
            return;
        const auto known = std::ranges::find_if(
            borders, [&](const Border& border) { return border.kind == kind && border.number == number; });
        if (known == borders.end())
            borders.push_back({kind, number, *nearest});
        else if (nearest->pixels < known->nearest.pixels)
            known->nearest = *nearest;
    };
    walkBeam(shape.getBorders().getRoot(), surface.place.toLocal(ray), beam, 1, [&](const BVHPrimitive* primitive) {
        const auto& piece = static_cast<const ShapeBorders::Piece&>(*primitive);
        ClipPoint last = applied(toClip, piece.points[0]);
        if (piece.isVertex) {
            if (kinds.contains(PickKind::Vertex))
                take(PickKind::Vertex, piece.number, nearestOf(last, piece.points[0]));
            return;
        }
        for (std::size_t i = 1; kinds.contains(PickKind::Edge) && i < piece.points.size(); ++i) {
            const ClipPoint next = applied(toClip, piece.points[i]);
            take(PickKind::Edge, piece.number, nearestOf(last, next, piece.points[i - 1], piece.points[i]));
            last = next;
        }
    });
    for (Border& border : borders) {
        border.nearest.place = surface.place.toWorld(border.nearest.place);
        found.push_back(candidateOf(*surface.object, border.kind, border.number, border.nearest));
    }
}

/// The nearest of some line sections, its place in the world.
std::optional<PickSearch::Nearest> PickSearch::nearestOfLines(const PrimitiveContainer& lines, const ObjectPlace& place,
                                                              const BVHPrimitive** which) const
{
    std::optional<Nearest> best;
    const PickMatrix toClip = product(lens.getWorldToClip(), place.getToWorld());
    const auto look = [&](const BVHPrimitive* primitive) {
        const auto& line = static_cast<const SensitiveLine&>(*primitive);
        const rob::Posd start(line.getStart()), end(line.getEnd());
        const auto nearest = nearestOf(applied(toClip, start), applied(toClip, end), start, end);
        if (!nearest || (best && best->pixels <= nearest->pixels))
            return;
        best = nearest;
        *which = primitive;
    };
    if (lines.primitives.size() <= BVHLeaf::capacity) // which keeps no hierarchy unless it is asked for one
        std::ranges::for_each(lines.primitives, look);
    else
        walkBeam(lines.getRoot(), place.toLocal(ray), beam, place.getLocalUnits(), look);
    if (best)
        best->place = place.toWorld(best->place);
    return best;
}

void PickSearch::gatherCurve(const SelectableObject& object, std::vector<PickCandidate>& found) const
{
    const ObjectPlace place = placeOf(object);
    walkBeam(object.getRoot(), place.toLocal(ray), beam, 1, [&](const BVHPrimitive* primitive) {
        const auto& edge = static_cast<const SensitiveEdge&>(*primitive);
        const BVHPrimitive* section = nullptr;
        const auto nearest = nearestOfLines(edge, place * ObjectPlace(edge.getPose()), &section);
        if (!nearest)
            return;
        TopTools_IndexedMapOfShape edges;
        TopExp::MapShapes(static_cast<const CurveObject&>(object).getShape(), TopAbs_EDGE, edges);
        found.push_back(candidateOf(object, PickKind::Curve, edges.FindIndex(edge.getEdge()), *nearest));
    });
}

void PickSearch::gatherLine(const SelectableObject& object, std::vector<PickCandidate>& found) const
{
    const BVHPrimitive* section = nullptr;
    const auto nearest = nearestOfLines(object, placeOf(object), &section);
    if (!nearest)
        return;
    const auto number = std::ranges::find(object.primitives, section) - object.primitives.begin();
    found.push_back(candidateOf(object, kindOfLine(*object.visual), number, *nearest));
}

void PickSearch::gatherPoint(const SelectableObject& object, std::vector<PickCandidate>& found) const
{
    const rob::Posd place(object.worldPose.position); // which has the point's own place in it
    if (const auto nearest = nearestOf(applied(lens.getWorldToClip(), place), place))
        found.push_back(candidateOf(object, PickKind::Point, -1, *nearest));
}

std::vector<PickSearch::CloudPoint> PickSearch::pointsInBeam(const SelectableObject& object) const
{
    std::vector<CloudPoint> near;
    const ObjectPlace place = placeOf(object);
    const PickMatrix toClip = product(lens.getWorldToClip(), place.getToWorld());
    const auto& points = static_cast<const visual::PointCloudVisual&>(*object.visual).getPoints();
    const layout::PointSet* hidden = static_cast<const PointCloudObject&>(object).hidden.get();
    walkBeam(object.getRoot(), place.toLocal(ray), beam, 1, [&](const BVHPrimitive* primitive) {
        for (const unsigned index : static_cast<const SensitivePoints&>(*primitive).getIndices()) {
            if (hidden && hidden->contains(index))
                continue;
            const rob::Posd local(points[index]);
            const auto nearest = nearestOf(applied(toClip, local), local);
            if (!nearest)
                continue;
            const rob::Posd world = place.toWorld(local);
            near.push_back({nearest->pixels, (world - ray.origin).dot(ray.direction), 0, index, world});
        }
    });
    return near;
}

/// The points of a cloud that are near the middle of the beam hide those that lie well behind them, as a surface would: so
/// it is the front of a scan that is picked, and not what shows between its points.
void PickSearch::gatherCloud(const SelectableObject& object, std::vector<PickCandidate>& found) const
{
    std::vector<CloudPoint> near = pointsInBeam(object);
    double inFront = infinite;
    for (const CloudPoint& point : near)
        if (point.pixels <= radius / 2)
            inFront = std::min(inFront, point.distance);
    for (CloudPoint& point : near)
        if (const double behind = point.distance - inFront; behind > radius * lens.unitsPerPixel(point.place))
            point.behind = behind;
    const std::size_t count = std::min<std::size_t>(near.size(), query.pointsPerCloud);
    const auto order = [](const CloudPoint& point) {
        return std::tuple(point.behind > 0, point.pixels, point.distance, point.index);
    };
    std::ranges::partial_sort(near, near.begin() + static_cast<std::ptrdiff_t>(count), {}, order);
    for (std::size_t i = 0; i < count; ++i) {
        found.push_back(candidateOf(object, PickKind::CloudPoint, near[i].index, {near[i].pixels, near[i].place}));
        found.back().behindBy = near[i].behind;
    }
}

/// @param place  is handed back.
std::optional<PickSearch::Nearest> PickSearch::nearestOf(const ClipPoint& point, const rob::Posd& place) const
{
    if (!(point.beyondNear() >= 0 && point.w > 0))
        return std::nullopt;
    const rob::Vec2Template<double> pixel = lens.pixelOf(point);
    const double pixels = std::hypot(pixel.x - query.x, pixel.y - query.y);
    return pixels <= radius ? std::optional(Nearest{pixels, place}) : std::nullopt;
}

/// Of a section, as it is seen: the nearest place in pixels, and where that is on the section itself.
std::optional<PickSearch::Nearest> PickSearch::nearestOf(const ClipPoint& a, const ClipPoint& b, const rob::Posd& start,
                                                         const rob::Posd& end) const
{
    // Only what lies beyond the near plane is seen.
    double from = 0, to = 1;
    const double atA = a.beyondNear(), atB = b.beyondNear();
    if (!(atA >= 0 || atB >= 0))
        return std::nullopt;
    if (atA < 0)
        from = atA / (atA - atB);
    if (atB < 0)
        to = atA / (atA - atB);
    const ClipPoint first = a.towards(b, from), second = a.towards(b, to);
    if (!(first.w > 0 && second.w > 0))
        return std::nullopt;
    const rob::Vec2Template<double> p = lens.pixelOf(first), q = lens.pixelOf(second);
    const rob::Vec2Template<double> along = q - p, toPixel = rob::Vec2Template<double>(query.x, query.y) - p;
    const double length = along.dot(along);
    // One that is seen end on is where it begins.
    constexpr double dot = 1e-12; // square pixels
    double part = length > dot ? std::clamp(toPixel.dot(along) / length, 0.0, 1.0)
                               : (second.z / second.w < first.z / first.w ? 1.0 : 0.0);
    const double pixels = (toPixel - along * part).length();
    if (!(pixels <= radius))
        return std::nullopt;
    // Halfway in the view is nearer to the eye than halfway in the world.
    part = part * first.w / (part * first.w + (1 - part) * second.w);
    return Nearest{pixels, start + (end - start) * (from + (to - from) * part)};
}

// ---- surfaces under a ray

/// Hands over what the ray meets of a surface within `limit`, which the visitor may lower.
template <typename Visit>
void PickSearch::forHits(const Surface& surface, const PickRay& along, const double& limit, const Visit& visit)
{
    const SelectableObject& object = *surface.object;
    const PickRay local = surface.place.toLocal(along);
    if (object.kind == Kind::Mesh) {
        for (const BVHPrimitive* mesh : object.primitives)
            walkTriangles(*static_cast<const SensitiveMesh*>(mesh), local, limit, [&](double distance, unsigned index) {
                visit(Hit{distance, &object, nullptr, index});
            });
        return;
    }
    const BVHNode* root = object.getRoot();
    if (root == nullptr)
        return;
    const auto narrowed = [&limit] { return static_cast<float>(std::min<double>(limit, everywhere)); };
    float narrowLimit = narrowed();
    walkWithin(root, BeamBoxTest(local, {}, 1), Reach(narrow(local)), narrowLimit, [&](const BVHPrimitive* primitive) {
        const auto* face = static_cast<const SensitiveFace*>(primitive);
        const auto test = [&](const PickRay& inFace) {
            walkTriangles(*face, inFace, limit, [&](double distance, unsigned index) {
                visit(Hit{distance, &object, face, index});
            });
        };
        if (face->hasPose)
            test(ObjectPlace::Of(face->getFace().Location().Transformation()).toLocal(local));
        else
            test(local);
        narrowLimit = narrowed();
    });
}

/// What is nearest, for queries in which nothing but distances decides: the nearest hit, and those that are equally near;
/// the same of what is on top.
std::vector<PickCandidate> PickSearch::nearestSurfaces() const
{
    struct Found {
        double limit = infinite;
        std::vector<Hit> hits;
    };
    Found onTop, others;
    const BVHNode* root = service.getObjectTree();
    if (root == nullptr)
        return {};
    const BeamBoxTest test(ray, {}, 1);
    const Reach reach(narrow(ray));
    float limit = everywhere;
    walkWithin(root, test, reach, limit, [&](const BVHPrimitive* primitive) {
        const SelectableObject& object = asObject(primitive);
        if (!isSurface(object) || !object.visual->isVisible())
            return;
        Found& found = object.priority ? onTop : others;
        if (test.entry(object.box) > reach(static_cast<float>(std::min<double>(found.limit, everywhere))))
            return;
        forHits({&object, placeOf(object)}, ray, found.limit, [&found](const Hit& hit) {
            if (hit.distance < found.limit)
                found.hits.clear();
            found.hits.push_back(hit);
            found.limit = hit.distance;
        });
        if (!service.hasObjectsOnTop()) // which count from any distance
            limit = static_cast<float>(std::min<double>(others.limit, everywhere));
    });
    std::vector<PickCandidate> nearest;
    for (const Found& found : {onTop, others})
        for (const Hit& hit : found.hits)
            for (const PickKind kind : {hit.face ? PickKind::Face : PickKind::MeshTriangle, PickKind::Body})
                if (query.kinds.contains(kind))
                    nearest.push_back(candidateOf(hit, kind));
    return nearest;
}

bool PickSearch::hidesOthers(const Hit& hit) const
{
    if (hit.object->priority || !hit.object->visual->isVisible())
        return false;
    return !query.filter || query.filter(candidateOf(hit, hit.face ? PickKind::Face : PickKind::MeshTriangle)).empty();
}

void PickSearch::noteFront(const Hit& hit, const ObjectPlace& place)
{
    if ((front && front->distance <= hit.distance) || !hidesOthers(hit))
        return;
    front = hit;
    const auto* set = hit.face ? static_cast<const SensitiveTriangleSet*>(hit.face)
                               : static_cast<const SensitiveMesh*>(hit.object->primitives.front());
    rob::TriangleTemplate<double> t = set->getStoredTriangle(hit.triangle);
    for (rob::Posd* corner : {&t.a, &t.b, &t.c}) {
        if (hit.face && hit.face->hasPose)
            *corner = ObjectPlace::Of(hit.face->getFace().Location().Transformation()).toWorld(*corner);
        *corner = place.toWorld(*corner);
    }
    frontNormal = (t.b - t.a).cross(t.c - t.a);
}

PickCandidate PickSearch::candidateOf(const SelectableObject& object, PickKind kind, std::int64_t subId) const
{
    PickCandidate candidate;
    candidate.kind = kind;
    candidate.visual = object.visual;
    candidate.visualId = object.visual->getId();
    candidate.subId = subId;
    candidate.isOnTop = object.priority;
    return candidate;
}

PickCandidate PickSearch::candidateOf(const Hit& hit, PickKind kind) const
{
    const std::int64_t subId =
        kind == PickKind::Body ? -1 : std::int64_t{hit.face ? hit.face->getFaceIndex() : hit.triangle};
    PickCandidate candidate = candidateOf(*hit.object, kind, subId);
    candidate.place = ray.at(hit.distance);
    candidate.distance = hit.distance;
    return candidate;
}

PickCandidate PickSearch::candidateOf(const SelectableObject& object, PickKind kind, std::int64_t subId,
                                      const Nearest& nearest) const
{
    PickCandidate candidate = candidateOf(object, kind, subId);
    candidate.place = nearest.place;
    candidate.distance = (nearest.place - ray.origin).dot(ray.direction);
    candidate.pixels = nearest.pixels / query.camera.devicePixelRatio;
    return candidate;
}

// ---- what becomes of it

void PickSearch::judge(PickCandidate& candidate) const
{
    const auto settle = [&candidate](PickVerdict verdict, std::string reason) {
        candidate.verdict = verdict;
        candidate.reason = std::move(reason);
        if (verdict != PickVerdict::Behind)
            candidate.behindBy = 0;
    };
    if (!candidate.visual->isVisible())
        return settle(PickVerdict::Hidden, "hidden");
    if (!query.kinds.contains(candidate.kind))
        return settle(PickVerdict::WrongKind, textOfWrongKind());
    if (query.filter)
        if (std::string reason = query.filter(candidate); !reason.empty())
            return settle(PickVerdict::Rejected, std::move(reason));
    if (!query.seesThroughSurfaces && !candidate.isOnTop) {
        candidate.behindBy = hiddenBy(candidate);
        if (candidate.behindBy > 0)
            return settle(PickVerdict::Behind, fmt::format("behind by {:.3g} {}", candidate.behindBy, query.unit));
    }
    settle(PickVerdict::Possible, "possible");
}

/// By how much a surface lies in front of the candidate; 0 for none.
double PickSearch::hiddenBy(const PickCandidate& candidate) const
{
    if (surfaceKinds.contains(candidate.kind))
        return front ? std::max(0.0, candidate.distance - front->distance) : 0;
    if (candidate.behindBy > 0) // the points of its own cloud
        return candidate.behindBy;
    const rob::Vec2Template<double> pixel = lens.pixelOf(applied(lens.getWorldToClip(), candidate.place));
    const PickRay towards = lens.rayThrough(pixel.x, pixel.y);
    const double distance = (candidate.place - towards.origin).dot(towards.direction);
    // What lies on a surface may lie somewhat behind its triangles.
    const double limit = distance - radius / 2 * lens.unitsPerPixel(candidate.place);
    // The surface under the pixel itself, as far as its plane goes on: what is seen past its border is not meant.
    if (front && front->object->visual != candidate.visual) {
        const double slope = frontNormal.dot(towards.direction), slopeOfRay = frontNormal.dot(ray.direction);
        const double plane = frontNormal.dot(ray.at(front->distance) - towards.origin) / slope;
        if (slope * slopeOfRay > 0 && plane >= 0 && plane < limit)
            return distance - plane;
    }
    const std::optional<double> hiding = nearestHiding(towards, limit);
    return hiding ? distance - *hiding : 0;
}

/// The distance of the surface that is nearest within `limit`.
std::optional<double> PickSearch::nearestHiding(const PickRay& towards, double limit) const
{
    const BeamBoxTest test(towards, {}, 1);
    const Reach reach(narrow(towards));
    const double before = limit;
    for (const Surface& surface : surfaces)
        if (test.entry(surface.object->box) <= reach(static_cast<float>(limit)))
            forHits(surface, towards, limit, [&](const Hit& hit) {
                if (hit.distance < limit && hidesOthers(hit))
                    limit = hit.distance;
            });
    return limit < before ? std::optional(limit) : std::nullopt;
}

bool PickSearch::isBefore(const PickCandidate& a, const PickCandidate& b) const
{
    const auto key = [this](const PickCandidate& c) {
        return std::tuple(!c.isOnTop, query.priorities[static_cast<unsigned>(c.kind)], c.pixels, c.distance, c.kind,
                          c.visualId, c.subId);
    };
    return key(a) < key(b);
}

std::string PickSearch::textOfWrongKind() const
{
    std::vector<std::string> names;
    for (unsigned i = 0; i < pickKindCount; ++i)
        if (const auto kind = static_cast<PickKind>(i); query.kinds.contains(kind))
            names.push_back(fmt::format("{} {}", kind == PickKind::Edge ? "an" : "a", nameOf(kind)));
    if (names.empty())
        return "no kind is wanted";
    std::string text = "not " + names.front();
    for (std::size_t i = 1; i < names.size(); ++i)
        text += (i + 1 < names.size() ? ", " : " or ") + names[i];
    return text;
}

PickAnswer PickSearch::all()
{
    PickAnswer answer{gather(PickKinds::All())};
    for (PickCandidate& candidate : answer.candidates)
        judge(candidate);
    std::ranges::sort(answer.candidates, [this](const PickCandidate& a, const PickCandidate& b) {
        const bool isPossible = a.verdict == PickVerdict::Possible, isOther = b.verdict == PickVerdict::Possible;
        if (isPossible != isOther)
            return isPossible;
        if (isPossible || a.distance == b.distance)
            return isBefore(a, b);
        return a.distance < b.distance;
    });
    if (!answer.candidates.empty() && answer.candidates.front().verdict == PickVerdict::Possible) {
        answer.candidates.front().verdict = PickVerdict::Chosen;
        answer.candidates.front().reason = "chosen";
    }
    return answer;
}

std::optional<PickCandidate> PickSearch::best()
{
    PickKinds others = query.kinds;
    for (const PickKind kind : {PickKind::Face, PickKind::Body, PickKind::MeshTriangle})
        others.remove(kind);
    const bool isQuick = others.empty() && !query.filter && !query.seesThroughSurfaces;
    std::vector<PickCandidate> found = isQuick ? nearestSurfaces() : gather(query.kinds);
    std::ranges::sort(found, [this](const PickCandidate& a, const PickCandidate& b) { return isBefore(a, b); });
    for (PickCandidate& candidate : found) {
        if (!isQuick)
            judge(candidate);
        if (candidate.verdict != PickVerdict::Possible)
            continue;
        candidate.verdict = PickVerdict::Chosen;
        candidate.reason = "chosen";
        return candidate;
    }
    return std::nullopt;
}

} // namespace vrk::selection
