#pragma once

#include "platform/station/import/CadParts.h"

#include <cstdint>
#include <span>

/// What the program that reads CAD files hands back: parts, assemblies and notes as bytes. Not installed.
///
/// A head with names, colours and places, then one compound with each distinct shape, in the binary form of Open CASCADE:
/// in one compound, shapes keep what they share.
namespace vrk::station {

/// Writes to a descriptor. @return how many bytes. @throws std::system_error where they cannot be written.
std::uint64_t writeAnswer(const CadContent& content, int descriptor);

/// The content again. Each number is held against what is there: the writer may have been damaged by the file that it read.
/// @throws std::runtime_error, Standard_Failure or std::bad_alloc where the bytes are no such content.
CadContent readAnswer(std::span<const char> bytes, const Message_ProgressRange& range);

} // namespace vrk::station
