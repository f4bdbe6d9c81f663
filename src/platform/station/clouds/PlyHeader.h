#pragma once

#include "platform/station/clouds/CloudFormats.h"

#include <algorithm>

/// What a PLY file says of itself, and how its elements are walked over. Not installed.
namespace vrk::station {

enum class PlyForm { Ascii, Binary };

struct PlyProperty {
    std::string name;
    Scalar type = Scalar::Float32;
    std::optional<Scalar> countType; // of a list: what its length is stored in
};

struct PlyElement {
    std::string name;
    std::uint64_t count = 0;
    std::vector<PlyProperty> properties;

    bool hasList() const
    {
        return std::ranges::any_of(properties, [](const PlyProperty& p) { return p.countType.has_value(); });
    }
    std::uint64_t size() const // of one element without lists, in bytes
    {
        std::uint64_t sum = 0;
        for (const PlyProperty& property : properties)
            sum += sizeOf(property.type);
        return sum;
    }
};

struct PlyHeader {
    PlyForm form = PlyForm::Ascii;
    ByteOrder order = ByteOrder::Little;
    std::vector<PlyElement> elements;
};

/// @throws CloudFault
PlyHeader readPlyHeader(LineReader& lines);
/// The place of a property that is no list among those of an element.
std::optional<std::size_t> indexOf(const PlyElement& element, std::string_view name);

/// Walks over the elements behind a header, in their order.
class PlyRows {
public:
    /// @param lines  behind the header.
    PlyRows(std::string_view bytes, const PlyHeader& header, const LineReader& lines)
        : bytes(bytes), header(header), lines(lines), at(lines.offset())
    {
    }

    /// The byte behind what was read.
    std::size_t offset() const { return header.form == PlyForm::Ascii ? lines.offset() : at; }
    /// For a fault in what was read last: "line 7" or "byte 1234".
    std::string place() const;

    /// Fails early where elements without lists do not fit into what is left.
    void expectRoomFor(const PlyElement& element) const;
    /// At most so many of them are in the file.
    std::uint64_t mostOf(const PlyElement& element) const;
    /// The next one: a number for each property, that of a list being its length.
    /// @param index  of it among those of its kind, for faults.
    /// @param list   takes the entries of the list property of that number; may be null.
    void take(const PlyElement& element, std::uint64_t index, std::vector<double>& values, std::size_t listProperty = 0,
              std::vector<double>* list = nullptr);
    void skip(const PlyElement& element);
    /// @throws CloudFault where anything but filling stands behind the last element.
    void expectEnd(std::uint64_t points);

private:
    void takeLine(const PlyElement& element, std::uint64_t index, std::vector<double>& values, std::size_t listProperty,
                  std::vector<double>* list);
    void takeBytes(const PlyElement& element, std::vector<double>& values, std::size_t listProperty,
                   std::vector<double>* list);
    double takeScalar(Scalar type);

    std::string_view bytes;
    const PlyHeader& header;
    LineReader lines;
    std::size_t at;
    std::vector<double> numbers; // of a line
};

} // namespace vrk::station
