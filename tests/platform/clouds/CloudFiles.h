#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <string>
#include <vector>

namespace vrk::test {

/// The number's bytes, as a file of that byte order holds them.
template <typename Number>
std::string bytesOf(Number number, bool bigEndian = false)
{
    std::string bytes(sizeof number, '\0');
    std::memcpy(bytes.data(), &number, sizeof number);
    return bigEndian ? std::string(bytes.rbegin(), bytes.rend()) : bytes;
}

inline std::string floatBytes(std::initializer_list<float> numbers, bool bigEndian = false)
{
    std::string bytes;
    for (const float number : numbers)
        bytes += bytesOf(number, bigEndian);
    return bytes;
}

/// "ply" up to "end_header", with one float property for each name.
inline std::string plyHeader(const std::string& format, std::size_t points, const std::string& names = "x y z")
{
    std::string header =
        "ply\nformat " + format + " 1.0\ncomment made by a test\nelement vertex " + std::to_string(points) + "\n";
    for (std::size_t begin = 0; begin < names.size();) {
        const std::size_t end = std::min(names.find(' ', begin), names.size());
        header += "property float " + names.substr(begin, end - begin) + "\n";
        begin = end + 1;
    }
    return header + "end_header\n";
}

/// The header of a PCD file up to and with the line DATA: 10 lines, the data begins in line 11.
inline std::string pcdHeader(const std::string& storage, std::size_t points, const std::string& fields = "x y z")
{
    std::string sizes, types, counts;
    const auto columns = static_cast<std::size_t>(std::count(fields.begin(), fields.end(), ' ')) + 1;
    for (std::size_t i = 0; i < columns; ++i) {
        sizes += " 4";
        types += " F";
        counts += " 1";
    }
    const std::string number = std::to_string(points);
    return "# .PCD v0.7\nVERSION 0.7\nFIELDS " + fields + "\nSIZE" + sizes + "\nTYPE" + types + "\nCOUNT" + counts +
           "\nWIDTH " + number + "\nHEIGHT 1\nPOINTS " + number + "\nDATA " + storage + "\n";
}

/// Bytes in the compressed form that holds them as they are: runs of up to 32, each behind its length less 1.
inline std::string packed(const std::string& bytes)
{
    std::string runs;
    for (std::size_t at = 0; at < bytes.size(); at += 32) {
        const std::string run = bytes.substr(at, 32);
        runs += static_cast<char>(run.size() - 1);
        runs += run;
    }
    return runs;
}

/// The data of a compressed PCD file.
inline std::string packedData(const std::string& bytes)
{
    const std::string runs = packed(bytes);
    return bytesOf(static_cast<std::uint32_t>(runs.size())) + bytesOf(static_cast<std::uint32_t>(bytes.size())) + runs;
}

} // namespace vrk::test
