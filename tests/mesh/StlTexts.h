#pragma once

#include "scene/math/Vec.h"

#include <cstddef>
#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <vector>

/// STL files in memory, as the tests and the fuzz corpus need them.
namespace vrk::visual {

struct StlRecord {
    rob::Vec3f normal;
    rob::Posf corners[3];
};

inline std::span<const std::byte> bytesOf(std::string_view text)
{
    return std::as_bytes(std::span(text.data(), text.size()));
}

/// A binary file whose header tells `count` triangles, whatever number of records follows.
inline std::string binaryStl(std::uint32_t count, const std::vector<StlRecord>& records)
{
    static_assert(sizeof(StlRecord) == 48);
    std::string file(80, ' ');
    file.append(reinterpret_cast<const char*>(&count), sizeof(count));
    for (const StlRecord& record : records) {
        file.append(reinterpret_cast<const char*>(&record), sizeof(record));
        file.append(2, '\x7f'); // the attribute, which nobody reads
    }
    return file;
}

inline std::string binaryStl(const std::vector<StlRecord>& records)
{
    return binaryStl(static_cast<std::uint32_t>(records.size()), records);
}

inline const std::string oneFacet = R"(solid part
  facet normal 0 0 1
    outer loop
      vertex 0 0 0
      vertex 1.5 0 0
      vertex 0 2.5e1 -3
    endloop
  endfacet
endsolid part
)";

} // namespace vrk::visual
