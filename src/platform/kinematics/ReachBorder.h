#pragma once

#include <cstdint>
#include <utility>
#include <vector>

namespace vrk::kinematics {

/// The border of all that lies near marked places of a plane.
///
/// Marks fall into square cells; what lies within a distance of the middle of a marked cell is inside.
class ReachBorder {
public:
    struct Point {
        double u = 0;
        double v = 0;
    };
    using Line = std::vector<Point>; ///< the inside lies on its left; one that is closed ends with its first point

    /// @param reach  of marks, each way from the origin.
    /// @param distance  from the marks, of the border.
    ReachBorder(double reach, double cell, double distance);

    /// How far from its place the middle of a mark's cell may lie.
    static double MarkError(double cell);

    void mark(double u, double v)
    {
        const auto column = static_cast<int>(u / cell + middle);
        const auto row = static_cast<int>(v / cell + middle);
        marks[static_cast<std::size_t>(row) * side + column] = 1;
    }
    /// The border. It is nowhere nearer to a mark than its distance less a quarter of a cell.
    /// @param rightHalf  where u is 0 or more, and nothing else; lines end at 0 then.
    std::vector<Line> lines(bool rightHalf) const;

private:
    using Edge = std::uint32_t; // of the net of middles: twice the index of its first one, one more for one upwards

    std::vector<float> depths() const;
    bool isInner(int column, int row) const;
    Point pointOn(Edge edge, const std::vector<float>& field) const;

    const double cell;
    const double level; // the distance of the border, in cells
    const int rim;      // cells about what can be marked, in which the border lies
    const int side;
    const double middle; // of the cells, from their border
    std::vector<std::uint8_t> marks;
};

} // namespace vrk::kinematics
