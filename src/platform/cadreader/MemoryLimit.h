#pragma once

#include <cstdint>

/// Not installed.
namespace cadreader {

/// Holds this process to so many bytes of memory. The first request that would go beyond says so on the messages' descriptor
/// and ends the process: Open CASCADE passes over a failed one, and the answer would be a part of the file. A single
/// request for more than all of it fails as usual: such a number is a damaged one. Does nothing where sanitizers lay out
/// memory of their own.
void limitMemory(std::uint64_t bytes);

} // namespace cadreader
