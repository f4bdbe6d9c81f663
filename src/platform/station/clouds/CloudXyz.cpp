#include "platform/station/clouds/CloudFormats.h"

#include <cmath>

namespace vrk::station {
namespace {

constexpr std::size_t fewestColumns = 3;
constexpr std::size_t normalColumns = 6;
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

} // namespace

Cloud parseXyz(std::string_view bytes, const Progress& progress)
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
    CloudCollector collector(withNormals);
    collector.reserve(bytes.size() / std::max(line.size() + 1, shortestLine));
    for (std::uint64_t point = 0;; ++point) {
        std::array<double, 3> normal{};
        if (withNormals) {
            normal = {numbers[3], numbers[4], numbers[5]};
            withNormals = judge.accepts(normal);
            if (!withNormals)
                collector.dropNormals();
        }
        collector.add({numbers[0], numbers[1], numbers[2]}, normal);
        reportPoint(progress, point, lines.offset(), bytes.size());
        if (!nextData(lines, line))
            break;
        parseNumbers(line, lines.number(), numbers);
        expectNumbers(numbers.size(), columns, lines.number());
    }
    if (withNormals && !judge.sawUnit())
        collector.dropNormals();
    return collector.take();
}

} // namespace vrk::station
