#include "platform/station/clouds/PlyHeader.h"

#include <fmt/format.h>

#include <algorithm>
#include <limits>

namespace vrk::station {
namespace {

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

void takeFormat(PlyHeader& header, const std::vector<std::string_view>& words, std::uint64_t line)
{
    const std::string_view name = words.size() == 3 && words[2] == "1.0" ? words[1] : std::string_view();
    if (name != "ascii" && name != "binary_little_endian" && name != "binary_big_endian")
        failAtLine(line, "not a format of PLY 1.0");
    header.form = name == "ascii" ? PlyForm::Ascii : PlyForm::Binary;
    header.order = name == "binary_big_endian" ? ByteOrder::Big : ByteOrder::Little;
}

void takeProperty(PlyHeader& header, const std::vector<std::string_view>& words, std::uint64_t line)
{
    if (header.elements.empty())
        failAtLine(line, "a property before the first element");
    PlyProperty property;
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

void takeElement(PlyHeader& header, const std::vector<std::string_view>& words, std::uint64_t line)
{
    if (words.size() != 3)
        failAtLine(line, "not an element of PLY 1.0");
    header.elements.push_back({std::string(words[1]), parseCount(words[2], line), {}});
}

} // namespace

PlyHeader readPlyHeader(LineReader& lines)
{
    PlyHeader header;
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

std::optional<std::size_t> indexOf(const PlyElement& element, std::string_view name)
{
    const auto found = std::ranges::find_if(element.properties,
                                            [name](const PlyProperty& p) { return p.name == name && !p.countType; });
    if (found == element.properties.end())
        return std::nullopt;
    return found - element.properties.begin();
}

// Rows

std::string PlyRows::place() const
{
    return header.form == PlyForm::Ascii ? fmt::format("line {}", lines.number()) : fmt::format("byte {}", at);
}

void PlyRows::expectRoomFor(const PlyElement& element) const
{
    if (header.form == PlyForm::Ascii || element.hasList() || element.size() == 0)
        return;
    // A damaged count may be so large that its bytes cannot be counted.
    const std::uint64_t most = (std::numeric_limits<std::uint64_t>::max() - at) / element.size();
    expectBytes(bytes, at + std::min(element.count, most) * element.size());
}

std::uint64_t PlyRows::mostOf(const PlyElement& element) const
{
    constexpr std::size_t shortestNumber = 2; // a digit and a blank
    const std::size_t least =
        header.form == PlyForm::Ascii ? shortestNumber * element.properties.size() : element.size();
    return std::min<std::uint64_t>(element.count, (bytes.size() - offset()) / std::max<std::size_t>(1, least));
}

void PlyRows::take(const PlyElement& element, std::uint64_t index, std::vector<double>& values,
                   std::size_t listProperty, std::vector<double>* list)
{
    values.clear();
    if (list)
        list->clear();
    if (header.form == PlyForm::Ascii)
        takeLine(element, index, values, listProperty, list);
    else
        takeBytes(element, values, listProperty, list);
}

void PlyRows::takeLine(const PlyElement& element, std::uint64_t index, std::vector<double>& values,
                       std::size_t listProperty, std::vector<double>* list)
{
    std::string_view line;
    if (!lines.nextFilled(line))
        failAtLine(lines.number(), fmt::format("the file ends after {} of {} {}", index, element.count,
                                               element.name == "vertex" ? "points"
                                               : element.name == "face" ? "faces"
                                                                        : "elements"));
    parseNumbers(line, lines.number(), numbers);
    std::size_t next = 0;
    for (std::size_t i = 0; i < element.properties.size(); ++i) {
        const PlyProperty& property = element.properties[i];
        if (next >= numbers.size() && element.hasList())
            failAtLine(lines.number(), "the line ends too soon");
        if (next >= numbers.size())
            expectNumbers(numbers.size(), element.properties.size(), lines.number());
        const double value = numbers[next++];
        values.push_back(value);
        if (!property.countType)
            continue;
        if (!(value >= 0) || value > static_cast<double>(numbers.size() - next))
            failAtLine(lines.number(), "a list of another length than it says");
        const auto length = static_cast<std::size_t>(value);
        const auto begin = numbers.begin() + static_cast<std::ptrdiff_t>(next);
        if (list && i == listProperty)
            list->assign(begin, begin + static_cast<std::ptrdiff_t>(length));
        next += length;
    }
    if (next != numbers.size())
        expectNumbers(numbers.size(), next, lines.number());
}

void PlyRows::takeBytes(const PlyElement& element, std::vector<double>& values, std::size_t listProperty,
                        std::vector<double>* list)
{
    for (std::size_t i = 0; i < element.properties.size(); ++i) {
        const PlyProperty& property = element.properties[i];
        const double value = takeScalar(property.countType.value_or(property.type));
        values.push_back(value);
        if (!property.countType)
            continue;
        if (value < 0)
            throw CloudFault(fmt::format("byte {}: a list of {} entries", at, value));
        const auto entries = static_cast<std::uint64_t>(value);
        const std::uint64_t length = entries * sizeOf(property.type);
        if (length > bytes.size() - at)
            expectBytes(bytes, at + length);
        if (list && i == listProperty)
            for (std::uint64_t k = 0; k < entries; ++k)
                list->push_back(takeScalar(property.type));
        else
            at += length;
    }
}

double PlyRows::takeScalar(Scalar type)
{
    expectBytes(bytes, at + sizeOf(type));
    const double value = readScalar(bytes.data() + at, type, header.order);
    at += sizeOf(type);
    return value;
}

void PlyRows::skip(const PlyElement& element)
{
    if (header.form == PlyForm::Binary && !element.hasList()) {
        expectRoomFor(element);
        at += element.count * element.size();
        return;
    }
    std::vector<double> values;
    for (std::uint64_t i = 0; i < element.count; ++i)
        take(element, i, values);
}

void PlyRows::expectEnd(std::uint64_t points)
{
    if (header.form == PlyForm::Ascii)
        expectNoMoreLines(lines, points);
    else
        expectNothingFrom(bytes, at, points);
}

} // namespace vrk::station
