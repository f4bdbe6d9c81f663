#include "platform/station/import/StlFile.h"

#include "platform/common/Checks.h"
#include "platform/common/Logger.h"
#include "platform/station/Import.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <functional>
#include <vector>

namespace vrk::station {
namespace {

using geometry::binaryStlSize;
using geometry::StlFault;
using geometry::stlHeaderSize;
using geometry::stlRecordSize;

constexpr const char* cutShort = "the ascii STL file is cut short";
constexpr std::size_t facetSize = sizeof(StlFacet); // two bytes that nobody reads follow in a record
constexpr std::size_t looked = 64; // facets of a binary file: a program writes either all normals or none

bool hasNormal(const StlFacet& facet)
{
    return facet.normal != std::array<float, 3>{};
}

/// The normal that the file leaves out, as many programs do.
StlFacet withNormal(StlFacet facet)
{
    if (!hasNormal(facet))
        facet.computeNormal();
    return facet;
}

/// Whether its three corners are places, as far out as a station may reach.
bool isSomewhere(const StlFacet& facet)
{
    return std::ranges::all_of(facet.corners, [](float number) { return std::abs(number) <= common::farthestPlace; });
}

/// Whether its normal is left out though it has one. What has no area has none.
bool lacksNormal(const StlFacet& facet)
{
    return !hasNormal(facet) && hasNormal(withNormal(facet));
}

/// What a look at all triangles of a file finds.
struct StlLook {
    std::size_t count = 0;
    std::size_t nowhere = 0;
    bool isLacking = false; ///< a normal that it should have

    void take(const StlFacet& facet, bool withNormal)
    {
        ++count;
        nowhere += !isSomewhere(facet);
        isLacking = isLacking || (withNormal && lacksNormal(facet));
    }
};

/// What stands behind the triangles that the header counts is not looked at.
StlLook lookAtBinary(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    std::array<char, stlHeaderSize> header{};
    stream.read(header.data(), header.size());
    const std::size_t all = geometry::stlCount(header.data());
    constexpr std::size_t atOnce = 4096;
    std::vector<char> records(atOnce * stlRecordSize);
    StlLook look;
    StlFacet facet;
    while (look.count < all &&
           (stream.read(records.data(), static_cast<std::streamsize>(records.size())) || stream.gcount() > 0)) {
        const std::size_t count = static_cast<std::size_t>(stream.gcount()) / stlRecordSize;
        for (std::size_t i = 0; i < count && look.count < all; ++i) {
            std::memcpy(&facet, records.data() + i * stlRecordSize, facetSize);
            look.take(facet, look.count < looked);
        }
    }
    return look;
}

/// Tells how much of the file will be left out.
/// @throws ImportError where that is all.
void tellNowhere(const StlLook& look, const std::filesystem::path& file)
{
    if (look.nowhere == look.count && look.count > 0)
        throw ImportError(file, "no triangle of the STL file has corners that are somewhere");
    if (look.nowhere > 0)
        AppLogger::inst()->warn(fmt::format("{}: {} of {} triangles are left out: their corners are nowhere",
                                            file.string(), look.nowhere, look.count));
}

/// Why the text of a file is refused.
std::string causeOf(const geometry::StlText& text)
{
    switch (text.fault) {
    case StlFault::NoFacet:
        return "neither a binary nor an ascii STL file";
    case StlFault::Facet:
        return "a facet of the STL file has not one normal and three vertices";
    case StlFault::Normal:
    case StlFault::Vertex:
        if (!text.endsInNumbers)
            return fmt::format("a {} of the STL file is not three numbers",
                               text.fault == StlFault::Normal ? "normal" : "vertex");
        return cutShort;
    default:
        return cutShort;
    }
}

/// Reads an ascii file, with its words in any case and any names.
/// @return whether the view reads it as it stands: all words are in small letters, and no name holds one.
bool readAscii(const std::filesystem::path& file, const std::function<void(const StlFacet&)>& visit)
{
    std::string bytes(std::filesystem::file_size(file), '\0');
    std::ifstream stream(file, std::ios::binary);
    stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    bytes.resize(static_cast<std::size_t>(stream.gcount()));
    const geometry::StlText text =
        geometry::readStlText(bytes, {.anyCase = true, .wholeNumbers = true, .solidNames = true},
                              [&visit](const StlFacet& facet, unsigned) { visit(facet); });
    if (text.fault != StlFault::None)
        throw ImportError(file, causeOf(text));
    return text.isInSmallLetters && !text.isFacetInName;
}

enum class StlForm {
    Binary,
    BinaryAndMore, ///< bytes follow behind the triangles, and the view takes the file for text
    Ascii,
};

/// @throws ImportError where it is neither binary nor text, or where its triangles are not all there.
StlForm formOf(const std::filesystem::path& file)
{
    const std::uint64_t size = std::filesystem::file_size(file);
    std::array<char, stlHeaderSize> header{};
    std::ifstream stream(file, std::ios::binary);
    stream.read(header.data(), header.size());
    const auto got = static_cast<std::size_t>(stream.gcount());

    const std::uint32_t count = geometry::stlCount(header.data());
    const std::uint64_t expected = binaryStlSize(count);
    if (got == stlHeaderSize && size == expected) {
        if (count == 0)
            throw ImportError(file, "the STL file holds no triangle");
        return StlForm::Binary;
    }
    // Text has no zero bytes; a binary header or its count nearly always has.
    if (std::find(header.begin(), header.begin() + got, '\0') == header.begin() + got)
        return StlForm::Ascii;
    if (got < stlHeaderSize)
        throw ImportError(file, "the binary STL file is cut short");
    if (count > 0 && size > expected)
        return StlForm::BinaryAndMore;
    throw ImportError(file, fmt::format("not an STL file, or a damaged one: {} triangles need {} bytes, it has {}",
                                        count, expected, size));
}

} // namespace

bool checkStl(const std::filesystem::path& file)
{
    const StlForm form = formOf(file);
    switch (form) {
    case StlForm::Binary:
    case StlForm::BinaryAndMore: {
        const StlLook look = lookAtBinary(file);
        tellNowhere(look, file);
        return form == StlForm::Binary && !look.isLacking && look.nowhere == 0;
    }
    default:
        StlLook look;
        const bool isReadable = readAscii(file, [&look](const StlFacet& facet) { look.take(facet, true); });
        tellNowhere(look, file);
        return isReadable && !look.isLacking && look.nowhere == 0;
    }
}

std::vector<StlFacet> readStlFacets(const std::filesystem::path& file)
{
    std::vector<StlFacet> facets;
    if (formOf(file) == StlForm::Ascii) {
        readAscii(file, [&facets](const StlFacet& facet) { facets.push_back(withNormal(facet)); });
        std::erase_if(facets, [](const StlFacet& facet) { return !isSomewhere(facet); });
        return facets;
    }
    std::ifstream stream(file, std::ios::binary);
    std::array<char, stlHeaderSize> header{};
    stream.read(header.data(), header.size());
    facets.resize(geometry::stlCount(header.data()));
    std::array<char, stlRecordSize> record{};
    for (StlFacet& facet : facets) {
        if (!stream.read(record.data(), record.size()))
            throw ImportError(file, "the binary STL file is cut short");
        std::memcpy(&facet, record.data(), facetSize);
        facet = withNormal(facet);
    }
    std::erase_if(facets, [](const StlFacet& facet) { return !isSomewhere(facet); });
    return facets;
}

std::string binaryStl(std::span<const StlFacet> facets)
{
    // The text must not begin with "solid", which other programs take for an ascii file.
    std::string bytes = "binary STL";
    bytes.resize(stlHeaderSize - sizeof(std::uint32_t), ' ');
    const auto count = static_cast<std::uint32_t>(facets.size());
    bytes.append(reinterpret_cast<const char*>(&count), sizeof count);
    bytes.reserve(stlHeaderSize + stlRecordSize * facets.size());
    for (const StlFacet& facet : facets) {
        bytes.append(reinterpret_cast<const char*>(&facet), facetSize);
        bytes.append(stlRecordSize - facetSize, '\0');
    }
    return bytes;
}

} // namespace vrk::station
