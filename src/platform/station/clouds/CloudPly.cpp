#include "platform/station/clouds/CloudFormats.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>
#include <optional>

namespace vrk::station {
namespace {

constexpr std::size_t shortestNumber = 2; // a digit and a blank

enum class Form { Ascii, Binary };

struct Property {
    std::string name;
    Scalar type = Scalar::Float32;
    std::optional<Scalar> countType; // of a list: what its length is stored in
};

struct ElementKind {
    std::string name;
    std::uint64_t count = 0;
    std::vector<Property> properties;

    bool hasList() const
    {
        return std::ranges::any_of(properties, [](const Property& p) { return p.countType.has_value(); });
    }
    std::uint64_t size() const // of one element without lists, in bytes
    {
        std::uint64_t sum = 0;
        for (const Property& property : properties)
            sum += sizeOf(property.type);
        return sum;
    }
};

struct Header {
    Form form = Form::Ascii;
    ByteOrder order = ByteOrder::Little;
    std::vector<ElementKind> elements;
};

std::optional<Scalar> scalarNamed(std::string_view name)
{
    struct Named {
        const char* name;
        const char* sized;
        Scalar type;
    };
    constexpr std::array<Named, 8> all{{{"char", "int8", Scalar::Int8},
                                        {"uchar", "uint8", Scalar::UInt8},
                                        {"short", "int16", Scalar::Int16},
                                        {"ushort", "uint16", Scalar::UInt16},
                                        {"int", "int32", Scalar::Int32},
                                        {"uint", "uint32", Scalar::UInt32},
                                        {"float", "float32", Scalar::Float32},
                                        {"double", "float64", Scalar::Float64}}};
    for (const Named& one : all)
        if (name == one.name || name == one.sized)
            return one.type;
    return std::nullopt;
}

Scalar scalarAt(std::string_view name, std::uint64_t line)
{
    const std::optional<Scalar> type = scalarNamed(name);
    if (!type)
        failAtLine(line, fmt::format("{} is no type of a property", inQuotes(name)));
    return *type;
}

void takeFormat(Header& header, const std::vector<std::string_view>& words, std::uint64_t line)
{
    const std::string_view name = words.size() == 3 && words[2] == "1.0" ? words[1] : std::string_view();
    if (name != "ascii" && name != "binary_little_endian" && name != "binary_big_endian")
        failAtLine(line, "not a format of PLY 1.0");
    header.form = name == "ascii" ? Form::Ascii : Form::Binary;
    header.order = name == "binary_big_endian" ? ByteOrder::Big : ByteOrder::Little;
}

void takeProperty(Header& header, const std::vector<std::string_view>& words, std::uint64_t line)
{
    if (header.elements.empty())
        failAtLine(line, "a property before the first element");
    Property property;
    if (words.size() == 5 && words[1] == "list") {
        property.countType = scalarAt(words[2], line);
        if (*property.countType == Scalar::Float32 || *property.countType == Scalar::Float64)
            failAtLine(line, "a list whose length is no whole number");
    } else if (words.size() != 3) {
        failAtLine(line, "not a property of PLY 1.0");
    }
    property.type = scalarAt(words[words.size() - 2], line);
    property.name = words.back();
    header.elements.back().properties.push_back(std::move(property));
}

void takeElement(Header& header, const std::vector<std::string_view>& words, std::uint64_t line)
{
    if (words.size() != 3)
        failAtLine(line, "not an element of PLY 1.0");
    header.elements.push_back({std::string(words[1]), parseCount(words[2], line), {}});
}

Header readHeader(LineReader& lines)
{
    Header header;
    std::string_view line;
    if (!lines.next(line) || line != "ply")
        failAtLine(1, "not a PLY file");
    bool hasFormat = false;
    while (lines.nextFilled(line)) {
        const std::vector<std::string_view> words = wordsOf(line);
        const std::string_view key = words[0];
        if (key == "end_header") {
            if (!hasFormat)
                failAtLine(lines.number(), "a header without a format");
            return header;
        }
        if (key == "format") {
            takeFormat(header, words, lines.number());
            hasFormat = true;
        } else if (key == "element") {
            takeElement(header, words, lines.number());
        } else if (key == "property") {
            takeProperty(header, words, lines.number());
        } else if (key != "comment" && key != "obj_info") {
            failAtLine(lines.number(), fmt::format("{} is no entry of a PLY header", inQuotes(key)));
        }
    }
    failAtLine(lines.number(), "the file ends before 'end_header'");
}

/// The place of a property among the vertex's.
std::optional<std::size_t> indexOf(const ElementKind& vertex, std::string_view name)
{
    const auto found =
        std::ranges::find_if(vertex.properties, [name](const Property& p) { return p.name == name && !p.countType; });
    if (found == vertex.properties.end())
        return std::nullopt;
    return found - vertex.properties.begin();
}

/// @param property  of which the values are wanted too; empty for none.
PointColumns columnsOf(const ElementKind& vertex, std::string_view property, std::uint64_t line)
{
    constexpr std::array<const char*, 3> pointNames{"x", "y", "z"};
    constexpr std::array<const char*, 3> normalNames{"nx", "ny", "nz"};
    PointColumns columns;
    columns.hasNormals = true;
    for (std::size_t axis = 0; axis < 3; ++axis) {
        const std::optional<std::size_t> point = indexOf(vertex, pointNames[axis]);
        if (!point)
            failAtLine(line, fmt::format("the vertices have no property '{}'", pointNames[axis]));
        columns.point[axis] = *point;
        const std::optional<std::size_t> normal = indexOf(vertex, normalNames[axis]);
        columns.normal[axis] = normal.value_or(0);
        columns.hasNormals = columns.hasNormals && normal;
    }
    if (!property.empty()) {
        columns.value = indexOf(vertex, property);
        if (!columns.value)
            failAtLine(line, fmt::format("the vertices have no property {}", inQuotes(property)));
    }
    return columns;
}

/// Gives a point its numbers out of one for each property.
void addPoint(CloudCollector& collector, const PointColumns& at, const std::vector<double>& values)
{
    collector.add({values[at.point[0]], values[at.point[1]], values[at.point[2]]},
                  {values[at.normal[0]], values[at.normal[1]], values[at.normal[2]]}, at.value ? values[*at.value] : 0);
}

/// Takes the entries of lists out of a line's numbers, so that one number stands for each property.
void dropLists(const ElementKind& kind, std::vector<double>& numbers, std::uint64_t line)
{
    std::vector<double> kept;
    std::size_t next = 0;
    for (const Property& property : kind.properties) {
        if (next >= numbers.size())
            failAtLine(line, "the line ends too soon");
        kept.push_back(numbers[next++]);
        if (!property.countType)
            continue;
        const double length = kept.back();
        if (!(length >= 0) || length > static_cast<double>(numbers.size() - next))
            failAtLine(line, "a list of another length than it says");
        next += static_cast<std::size_t>(length);
    }
    if (next != numbers.size())
        expectNumbers(numbers.size(), next, line);
    numbers = std::move(kept);
}

Cloud readAscii(std::string_view bytes, const Header& header, std::size_t vertexIndex, const PointColumns& at,
                LineReader& lines, const Progress& progress)
{
    std::string_view line;
    for (std::size_t i = 0; i < vertexIndex; ++i)
        for (std::uint64_t left = header.elements[i].count; left > 0; --left)
            if (!lines.nextFilled(line))
                failAtMissingPoints(lines, 0, header.elements[vertexIndex].count);

    const ElementKind& vertex = header.elements[vertexIndex];
    const bool hasList = vertex.hasList();
    CloudCollector collector(at.hasNormals, at.value.has_value());
    collector.reserve(std::min(vertex.count, bytes.size() / (shortestNumber * vertex.properties.size())));
    std::vector<double> numbers;
    for (std::uint64_t point = 0; point < vertex.count; ++point) {
        if (!lines.nextFilled(line))
            failAtMissingPoints(lines, point, vertex.count);
        parseNumbers(line, lines.number(), numbers);
        if (hasList)
            dropLists(vertex, numbers, lines.number());
        expectNumbers(numbers.size(), vertex.properties.size(), lines.number());
        addPoint(collector, at, numbers);
        reportPoint(progress, point, lines.offset(), bytes.size());
    }
    if (vertexIndex + 1 == header.elements.size())
        expectNoMoreLines(lines, vertex.count);
    return collector.take();
}

/// Walks over binary elements.
class BinaryReader {
public:
    BinaryReader(std::string_view bytes, std::size_t begin, ByteOrder order) : bytes(bytes), at(begin), order(order) {}

    std::size_t offset() const { return at; }

    void skip(const ElementKind& kind)
    {
        if (!kind.hasList()) {
            need(kind);
            at += kind.count * kind.size();
            return;
        }
        for (std::uint64_t i = 0; i < kind.count; ++i)
            take(kind, nullptr);
    }

    /// Fails early where elements without lists do not fit into what is left.
    void need(const ElementKind& kind) const
    {
        if (kind.hasList() || kind.size() == 0)
            return;
        // A damaged count may be so large that its bytes cannot be counted.
        const std::uint64_t most = (std::numeric_limits<std::uint64_t>::max() - at) / kind.size();
        expectBytes(bytes, at + std::min(kind.count, most) * kind.size());
    }

    /// One element: one number for each property, that of a list being its length.
    void take(const ElementKind& kind, std::vector<double>* values)
    {
        for (const Property& property : kind.properties) {
            const double value = takeScalar(property.countType.value_or(property.type));
            if (values)
                values->push_back(value);
            if (!property.countType)
                continue;
            const std::uint64_t left = bytes.size() - at;
            if (value < 0)
                throw CloudFault(fmt::format("byte {}: a list of {} entries", at, value));
            const auto length = static_cast<std::uint64_t>(value) * sizeOf(property.type);
            if (length > left)
                expectBytes(bytes, at + length);
            at += length;
        }
    }

private:
    double takeScalar(Scalar type)
    {
        expectBytes(bytes, at + sizeOf(type));
        const double value = readScalar(bytes.data() + at, type, order);
        at += sizeOf(type);
        return value;
    }

    std::string_view bytes;
    std::size_t at;
    ByteOrder order;
};

Cloud readBinary(std::string_view bytes, const Header& header, std::size_t vertexIndex, const PointColumns& at,
                 std::size_t begin, const Progress& progress)
{
    BinaryReader reader(bytes, begin, header.order);
    for (std::size_t i = 0; i < vertexIndex; ++i)
        reader.skip(header.elements[i]);

    const ElementKind& vertex = header.elements[vertexIndex];
    reader.need(vertex);
    CloudCollector collector(at.hasNormals, at.value.has_value());
    collector.reserve(std::min(vertex.count, (bytes.size() - reader.offset()) / vertex.size()));
    std::vector<double> values;
    for (std::uint64_t point = 0; point < vertex.count; ++point) {
        values.clear();
        reader.take(vertex, &values);
        addPoint(collector, at, values);
        reportPoint(progress, point, reader.offset(), bytes.size());
    }
    if (vertexIndex + 1 == header.elements.size())
        expectNothingFrom(bytes, reader.offset(), vertex.count);
    return collector.take();
}

} // namespace

Cloud parsePly(std::string_view bytes, const Progress& progress)
{
    return parsePlyWithValues(bytes, {}, progress);
}

Cloud parsePlyWithValues(std::string_view bytes, std::string_view property, const Progress& progress)
{
    LineReader lines(bytes);
    const Header header = readHeader(lines);
    const auto vertex = std::ranges::find(header.elements, "vertex", &ElementKind::name);
    if (vertex == header.elements.end())
        failAtLine(lines.number(), "a header without an element 'vertex'");
    const PointColumns at = columnsOf(*vertex, property, lines.number());
    const auto index = static_cast<std::size_t>(vertex - header.elements.begin());
    if (header.form == Form::Ascii)
        return readAscii(bytes, header, index, at, lines, progress);
    return readBinary(bytes, header, index, at, lines.offset(), progress);
}

} // namespace vrk::station
