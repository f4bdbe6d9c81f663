#include "canvas/RunPlaces.h"

#include "handles/DragLens.h"
#include "platform/geometry/EdgePoints.h"

#include <algorithm>
#include <cmath>
#include <limits>

namespace vrkview {

using vrk::rob::Vec3d;
using vrk::task::EdgeMfgShape;
using vrk::visual::DragLens;

namespace {

/// Of two samples, the second begins another edge where the first ends one: they are one place.
bool isSeam(const EdgeMfgShape::PathPoint& a, const EdgeMfgShape::PathPoint& b)
{
    return a.edge != b.edge;
}

} // namespace

RunPlaces::RunPlaces(const EdgeMfgShape& run, const vrk::rob::Posed& pose)
{
    const auto& edges = run.getMfgVectors();
    if (edges.empty())
        return;
    const int last = static_cast<int>(edges.size()) - 1;
    const PathPoint first{0, vrk::geometry::GetEdgeParameters(edges.front().edge).first};
    const PathPoint end{last, vrk::geometry::GetEdgeParameters(edges.back().edge).second};
    for (const PathPoint& point : run.getPathPointsForRender(first, end)) {
        const vrk::rob::Posd place = pose * run.getMfgVector(point).getPos(run.getEdge(point.edge));
        const double way = samples.empty() ? 0 : (place - samples.back().place).length();
        samples.push_back({point, place, samples.empty() ? 0 : samples.back().along + way});
    }
}

double RunPlaces::alongOf(PathPoint point) const
{
    double along = 0, least = std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i + 1 < samples.size(); ++i) {
        const Sample &a = samples[i], &b = samples[i + 1];
        const double way = b.point.parameter - a.point.parameter;
        if (a.point.edge != point.edge || isSeam(a.point, b.point) || way == 0)
            continue;
        const double share = std::clamp((point.parameter - a.point.parameter) / way, 0.0, 1.0);
        const double off = std::abs(a.point.parameter + share * way - point.parameter);
        if (off < least) {
            least = off;
            along = a.along + share * (b.along - a.along);
        }
    }
    return along;
}

RunPlaces::PathPoint RunPlaces::at(double along) const
{
    if (along <= 0)
        return samples.front().point;
    if (along >= length())
        return samples.back().point;
    std::size_t i = 0;
    while (i + 2 < samples.size() && (samples[i + 1].along < along || isSeam(samples[i].point, samples[i + 1].point)))
        ++i;
    const Sample &a = samples[i], &b = samples[i + 1];
    const double share = b.along > a.along ? std::clamp((along - a.along) / (b.along - a.along), 0.0, 1.0) : 0;
    return {a.point.edge, a.point.parameter + share * (b.point.parameter - a.point.parameter)};
}

std::optional<double> RunPlaces::nearestTo(const vrk::visual::CameraSnapshot& camera, const QPointF& pixel) const
{
    const DragLens lens(camera);
    const vrk::rob::Vec2Template<double> mouse(pixel.x(), pixel.y());
    std::optional<double> found;
    double least = std::numeric_limits<double>::infinity();
    for (std::size_t i = 0; i + 1 < samples.size(); ++i) {
        const Vec3d a = lens.toCamera(samples[i].place), b = lens.toCamera(samples[i + 1].place);
        if (!lens.isBefore(a) || !lens.isBefore(b))
            continue;
        const auto start = lens.imageOf(a), across = lens.imageOf(b) - start;
        const double square = across.dot(across);
        double share = square > 0 ? std::clamp((mouse - start).dot(across) / square, 0.0, 1.0) : 0;
        const double pixels = (mouse - (start + across * share)).length();
        if (!(pixels < least))
            continue;
        least = pixels;
        // Halfway in the picture is nearer to the eye than halfway in the world; with parallel sight it is halfway.
        if (const double nearA = -lens.sightTo(a).z, nearB = -lens.sightTo(b).z; nearA > 0 && nearB > 0)
            share = share * nearA / (share * nearA + (1 - share) * nearB);
        found = samples[i].along + share * (samples[i + 1].along - samples[i].along);
    }
    return found;
}

} // namespace vrkview
