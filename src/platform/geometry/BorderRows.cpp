#include "platform/geometry/BorderRows.h"

#include "platform/geometry/CreaseLines.h"

#include <span>
#include <utility>

namespace vrk::geometry {
namespace {

// Where so many borders meet, none is looked for: to compare each with each would take their square.
constexpr std::size_t mostAtAPoint = 64;
constexpr std::size_t longestRow = 4096;

class Rows {
public:
    Rows(const std::vector<BorderEdge>& borders, const std::vector<rob::Posf>& points, double tolerance)
        : borders(borders), points(points), tolerance(tolerance), isInRow(borders.size(), false),
          byPoint(borders, points.size())
    {
    }

    /// Empty where there is none.
    std::vector<std::size_t> rowAlong(std::size_t border) const
    {
        const BorderEdge& along = borders[border];
        std::vector<std::size_t> row;
        unsigned point = along.from;
        for (double way = 0; point != along.to;) {
            const std::size_t next = nextOn(border, point, way);
            if (next == borders.size() || row.size() == longestRow)
                return {};
            row.push_back(next);
            point = otherEnd(borders[next], point);
        }
        return row;
    }
    void take(const std::vector<std::size_t>& row)
    {
        for (const std::size_t border : row)
            isInRow[border] = true;
    }
    bool isTaken(std::size_t border) const { return isInRow[border]; }

private:
    static unsigned otherEnd(const BorderEdge& border, unsigned point)
    {
        return border.from == point ? border.to : border.from;
    }

    /// The border at `point` that leads on towards the end of `border`, no farther than that; the number of all where there is none.
    /// @param way  how far along `point` lies, and how far its other end.
    std::size_t nextOn(std::size_t border, unsigned point, double& way) const
    {
        const rob::Vec3d start(points[borders[border].from]);
        const rob::Vec3d line = rob::Vec3d(points[borders[border].to]) - start;
        const double length = line.length();
        const std::span<const std::size_t> here = byPoint.at(point);
        if (!(length > 0) || here.size() > mostAtAPoint)
            return borders.size();
        for (const std::size_t other : here) {
            if (other == border || isInRow[other])
                continue;
            const unsigned end = otherEnd(borders[other], point);
            const rob::Vec3d offset = rob::Vec3d(points[end]) - start;
            const double reached = offset.dot(line) / length;
            const double aside = offset.cross(line).length() / length;
            if (end == borders[border].to || (aside <= tolerance && reached > way && reached < length)) {
                way = reached;
                return other;
            }
        }
        return borders.size();
    }

    const std::vector<BorderEdge>& borders;
    const std::vector<rob::Posf>& points;
    double tolerance;
    std::vector<bool> isInRow;
    ItemsByPoint byPoint;
};

} // namespace

std::vector<BorderSeam> seamsOf(const std::vector<BorderEdge>& borders, const std::vector<rob::Posf>& points,
                                double tolerance)
{
    Rows rows(borders, points, tolerance);
    std::vector<BorderSeam> seams;
    for (std::size_t i = 0; i < borders.size(); ++i) {
        if (rows.isTaken(i))
            continue;
        std::vector<std::size_t> row = rows.rowAlong(i);
        if (row.empty())
            continue;
        rows.take(row);
        rows.take({i});
        seams.push_back({i, std::move(row)});
    }
    return seams;
}

} // namespace vrk::geometry
