#include "mesh/StlReader.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <span>
#include <stdexcept>
#include <string_view>

namespace {

bool isOwnText(std::string_view text)
{
    return text == "Bad STL File" || text == "Error in reading normal" || text == "Error in reading vertex";
}

void require(bool condition)
{
    if (!condition)
        std::abort(); // what a fuzzer takes for a finding
}

} // namespace

/// Any bytes give a well-formed mesh or one of the parser's own failures.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    try {
        const vrk::visual::Mesh mesh = vrk::visual::parseStl(std::as_bytes(std::span(data, size)));
        require(mesh.vertices.size() % 3 == 0);
        require(mesh.normals.size() == mesh.vertices.size());
        require(mesh.indices.size() == mesh.vertices.size());
        for (std::size_t i = 0; i < mesh.indices.size(); ++i)
            require(mesh.indices[i] == i);
    } catch (const std::runtime_error& error) {
        require(isOwnText(error.what()));
    }
    return 0;
}
