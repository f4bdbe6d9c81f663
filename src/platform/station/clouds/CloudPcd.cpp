#include "platform/station/clouds/CloudFormats.h"

#include <fmt/format.h>

#include <lzf.h>

#include <algorithm>
#include <limits>
#include <optional>

namespace vrk::station {
namespace {

constexpr std::uint64_t largestEntryCount = 1 << 16; // of one field
constexpr std::uint64_t largestPoint = 1 << 24;      // bytes; keeps products in range
constexpr std::uint64_t largestExpansion = 264;      // what one run of the compression stands for at most, in bytes
constexpr std::size_t shortestNumber = 2;            // a digit and a blank

enum class Storage { Ascii, Binary, Compressed };

struct Field {
    std::string name;
    char kind = 'F'; // I, U or F
    std::uint64_t size = 4;
    std::uint64_t count = 1;
    Scalar type = Scalar::Float32;
};

struct Header {
    std::vector<Field> fields;
    std::uint64_t points = 0;
    Storage storage = Storage::Ascii;

    std::uint64_t pointSize() const
    {
        std::uint64_t sum = 0;
        for (const Field& field : fields)
            sum += field.size * field.count;
        return sum;
    }
    std::uint64_t pointColumns() const
    {
        std::uint64_t sum = 0;
        for (const Field& field : fields)
            sum += field.count;
        return sum;
    }
};

/// The header lines, read one after the other.
class HeaderReader {
public:
    explicit HeaderReader(LineReader& lines) : lines(lines) {}

    Header read()
    {
        std::string_view line;
        while (lines.nextFilled(line)) {
            const std::vector<std::string_view> words = wordsOf(line);
            if (words[0].starts_with('#'))
                continue;
            if (takeEntry(words))
                return finished();
        }
        failAtLine(lines.number(), "the file ends before the line 'DATA'");
    }

private:
    /// True behind the last line.
    bool takeEntry(const std::vector<std::string_view>& words)
    {
        const std::string_view key = words[0];
        if (key == "FIELDS" || key == "COLUMNS")
            takeFields(words);
        else if (key == "SIZE")
            eachEntry(words, [this](Field& field, std::string_view word) { field.size = count(word); });
        else if (key == "TYPE")
            eachEntry(words,
                      [](Field& field, std::string_view word) { field.kind = word.size() == 1 ? word[0] : '?'; });
        else if (key == "COUNT")
            eachEntry(words, [this](Field& field, std::string_view word) { takeEntryCount(field, word); });
        else if (key == "WIDTH")
            width = onlyCount(words);
        else if (key == "HEIGHT")
            height = onlyCount(words);
        else if (key == "POINTS")
            points = onlyCount(words);
        else if (key == "DATA")
            takeStorage(words);
        else if (key != "VERSION" && key != "VIEWPOINT")
            failAtLine(lines.number(), fmt::format("{} is no entry of a PCD header", inQuotes(key)));
        return key == "DATA";
    }

    void takeFields(const std::vector<std::string_view>& words)
    {
        header.fields.clear();
        for (std::size_t i = 1; i < words.size(); ++i)
            header.fields.push_back({.name = std::string(words[i])});
    }

    template <typename Take>
    void eachEntry(const std::vector<std::string_view>& words, Take take)
    {
        if (words.size() != header.fields.size() + 1)
            failAtLine(lines.number(), fmt::format("{} entries for {} fields", words.size() - 1, header.fields.size()));
        for (std::size_t i = 0; i < header.fields.size(); ++i)
            take(header.fields[i], words[i + 1]);
    }

    void takeEntryCount(Field& field, std::string_view word)
    {
        field.count = count(word);
        if (field.count == 0 || field.count > largestEntryCount)
            failAtLine(lines.number(), fmt::format("{} is not a count", inQuotes(word)));
    }

    void takeStorage(const std::vector<std::string_view>& words)
    {
        const std::string_view name = words.size() == 2 ? words[1] : std::string_view();
        if (name == "ascii")
            header.storage = Storage::Ascii;
        else if (name == "binary")
            header.storage = Storage::Binary;
        else if (name == "binary_compressed")
            header.storage = Storage::Compressed;
        else
            failAtLine(lines.number(), fmt::format("{} is no way to store data", inQuotes(name)));
    }

    Header finished()
    {
        if (header.fields.empty())
            failAtLine(lines.number(), "no FIELDS before the data");
        for (Field& field : header.fields)
            field.type = typeOf(field);
        if (header.pointSize() > largestPoint)
            failAtLine(lines.number(), fmt::format("points of {} bytes", header.pointSize()));
        header.points = numberOfPoints();
        return std::move(header);
    }

    Scalar typeOf(const Field& field) const
    {
        const auto is = [&field](char kind, std::uint64_t size) { return field.kind == kind && field.size == size; };
        if (is('F', 4))
            return Scalar::Float32;
        if (is('F', 8))
            return Scalar::Float64;
        constexpr std::array integers{Scalar::Int8,  Scalar::UInt8,  Scalar::Int16, Scalar::UInt16,
                                      Scalar::Int32, Scalar::UInt32, Scalar::Int64, Scalar::UInt64};
        for (std::size_t i = 0; i < integers.size(); ++i)
            if (is(i % 2 == 0 ? 'I' : 'U', sizeOf(integers[i])))
                return integers[i];
        failAtLine(lines.number(), fmt::format("the field {} has no known TYPE and SIZE", inQuotes(field.name)));
    }

    std::uint64_t numberOfPoints() const
    {
        constexpr std::uint64_t most = std::numeric_limits<std::uint32_t>::max();
        const bool isKnown = width || points;
        const bool isInRange =
            width.value_or(0) <= most && height.value_or(0) <= most; // their product then is no overflow
        const std::uint64_t area = width ? *width * height.value_or(1) : points.value_or(0);
        if (!isKnown || !isInRange || area > most)
            failAtLine(lines.number(), "no usable number of points before the data");
        if (points && *points != area)
            failAtLine(lines.number(), fmt::format("POINTS is {}, but WIDTH times HEIGHT is {}", *points, area));
        return area;
    }

    std::uint64_t count(std::string_view word) const { return parseCount(word, lines.number()); }
    std::uint64_t onlyCount(const std::vector<std::string_view>& words) const
    {
        return count(words.size() == 2 ? words[1] : std::string_view());
    }

    LineReader& lines;
    Header header;
    std::optional<std::uint64_t> width;
    std::optional<std::uint64_t> height;
    std::optional<std::uint64_t> points;
};

/// A field's place, counted by `lengthOf` the fields before it.
template <typename LengthOf>
std::optional<std::size_t> placeOf(const Header& header, std::string_view name, LengthOf lengthOf)
{
    std::size_t place = 0;
    for (const Field& field : header.fields) {
        if (field.name == name)
            return place;
        place += lengthOf(field);
    }
    return std::nullopt;
}

Scalar typeOf(const Header& header, std::string_view name)
{
    return std::ranges::find(header.fields, name, &Field::name)->type;
}

template <typename LengthOf>
void takeColors(PointColumns& columns, const Header& header, LengthOf lengthOf)
{
    for (const char* name : {"rgb", "rgba"}) {
        const std::optional<std::size_t> place = placeOf(header, name, lengthOf);
        if (!place || sizeOf(typeOf(header, name)) != 4)
            continue;
        columns.hasColors = columns.isPacked = true;
        columns.color = {*place, *place, *place};
        columns.colorType = typeOf(header, name);
        return;
    }
    const auto red = placeOf(header, "r", lengthOf);
    const auto green = placeOf(header, "g", lengthOf);
    const auto blue = placeOf(header, "b", lengthOf);
    if (!red || !green || !blue)
        return;
    columns.hasColors = true;
    columns.color = {*red, *green, *blue};
    columns.colorType = typeOf(header, "r");
}

PointColor colorOf(const PointColumns& at, const std::array<double, 3>& parts)
{
    if (at.isPacked)
        return packedColor(parts[0], at.colorType);
    const double whole = wholeOf(at.colorType);
    return {colorByte(parts[0], whole), colorByte(parts[1], whole), colorByte(parts[2], whole)};
}

template <typename LengthOf>
PointColumns columnsOf(const Header& header, LengthOf lengthOf, std::uint64_t line)
{
    constexpr std::array<const char*, 3> pointNames{"x", "y", "z"};
    constexpr std::array<const char*, 3> normalNames{"normal_x", "normal_y", "normal_z"};
    PointColumns columns;
    columns.hasNormals = true;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const std::optional<std::size_t> point = placeOf(header, pointNames[axis], lengthOf);
        if (!point)
            failAtLine(line, fmt::format("no field '{}' before the data", pointNames[axis]));
        columns.point[axis] = *point;
        const std::optional<std::size_t> normal = placeOf(header, normalNames[axis], lengthOf);
        columns.normal[axis] = normal.value_or(0);
        columns.hasNormals = columns.hasNormals && normal;
    }
    takeColors(columns, header, lengthOf);
    return columns;
}

Cloud readAscii(std::string_view bytes, const Header& header, LineReader& lines, const Progress& progress, double scale)
{
    const PointColumns at = columnsOf(
        header, [](const Field& field) { return field.count; }, lines.number());
    const std::uint64_t columns = header.pointColumns();
    CloudCollector collector({.normals = at.hasNormals, .colors = at.hasColors, .scale = scale});
    collector.reserve(std::min(header.points, bytes.size() / (shortestNumber * columns)));
    std::vector<double> numbers;
    std::string_view line;
    for (std::uint64_t point = 0; point < header.points; ++point) {
        if (!lines.nextFilled(line))
            failAtMissingPoints(lines, point, header.points);
        parseNumbers(line, lines.number(), numbers);
        expectNumbers(numbers.size(), columns, lines.number());
        PointRecord record{.point = {numbers[at.point[0]], numbers[at.point[1]], numbers[at.point[2]]},
                           .normal = {numbers[at.normal[0]], numbers[at.normal[1]], numbers[at.normal[2]]}};
        if (at.hasColors)
            record.color = colorOf(at, {numbers[at.color[0]], numbers[at.color[1]], numbers[at.color[2]]});
        collector.add(record);
        reportPoint(progress, point, lines.offset(), bytes.size());
    }
    expectNoMoreLines(lines, header.points);
    return collector.take();
}

/// One of the numbers of the points: the first of them and the way to that of the next point.
struct Column {
    const char* first;
    std::size_t stride;
    Scalar type;

    double of(std::uint64_t point) const { return readScalar(first + point * stride, type, ByteOrder::Little); }
};

Column columnAt(const Header& header, std::string_view data, std::size_t place)
{
    // In the compressed form each field lies together, for all points; else each point.
    const bool byField = header.storage == Storage::Compressed;
    std::size_t before = 0;
    for (const Field& field : header.fields) {
        if (before == place)
            return byField ? Column{data.data() + before * header.points, field.size * field.count, field.type}
                           : Column{data.data() + before, header.pointSize(), field.type};
        before += field.size * field.count;
    }
    throw CloudFault("no such field"); // places come from the fields themselves
}

/// @param data  all of it, opened.
Cloud readBinary(std::string_view data, const Header& header, const PointColumns& at, const Progress& progress,
                 double scale)
{
    std::array<Column, 3> point;
    std::array<Column, 3> normal;
    std::array<Column, 3> color;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        point[axis] = columnAt(header, data, at.point[axis]);
        normal[axis] = columnAt(header, data, at.normal[axis]);
        color[axis] = columnAt(header, data, at.color[axis]);
    }
    CloudCollector collector({.normals = at.hasNormals, .colors = at.hasColors, .scale = scale});
    collector.reserve(header.points);
    for (std::uint64_t i = 0; i < header.points; ++i) {
        PointRecord record{.point = {point[0].of(i), point[1].of(i), point[2].of(i)},
                           .normal = {normal[0].of(i), normal[1].of(i), normal[2].of(i)}};
        if (at.hasColors)
            record.color = colorOf(at, {color[0].of(i), color[1].of(i), color[2].of(i)});
        collector.add(record);
        reportPoint(progress, i, i, header.points);
    }
    return collector.take();
}

std::string opened(std::string_view bytes, std::size_t begin, const Header& header)
{
    constexpr std::size_t sizesLength = 8; // two sizes of four bytes: packed and opened
    expectBytes(bytes, begin + sizesLength);
    const auto sizeAt = [&](std::size_t at) {
        return static_cast<std::uint64_t>(readScalar(bytes.data() + at, Scalar::UInt32, ByteOrder::Little));
    };
    const std::uint64_t packed = sizeAt(begin);
    const std::uint64_t whole = sizeAt(begin + 4);
    const std::uint64_t needed = header.points * header.pointSize();
    if (whole != needed)
        throw CloudFault(
            fmt::format("byte {}: {} bytes of data where {} points need {}", begin + 4, whole, header.points, needed));
    expectBytes(bytes, begin + sizesLength + packed);
    expectNothingFrom(bytes, begin + sizesLength + packed, header.points);

    std::string data;
    if (whole == 0)
        return data;
    const bool isPossible = whole <= packed * largestExpansion; // else do not even make room for it
    if (isPossible)
        data.resize(whole);
    if (!isPossible || lzf_decompress(bytes.data() + begin + sizesLength, static_cast<unsigned>(packed), data.data(),
                                      static_cast<unsigned>(whole)) != whole)
        throw CloudFault(fmt::format("byte {}: the compressed data is damaged", begin + sizesLength));
    return data;
}

} // namespace

Cloud parsePcd(std::string_view bytes, const Progress& progress, double scale)
{
    LineReader lines(bytes);
    const Header header = HeaderReader(lines).read();
    if (header.storage == Storage::Ascii)
        return readAscii(bytes, header, lines, progress, scale);

    const auto bytesOf = [](const Field& field) { return field.size * field.count; };
    const PointColumns at = columnsOf(header, bytesOf, lines.number());
    const std::size_t begin = lines.offset();
    if (header.storage == Storage::Compressed)
        return readBinary(opened(bytes, begin, header), header, at, progress, scale);
    const std::uint64_t end = begin + header.points * header.pointSize();
    expectBytes(bytes, end);
    expectNothingFrom(bytes, end, header.points);
    return readBinary(bytes.substr(begin), header, at, progress, scale);
}

} // namespace vrk::station
