#include "platform/kinematics/ReachBorder.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>
#include <unordered_map>

namespace vrk::kinematics {
namespace {

constexpr int netCells = 3; // beyond the border: what its lines are found between

} // namespace

ReachBorder::ReachBorder(double reach, double cell, double distance)
    : cell(cell), level(distance / cell), rim(static_cast<int>(std::ceil(level)) + netCells),
      side(2 * (static_cast<int>(std::ceil(reach / cell)) + rim) + 1), middle(side / 2 + 0.5)
{
    marks.resize(static_cast<std::size_t>(side) * side);
}

double ReachBorder::MarkError(double cell)
{
    return cell * std::numbers::sqrt2 / 2;
}

bool ReachBorder::isInner(int column, int row) const
{
    const std::uint8_t* mark = &marks[static_cast<std::size_t>(row) * side + column];
    return mark[-1] && mark[1] && mark[-side] && mark[side];
}

/// How far inside of the border the middles of the cells lie, in cells; below 0 outside, and there right only near it.
std::vector<float> ReachBorder::depths() const
{
    const auto inside = static_cast<float>(level);
    std::vector<float> depths(marks.size(), -inside);
    const int window = rim - 1;
    std::vector<float> ofWindow;
    for (int dv = -window; dv <= window; ++dv)
        for (int du = -window; du <= window; ++du)
            ofWindow.push_back(inside - std::sqrt(static_cast<float>(du * du + dv * dv)));
    for (int row = rim; row < side - rim; ++row)
        for (int column = rim; column < side - rim; ++column) {
            const std::size_t at = static_cast<std::size_t>(row) * side + column;
            if (!marks[at])
                continue;
            depths[at] = inside;
            if (isInner(column, row))
                continue; // one of its neighbours is nearer to whatever is not marked
            const float* deep = ofWindow.data();
            for (int dv = -window; dv <= window; ++dv) {
                float* depth = &depths[at + static_cast<std::ptrdiff_t>(dv) * side - window];
                for (int du = -window; du <= window; ++du, ++depth, ++deep)
                    *depth = std::max(*depth, *deep);
            }
        }
    return depths;
}

ReachBorder::Point ReachBorder::pointOn(Edge edge, const std::vector<float>& field) const
{
    const std::size_t from = edge / 2;
    const bool isUpwards = edge % 2 != 0;
    const float a = field[from];
    const float b = field[from + (isUpwards ? side : 1)];
    const double part = a / (a - b);
    const double u = static_cast<double>(from % side) + (isUpwards ? 0 : part) + 0.5 - middle;
    const double v = static_cast<double>(from / side) + (isUpwards ? part : 0) + 0.5 - middle;
    return {u * cell, v * cell};
}

std::vector<ReachBorder::Line> ReachBorder::lines(bool rightHalf) const
{
    const std::vector<float> field = depths();

    // In each square of four middles the line goes from an edge on which, going round to the left, the inside ends to the
    // next one on which it begins; where it does both twice the middle of the square decides what is joined.
    std::unordered_map<Edge, Edge> next;
    std::unordered_map<Edge, int> entered;
    for (int row = 0; row + 1 < side; ++row)
        for (int column = rightHalf ? side / 2 : 0; column + 1 < side; ++column) {
            const auto at = static_cast<std::uint32_t>(static_cast<std::size_t>(row) * side + column);
            const auto up = static_cast<std::uint32_t>(side);
            const std::array<std::uint32_t, 4> corners{at, at + 1, at + up + 1, at + up};
            const std::array<Edge, 4> edges{2 * at, 2 * (at + 1) + 1, 2 * (at + up), 2 * at + 1};
            std::array<bool, 4> inside{};
            for (int i = 0; i < 4; ++i)
                inside[i] = field[corners[i]] > 0;
            if (inside[0] == inside[1] && inside[1] == inside[2] && inside[2] == inside[3])
                continue;
            const float sum = field[corners[0]] + field[corners[1]] + field[corners[2]] + field[corners[3]];
            for (int i = 0; i < 4; ++i) {
                if (!inside[i] || inside[(i + 1) % 4])
                    continue;
                // The inside ends on edge i. It begins again on edge j; going on, or going back, which is another edge only
                // where both are two.
                int j = i;
                do
                    j = (j + (sum > 0 ? 1 : 3)) % 4;
                while (inside[j] || !inside[(j + 1) % 4]);
                next[edges[i]] = edges[j];
                ++entered[edges[j]];
            }
        }

    std::vector<Line> found;
    const auto follow = [&](Edge start) {
        Line line{pointOn(start, field)};
        for (auto step = next.find(start); step != next.end();) {
            const Edge end = step->second;
            next.erase(step);
            line.push_back(pointOn(end, field));
            step = next.find(end);
        }
        found.push_back(std::move(line));
    };
    std::vector<Edge> starts;
    for (const auto& [start, end] : next)
        if (!entered.contains(start))
            starts.push_back(start);
    for (const Edge start : starts)
        follow(start);
    while (!next.empty())
        follow(next.begin()->first);
    return found;
}

} // namespace vrk::kinematics
