#include "platform/station/StlFile.h"

#include "platform/station/Import.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <functional>
#include <limits>
#include <sstream>

namespace vrk::station {
namespace {

static_assert(std::endian::native == std::endian::little, "binary STL is copied as it lies in the file");

constexpr std::uint64_t headerSize = 84; // 80 bytes of text, then the number of triangles
constexpr std::uint64_t recordSize = 50;
constexpr std::size_t facetSize = sizeof(StlFacet);
static_assert(facetSize == 48); // what a record begins with; two bytes that nobody reads follow

using FacetVisitor = std::function<void(const StlFacet&)>;

/// Reads the words of an ascii file.
class AsciiReader {
public:
    AsciiReader(const std::filesystem::path& file, FacetVisitor visit) : file(file), visit(std::move(visit))
    {
        stream.rdbuf()->pubsetbuf(buffer.data(), static_cast<std::streamsize>(buffer.size()));
        stream.open(file, std::ios::binary);
    }

    /// @return whether the view reads the file as it stands: all words are in small letters, and no name holds one.
    bool read()
    {
        bool anyFacet = false;
        while (nextWord()) {
            if (isSame(word, "solid") || isSame(word, "endsolid")) {
                skipName();
            } else if (isWord("facet")) {
                readFacet();
                anyFacet = true;
            }
        }
        if (!anyFacet)
            throw ImportError(file, "neither a binary nor an ascii STL file");
        return isPlain;
    }

private:
    bool nextWord() { return static_cast<bool>(stream >> word); }

    /// Skips the name of a solid, which is the rest of its line, though a file may go on with a facet in that line.
    void skipName()
    {
        const std::streamoff start = stream.tellg();
        std::string line;
        std::getline(stream, line);
        std::istringstream words(line);
        std::string before;
        std::string beforeThat;
        std::streamoff facetAt = 0; // of the last word "facet" in the line
        bool isFacetInName = false;
        for (std::string next; words >> next; beforeThat = before, before = next) {
            float number = 0;
            if (isSame(beforeThat, "facet") && isSame(before, "normal") && readNumber(next, number)) {
                stream.clear();
                stream.seekg(start + facetAt);
                return;
            }
            if (!isSame(next, "facet"))
                continue;
            isPlain = isPlain && !isFacetInName;
            isFacetInName = true;
            facetAt = (words.eof() ? static_cast<std::streamoff>(line.size()) : std::streamoff(words.tellg())) -
                      static_cast<std::streamoff>(next.size());
        }
        isPlain = isPlain && !isFacetInName;
    }

    static bool isSame(std::string_view text, std::string_view small)
    {
        const auto lower = [](unsigned char c) { return static_cast<char>(std::tolower(c)); };
        return std::ranges::equal(text, small, {}, lower);
    }

    /// Whether the last word is this one, in any case; capitals are noted.
    bool isWord(std::string_view small)
    {
        if (!isSame(word, small))
            return false;
        isPlain = isPlain && word == small;
        return true;
    }

    /// Reads on to the end of a facet. Facets are strict, what stands between them is not looked at: so the view reads,
    /// too.
    void readFacet()
    {
        StlFacet facet;
        int normals = 0;
        int vertices = 0;
        while (nextWord()) {
            if (isWord("normal")) {
                readTriple("normal", facet.normal.data());
                ++normals;
            } else if (isWord("vertex")) {
                readTriple("vertex", facet.corners.data() + 3 * std::min(vertices, 2));
                ++vertices;
            } else if (isWord("endfacet")) {
                if (vertices != 3 || normals != 1)
                    throw ImportError(file, "a facet of the STL file has not one normal and three vertices");
                visit(facet);
                return;
            }
        }
        throw ImportError(file, "the ascii STL file is cut short");
    }

    void readTriple(std::string_view what, float* numbers)
    {
        for (int i = 0; i < 3; ++i) {
            if (!nextWord())
                throw ImportError(file, "the ascii STL file is cut short");
            if (!readNumber(word, numbers[i]))
                throw ImportError(file, fmt::format("a {} of the STL file is not three numbers", what));
        }
    }

    /// Whether a word is a number that a float can hold.
    static bool readNumber(std::string_view token, float& number)
    {
        if (token.starts_with('+'))
            token.remove_prefix(1);
        double value = 0;
        const char* const end = token.data() + token.size();
        const auto [stop, error] = std::from_chars(token.data(), end, value);
        if (error != std::errc() || stop != end || !(std::abs(value) <= std::numeric_limits<float>::max()))
            return false;
        number = static_cast<float>(value);
        return true;
    }

    const std::filesystem::path& file;
    FacetVisitor visit;
    std::vector<char> buffer = std::vector<char>(1 << 16);
    std::ifstream stream;
    std::string word;
    bool isPlain = true;
};

enum class StlForm {
    Binary,
    BinaryAndMore, ///< bytes follow behind the triangles, and the view takes the file for text
    Ascii,
};

/// @throws ImportError where it is neither binary nor text, or where its triangles are not all there.
StlForm formOf(const std::filesystem::path& file)
{
    const std::uint64_t size = std::filesystem::file_size(file);
    std::array<char, headerSize> header{};
    std::ifstream stream(file, std::ios::binary);
    stream.read(header.data(), header.size());
    const auto got = static_cast<std::size_t>(stream.gcount());

    std::uint32_t count = 0;
    std::memcpy(&count, header.data() + headerSize - sizeof count, sizeof count);
    const std::uint64_t expected = headerSize + recordSize * count;
    if (got == headerSize && size == expected) {
        if (count == 0)
            throw ImportError(file, "the STL file holds no triangle");
        return StlForm::Binary;
    }
    // Text has no zero bytes; a binary header or its count nearly always has.
    if (std::find(header.begin(), header.begin() + got, '\0') == header.begin() + got)
        return StlForm::Ascii;
    if (got < headerSize)
        throw ImportError(file, "the binary STL file is cut short");
    if (count > 0 && size > expected)
        return StlForm::BinaryAndMore;
    throw ImportError(file, fmt::format("not an STL file, or a damaged one: {} triangles need {} bytes, it has {}",
                                        count, expected, size));
}

} // namespace

void StlFacet::computeNormal()
{
    std::array<double, 3> u{}, v{};
    for (std::size_t i = 0; i < 3; ++i) {
        u[i] = static_cast<double>(corners[3 + i]) - corners[i];
        v[i] = static_cast<double>(corners[6 + i]) - corners[i];
    }
    const std::array<double, 3> n{u[1] * v[2] - u[2] * v[1], u[2] * v[0] - u[0] * v[2], u[0] * v[1] - u[1] * v[0]};
    const double length = std::sqrt(n[0] * n[0] + n[1] * n[1] + n[2] * n[2]);
    for (std::size_t i = 0; i < 3; ++i)
        normal[i] = length > 0 ? static_cast<float>(n[i] / length) : 0.0f;
}

bool checkStl(const std::filesystem::path& file)
{
    switch (formOf(file)) {
    case StlForm::Binary:
        return true;
    case StlForm::BinaryAndMore:
        return false;
    default:
        return AsciiReader(file, [](const StlFacet&) {}).read();
    }
}

std::vector<StlFacet> readStlFacets(const std::filesystem::path& file)
{
    std::vector<StlFacet> facets;
    if (formOf(file) == StlForm::Ascii) {
        AsciiReader(file, [&facets](const StlFacet& facet) { facets.push_back(facet); }).read();
        return facets;
    }
    std::ifstream stream(file, std::ios::binary);
    stream.seekg(headerSize - sizeof(std::uint32_t));
    std::uint32_t count = 0;
    stream.read(reinterpret_cast<char*>(&count), sizeof count);
    facets.resize(count);
    std::array<char, recordSize> record{};
    for (StlFacet& facet : facets) {
        if (!stream.read(record.data(), record.size()))
            throw ImportError(file, "the binary STL file is cut short");
        std::memcpy(&facet, record.data(), facetSize);
    }
    return facets;
}

std::string binaryStl(std::span<const StlFacet> facets)
{
    // The text must not begin with "solid", which other programs take for an ascii file.
    std::string bytes = "binary STL";
    bytes.resize(headerSize - sizeof(std::uint32_t), ' ');
    const auto count = static_cast<std::uint32_t>(facets.size());
    bytes.append(reinterpret_cast<const char*>(&count), sizeof count);
    bytes.reserve(headerSize + recordSize * facets.size());
    for (const StlFacet& facet : facets) {
        bytes.append(reinterpret_cast<const char*>(&facet), facetSize);
        bytes.append(recordSize - facetSize, '\0');
    }
    return bytes;
}

} // namespace vrk::station
