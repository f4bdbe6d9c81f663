#include "mesh/StlReader.h"

#include "mesh/AppendMade.h"
#include "platform/station/Uri.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <locale>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace vrk::visual {
namespace {

static_assert(std::endian::native == std::endian::little, "binary STL is copied as it lies in the file");

constexpr std::size_t headerSize = 84;
constexpr std::size_t recordSize = 50;
constexpr std::size_t positionOffset = 12; // of the first corner in a record, behind the normal

[[noreturn]] void throwBadFile()
{
    throw std::runtime_error("Bad STL File");
}

/// The number of triangles that the header of a binary file tells. `header` has at least `headerSize` bytes.
std::uint32_t countInHeader(const std::byte* header)
{
    std::uint32_t count = 0;
    std::memcpy(&count, header + 80, sizeof(count));
    return count;
}

bool isBinarySize(std::uint32_t count, std::uint64_t size)
{
    return headerSize + recordSize * std::uint64_t{count} == size;
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
            records += part * recordSize;
            count -= part;
        }
    }

private:
    // The records of one group are unpacked in the cache, then copied to the vectors' ends in one go each.
    static constexpr std::size_t groupSize = 512;

    void appendGroup(const std::byte* records, std::size_t count)
    {
        for (std::size_t i = 0; i < count; ++i) {
            const std::byte* record = records + i * recordSize;
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
    constexpr std::size_t blockRecords = (std::size_t{1} << 20) / recordSize;
    reserveTriangles(mesh, count);
    std::vector<std::byte> block(std::min<std::size_t>(count, blockRecords) * recordSize);
    RecordReader reader(mesh);
    for (std::size_t left = count; left > 0;) {
        const std::size_t part = std::min(left, blockRecords);
        const auto size = static_cast<std::streamsize>(part * recordSize);
        if (!file.read(reinterpret_cast<char*>(block.data()), size)) // cut off while we read it
            throwBadFile();
        reader.append(block.data(), part);
        left -= part;
    }
}

// Ascii

/// Takes words and numbers off a text as a stream with the classic locale does, without its cost.
class Scanner {
public:
    explicit Scanner(std::string_view text) : at(text.data()), end(text.data() + text.size()) {}

    /// The characters up to the next white space; empty at the end of the text.
    std::string_view word()
    {
        skipSpace();
        const char* begin = at;
        while (at != end && !isSpace(*at))
            ++at;
        return {begin, at};
    }

    /// Reads a number, which ends where no more of it can follow: "1.5mm" is 1.5 and leaves "mm".
    /// @return false where there is none, for "nan" and "inf", and for one that is out of a float's range.
    bool number(float& value)
    {
        skipSpace();
        const std::string_view text = numberText();
        const bool plus = !text.empty() && text.front() == '+'; // a stream takes it, from_chars does not
        const char* last = text.data() + text.size();
        const auto [stop, error] = std::from_chars(text.data() + plus, last, value);
        if (error == std::errc::result_out_of_range)
            return readExtreme(text, value);
        return error == std::errc() && stop == last && std::isfinite(value);
    }

private:
    static bool isSpace(char c) { return c == ' ' || (c >= '\t' && c <= '\r'); }
    static bool isDigit(char c) { return c >= '0' && c <= '9'; }

    void skipSpace()
    {
        while (at != end && isSpace(*at))
            ++at;
    }
    bool take(char a, char b)
    {
        if (at == end || (*at != a && *at != b))
            return false;
        ++at;
        return true;
    }
    void takeDigits()
    {
        while (at != end && isDigit(*at))
            ++at;
    }

    /// What a stream would gather before it converts: it takes the 'e' before it knows whether digits follow.
    std::string_view numberText()
    {
        const char* begin = at;
        take('+', '-');
        takeDigits();
        if (take('.', '.'))
            takeDigits();
        if (take('e', 'E')) {
            take('+', '-');
            takeDigits();
        }
        return {begin, at};
    }

    /// Too large fails, too small is rounded: from_chars does not tell which it was, a stream does.
    static bool readExtreme(std::string_view text, float& value)
    {
        std::istringstream stream{std::string(text)};
        stream.imbue(std::locale::classic());
        return static_cast<bool>(stream >> value) && stream.peek() == std::istringstream::traits_type::eof();
    }

    const char* at;
    const char* end;
};

bool readTriple(Scanner& scanner, float& x, float& y, float& z)
{
    return scanner.number(x) && scanner.number(y) && scanner.number(z);
}

/// Reads on from behind the word "facet" to its "endfacet".
void readFacet(Scanner& scanner, Mesh& mesh)
{
    rob::Vec3f normal;
    unsigned normalCount = 0;
    unsigned vertexCount = 0;
    for (std::string_view word = scanner.word(); word != "endfacet"; word = scanner.word()) {
        if (word.empty())
            throwBadFile();
        if (word == "normal") {
            if (!readTriple(scanner, normal.x, normal.y, normal.z))
                throw std::runtime_error("Error in reading normal");
            ++normalCount;
        } else if (word == "vertex") {
            rob::Posf position;
            if (!readTriple(scanner, position.x, position.y, position.z))
                throw std::runtime_error("Error in reading vertex");
            mesh.indices.push_back(static_cast<unsigned>(mesh.vertices.size()));
            mesh.vertices.push_back(position);
            mesh.normals.push_back(normal);
            ++vertexCount;
        }
    }
    if (vertexCount != 3 || normalCount != 1)
        throwBadFile();
}

Mesh readAscii(std::string_view text)
{
    Mesh mesh{std::string()};
    Scanner scanner(text);
    bool hasFacet = false;
    for (std::string_view word = scanner.word(); !word.empty(); word = scanner.word()) {
        if (word != "facet")
            continue;
        readFacet(scanner, mesh);
        hasFacet = true;
    }
    if (!hasFacet)
        throwBadFile();
    return mesh;
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

    std::array<std::byte, headerSize> header;
    if (size >= headerSize && file.read(reinterpret_cast<char*>(header.data()), headerSize)) {
        const std::uint32_t count = countInHeader(header.data());
        if (isBinarySize(count, size)) {
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

/// Whether the path goes to the platform's reader of URIs; "station" and "file" URIs are files.
bool isRemoteUri(const std::string& path)
{
    return path.find("://") != std::string::npos && !path.starts_with("station") && !path.starts_with("file");
}

} // namespace

Mesh parseStl(std::span<const std::byte> bytes)
{
    if (bytes.size() >= headerSize && isBinarySize(countInHeader(bytes.data()), bytes.size())) {
        Mesh mesh{std::string()};
        const std::size_t count = (bytes.size() - headerSize) / recordSize;
        reserveTriangles(mesh, count);
        RecordReader(mesh).append(bytes.data() + headerSize, count);
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
