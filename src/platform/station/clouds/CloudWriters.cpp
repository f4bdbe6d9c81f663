#include "platform/station/clouds/CloudWriters.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <iterator>

namespace vrk::station {
namespace {

static_assert(std::endian::native == std::endian::little);

bool isSingle(double number)
{
    return static_cast<double>(static_cast<float>(number)) == number;
}

bool areSingle(const std::vector<rob::Posd>& points)
{
    return std::ranges::all_of(points,
                               [](const rob::Posd& p) { return isSingle(p.x) && isSingle(p.y) && isSingle(p.z); });
}

template <typename Number>
void append(std::string& bytes, double number)
{
    const auto value = static_cast<Number>(number);
    bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
}

template <typename Number>
void appendPoints(std::string& bytes, const ExportedPoints& points, const PlyExtras& extras)
{
    for (std::size_t i = 0; i < points.points.size(); ++i) {
        for (const double coordinate : {points.points[i].x, points.points[i].y, points.points[i].z})
            append<Number>(bytes, coordinate);
        if (!points.normals.empty())
            for (const float part : {points.normals[i].x, points.normals[i].y, points.normals[i].z})
                append<float>(bytes, part);
        if (!points.colors.empty())
            for (const std::uint8_t part : {points.colors[i].r, points.colors[i].g, points.colors[i].b})
                append<std::uint8_t>(bytes, part);
        if (!extras.property.empty())
            append<float>(bytes, extras.values[i]);
    }
}

void appendTriangles(std::string& bytes, std::span<const unsigned> indices)
{
    for (std::size_t i = 0; i + 2 < indices.size(); i += 3) {
        append<std::uint8_t>(bytes, 3);
        for (std::size_t k = 0; k < 3; ++k)
            append<std::uint32_t>(bytes, indices[i + k]);
    }
}

/// As short as it can be read back exactly.
template <typename Number>
void appendLines(std::string& text, const ExportedPoints& points)
{
    auto out = std::back_inserter(text);
    for (std::size_t i = 0; i < points.points.size(); ++i) {
        const rob::Posd& p = points.points[i];
        fmt::format_to(out, "{} {} {}", static_cast<Number>(p.x), static_cast<Number>(p.y), static_cast<Number>(p.z));
        if (!points.normals.empty()) {
            const rob::Vec3f& n = points.normals[i];
            fmt::format_to(out, " {} {} {}", n.x, n.y, n.z);
        } else if (!points.colors.empty()) {
            const PointColor& color = points.colors[i];
            fmt::format_to(out, " {} {} {}", color.r, color.g, color.b);
        }
        text += '\n';
    }
}

} // namespace

std::string plyOf(const ExportedPoints& points, const PlyExtras& extras)
{
    const bool areFloats = areSingle(points.points);
    std::string bytes = fmt::format("ply\nformat binary_little_endian 1.0\nelement vertex {}\n", points.points.size());
    for (const char* name : {"x", "y", "z"})
        bytes += fmt::format("property {} {}\n", areFloats ? "float" : "double", name);
    if (!points.normals.empty())
        bytes += "property float nx\nproperty float ny\nproperty float nz\n";
    if (!points.colors.empty())
        bytes += "property uchar red\nproperty uchar green\nproperty uchar blue\n";
    if (!extras.property.empty())
        bytes += fmt::format("property float {}\n", extras.property);
    if (!extras.indices.empty())
        bytes += fmt::format("element face {}\nproperty list uchar uint vertex_indices\n", extras.indices.size() / 3);
    bytes += "end_header\n";
    bytes.reserve(bytes.size() + points.points.size() * (areFloats ? 12 : 24) + points.normals.size() * 12 +
                  points.colors.size() * 3 + extras.values.size() * 4 + extras.indices.size() / 3 * 13);
    if (areFloats)
        appendPoints<float>(bytes, points, extras);
    else
        appendPoints<double>(bytes, points, extras);
    appendTriangles(bytes, extras.indices);
    return bytes;
}

std::string xyzOf(const ExportedPoints& points)
{
    std::string text;
    text.reserve(points.points.size() * 32);
    if (areSingle(points.points))
        appendLines<float>(text, points);
    else
        appendLines<double>(text, points);
    return text;
}

} // namespace vrk::station
