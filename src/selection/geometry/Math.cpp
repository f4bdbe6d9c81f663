#include "selection/geometry/Math.h"

#include "selection/geometry/Result.h"

#include <algorithm>
#include <cmath>

namespace vrk::selection {
namespace {

using Pos = rob::PosTemplate<float>;
using Pos2 = rob::Vec2Template<float>;
using Vec = rob::Vec3Template<float>;

// Relative to the squared length of a normal: distances from a plane below it count as 0.
constexpr float squaredTolerance = 1.0000001e-6f;

/// Normal to the triangle, seen counter-clockwise, twice its area long.
Vec newellNormal(const Pos& a, const Pos& b, const Pos& c)
{
    Vec n;
    const auto addEdge = [&n](const Pos& i, const Pos& j) {
        n.x += (i.y - j.y) * (i.z + j.z);
        n.y += (i.z - j.z) * (i.x + j.x);
        n.z += (i.x - j.x) * (i.y + j.y);
    };
    addEdge(a, b);
    addEdge(b, c);
    addEdge(c, a);
    return n;
}

/// The axis along which a plane is flattened with the least loss.
unsigned axisToDrop(const Vec& normal)
{
    const float x = std::abs(normal.x), y = std::abs(normal.y), z = std::abs(normal.z);
    if (x > y)
        return x > z ? 0 : 2;
    return y > z ? 1 : 2;
}

Pos2 without(unsigned axis, const Pos& p)
{
    return axis == 0 ? Pos2(p.y, p.z) : axis == 1 ? Pos2(p.x, p.z) : Pos2(p.x, p.y);
}

/// Whether the plane that three distances are from has all of them strictly on one side.
bool onOneSide(const float (&d)[3])
{
    return (d[0] > 0 && d[1] > 0 && d[2] > 0) || (d[0] < 0 && d[1] < 0 && d[2] < 0);
}

bool haveOppositeSigns(float a, float b)
{
    return (a > 0 && b < 0) || (a < 0 && b > 0);
}

/// Distances of p[0..2] from the plane through `origin` with normal `n`, times the length of `n`.
void scaledDistances(const Vec& n, const Pos& origin, const Pos* const (&p)[3], float (&d)[3])
{
    const float offset = n.dot(origin);
    for (int i = 0; i < 3; ++i)
        d[i] = n.dot(*p[i]) - offset;
}

void zeroSmall(const Vec& n, float (&d)[3])
{
    const float limit = n.dot(n) * squaredTolerance;
    for (float& v : d) {
        if (v * v < limit)
            v = 0;
    }
}

bool allZero(const float (&d)[3])
{
    return d[0] == 0 && d[1] == 0 && d[2] == 0;
}

} // namespace

SurfaceNormalNotAvailable::SurfaceNormalNotAvailable() : std::logic_error("Surface normal is not available") {}

SurfaceNormalNotAvailable::~SurfaceNormalNotAvailable() = default;

float Math::DistancePointLine(const Pos& p, const Pos& a, const Pos& b)
{
    // From the end that is further away: the rest of a long vector has fewer digits of noise.
    const Vec r1 = p - a, r2 = p - b;
    const Vec r = r1.length() > r2.length() ? r1 : r2;
    const Dir u = rob::normalized(b - a);
    return (r - u * r.dot(u)).length();
}

float Math::DistancePointLine(const Pos& p, const Pos& o, const Dir& dir)
{
    return (p - o).cross(rob::normalized(dir)).length();
}

float Math::DistancePointPlane(const Pos& p, const Pos& a, const Pos& b, const Pos& c)
{
    return std::abs(SignedDistancePointPlane(p, a, b, c));
}

float Math::SignedDistancePointPlane(const Pos& p, const Pos& a, const Pos& b, const Pos& c)
{
    return (p - a).dot(rob::normalized(newellNormal(a, b, c)));
}

bool Math::PointOutsideOfPlane(const Pos& p, const Pos& o, const Dir& n)
{
    return (p - o).dot(n) > 0;
}

std::pair<bool, float> Math::PointOutsideOfPlane(const Pos& p, const Pos& a, const Pos& b, const Pos& c)
{
    const Vec n = (b - a).cross(c - a);
    const Vec v = p - a;
    if (n.length() < epsilon || v.length() < epsilon)
        return {false, 0.0f};
    const Dir unit = rob::normalized(n);
    if (static_cast<double>(unit.dot(rob::normalized(v))) > static_cast<double>(epsilon))
        return {true, unit.dot(v)};
    return {false, 0.0f};
}

Math::Pos Math::GetIntersectionPoint(const Pos& a0, const Pos& a1, const Pos& a2, const Pos& b0, const Pos& b1,
                                     const Pos& b2)
{
    const Pos* const a[3] = {&a0, &a1, &a2};
    const Pos* const b[3] = {&b0, &b1, &b2};
    const auto inA = [&](const Pos& p) { return pointInTriangle3D(p, a0, a1, a2); };
    const auto inB = [&](const Pos& p) { return pointInTriangle3D(p, b0, b1, b2); };

    // A corner of one that lies in the other.
    float da[3];
    for (int i = 0; i < 3; ++i)
        da[i] = SignedDistancePointPlane(*a[i], b0, b1, b2);
    for (int i = 0; i < 3; ++i) {
        if (isZero(da[i]) && inB(*a[i]))
            return *a[i];
    }
    float db[3];
    for (int i = 0; i < 3; ++i)
        db[i] = SignedDistancePointPlane(*b[i], a0, a1, a2);
    for (int i = 0; i < 3; ++i) {
        if (isZero(db[i]) && inA(*b[i]))
            return *b[i];
    }

    // An edge of one that goes through the other.
    static constexpr int edges[3][2] = {{0, 1}, {0, 2}, {1, 2}};
    const auto crossing = [](const Pos& i, const Pos& j, float di, float dj) {
        return i + (j - i) * (-di / (dj - di));
    };
    for (const auto& [i, j] : edges) {
        if (haveOppositeSigns(da[i], da[j])) {
            const Pos point = crossing(*a[i], *a[j], da[i], da[j]);
            if (inB(point))
                return point;
        }
    }
    for (const auto& [i, j] : edges) {
        if (haveOppositeSigns(db[i], db[j])) {
            const Pos point = crossing(*b[i], *b[j], db[i], db[j]);
            if (inA(point))
                return point;
        }
    }
    return {};
}

Result Math::Intersect(const Line& line, const Triangle& triangle)
{
    const Dir d = line.getDirection();
    const Vec e1 = triangle.b - triangle.a, e2 = triangle.c - triangle.a;
    const Vec p = d.cross(e2);
    const float det = e1.dot(p);
    if (isZero(det)) {
        try {
            if (std::abs(distanceOfPointToSurface(line.start, triangle.a, e1.cross(e2))) > epsilon)
                return {};
        } catch (const SurfaceNormalNotAvailable&) {
            return {}; // a triangle of no area is not there
        }
        Result result = lineToTriangle2D(line, triangle);
        if (result.hit)
            result.position = result.localPosition = line.start + (line.end - line.start) * result.distance;
        return result;
    }

    // Each limit is written so that a NaN is a miss.
    const float inv = static_cast<float>(1.0 / static_cast<double>(det));
    const Vec s = line.start - triangle.a;
    const float u = s.dot(p) * inv;
    if (!(u >= 0 && u <= 1))
        return {};
    const Vec q = s.cross(e1);
    const float w = d.dot(q) * inv;
    if (!(w >= 0 && u + w <= 1))
        return {};
    const float t = e2.dot(q) * inv;
    const float length = line.getLength();
    if (!(t >= 0 && t <= length))
        return {};
    Result result;
    result.hit = true;
    result.distance = t / length;
    result.position = result.localPosition = line.start + d * t;
    return result;
}

/// Cuts the line common to both planes with each triangle and compares the two intervals: Moeller, "A Fast
/// Triangle-Triangle Intersection Test" (1997), in its form without divisions.
bool Math::Intersect(const Triangle& a, const Triangle& b)
{
    const Pos* const as[3] = {&a.a, &a.b, &a.c};
    const Pos* const bs[3] = {&b.a, &b.b, &b.c};

    const Vec n1 = (a.b - a.a).cross(a.c - a.a);
    float du[3];
    scaledDistances(n1, a.a, bs, du);
    if (onOneSide(du))
        return false;
    zeroSmall(n1, du);

    const Vec n2 = (b.b - b.a).cross(b.c - b.a);
    float dv[3];
    scaledDistances(n2, b.a, as, dv);
    if (onOneSide(dv))
        return false;
    zeroSmall(n2, dv);

    if (allZero(dv))
        return trian2Trian2D(n1, a, b);
    if (allZero(du))
        return trian2Trian2D(n2, a, b);

    // The common line is measured along the axis that it follows most.
    const Vec direction = n1.cross(n2);
    const float dx = std::abs(direction.x), dy = std::abs(direction.y), dz = std::abs(direction.z);
    unsigned index = dx < dy ? 1 : 0;
    if (dz > std::max(dx, dy))
        index = 2;
    const Interval v = computeTrianIntervals({a.a[index], a.b[index], a.c[index]}, dv);
    const Interval u = computeTrianIntervals({b.a[index], b.b[index], b.c[index]}, du);

    // Both intervals over one denominator, so that nothing is divided.
    const float xx = v.x0 * v.x1;
    const float yy = u.x0 * u.x1;
    const float xxyy = xx * yy;
    const float t1 = v.a * xxyy;
    float v0 = t1 + v.b * v.x1 * yy, v1 = t1 + v.c * v.x0 * yy;
    const float t2 = u.a * xxyy;
    float u0 = t2 + u.b * xx * u.x1, u1 = t2 + u.c * xx * u.x0;
    sort(v0, v1);
    sort(u0, u1);
    return !(u0 > v1 || v0 > u1);
}

float Math::distanceOfPointToSurface(const Pos& p, const Pos& a, const Vec& n)
{
    const float length = n.length();
    if (length == 0)
        throw SurfaceNormalNotAvailable();
    return (p - a).dot(n) / length;
}

/// Whether the segments a-b and c-d meet, ends included. Parallel ones never do.
bool Math::edge2Edge2D(const Pos2& a, const Pos2& b, const Pos2& c, const Pos2& d)
{
    const Pos2 A = b - a, B = c - d, C = a - c;
    const float f = B.x * A.y - B.y * A.x;
    const float num1 = C.x * B.y - C.y * B.x;
    const float num2 = C.y * A.x - C.x * A.y;
    if (f > 0)
        return num1 >= 0 && num1 <= f && num2 >= 0 && num2 <= f;
    if (f < 0)
        return num1 <= 0 && num1 >= f && num2 <= 0 && num2 >= f;
    return false;
}

bool Math::edge2TrianEdges(const Pos2& a, const Pos2& b, const Pos2& t0, const Pos2& t1, const Pos2& t2)
{
    return edge2Edge2D(a, b, t0, t1) || edge2Edge2D(a, b, t1, t2) || edge2Edge2D(a, b, t2, t0);
}

/// Where the segments meet, as the fraction of p0-p1; of an overlap, its first point.
Result Math::edgeToEdge2D(const Pos2& p0, const Pos2& p1, const Pos2& q0, const Pos2& q1)
{
    const Pos2 A = p1 - p0, B = q0 - q1, C = p0 - q0;
    const float num = C.x * B.y - C.y * B.x;
    const float den = B.x * A.y - B.y * A.x;
    const auto inInterval = [den](float v) {
        return (den > 0 && v >= 0 && v <= den) || (den < 0 && v <= 0 && v >= den);
    };
    Result result;
    if (inInterval(num)) {
        if (inInterval(C.y * A.x - C.x * A.y)) {
            result.hit = true;
            result.distance = num / den;
        }
        return result;
    }
    if (num != 0 || !(std::abs((q1.y - q0.y) * C.x - (q1.x - q0.x) * C.y) < epsilon))
        return result;

    // On one line: compare along it.
    const bool alongX = std::abs(A.y) < epsilon;
    const float t0 = alongX ? (q0.x - p0.x) / A.x : (q0.y - p0.y) / A.y;
    const float t1 = alongX ? (q1.x - p0.x) / A.x : (q1.y - p0.y) / A.y;
    if ((t0 < 0 && t1 < 0) || (t0 > 1 && t1 > 1))
        return result;
    result.hit = true;
    result.distance = std::max(std::min(t0, t1), 0.0f);
    return result;
}

/// The first meeting of a line with the border of a triangle in whose plane it lies, or its start if that is inside.
Result Math::lineToTriangle2D(const Line& line, const Triangle& triangle)
{
    const unsigned axis = axisToDrop((triangle.b - triangle.a).cross(triangle.c - triangle.a));
    const Pos2 p0 = without(axis, line.start), p1 = without(axis, line.end);
    const Pos2 t0 = without(axis, triangle.a), t1 = without(axis, triangle.b), t2 = without(axis, triangle.c);

    Result result;
    const Pos2 edges[3][2] = {{t0, t1}, {t1, t2}, {t0, t2}};
    for (const auto& [from, to] : edges) {
        const Result r = edgeToEdge2D(p0, p1, from, to);
        if (r.hit && r.distance < result.distance) {
            result.hit = true;
            result.distance = r.distance;
        }
    }
    if (pointInTriangle2D(p0, t0, t1, t2)) {
        result.hit = true;
        result.distance = 0;
    }
    return result;
}

/// The border does not belong to the inside.
bool Math::pointInTriangle2D(const Pos2& p, const Pos2& a, const Pos2& b, const Pos2& c)
{
    const auto side = [&p](const Pos2& from, const Pos2& to) {
        return (to.x - from.x) * (p.y - from.y) - (to.y - from.y) * (p.x - from.x);
    };
    return onOneSide({side(a, b), side(b, c), side(c, a)});
}

bool Math::pointInTriangle3D(const Pos& p, const Pos& a, const Pos& b, const Pos& c)
{
    const unsigned axis = axisToDrop(newellNormal(a, b, c));
    return pointInTriangle2D(without(axis, p), without(axis, a), without(axis, b), without(axis, c));
}

/// Two triangles in one plane with normal `n`.
bool Math::trian2Trian2D(const Vec& n, const Triangle& a, const Triangle& b)
{
    const unsigned axis = axisToDrop(n);
    const Pos2 a0 = without(axis, a.a), a1 = without(axis, a.b), a2 = without(axis, a.c);
    const Pos2 b0 = without(axis, b.a), b1 = without(axis, b.b), b2 = without(axis, b.c);
    return edge2TrianEdges(a0, a1, b0, b1, b2) || edge2TrianEdges(a1, a2, b0, b1, b2) ||
           edge2TrianEdges(a2, a0, b0, b1, b2) || pointInTriangle2D(a0, b0, b1, b2) ||
           pointInTriangle2D(b0, a0, a1, a2);
}

/// @param p  the corners along the common line.
/// @param d  their distances from the other plane; the corner that is alone on its side is where both edges meet.
Math::Interval Math::computeTrianIntervals(const float (&p)[3], const float (&d)[3])
{
    const auto from = [&p, &d](int alone, int i, int j) {
        return Interval{p[alone], (p[i] - p[alone]) * d[alone], (p[j] - p[alone]) * d[alone], d[alone] - d[i],
                        d[alone] - d[j]};
    };
    if (d[0] * d[1] > 0)
        return from(2, 0, 1);
    if (d[0] * d[2] > 0)
        return from(1, 0, 2);
    if (d[1] * d[2] > 0 || d[0] != 0)
        return from(0, 1, 2);
    if (d[1] != 0)
        return from(1, 0, 2);
    if (d[2] != 0)
        return from(2, 0, 1);
    throw std::logic_error("Two triangles are on the same plane");
}

} // namespace vrk::selection
