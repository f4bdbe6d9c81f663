#pragma once

#include "platform/geometry/TriangleMesh.h"

#include <cstddef>
#include <numeric>
#include <span>
#include <vector>

/// Not installed.
namespace vrk::geometry {

/// A line along which two triangles are bent, or one at which there are more, or but one.
struct CreaseLine {
    unsigned from, to;     ///< points
    float cosine;          ///< of the bend; what has none is drawn always
    bool isHollow = false; ///< whether the bend is seen from within

    static constexpr float noBend = -2;
    bool isBend() const { return cosine != noBend; }
};

/// How far a line is followed on beyond where it is bent enough, by the angle that is enough.
constexpr double followedOn = 4.0 / 7;
/// Lines that are bent less, by radians, are of no use to `linesToDraw`.
constexpr double leastUsefulBend = creaseAngle * followedOn;

/// Which numbers of items with the ends `from` and `to` lie at each point.
class ItemsByPoint {
public:
    template <typename Item>
    ItemsByPoint(const std::vector<Item>& items, std::size_t points) : starts(points + 1), numbers(2 * items.size())
    {
        for (const Item& item : items) {
            ++starts[item.from + 1];
            ++starts[item.to + 1];
        }
        std::partial_sum(starts.begin(), starts.end(), starts.begin());
        std::vector<std::size_t> next(starts.begin(), starts.end() - 1);
        for (std::size_t i = 0; i < items.size(); ++i) {
            numbers[next[items[i].from]++] = i;
            numbers[next[items[i].to]++] = i;
        }
    }
    std::span<const std::size_t> at(unsigned point) const
    {
        return {numbers.data() + starts[point], starts[point + 1] - starts[point]};
    }

private:
    std::vector<std::size_t> starts; // one more at the end
    std::vector<std::size_t> numbers;
};

/// Those of the lines that show the form of a mesh, as `edgesOfMesh` describes.
/// @param area    of the mesh.
/// @param extent  the greatest of the mesh.
std::vector<CreaseLine> linesToDraw(const std::vector<CreaseLine>& lines, const std::vector<rob::Posf>& points,
                                    double area, double extent);

} // namespace vrk::geometry
