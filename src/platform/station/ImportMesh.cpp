#include "platform/station/ImportFormats.h"

#include "platform/layout/Body.h"
#include "platform/layout/Part.h"
#include "platform/sdf/SdfManager.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <limits>

namespace vrk::station {
namespace {

constexpr std::uint64_t headerSize = 84; // 80 bytes of text, then the number of triangles
constexpr std::uint64_t recordSize = 50;

/// Whether `token` is a number that a float can hold.
bool isNumber(std::string_view token)
{
    if (token.starts_with('+'))
        token.remove_prefix(1);
    double value = 0;
    const char* const end = token.data() + token.size();
    const auto [stop, error] = std::from_chars(token.data(), end, value);
    return error == std::errc() && stop == end && std::abs(value) <= std::numeric_limits<float>::max();
}

void expectTriple(std::istream& stream, const std::filesystem::path& file, std::string_view what)
{
    std::string token;
    for (int i = 0; i < 3; ++i) {
        if (!(stream >> token))
            throw ImportError(file, "the ascii STL file is cut short");
        if (!isNumber(token))
            throw ImportError(file, fmt::format("a {} of the STL file is not three numbers", what));
    }
}

/// Some writers use capitals, which the view does not read.
void refuseCapitals(std::string_view token, const std::filesystem::path& file)
{
    for (std::string_view word : {"FACET", "NORMAL", "VERTEX", "ENDFACET"}) {
        if (token == word)
            throw ImportError(file, "the words of an ascii STL file must be in small letters");
    }
}

/// Reads on to the end of a facet. Facets are strict, what stands between them is not looked at: so the view reads, too.
void checkFacet(std::istream& stream, const std::filesystem::path& file)
{
    int normals = 0;
    int vertices = 0;
    for (std::string token; stream >> token;) {
        if (token == "normal") {
            expectTriple(stream, file, token);
            ++normals;
        } else if (token == "vertex") {
            expectTriple(stream, file, token);
            ++vertices;
        } else if (token == "endfacet") {
            if (vertices != 3 || normals != 1)
                throw ImportError(file, "a facet of the STL file has not one normal and three vertices");
            return;
        }
        refuseCapitals(token, file);
    }
    throw ImportError(file, "the ascii STL file is cut short");
}

void checkAscii(const std::filesystem::path& file)
{
    std::vector<char> buffer(1 << 16);
    std::ifstream stream;
    stream.rdbuf()->pubsetbuf(buffer.data(), static_cast<std::streamsize>(buffer.size()));
    stream.open(file, std::ios::binary);

    bool anyFacet = false;
    for (std::string token; stream >> token;) {
        if (token == "facet") {
            checkFacet(stream, file);
            anyFacet = true;
        } else if (!anyFacet) {
            refuseCapitals(token, file);
        }
    }
    if (!anyFacet)
        throw ImportError(file, "neither a binary nor an ascii STL file");
}

/// Throws where the view would not read the file or would have nothing to draw.
void checkStl(const std::filesystem::path& file)
{
    const std::uint64_t size = std::filesystem::file_size(file);
    std::array<char, headerSize> header{};
    std::ifstream stream(file, std::ios::binary);
    stream.read(header.data(), header.size());
    const auto got = static_cast<std::size_t>(stream.gcount());

    std::uint32_t count = 0;
    std::memcpy(&count, header.data() + headerSize - sizeof count, sizeof count); // little-endian, as this machine is
    const std::uint64_t expected = headerSize + recordSize * count;
    if (got == headerSize && size == expected) {
        if (count == 0)
            throw ImportError(file, "the STL file holds no triangle");
        return;
    }
    // Text has no zero bytes; a binary header or its count nearly always has.
    if (std::find(header.begin(), header.begin() + got, '\0') == header.begin() + got)
        return checkAscii(file);
    if (got < headerSize)
        throw ImportError(file, "the binary STL file is cut short");
    throw ImportError(file, fmt::format("not an STL file, or a damaged one: {} triangles need {} bytes, it has {}",
                                        count, expected, size));
}

} // namespace

Parts readStl(const std::filesystem::path& file, const Progress& progress)
{
    const std::string ending = file.extension().string();
    if (ending != ".stl" && ending != ".STL")
        throw ImportError(file, fmt::format("the ending '{}' must be all small or all capital letters", ending));
    report(progress, "reading", 0);
    checkStl(file);

    const std::string name = file.stem().string();
    auto part = std::make_shared<layout::Part>(sdf::SdfManager::inst().generateId(), name);
    part->addBody(name)->setGeometry(file.string(), "stl");
    return {part};
}

} // namespace vrk::station
