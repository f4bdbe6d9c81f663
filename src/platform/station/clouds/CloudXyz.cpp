#include "platform/station/clouds/CloudFormats.h"

#include <algorithm>
#include <cmath>

namespace vrk::station {
namespace {

constexpr std::size_t fewestColumns = 3;
constexpr std::size_t normalColumns = 6;
constexpr std::size_t noColumn = 0;
constexpr double unitTolerance = 0.01;  // two decimals are written by some
constexpr std::size_t shortestLine = 6; // "0 0 0" and its end

bool isRemark(std::string_view line)
{
    const std::string_view first = takeWord(line);
    return first.starts_with('#') || first.starts_with("//");
}

bool nextData(LineReader& lines, std::string_view& line)
{
    while (lines.nextFilled(line))
        if (!isRemark(line))
            return true;
    return false;
}

/// Tells normals from colours in the last three of six columns.
class NormalJudge {
public:
    /// False as soon as it cannot be a column of normals.
    bool accepts(const std::array<double, 3>& v)
    {
        const double length = std::hypot(v[0], v[1], v[2]);
        if (length == 0 || !std::isfinite(length))
            return true; // a point without normal
        anyUnit = anyUnit || std::abs(length - 1) <= unitTolerance;
        return std::abs(length - 1) <= unitTolerance;
    }
    bool sawUnit() const { return anyUnit; }

private:
    bool anyUnit = false;
};

/// The first of three columns that may be colours; `noColumn` without.
std::size_t colorColumn(std::size_t columns)
{
    switch (columns) {
    case 6: // x y z r g b
    case 9: // x y z r g b and a normal
        return 3;
    case 7: // x y z, intensity, r g b
        return 4;
    default:
        return noColumn;
    }
}

/// Gathers what may be colours, and tells whether they are.
class ColorJudge {
public:
    void add(const std::array<double, 3>& parts)
    {
        for (const double part : parts) {
            isRange = isRange && part >= 0 && part <= 255;
            isWhole = isWhole && part == std::floor(part);
            largest = std::max(largest, part);
        }
        all.push_back({static_cast<float>(parts[0]), static_cast<float>(parts[1]), static_cast<float>(parts[2])});
    }

    layout::PointCloud::Colors take() const
    {
        const bool isShare = largest <= 1; // a scan whose brightest byte is a 1 shows nothing either way
        if (!isRange || largest == 0 || (!isShare && !isWhole))
            return {};
        layout::PointCloud::Colors colors;
        colors.reserve(all.size());
        const double whole = isShare ? 1 : 255;
        for (const auto& [r, g, b] : all)
            colors.push_back({colorByte(r, whole), colorByte(g, whole), colorByte(b, whole)});
        return colors;
    }

private:
    std::vector<std::array<float, 3>> all;
    bool isRange = true;
    bool isWhole = true;
    double largest = 0;
};

} // namespace

Cloud parseXyz(std::string_view bytes, const Progress& progress, double scale)
{
    LineReader lines(bytes);
    std::string_view line;
    if (!nextData(lines, line))
        return {};
    std::vector<double> numbers;
    parseNumbers(line, lines.number(), numbers);
    const std::size_t columns = numbers.size();
    if (columns < fewestColumns)
        expectNumbers(columns, fewestColumns, lines.number());

    bool withNormals = columns == normalColumns;
    NormalJudge judge;
    const std::size_t color = colorColumn(columns);
    ColorJudge colors;
    CloudCollector collector({.normals = withNormals, .scale = scale});
    collector.reserve(bytes.size() / std::max(line.size() + 1, shortestLine));
    for (std::uint64_t point = 0;; ++point) {
        PointRecord record{.point = {numbers[0], numbers[1], numbers[2]}};
        if (withNormals) {
            record.normal = {numbers[3], numbers[4], numbers[5]};
            withNormals = judge.accepts(record.normal);
            if (!withNormals)
                collector.dropNormals();
        }
        if (collector.add(record) && color != noColumn)
            colors.add({numbers[color], numbers[color + 1], numbers[color + 2]});
        reportPoint(progress, point, lines.offset(), bytes.size());
        if (!nextData(lines, line))
            break;
        parseNumbers(line, lines.number(), numbers);
        expectNumbers(numbers.size(), columns, lines.number());
    }
    if (withNormals && !judge.sawUnit())
        collector.dropNormals();
    if (!withNormals || !judge.sawUnit())
        collector.giveColors(colors.take());
    return collector.take();
}

} // namespace vrk::station
