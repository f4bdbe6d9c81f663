#pragma once

#include "platform/common/Export.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>

/// The STL format as the import and the view read it: what a binary file is, and the grammar of an ascii one. What a fault
/// is called, and whether an empty file is one, is the readers' business. Any thread. Not installed.
namespace vrk::geometry {

struct StlFacet {
    std::array<float, 3> normal{};
    std::array<float, 9> corners{};

    /// The normal that the corners give; zero where they lie on a line.
    void computeNormal();
};

// A binary file: little-endian records behind a header.

constexpr std::size_t stlHeaderSize = 84; ///< 80 bytes of text, then the number of triangles
constexpr std::size_t stlRecordSize = 50; ///< the normal, three corners, and two bytes that nobody reads

/// The number of triangles that a header tells. `header` has at least `stlHeaderSize` bytes.
VRK_EXPORT std::uint32_t stlCount(const void* header);
/// How long a binary file of so many triangles is. A file is binary if and only if it has the length that its own count
/// asks for.
constexpr std::uint64_t binaryStlSize(std::uint32_t count)
{
    return stlHeaderSize + std::uint64_t{stlRecordSize} * count;
}

// An ascii file: words and numbers between white space. The words of a facet are "facet", "normal", "vertex" and
// "endfacet"; all others are passed over, and so is all that stands between facets.

/// What a reader takes besides words in small letters and numbers that end where no more of them can follow, so that
/// "1.5mm" is 1.5.
struct StlSyntax {
    bool anyCase = false;      ///< words in capitals as well
    bool wholeNumbers = false; ///< no number that is the beginning of a longer word
    bool solidNames = false;   ///< names of solids that hold the word "facet", which otherwise begins one
};

enum class StlFault {
    None,
    NoFacet,  ///< the text has none
    CutShort, ///< it ends within a facet, but not in place of a number
    Normal,   ///< a normal has not three numbers that a float can hold
    Vertex,   ///< a vertex has not three such numbers
    Facet,    ///< a facet has not one normal and three vertices
};

struct StlText {
    StlFault fault = StlFault::None;
    bool endsInNumbers = false;   ///< with a fault of a normal or a vertex: the text ends where a number is due
    bool isInSmallLetters = true; ///< each word of a facet, as far as it was read
    bool isFacetInName = false;   ///< a solid's name holds that word: only with `solidNames`
};

/// Reads the facets of an ascii file in order, up to the first fault.
///
/// @param visit  takes each whole facet, and how many of its corners stand before its normal.
VRK_EXPORT StlText readStlText(std::string_view text, StlSyntax syntax,
                               const std::function<void(const StlFacet&, unsigned cornersBeforeNormal)>& visit);

} // namespace vrk::geometry
