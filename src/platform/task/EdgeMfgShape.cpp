#include "platform/task/EdgeMfgShape.h"

#include "platform/common/Checks.h"

#include <algorithm>
#include <cmath>
#include <stdexcept>

namespace vrk::task {
namespace {

using geometry::MfgVector;
using geometry::MfgVectors;

constexpr double sameParameter = 1e-9;

/// 1 for an edge that is run through by rising parameters, -1 for one by falling ones.
double senseOf(const TopoDS_Edge& edge)
{
    return edge.Orientation() == TopAbs_REVERSED ? -1 : 1;
}

void checkFinite(const MfgVector& vector)
{
    if (!std::isfinite(vector.parameter) || !std::isfinite(vector.direction.length()))
        throw std::invalid_argument("a vector of a run needs numbers that are finite");
}

/// The direction a part `t` of the way from one to the other, on the shorter arc. Opposite ones have no way between them:
/// the nearer one is taken.
rob::Dird between(const rob::Dird& a, const rob::Dird& b, double t)
{
    const double angle = std::acos(std::clamp(a.dot(b), -1.0, 1.0));
    const double sine = std::sin(angle);
    if (sine < 1e-9)
        return t < 0.5 ? a : b;
    return rob::normalized(a * (std::sin((1 - t) * angle) / sine) + b * (std::sin(t * angle) / sine));
}

} // namespace

EdgeMfgShape::EdgeMfgShape(unsigned id, std::string name) : SdfObject(sdf::ModelType::MfgShape, id, std::move(name)) {}

EdgeMfgShape::~EdgeMfgShape() = default;

void EdgeMfgShape::addEdge(MfgVectors vectors)
{
    if (vectors.vectors.empty())
        throw std::invalid_argument("an edge of a run needs a vector");
    for (const MfgVector& vector : vectors.vectors)
        checkFinite(vector);
    const double sense = senseOf(vectors.edge);
    std::ranges::stable_sort(vectors.vectors, {}, [sense](const MfgVector& v) { return sense * v.parameter; });
    const auto [first, last] = geometry::GetEdgeParameters(vectors.edge);
    if (edges.empty())
        start = {0, first};
    end = {static_cast<int>(edges.size()), last};
    edges.push_back(std::move(vectors));
}

void EdgeMfgShape::setStart(PathPoint point)
{
    getEdge(point.edge);
    start = point;
}

void EdgeMfgShape::setEnd(PathPoint point)
{
    getEdge(point.edge);
    end = point;
}

void EdgeMfgShape::setDirection(int edge, std::size_t index, const rob::Dird& direction)
{
    auto& vectors = common::checkedSubscript(edges, static_cast<std::size_t>(edge)).vectors;
    MfgVector& vector = common::checkedSubscript(vectors, index);
    checkFinite({vector.parameter, direction});
    vector.direction = direction;
}

const TopoDS_Edge& EdgeMfgShape::getEdge(int index) const
{
    return common::checkedSubscript(edges, static_cast<std::size_t>(index)).edge; // a negative one is past every end
}

bool EdgeMfgShape::isBefore(PathPoint a, PathPoint b) const
{
    if (a.edge != b.edge)
        return a.edge < b.edge;
    return senseOf(getEdge(a.edge)) * (b.parameter - a.parameter) > sameParameter;
}

std::vector<MfgVectors> EdgeMfgShape::getUsedMfgVectors() const
{
    std::vector<MfgVectors> used;
    const bool wraps = closed && isBefore(end, start);
    for (int i = 0; i < static_cast<int>(edges.size()); ++i) {
        MfgVectors kept = edges[static_cast<std::size_t>(i)];
        std::erase_if(kept.vectors, [&](const MfgVector& vector) {
            const PathPoint point{i, vector.parameter};
            const bool isBehind = isBefore(end, point);
            const bool isAhead = isBefore(point, start);
            return wraps ? isBehind && isAhead : isBehind || isAhead;
        });
        if (!kept.vectors.empty())
            used.push_back(std::move(kept));
    }
    return used;
}

MfgVector EdgeMfgShape::getMfgVector(PathPoint point) const
{
    const MfgVectors& of = common::checkedSubscript(edges, static_cast<std::size_t>(point.edge));
    const double sense = senseOf(of.edge);
    const auto next = std::ranges::lower_bound(of.vectors, sense * point.parameter - sameParameter, {},
                                               [sense](const MfgVector& v) { return sense * v.parameter; });
    if (next == of.vectors.end())
        return {point.parameter, of.vectors.back().getDir(of.edge)};
    if (next == of.vectors.begin() || std::abs(next->parameter - point.parameter) <= sameParameter)
        return {point.parameter, next->getDir(of.edge)};
    const MfgVector& before = *(next - 1);
    const double t = (point.parameter - before.parameter) / (next->parameter - before.parameter);
    return {point.parameter, between(before.getDir(of.edge), next->getDir(of.edge), t)};
}

std::optional<int> EdgeMfgShape::getMfgVectorsIndex(const TopoDS_Edge& edge) const
{
    // A run may take an edge there and back.
    auto found = std::ranges::find_if(edges, [&](const MfgVectors& of) { return of.edge.IsEqual(edge); });
    if (found == edges.end())
        found = std::ranges::find_if(edges, [&](const MfgVectors& of) { return of.edge.IsSame(edge); });
    return found == edges.end() ? std::nullopt : std::optional(static_cast<int>(found - edges.begin()));
}

std::vector<EdgeMfgShape::PathPoint> EdgeMfgShape::getPathPointsForRender(PathPoint from, PathPoint to) const
{
    std::vector<PathPoint> points;
    if (edges.empty())
        return points;
    getEdge(from.edge);
    getEdge(to.edge);
    if (!isBefore(to, from)) {
        appendPoints(from, to, points);
    } else if (closed) {
        const int last = static_cast<int>(edges.size()) - 1;
        appendPoints(from, {last, geometry::GetEdgeParameters(getEdge(last)).second}, points);
        appendPoints({0, geometry::GetEdgeParameters(getEdge(0)).first}, to, points);
    } else {
        appendPoints(to, from, points);
    }
    return points;
}

/// @param to  does not lie before `from`.
void EdgeMfgShape::appendPoints(PathPoint from, PathPoint to, std::vector<PathPoint>& points) const
{
    for (int i = from.edge; i <= to.edge; ++i) {
        const MfgVectors& of = edges[static_cast<std::size_t>(i)];
        const auto [first, last] = geometry::GetEdgeParameters(of.edge);
        const double begin = i == from.edge ? from.parameter : first;
        const double stop = i == to.edge ? to.parameter : last;
        std::vector<double> parameters = geometry::SampleEdge(of.edge, begin, stop, chordTolerance);
        const auto [low, high] = std::minmax(begin, stop);
        for (const MfgVector& vector : of.vectors)
            if (vector.parameter > low + sameParameter && vector.parameter < high - sameParameter)
                parameters.push_back(vector.parameter);
        const double sense = senseOf(of.edge);
        std::ranges::sort(parameters, {}, [sense](double parameter) { return sense * parameter; });
        const auto same = [](double a, double b) { return std::abs(a - b) <= sameParameter; };
        parameters.erase(std::unique(parameters.begin(), parameters.end(), same), parameters.end());
        for (const double parameter : parameters)
            points.push_back({i, parameter});
    }
}

} // namespace vrk::task
