#include "platform/geometry/CreaseLines.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <iterator>

namespace vrk::geometry {
namespace {

using Lines = std::vector<CreaseLine>;
using Points = std::vector<rob::Posf>;

constexpr std::size_t fewLines = 500; // cover no picture
constexpr std::size_t fewOfRough =
    20;                             // bends: of a surface that is rough, so many that are sharp may be there by chance
constexpr double mostRough = 0.3;   // of the points at which bends lie
constexpr double mostLength = 250;  // of lines, by the area and the greatest extent
constexpr float straight = 0.7071f; // what turns by more than 45 degrees goes not on
constexpr std::uint8_t many = 5;    // lines at one point: no corner of a body has so many
constexpr double shortest = 0.04;   // of the greatest extent: a bend that ends freely, with all that it is joined to
constexpr std::size_t mostTried = 64; // at one point
constexpr double degree = 0.017453292519943295;
constexpr std::array angles{creaseAngle, 45 * degree, 60 * degree, 90 * degree};

rob::Vec3f wayOf(const Points& points, unsigned from, unsigned to)
{
    const rob::Vec3f way = rob::Vec3f(points[to]) - rob::Vec3f(points[from]);
    const float length = way.length();
    return length > 0 ? way * (1 / length) : rob::Vec3f();
}

double lengthOf(const CreaseLine& line, const Points& points)
{
    return (rob::Vec3d(points[line.to]) - rob::Vec3d(points[line.from])).length();
}

/// What lies at each point of some lines.
class Joints {
public:
    Joints(const Lines& lines, const Points& points) : at(points.size())
    {
        for (const CreaseLine& line : lines) {
            const rob::Vec3f way = wayOf(points, line.from, line.to);
            add(at[line.from], way, line);
            add(at[line.to], -way, line);
        }
    }

    /// Where a line ends or turns sharply, or many meet, or four that are bent to both sides; of the points at which bends lie.
    double shareOfRough() const
    {
        std::size_t rough = 0, all = 0;
        for (const Joint& joint : at)
            if (joint.hasBend) {
                ++all;
                rough += isRough(joint) ? 1 : 0;
            }
        return all == 0 ? 0 : static_cast<double>(rough) / static_cast<double>(all);
    }

private:
    struct Joint {
        rob::Vec3f first;
        float turn = 0; // of the last against the first; -1 leads straight on
        std::uint8_t lines = 0;
        bool hasBend = false;
        bool hasHollow = false;
        bool hasRaised = false;
    };

    static void add(Joint& joint, const rob::Vec3f& way, const CreaseLine& line)
    {
        joint.hasBend = joint.hasBend || line.isBend();
        joint.hasHollow = joint.hasHollow || (line.isBend() && line.isHollow);
        joint.hasRaised = joint.hasRaised || (line.isBend() && !line.isHollow);
        if (joint.lines == 0)
            joint.first = way;
        else
            joint.turn = joint.first.dot(way);
        if (joint.lines < many)
            ++joint.lines;
    }
    static bool isRough(const Joint& joint)
    {
        const bool isCrumpled = joint.lines + 1 == many && joint.hasHollow && joint.hasRaised;
        return joint.lines == 1 || (joint.lines == 2 && joint.turn > -straight) || joint.lines == many || isCrumpled;
    }

    std::vector<Joint> at;
};

/// Whether these lines would rather blacken a picture than show a form.
bool areTooMany(const Lines& lines, std::size_t few, const Points& points, double area, double extent)
{
    if (lines.size() < few)
        return false;
    double length = 0;
    for (const CreaseLine& line : lines)
        length += lengthOf(line, points);
    if (length * extent > mostLength * area)
        return true;
    const auto bends = static_cast<std::size_t>(std::ranges::count_if(lines, &CreaseLine::isBend));
    return bends >= few && Joints(lines, points).shareOfRough() > mostRough;
}

/// Follows lines that end freely along such as are bent less, straight on, up to where one meets others.
class LooseEnds {
public:
    LooseEnds(Lines& drawn, const Lines& weak, const Points& points)
        : drawn(drawn), weak(weak), points(points), byPoint(weak, points.size()), isUsed(weak.size(), false),
          counts(points.size())
    {
        for (const CreaseLine& line : drawn) {
            count(line.from);
            count(line.to);
        }
    }

    void follow()
    {
        for (std::size_t i = 0, strong = drawn.size(); i < strong; ++i) {
            const CreaseLine line = drawn[i];
            followFrom(line.from, line.to);
            followFrom(line.to, line.from);
        }
    }

private:
    void count(unsigned point)
    {
        if (counts[point] < many)
            ++counts[point];
    }
    void followFrom(unsigned before, unsigned point)
    {
        while (counts[point] == 1) {
            const std::size_t next = straightOn(wayOf(points, before, point), point);
            if (next == weak.size())
                return;
            isUsed[next] = true;
            drawn.push_back(weak[next]);
            count(weak[next].from);
            count(weak[next].to);
            before = point;
            point = weak[next].from == point ? weak[next].to : weak[next].from;
        }
    }
    /// The number of all where there is none.
    std::size_t straightOn(const rob::Vec3f& way, unsigned point) const
    {
        const std::span<const std::size_t> here = byPoint.at(point);
        std::size_t found = weak.size();
        float best = straight;
        for (const std::size_t i : here.first(std::min(here.size(), mostTried))) {
            const unsigned end = weak[i].from == point ? weak[i].to : weak[i].from;
            const float along = way.dot(wayOf(points, point, end));
            if (isUsed[i] || along < best)
                continue;
            best = along;
            found = i;
        }
        return found;
    }

    Lines& drawn;
    const Lines& weak;
    const Points& points;
    ItemsByPoint byPoint;
    std::vector<bool> isUsed;
    std::vector<std::uint8_t> counts; // of lines that are drawn, at each point
};

/// Knows the bends that are short with all bends that they are joined to, and end freely.
class Scraps {
public:
    Scraps(const Lines& lines, const Points& points, double least)
        : least(least), tops(points.size()), pieces(points.size())
    {
        std::iota(tops.begin(), tops.end(), 0u);
        std::vector<std::uint8_t> counts(points.size());
        for (const CreaseLine& line : lines) {
            if (line.isBend())
                tops[topOf(line.from)] = topOf(line.to);
            for (const unsigned end : {line.from, line.to})
                if (counts[end] < many)
                    ++counts[end];
        }
        for (const CreaseLine& line : lines) {
            if (!line.isBend())
                continue;
            Piece& piece = pieces[topOf(line.from)];
            piece.length += lengthOf(line, points);
            piece.isLoose = piece.isLoose || counts[line.from] == 1 || counts[line.to] == 1;
        }
    }

    bool contains(const CreaseLine& line)
    {
        const Piece& piece = pieces[topOf(line.from)];
        return line.isBend() && piece.isLoose && piece.length < least;
    }

private:
    struct Piece {
        double length = 0;
        bool isLoose = false;
    };

    unsigned topOf(unsigned point)
    {
        while (tops[point] != point)
            point = tops[point] = tops[tops[point]];
        return point;
    }

    double least;
    std::vector<unsigned> tops; // a point of each piece stands for it
    std::vector<Piece> pieces;
};

/// The lines that are bent by at least the angle, or have no bend.
Lines linesBeyond(const Lines& lines, double angle)
{
    Lines found;
    const auto least = static_cast<float>(std::cos(angle));
    std::ranges::copy_if(lines, std::back_inserter(found),
                         [least](const CreaseLine& line) { return line.cosine < least; });
    return found;
}

/// Those between the angle from which lines are followed on, and this one.
Lines weakLines(const Lines& lines, double angle)
{
    Lines found = linesBeyond(lines, angle * followedOn);
    const auto least = static_cast<float>(std::cos(angle));
    std::erase_if(found, [least](const CreaseLine& line) { return line.cosine < least; });
    return found;
}

} // namespace

std::vector<CreaseLine> linesToDraw(const Lines& lines, const Points& points, double area, double extent)
{
    for (const double angle : angles) {
        Lines drawn = linesBeyond(lines, angle);
        if (areTooMany(drawn, angle == angles.front() ? fewLines : fewOfRough, points, area, extent))
            continue;
        LooseEnds(drawn, weakLines(lines, angle), points).follow();
        Scraps scraps(drawn, points, shortest * extent);
        std::erase_if(drawn, [&scraps](const CreaseLine& line) { return scraps.contains(line); });
        return drawn;
    }
    Lines drawn;
    std::ranges::copy_if(lines, std::back_inserter(drawn), [](const CreaseLine& line) { return !line.isBend(); });
    return areTooMany(drawn, fewLines, points, area, extent) ? Lines() : drawn;
}

} // namespace vrk::geometry
