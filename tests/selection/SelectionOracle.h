#pragma once

#include "platform/layout/PointCloud.h"
#include "selection/MeshObject.h"
#include "selection/SensitiveEdge.h"
#include "selection/SensitiveFace.h"
#include "selection/SensitiveLine.h"
#include "selection/SensitiveMesh.h"
#include "selection/SensitivePoints.h"
#include "selection/ViewPixels.h"
#include "selection/geometry/Math.h"
#include "visual/PointVisual.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <optional>
#include <set>
#include <vector>

/// What picking must answer, by loops over every primitive and in double precision.
namespace vrk::selection::oracle {

using Vec = rob::Vec3d;

inline constexpr double infinite = std::numeric_limits<double>::infinity();
inline constexpr double blur = 0.005; // units within which rounding may decide

inline Vec wide(const rob::Posf& p)
{
    return {p.x, p.y, p.z};
}

inline Vec wide(const rob::Dirf& d)
{
    return {d.x, d.y, d.z};
}

/// A pose in double precision.
class Frame {
public:
    explicit Frame(const rob::Posef& pose) : pose(pose) {}
    Vec out(const Vec& p) const { return Vec(pose * rob::Posd(p.x, p.y, p.z)); }
    Vec in(const Vec& p) const { return Vec(pose.inverse() * rob::Posd(p.x, p.y, p.z)); }
    Vec turnedIn(const Vec& d) const { return Vec(pose.rotation().inverse() * rob::Dird(d.x, d.y, d.z)); }

private:
    rob::Posed pose;
};

struct HalfLine {
    Vec origin, direction;
};

struct Hit {
    double distance = infinite; // as picking tells it
    visual::Visual* visual = nullptr;
    TopoDS_Shape face;
    Vec position;
};

struct Answer : Hit {
    int pointIndex = -1;
    bool isUnsure = false;
};

enum class Meeting { No, Yes, Unsure };

/// Where a line meets a triangle, and how surely it does. @param doubt  as far from the border rounding may decide.
inline Meeting meet(const HalfLine& ray, const Vec (&corner)[3], double& t, double doubt = blur)
{
    const Vec normal = (corner[1] - corner[0]).cross(corner[2] - corner[0]);
    const double area = normal.length();
    if (area < 1e-12)
        return Meeting::No;
    const double slope = normal.dot(ray.direction) / area / ray.direction.length();
    if (std::abs(slope) < 1e-9)
        return Meeting::No;
    t = normal.dot(corner[0] - ray.origin) / normal.dot(ray.direction);
    const Vec p = ray.origin + ray.direction * t;
    double inside = infinite; // distance from the border, negative outside
    for (int i = 0; i < 3; ++i) {
        const Vec edge = corner[(i + 1) % 3] - corner[i];
        inside = std::min(inside, edge.cross(p - corner[i]).dot(normal) / area / edge.length());
    }
    const double margin = doubt / std::abs(slope);
    return inside > margin ? Meeting::Yes : inside < -margin ? Meeting::No : Meeting::Unsure;
}

/// Whether the ray meets a box that rounding may make larger or smaller.
inline Meeting meet(const HalfLine& ray, const Box& box)
{
    const auto meets = [&](double grown) {
        double from = 0, to = infinite;
        for (unsigned axis = 0; axis < 3; ++axis) {
            const double low = rob::Vec3f(box.min)[axis] - grown, high = rob::Vec3f(box.max)[axis] + grown;
            double near = (low - ray.origin[axis]) / ray.direction[axis];
            double far = (high - ray.origin[axis]) / ray.direction[axis];
            if (near > far)
                std::swap(near, far);
            from = std::max(from, near);
            to = std::min(to, far);
        }
        return from <= to;
    };
    return meets(-2 * blur) ? Meeting::Yes : meets(2 * blur) ? Meeting::Unsure : Meeting::No;
}

/// All triangles of an object in the world.
template <typename Call>
void forTriangles(const SelectableObject& object, const Call& call)
{
    const Frame world(object.worldPose);
    rob::Vec3f scale(1, 1, 1);
    if (const auto* mesh = dynamic_cast<const MeshObject*>(&object))
        scale = mesh->getScale();
    for (const BVHPrimitive* part : object.primitives) {
        const auto& set = dynamic_cast<const SensitiveTriangleSet&>(*part);
        const auto* face = dynamic_cast<const SensitiveFace*>(part);
        const Frame located(set.pose);
        for (const BVHPrimitive* primitive : set.primitives) {
            rob::Trianglef stored;
            set.getTriangle(stored, static_cast<const SensitiveIndexedTriangle&>(*primitive));
            Vec corners[3] = {wide(stored.c), wide(stored.b), wide(stored.a)};
            for (Vec& corner : corners) {
                corner = located.out(corner);
                corner = world.out({corner.x * scale.x, corner.y * scale.y, corner.z * scale.z});
            }
            call(corners, face);
        }
    }
}

/// Collects what is hit, and what may be.
class Search {
public:
    void add(Meeting meeting, const Hit& hit)
    {
        if (meeting != Meeting::No)
            (meeting == Meeting::Yes ? sure : maybe).push_back(hit);
    }
    bool empty() const { return sure.empty() && maybe.empty(); }
    Answer nearest() const
    {
        constexpr double tie = 0.05;
        Answer best;
        for (const Hit& hit : sure)
            if (hit.distance < best.distance)
                static_cast<Hit&>(best) = hit;
        for (const Hit& hit : maybe)
            best.isUnsure = best.isUnsure || hit.distance < best.distance + tie;
        for (const Hit& hit : sure)
            best.isUnsure = best.isUnsure || (hit.distance < best.distance + tie &&
                                              (hit.visual != best.visual || !hit.face.IsEqual(best.face)));
        return best;
    }

private:
    std::vector<Hit> sure, maybe;
};

inline void addTriangles(Search& search, const SelectableObject& object, const HalfLine& ray)
{
    double perUnit = 1; // a stretched mesh tells distances of its own
    if (const auto* mesh = dynamic_cast<const MeshObject*>(&object)) {
        const Vec d = Frame(object.worldPose).turnedIn(ray.direction);
        perUnit = Vec(d.x / mesh->getScale().x, d.y / mesh->getScale().y, d.z / mesh->getScale().z).length();
    }
    forTriangles(object, [&](const Vec(&corners)[3], const SensitiveFace* face) {
        double t = 0;
        const Meeting meeting = meet(ray, corners, t);
        if (meeting != Meeting::No && t > -blur)
            search.add(t > blur ? meeting : Meeting::Unsure,
                       {t * perUnit, object.visual, face ? TopoDS_Shape(face->getFace()) : TopoDS_Shape(),
                        ray.origin + ray.direction * t});
    });
}

/// As lines are asked: near enough at their nearest point, and within the box that was made for them.
inline void addLine(Search& search, const SelectableObject& object, const SensitiveLine& line, const HalfLine& local)
{
    const Vec start = wide(line.getStart()), along = wide(line.getEnd()) - start, back = local.origin - start;
    const double b = local.direction.dot(along), c = along.dot(along);
    const double p = back.dot(local.direction), f = back.dot(along), det = c - b * b;
    double t = (f * b - p * c) / det, s = (f - p * b) / det;
    if (t < 0) {
        t = 0;
        s = std::clamp(f / c, 0.0, 1.0);
    } else if (s < 0) {
        s = 0;
        t = std::max(0.0, -p);
    } else if (s > 1) {
        s = 1;
        t = std::max(0.0, b - p);
    }
    const Vec onLine = start + along * s;
    const double tolerance =
        5.0 * worldUnitsPerPixel(static_cast<float>((onLine - local.origin).length())).value_or(1.0f);
    const double apart = (onLine - (local.origin + local.direction * t)).length();
    const Meeting inBox = meet(local, line.box);
    if (apart > tolerance + 2 * blur || inBox == Meeting::No)
        return;
    const bool isSure = apart < tolerance - 2 * blur && inBox == Meeting::Yes;
    search.add(isSure ? Meeting::Yes : Meeting::Unsure,
               {t - tolerance / 2, object.visual, {}, Frame(object.worldPose).out(onLine)});
}

inline void addLines(Search& search, const SelectableObject& object, const HalfLine& ray)
{
    const Frame world(object.worldPose);
    const HalfLine local{world.in(ray.origin), world.turnedIn(ray.direction)};
    for (const BVHPrimitive* part : object.primitives) {
        if (const auto* line = dynamic_cast<const SensitiveLine*>(part))
            addLine(search, object, *line, local);
        if (const auto* edge = dynamic_cast<const SensitiveEdge*>(part))
            for (const BVHPrimitive* section : edge->primitives)
                addLine(search, object, static_cast<const SensitiveLine&>(*section), local);
    }
}

inline double distanceToLine(const Vec& p, const HalfLine& line)
{
    return (p - line.origin).cross(line.direction).length() / line.direction.length();
}

inline void addPoint(Search& search, const SelectableObject& object, const HalfLine& ray)
{
    const auto& point = dynamic_cast<const visual::PointVisual&>(*object.visual);
    const Vec p = Frame(point.getWorldPose()).out(wide(point.getPntPos()));
    const double apart = distanceToLine(p, ray);
    const Meeting inBox = meet(ray, object.box);
    if (apart > 2 + 2 * blur || inBox == Meeting::No)
        return;
    search.add(apart < 2 - 2 * blur && inBox == Meeting::Yes ? Meeting::Yes : Meeting::Unsure,
               {std::abs((p - ray.origin).dot(ray.direction)), object.visual, {}, p});
}

/// Whether a component is so small that the tests of boxes take it for zero.
inline bool isNearlyParallel(const Vec& d)
{
    return std::min({std::abs(d.x), std::abs(d.y), std::abs(d.z)}) < 0.0011;
}

inline Answer select(const std::vector<const SelectableObject*>& objects, const Ray& asked)
{
    using Kind = SelectableObject::ObjectKind;
    const HalfLine ray{wide(asked.origin), wide(asked.direction)};
    Search withPriority, others;
    bool isParallel = isNearlyParallel(ray.direction);
    for (const SelectableObject* object : objects) {
        if (!object->enabled || object->kind == Kind::PointCloud)
            continue;
        isParallel = isParallel || isNearlyParallel(Frame(object->worldPose).turnedIn(ray.direction));
        Search& search = object->priority ? withPriority : others;
        if (object->kind == Kind::Shape || object->kind == Kind::Mesh)
            addTriangles(search, *object, ray);
        else if (object->kind == Kind::Point)
            addPoint(search, *object, ray);
        else
            addLines(search, *object, ray);
    }
    Answer answer = withPriority.empty() ? others.nearest() : withPriority.nearest();
    answer.isUnsure = answer.isUnsure || isParallel;
    return answer;
}

inline Answer selectPoint(const SelectableObject& cloud, const layout::PointCloud::Points& points, const Ray& asked)
{
    constexpr double tolerance = 3;
    const Frame world(cloud.worldPose);
    const HalfLine local{world.in(wide(asked.origin)), world.turnedIn(wide(asked.direction))};
    std::vector<Meeting> groupMeets(points.size(), Meeting::No);
    for (const BVHPrimitive* part : cloud.primitives)
        for (const unsigned index : static_cast<const SensitivePoints*>(part)->getIndices())
            groupMeets[index] = meet(local, part->box);
    Answer best;
    double second = infinite;
    for (std::size_t i = 0; i < points.size(); ++i) {
        const Vec p = wide(points[i]);
        const double apart = distanceToLine(p, local);
        if (!(apart < tolerance + blur) || groupMeets[i] == Meeting::No)
            continue;
        best.isUnsure = best.isUnsure || apart > tolerance - blur || groupMeets[i] == Meeting::Unsure;
        const double range = (p - local.origin).length();
        second = std::min(second, std::max(range, best.distance));
        if (range < best.distance) {
            best.distance = range;
            best.pointIndex = static_cast<int>(i);
        }
    }
    best.isUnsure = best.isUnsure || second - best.distance < blur || isNearlyParallel(wide(asked.direction)) ||
                    isNearlyParallel(local.direction);
    return best;
}

struct Touch {
    std::map<visual::Visual*, double> touched; // the least fraction of the line
    bool isUnsure = false;
};

inline bool canBeSensed(const SelectableObject& object)
{
    using Kind = SelectableObject::ObjectKind;
    return object.enabled && object.detectable && (object.kind == Kind::Shape || object.kind == Kind::Mesh);
}

inline Touch sense(const std::vector<const SelectableObject*>& objects, const rob::Linef& line)
{
    const Vec start = wide(line.start), along = wide(line.end) - start;
    const double slack = blur / along.length();
    Touch touch;
    for (const SelectableObject* object : objects) {
        if (!canBeSensed(*object))
            continue;
        forTriangles(*object, [&](const Vec(&corners)[3], const SensitiveFace*) {
            double t = -1;
            const Meeting meeting = meet({start, along}, corners, t);
            if (meeting == Meeting::No || t < -slack || t > 1 + slack)
                return;
            if (meeting == Meeting::Unsure || t < slack || t > 1 - slack) {
                touch.isUnsure = true;
                return;
            }
            const auto [at, isNew] = touch.touched.emplace(object->visual, t);
            at->second = std::min(at->second, t);
        });
    }
    return touch;
}

/// With the same test of two triangles, in the same coordinates, but for every one.
inline std::set<visual::Visual*> sense(const std::vector<const SelectableObject*>& objects,
                                       const rob::Trianglef& triangle)
{
    std::set<visual::Visual*> touched;
    for (const SelectableObject* object : objects) {
        if (!canBeSensed(*object))
            continue;
        rob::Vec3f scale(1, 1, 1);
        if (const auto* mesh = dynamic_cast<const MeshObject*>(object))
            scale = mesh->getScale();
        rob::Trianglef local = triangle.transformed(object->inverseWorldPose);
        for (rob::Posf* corner : {&local.a, &local.b, &local.c})
            *corner = {corner->x / scale.x, corner->y / scale.y, corner->z / scale.z};
        for (const BVHPrimitive* part : object->primitives) {
            const auto& set = dynamic_cast<const SensitiveTriangleSet&>(*part);
            const rob::Trianglef asked = set.hasPose ? local.transformed(set.inversePose) : local;
            for (const BVHPrimitive* primitive : set.primitives) {
                rob::Trianglef mine;
                set.getTriangle(mine, static_cast<const SensitiveIndexedTriangle&>(*primitive));
                if (Math::Intersect(asked, mine))
                    touched.insert(object->visual);
            }
        }
    }
    return touched;
}

} // namespace vrk::selection::oracle
