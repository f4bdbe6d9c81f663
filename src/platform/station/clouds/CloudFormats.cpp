#include "platform/station/clouds/CloudFormats.h"

#include "platform/common/NumberText.h"
#include "platform/station/import/ImportFormats.h"

#include <fmt/format.h>

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>

namespace vrk::station {
namespace {

static_assert(std::endian::native == std::endian::little);

// Single precision resolves a hundredth here. Points that lie further out, such as surveyed ones, are kept relative to a
// place near them.
constexpr double farOut = 100000;
constexpr std::uint64_t reportStep = 1 << 16;

bool isBlank(char c)
{
    return c == ' ' || c == '\t' || c == '\r' || c == '\v' || c == '\f';
}

bool isFinite(const std::array<double, 3>& p)
{
    // Also what only double precision can hold is refused: it would become infinite.
    return std::ranges::all_of(p, [](double c) { return std::abs(c) <= std::numeric_limits<float>::max(); });
}

template <typename Number>
double readAs(const char* at, ByteOrder order)
{
    std::array<char, sizeof(Number)> bytes;
    std::memcpy(bytes.data(), at, bytes.size());
    if (order == ByteOrder::Big)
        std::ranges::reverse(bytes);
    return static_cast<double>(std::bit_cast<Number>(bytes));
}

} // namespace

void CloudCollector::reserve(std::uint64_t points)
{
    cloud.points.reserve(points);
    if (parts.normals)
        cloud.normals.reserve(points);
    if (parts.colors)
        cloud.colors.reserve(points);
    if (parts.values)
        cloud.values.reserve(points);
}

bool CloudCollector::add(const PointRecord& record)
{
    const auto& [given, normal, color, value] = record;
    const std::array<double, 3> point{given[0] * parts.scale, given[1] * parts.scale, given[2] * parts.scale};
    const auto isFar = [](double c) { return std::abs(c) > farOut; };
    if (cloud.points.empty() && isFinite(point) && std::ranges::any_of(point, isFar))
        cloud.origin = {std::round(point[0]), std::round(point[1]), std::round(point[2])};
    const std::array<double, 3> local{point[0] - cloud.origin.x, point[1] - cloud.origin.y, point[2] - cloud.origin.z};
    if (!isFinite(local)) {
        ++cloud.dropped;
        return false;
    }
    cloud.points.emplace_back(static_cast<float>(local[0]), static_cast<float>(local[1]), static_cast<float>(local[2]));
    if (parts.values)
        cloud.values.push_back(static_cast<float>(value));
    if (parts.colors)
        cloud.colors.push_back(color);
    if (!parts.normals)
        return true;
    if (isFinite(normal))
        cloud.normals.emplace_back(static_cast<float>(normal[0]), static_cast<float>(normal[1]),
                                   static_cast<float>(normal[2]));
    else
        cloud.normals.emplace_back();
    return true;
}

void CloudCollector::dropNormals()
{
    parts.normals = false;
    cloud.normals = {};
}

std::uint8_t colorByte(double part, double whole)
{
    const double byte = std::round(part / whole * 255);
    return byte >= 255 ? 255 : byte > 0 ? static_cast<std::uint8_t>(byte) : 0; // what is no number is dark
}

double wholeOf(Scalar type)
{
    switch (type) {
    case Scalar::Float32:
    case Scalar::Float64:
        return 1;
    case Scalar::Int16:
    case Scalar::UInt16:
        return 65535;
    default:
        return 255; // writers that spend more bytes on it do not mean finer steps
    }
}

PointColor packedColor(double number, Scalar type)
{
    std::uint32_t bits = 0;
    if (type == Scalar::Float32 || type == Scalar::Float64)
        bits = std::bit_cast<std::uint32_t>(static_cast<float>(number)); // the bytes of a float, whatever it would say
    else if (number >= 0)
        bits = static_cast<std::uint32_t>(std::min(number, static_cast<double>(0xFFFFFFFFu)));
    else
        bits = static_cast<std::uint32_t>(static_cast<std::int32_t>(std::max(number, -2147483648.0)));
    return {static_cast<std::uint8_t>(bits >> 16), static_cast<std::uint8_t>(bits >> 8),
            static_cast<std::uint8_t>(bits)};
}

bool LineReader::next(std::string_view& line)
{
    if (at >= text.size())
        return false;
    const std::size_t end = std::min(text.find('\n', at), text.size());
    line = text.substr(at, end - at);
    if (line.ends_with('\r'))
        line.remove_suffix(1);
    at = std::min(end + 1, text.size());
    ++count;
    return true;
}

bool LineReader::nextFilled(std::string_view& line)
{
    while (next(line))
        if (!std::ranges::all_of(line, isBlank))
            return true;
    return false;
}

std::string_view takeWord(std::string_view& line)
{
    std::size_t begin = 0;
    while (begin < line.size() && isBlank(line[begin]))
        ++begin;
    std::size_t end = begin;
    while (end < line.size() && !isBlank(line[end]))
        ++end;
    const std::string_view word = line.substr(begin, end - begin);
    line.remove_prefix(end);
    return word;
}

std::vector<std::string_view> wordsOf(std::string_view line)
{
    std::vector<std::string_view> words;
    for (std::string_view word = takeWord(line); !word.empty(); word = takeWord(line))
        words.push_back(word);
    return words;
}

double parseNumber(std::string_view word, std::uint64_t line)
{
    double value = 0;
    const char* const end = word.data() + word.size();
    const auto [stop, error] = common::readNumber(word.data(), end, value);
    if (error == std::errc::invalid_argument || stop != end)
        failAtLine(line, fmt::format("{} is not a number", inQuotes(word)));
    return error == std::errc::result_out_of_range ? std::numeric_limits<double>::infinity() : value;
}

std::uint64_t parseCount(std::string_view word, std::uint64_t line)
{
    std::uint64_t value = 0;
    const char* const end = word.data() + word.size();
    const auto [stop, error] = std::from_chars(word.data(), end, value);
    if (error != std::errc() || stop != end)
        failAtLine(line, fmt::format("{} is not a count", inQuotes(word)));
    return value;
}

void parseNumbers(std::string_view line, std::uint64_t lineNumber, std::vector<double>& numbers)
{
    numbers.clear();
    for (std::string_view word = takeWord(line); !word.empty(); word = takeWord(line))
        numbers.push_back(parseNumber(word, lineNumber));
}

void expectNumbers(std::size_t found, std::size_t expected, std::uint64_t line)
{
    if (found != expected)
        failAtLine(line, fmt::format("{} number{} where {} are expected", found, found == 1 ? "" : "s", expected));
}

void failAtLine(std::uint64_t line, const std::string& cause)
{
    throw CloudFault(fmt::format("line {}: {}", line, cause));
}

std::string inQuotes(std::string_view word)
{
    constexpr std::size_t longest = 24;
    std::string text(word.substr(0, longest));
    std::ranges::replace_if(
        text, [](char c) { return c < ' ' || c > '~'; }, '?');
    return fmt::format("'{}{}'", text, word.size() > longest ? "..." : "");
}

unsigned sizeOf(Scalar type)
{
    switch (type) {
    case Scalar::Int8:
    case Scalar::UInt8:
        return 1;
    case Scalar::Int16:
    case Scalar::UInt16:
        return 2;
    case Scalar::Int32:
    case Scalar::UInt32:
    case Scalar::Float32:
        return 4;
    default:
        return 8;
    }
}

double readScalar(const char* at, Scalar type, ByteOrder order)
{
    switch (type) {
    case Scalar::Int8:
        return readAs<std::int8_t>(at, order);
    case Scalar::UInt8:
        return readAs<std::uint8_t>(at, order);
    case Scalar::Int16:
        return readAs<std::int16_t>(at, order);
    case Scalar::UInt16:
        return readAs<std::uint16_t>(at, order);
    case Scalar::Int32:
        return readAs<std::int32_t>(at, order);
    case Scalar::UInt32:
        return readAs<std::uint32_t>(at, order);
    case Scalar::Int64:
        return readAs<std::int64_t>(at, order);
    case Scalar::UInt64:
        return readAs<std::uint64_t>(at, order);
    case Scalar::Float32:
        return readAs<float>(at, order);
    default:
        return readAs<double>(at, order);
    }
}

void failAtMissingPoints(const LineReader& lines, std::uint64_t found, std::uint64_t expected)
{
    failAtLine(lines.number(), fmt::format("the file ends after {} of {} points", found, expected));
}

void expectNoMoreLines(LineReader& lines, std::uint64_t points)
{
    std::string_view line;
    if (lines.nextFilled(line))
        failAtLine(lines.number(), fmt::format("more than the {} points of the header", points));
}

void expectBytes(std::string_view bytes, std::uint64_t needed)
{
    if (bytes.size() < needed)
        throw CloudFault(fmt::format("ends at byte {} of {}", bytes.size(), needed));
}

void expectNothingFrom(std::string_view bytes, std::size_t end, std::uint64_t points)
{
    const auto isFilling = [](char c) { return c == '\0' || c == '\n' || isBlank(c); };
    const std::string_view rest = bytes.substr(end);
    if (!std::ranges::all_of(rest, isFilling))
        throw CloudFault(
            fmt::format("byte {}: {} bytes more than the {} points of the header", end, rest.size(), points));
}

void reportPoint(const Progress& progress, std::uint64_t point, std::size_t done, std::size_t size)
{
    if (point % reportStep == 0)
        report(progress, "reading", static_cast<double>(done) / static_cast<double>(size));
}

} // namespace vrk::station
