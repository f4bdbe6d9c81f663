#include "platform/station/clouds/PlyMesh.h"

#include "platform/station/clouds/PlyHeader.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <cstring>

namespace vrk::station {
namespace {

static_assert(std::endian::native == std::endian::little);

/// The number among the points that were kept, of each in the file.
std::vector<unsigned> keptNumbers(std::size_t points, const std::vector<std::uint64_t>& dropped)
{
    std::vector<unsigned> numbers(points + dropped.size());
    auto next = dropped.begin();
    for (std::size_t i = 0, kept = 0; i < numbers.size(); ++i) {
        if (next != dropped.end() && *next == i)
            ++next;
        else
            numbers[i] = static_cast<unsigned>(kept++);
    }
    return numbers;
}

/// Takes out triangles at points that were dropped, and tells how many.
std::uint64_t leaveOut(std::vector<unsigned>& indices, std::size_t points, const std::vector<std::uint64_t>& dropped)
{
    if (dropped.empty())
        return 0;
    const std::vector<unsigned> numbers = keptNumbers(points, dropped);
    std::size_t kept = 0;
    for (std::size_t i = 0; i + 2 < indices.size(); i += 3) {
        const auto isDropped = [&](std::size_t k) { return std::ranges::binary_search(dropped, indices[k]); };
        if (isDropped(i) || isDropped(i + 1) || isDropped(i + 2))
            continue;
        for (std::size_t k = 0; k < 3; ++k)
            indices[kept++] = numbers[indices[i + k]];
    }
    const std::uint64_t gone = (indices.size() - kept) / 3;
    indices.resize(kept);
    return gone;
}

bool areUsable(const std::vector<rob::Vec3f>& normals)
{
    return !normals.empty() &&
           std::ranges::none_of(normals, [](const rob::Vec3f& n) { return n.squaredLength() == 0; });
}

template <typename Value>
char* put(char* at, const Value& value)
{
    std::memcpy(at, &value, sizeof value);
    return at + sizeof value;
}

} // namespace

bool holdsFaces(std::string_view bytes)
{
    try {
        LineReader lines(bytes);
        const PlyHeader header = readPlyHeader(lines);
        return std::ranges::any_of(header.elements,
                                   [](const PlyElement& e) { return e.count > 0 && facesOf(e).has_value(); });
    } catch (const CloudFault&) {
        return false; // its reader will tell
    }
}

PlyTriangles parsePlyMesh(std::string_view bytes, const Progress& progress, double scale)
{
    PlyContent content = parsePlyWithFaces(bytes, progress, scale);
    PlyTriangles read;
    read.leftOut = leaveOut(content.indices, content.cloud.points.size(), content.dropped);
    read.origin = content.cloud.origin;
    read.mesh.points = std::move(content.cloud.points);
    read.mesh.colors = std::move(content.cloud.colors);
    read.mesh.indices = std::move(content.indices);
    if (areUsable(content.cloud.normals))
        read.mesh.normals = std::move(content.cloud.normals);
    else
        geometry::addCreaseNormals(read.mesh);
    return read;
}

std::string plyOf(const geometry::TriangleMesh& mesh)
{
    const bool hasColors = !mesh.colors.empty();
    const std::size_t pointSize = 6 * sizeof(float) + (hasColors ? 3 : 0);
    constexpr std::size_t faceSize = 1 + 3 * sizeof(unsigned);
    std::string bytes = fmt::format("ply\nformat binary_little_endian 1.0\nelement vertex {}\n", mesh.points.size());
    for (const char* name : {"x", "y", "z", "nx", "ny", "nz"})
        bytes += fmt::format("property float {}\n", name);
    if (hasColors)
        bytes += "property uchar red\nproperty uchar green\nproperty uchar blue\n";
    bytes +=
        fmt::format("element face {}\nproperty list uchar uint vertex_indices\nend_header\n", mesh.indices.size() / 3);
    const std::size_t begin = bytes.size();
    bytes.resize(begin + mesh.points.size() * pointSize + mesh.indices.size() / 3 * faceSize);
    char* at = bytes.data() + begin;
    for (std::size_t i = 0; i < mesh.points.size(); ++i) {
        at = put(at, std::array{mesh.points[i].x, mesh.points[i].y, mesh.points[i].z});
        at = put(at, std::array{mesh.normals[i].x, mesh.normals[i].y, mesh.normals[i].z});
        if (hasColors)
            at = put(at, mesh.colors[i]);
    }
    for (std::size_t i = 0; i + 2 < mesh.indices.size(); i += 3) {
        at = put(at, std::uint8_t{3});
        for (std::size_t k = 0; k < 3; ++k)
            at = put(at, mesh.indices[i + k]);
    }
    return bytes;
}

} // namespace vrk::station
