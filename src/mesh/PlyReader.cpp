#include "mesh/PlyReader.h"

#include "mesh/StlReader.h"
#include "platform/station/Uri.h"
#include "platform/station/clouds/PlyMesh.h"

#include <fstream>
#include <iterator>
#include <stdexcept>

namespace vrk::visual {
namespace {

std::string bytesOf(const std::string& path)
{
    if (isRemoteUri(path)) {
        const std::unique_ptr<common::ZipBuffer> buffer = ReadFileFromURI(path);
        return {buffer->data(), buffer->size()};
    }
    const std::filesystem::path file = UriToFilePath(path);
    std::error_code error;
    std::ifstream stream;
    if (std::filesystem::is_regular_file(file, error)) // a folder would open
        stream.open(file, std::ios::binary);
    if (!stream.is_open())
        throw std::runtime_error(path);
    return {std::istreambuf_iterator<char>(stream), {}};
}

} // namespace

Mesh readPly(const std::string& path)
{
    try {
        station::PlyTriangles read = station::parsePlyMesh(bytesOf(path));
        Mesh mesh(path);
        mesh.vertices = std::move(read.mesh.points);
        mesh.normals = std::move(read.mesh.normals);
        mesh.indices = std::move(read.mesh.indices);
        mesh.colors.reserve(read.mesh.colors.size());
        for (const PointColor& color : read.mesh.colors)
            mesh.colors.emplace_back(color.r / 255.0f, color.g / 255.0f, color.b / 255.0f);
        return mesh;
    } catch (const station::CloudFault& fault) {
        throw std::runtime_error(path + ": " + fault.what());
    }
}

} // namespace vrk::visual
