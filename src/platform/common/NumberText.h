#pragma once

#include "platform/common/Export.h"

#include <charconv>

/// Numbers as texts of files write them. Any thread, any locale. Not installed.
namespace vrk::common {

/// Reads the decimal number at the front of a text as `std::from_chars` does, and like a stream in two respects: a plus
/// sign may stand before it, and one that is too small for its type is rounded, mostly to zero. So
/// `std::errc::result_out_of_range` says that it is too large; the value is unchanged then.
VRK_EXPORT std::from_chars_result readNumber(const char* begin, const char* end, float& value);
VRK_EXPORT std::from_chars_result readNumber(const char* begin, const char* end, double& value);

} // namespace vrk::common
