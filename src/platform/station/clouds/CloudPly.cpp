#include "platform/station/clouds/PlyHeader.h"
#include "platform/station/clouds/PlyMesh.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>

namespace vrk::station {
namespace {

/// @param property  of which the values are wanted too; empty for none.
PointColumns columnsOf(const PlyElement& vertex, std::string_view property, std::uint64_t line)
{
    constexpr std::array<const char*, 3> pointNames{"x", "y", "z"};
    constexpr std::array<const char*, 3> normalNames{"nx", "ny", "nz"};
    PointColumns columns;
    columns.hasNormals = true;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const std::optional<std::size_t> point = indexOf(vertex, pointNames[axis]);
        if (!point)
            failAtLine(line, fmt::format("the vertices have no property '{}'", pointNames[axis]));
        columns.point[axis] = *point;
        const std::optional<std::size_t> normal = indexOf(vertex, normalNames[axis]);
        columns.normal[axis] = normal.value_or(0);
        columns.hasNormals = columns.hasNormals && normal;
    }
    if (!property.empty()) {
        columns.value = indexOf(vertex, property);
        if (!columns.value)
            failAtLine(line, fmt::format("the vertices have no property {}", inQuotes(property)));
    }
    return columns;
}

void takeColors(PointColumns& columns, const PlyElement& vertex)
{
    constexpr std::array<std::array<const char*, 3>, 3> names{
        {{"red", "green", "blue"}, {"diffuse_red", "diffuse_green", "diffuse_blue"}, {"r", "g", "b"}}};
    for (const auto& [red, green, blue] : names) {
        const auto r = indexOf(vertex, red), g = indexOf(vertex, green), b = indexOf(vertex, blue);
        if (!r || !g || !b)
            continue;
        columns.hasColors = true;
        columns.color = {*r, *g, *b};
        columns.colorType = vertex.properties[*r].type;
        return;
    }
}

/// What a point is, out of one number for each property.
PointRecord recordOf(const PointColumns& at, const std::vector<double>& values)
{
    PointRecord record{.point = {values[at.point[0]], values[at.point[1]], values[at.point[2]]},
                       .normal = {values[at.normal[0]], values[at.normal[1]], values[at.normal[2]]},
                       .value = at.value ? values[*at.value] : 0};
    if (at.hasColors) {
        const double whole = wholeOf(at.colorType);
        record.color = {colorByte(values[at.color[0]], whole), colorByte(values[at.color[1]], whole),
                        colorByte(values[at.color[2]], whole)};
    }
    return record;
}

/// The reading of one file.
class PlyReading {
public:
    PlyReading(std::string_view bytes, const PlyHeader& header, const LineReader& lines, const Progress& progress,
               double scale)
        : header(header), rows(bytes, header, lines), size(bytes.size()), progress(progress), scale(scale)
    {
    }

    void readVertices(const PlyElement& vertex, const PointColumns& at)
    {
        rows.expectRoomFor(vertex);
        CloudCollector collector(
            {.normals = at.hasNormals, .colors = at.hasColors, .values = at.value.has_value(), .scale = scale});
        collector.reserve(rows.mostOf(vertex));
        for (std::uint64_t point = 0; point < vertex.count; ++point) {
            rows.take(vertex, point, values);
            if (!collector.add(recordOf(at, values)))
                content.dropped.push_back(point);
            reportPoint(progress, point, rows.offset(), size);
        }
        content.cloud = collector.take();
    }

    /// Polygons become fans.
    void readFaces(const PlyElement& face, std::size_t listProperty, std::uint64_t points)
    {
        std::vector<double> corners;
        content.indices.reserve(3 * std::min<std::uint64_t>(rows.mostOf(face), std::uint64_t{1} << 24));
        for (std::uint64_t i = 0; i < face.count; ++i) {
            rows.take(face, i, values, listProperty, &corners);
            for (const double corner : corners)
                if (!(corner >= 0 && corner < static_cast<double>(points)))
                    throw CloudFault(
                        fmt::format("{}: a face with vertex {:.0f} where there are {}", rows.place(), corner, points));
            for (std::size_t k = 2; k < corners.size(); ++k)
                for (const double corner : {corners[0], corners[k - 1], corners[k]})
                    content.indices.push_back(static_cast<unsigned>(corner));
            reportPoint(progress, i, rows.offset(), size);
        }
    }

    PlyContent read(std::size_t vertexIndex, const PointColumns& at, bool withFaces)
    {
        const PlyElement& vertex = header.elements[vertexIndex];
        for (std::size_t i = 0; i < header.elements.size(); ++i) {
            const PlyElement& element = header.elements[i];
            const std::optional<std::size_t> list = withFaces ? facesOf(element) : std::nullopt;
            if (i == vertexIndex)
                readVertices(vertex, at);
            else if (list)
                readFaces(element, *list, vertex.count);
            else
                rows.skip(element);
        }
        rows.expectEnd(vertex.count);
        return std::move(content);
    }

private:
    const PlyHeader& header;
    PlyRows rows;
    std::size_t size;
    const Progress& progress;
    double scale;
    std::vector<double> values;
    PlyContent content;
};

PlyContent contentOf(std::string_view bytes, std::string_view property, bool withFaces, const Progress& progress,
                     double scale)
{
    LineReader lines(bytes);
    const PlyHeader header = readPlyHeader(lines);
    const auto vertex = std::ranges::find(header.elements, "vertex", &PlyElement::name);
    if (vertex == header.elements.end())
        failAtLine(lines.number(), "a header without an element 'vertex'");
    PointColumns at = columnsOf(*vertex, property, lines.number());
    takeColors(at, *vertex);
    return PlyReading(bytes, header, lines, progress, scale)
        .read(static_cast<std::size_t>(vertex - header.elements.begin()), at, withFaces);
}

} // namespace

std::optional<std::size_t> facesOf(const PlyElement& element)
{
    if (element.name != "face")
        return std::nullopt;
    for (std::size_t i = 0; i < element.properties.size(); ++i) {
        const PlyProperty& property = element.properties[i];
        if (property.countType && (property.name == "vertex_indices" || property.name == "vertex_index"))
            return i;
    }
    return std::nullopt;
}

Cloud parsePly(std::string_view bytes, const Progress& progress, double scale)
{
    return contentOf(bytes, {}, false, progress, scale).cloud;
}

Cloud parsePlyWithValues(std::string_view bytes, std::string_view property, const Progress& progress)
{
    return contentOf(bytes, property, false, progress, 1).cloud;
}

PlyContent parsePlyWithFaces(std::string_view bytes, const Progress& progress, double scale)
{
    return contentOf(bytes, {}, true, progress, scale);
}

} // namespace vrk::station
