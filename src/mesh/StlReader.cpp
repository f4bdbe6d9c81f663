#include "mesh/StlReader.h"

#include "mesh/AppendMade.h"
#include "platform/geometry/StlFormat.h"
#include "platform/station/Uri.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace vrk::visual {
namespace {

using geometry::stlHeaderSize;
using geometry::stlRecordSize;

constexpr std::size_t positionOffset = 12; // of the first corner in a record, behind the normal

[[noreturn]] void throwBadFile()
{
    throw std::runtime_error("Bad STL File");
}

// Binary

/// Appends whole records to a mesh that has room for them.
class RecordReader {
public:
    explicit RecordReader(Mesh& mesh) : mesh(mesh) {}

    void append(const std::byte* records, std::size_t count)
    {
        while (count > 0) {
            const std::size_t part = std::min(count, groupSize);
            appendGroup(records, part);
            records += part * stlRecordSize;
            count -= part;
        }
    }

private:
    // The records of one group are unpacked in the cache, then copied to the vectors' ends in one go each.
    static constexpr std::size_t groupSize = 512;

    void appendGroup(const std::byte* records, std::size_t count)
    {
        for (std::size_t i = 0; i < count; ++i) {
            const std::byte* record = records + i * stlRecordSize;
            for (std::size_t corner = 0; corner < 3; ++corner)
                std::memcpy(&normals[3 * i + corner], record, sizeof(rob::Vec3f));
            std::memcpy(&corners[3 * i], record + positionOffset, 3 * sizeof(rob::Posf));
        }
        mesh.vertices.insert(mesh.vertices.end(), corners.begin(), corners.begin() + 3 * count);
        mesh.normals.insert(mesh.normals.end(), normals.begin(), normals.begin() + 3 * count);
        appendMade(mesh.indices, 3 * count, [next = static_cast<unsigned>(mesh.indices.size())](std::size_t i) {
            return next + static_cast<unsigned>(i);
        });
    }

    Mesh& mesh;
    std::array<rob::Posf, 3 * groupSize> corners;
    std::array<rob::Vec3f, 3 * groupSize> normals;
};

void reserveTriangles(Mesh& mesh, std::size_t count)
{
    mesh.vertices.reserve(3 * count);
    mesh.normals.reserve(3 * count);
    mesh.indices.reserve(3 * count);
}

void readBinary(std::istream& file, std::uint32_t count, Mesh& mesh)
{
    constexpr std::size_t blockRecords = (std::size_t{1} << 20) / stlRecordSize;
    reserveTriangles(mesh, count);
    std::vector<std::byte> block(std::min<std::size_t>(count, blockRecords) * stlRecordSize);
    RecordReader reader(mesh);
    for (std::size_t left = count; left > 0;) {
        const std::size_t part = std::min(left, blockRecords);
        const auto size = static_cast<std::streamsize>(part * stlRecordSize);
        if (!file.read(reinterpret_cast<char*>(block.data()), size)) // cut off while we read it
            throwBadFile();
        reader.append(block.data(), part);
        left -= part;
    }
}

// Ascii

void appendFacet(Mesh& mesh, const geometry::StlFacet& facet, unsigned cornersBeforeNormal)
{
    const rob::Vec3f normal(facet.normal[0], facet.normal[1], facet.normal[2]);
    for (unsigned i = 0; i < 3; ++i) {
        const float* corner = facet.corners.data() + 3 * i;
        mesh.indices.push_back(static_cast<unsigned>(mesh.vertices.size()));
        mesh.vertices.emplace_back(corner[0], corner[1], corner[2]);
        mesh.normals.push_back(i < cornersBeforeNormal ? rob::Vec3f() : normal);
    }
}

Mesh readAscii(std::string_view text)
{
    Mesh mesh{std::string()};
    const geometry::StlText read =
        geometry::readStlText(text, {}, [&mesh](const geometry::StlFacet& facet, unsigned cornersBeforeNormal) {
            appendFacet(mesh, facet, cornersBeforeNormal);
        });
    switch (read.fault) {
    case geometry::StlFault::None:
        return mesh;
    case geometry::StlFault::Normal:
        throw std::runtime_error("Error in reading normal");
    case geometry::StlFault::Vertex:
        throw std::runtime_error("Error in reading vertex");
    default:
        throwBadFile();
    }
}

// Files

Mesh readStlFile(const std::filesystem::path& path)
{
    std::error_code error;
    std::ifstream file;
    if (std::filesystem::is_regular_file(path, error)) // a folder would open
        file.open(path, std::ios::binary);
    const std::uint64_t size = file.is_open() ? std::filesystem::file_size(path, error) : 0;
    if (!file.is_open() || error)
        throw std::runtime_error(path.string());

    std::array<std::byte, stlHeaderSize> header;
    if (size >= stlHeaderSize && file.read(reinterpret_cast<char*>(header.data()), stlHeaderSize)) {
        const std::uint32_t count = geometry::stlCount(header.data());
        if (size == geometry::binaryStlSize(count)) {
            Mesh mesh{std::string()};
            readBinary(file, count, mesh);
            return mesh;
        }
    }
    file.clear();
    file.seekg(0);
    std::string text(size, '\0');
    file.read(text.data(), static_cast<std::streamsize>(size));
    text.resize(static_cast<std::size_t>(file.gcount()));
    return readAscii(text);
}

} // namespace

bool isRemoteUri(const std::string& path)
{
    return path.find("://") != std::string::npos && !path.starts_with("station") && !path.starts_with("file");
}

Mesh parseStl(std::span<const std::byte> bytes)
{
    if (bytes.size() >= stlHeaderSize && bytes.size() == geometry::binaryStlSize(geometry::stlCount(bytes.data()))) {
        Mesh mesh{std::string()};
        const std::size_t count = (bytes.size() - stlHeaderSize) / stlRecordSize;
        reserveTriangles(mesh, count);
        RecordReader(mesh).append(bytes.data() + stlHeaderSize, count);
        return mesh;
    }
    return readAscii({reinterpret_cast<const char*>(bytes.data()), bytes.size()});
}

Mesh readStl(const std::string& path)
{
    const auto read = [&path] {
        if (!isRemoteUri(path))
            return readStlFile(UriToFilePath(path));
        const std::unique_ptr<common::ZipBuffer> buffer = ReadFileFromURI(path);
        return parseStl(std::as_bytes(std::span(buffer->data(), buffer->size())));
    };
    Mesh mesh = read();
    mesh.name = path;
    return mesh;
}

} // namespace vrk::visual
