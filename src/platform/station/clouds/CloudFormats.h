#pragma once

#include "platform/layout/PointCloud.h"
#include "platform/station/Import.h"

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>

/// The readers of point clouds, from bytes in memory, and what they share. Not installed.
///
/// No light package reads these files so that it can say in which line or byte one is damaged, so the formats are read
/// here; a package opens what PCD files compress.
namespace vrk::station {

/// What is wrong with a point cloud file, and in which line or byte.
class VRK_EXPORT CloudFault : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

struct Cloud {
    layout::PointCloud::Points points;   ///< relative to `origin`
    layout::PointCloud::Normals normals; ///< as many as points, or none
    layout::PointCloud::Colors colors;   ///< as many as points, or none
    std::vector<float> values;           ///< of the property that was asked for, as many as points; else none
    rob::Posd origin;                    ///< (0, 0, 0) unless the points lie too far out for single precision
    std::uint64_t dropped = 0;           ///< points that were not finite
};

// The three formats. Any thread. @throws CloudFault
// @param scale  model units in one of the file's.

/// PLY: ascii and binary of either byte order. The points are the element "vertex"; other elements and properties are
/// passed over.
VRK_EXPORT Cloud parsePly(std::string_view bytes, const Progress& progress = {}, double scale = 1);
/// The same with the values of a property of the vertices, which must be there.
VRK_EXPORT Cloud parsePlyWithValues(std::string_view bytes, std::string_view property, const Progress& progress = {});
/// PCD: ascii, binary and compressed. The acquisition viewpoint is not applied. Colours are those of the field "rgb" or "rgba",
/// four bytes that are stored as one number, or of the fields "r", "g" and "b".
VRK_EXPORT Cloud parsePcd(std::string_view bytes, const Progress& progress = {}, double scale = 1);
/// Text with one point a line: x, y, z and whatever follows them; each line as many numbers as the first. Lines that
/// begin with # or // are passed over. Exactly six columns give normals where the last three are vectors of length 1, or
/// 0 for none, throughout; else they are taken for colours. So are those behind an intensity, of seven, and those ahead of a
/// normal, of nine. Numbers from 0 to 1 throughout, or whole ones up to 255, are colours; others are not.
VRK_EXPORT Cloud parseXyz(std::string_view bytes, const Progress& progress = {}, double scale = 1);

/// The kinds of numbers in binary data.
enum class Scalar { Int8, UInt8, Int16, UInt16, Int32, UInt32, Int64, UInt64, Float32, Float64 };
enum class ByteOrder { Little, Big };
unsigned sizeOf(Scalar type);
double readScalar(const char* at, Scalar type, ByteOrder order);

/// What a file says of one point.
struct PointRecord {
    std::array<double, 3> point{};
    std::array<double, 3> normal{};
    PointColor color{};
    double value = 0;
};

/// What stands beside the points of a file.
struct PointParts {
    bool normals = false;
    bool colors = false;
    bool values = false;
    double scale = 1; ///< of the coordinates
};

/// Gathers the points of a file into a `Cloud`.
class CloudCollector {
public:
    explicit CloudCollector(const PointParts& parts) : parts(parts) {}

    void reserve(std::uint64_t points);
    /// Adds a point, or counts it as dropped if it is not finite. A normal without a direction becomes (0, 0, 0).
    /// @return whether it was added.
    bool add(const PointRecord& record);
    void dropNormals();
    void giveColors(layout::PointCloud::Colors colors) { cloud.colors = std::move(colors); }
    Cloud take() { return std::move(cloud); }

private:
    Cloud cloud;
    PointParts parts;
};

/// A part of a colour as a byte. @param whole  what the full part is in the file.
std::uint8_t colorByte(double part, double whole);
/// What stands for all of a part where it is stored so: 1, or the largest whole number of the type.
double wholeOf(Scalar type);
/// Of four bytes in one number, blue the lowest.
PointColor packedColor(double number, Scalar type);

/// The lines of a text, without their ends.
class LineReader {
public:
    explicit LineReader(std::string_view text) : text(text) {}

    /// The next line; false at the end of the text.
    bool next(std::string_view& line);
    /// The next line that is not blank.
    bool nextFilled(std::string_view& line);
    /// That of the line last given, from 1.
    std::uint64_t number() const { return count; }
    /// The byte behind the line last given.
    std::size_t offset() const { return at; }

private:
    std::string_view text;
    std::size_t at = 0;
    std::uint64_t count = 0;
};

/// Takes the next word off the front of a line; empty at its end.
std::string_view takeWord(std::string_view& line);
std::vector<std::string_view> wordsOf(std::string_view line);
/// @throws CloudFault "line 3: 'word' is not a number". "nan" and "inf" are numbers here.
double parseNumber(std::string_view word, std::uint64_t line);
/// @throws CloudFault "line 3: 'word' is not a count"
std::uint64_t parseCount(std::string_view word, std::uint64_t line);
/// The numbers of a line. @throws CloudFault
void parseNumbers(std::string_view line, std::uint64_t lineNumber, std::vector<double>& numbers);
/// @throws CloudFault "line 3: 2 numbers where 3 are expected"
void expectNumbers(std::size_t found, std::size_t expected, std::uint64_t line);
/// A fault in one line: "line 3: <cause>".
[[noreturn]] void failAtLine(std::uint64_t line, const std::string& cause);
/// A word of a file for a fault's text: short, printable, in quotes.
std::string inQuotes(std::string_view word);

/// Where the numbers of a point stand among its columns or bytes. Coordinates are there; normals and colours may be.
struct PointColumns {
    std::array<std::size_t, 3> point{};
    std::array<std::size_t, 3> normal{};
    std::array<std::size_t, 3> color{}; ///< the first one alone where the colour is packed
    bool hasNormals = false;
    bool hasColors = false;
    bool isPacked = false;
    Scalar colorType = Scalar::UInt8;
    std::optional<std::size_t> value; ///< of a property that was asked for
};

/// @throws CloudFault "line 15: the file ends after 9 of 10 points"
[[noreturn]] void failAtMissingPoints(const LineReader& lines, std::uint64_t found, std::uint64_t expected);
/// @throws CloudFault "line 16: more than the 10 points of the header" unless what is left is blank.
void expectNoMoreLines(LineReader& lines, std::uint64_t points);
/// @throws CloudFault "ends at byte 1234 of 5678" where `bytes` is shorter than `needed`.
void expectBytes(std::string_view bytes, std::uint64_t needed);
/// Writers may pad the last page. @throws CloudFault "byte 5678: 3 bytes more than the 10 points of the header" where other
/// than zero bytes and blanks stand from byte `end` on.
void expectNothingFrom(std::string_view bytes, std::size_t end, std::uint64_t points);

/// Tells of progress, but not at each point.
void reportPoint(const Progress& progress, std::uint64_t point, std::size_t done, std::size_t size);

} // namespace vrk::station
