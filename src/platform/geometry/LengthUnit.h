#pragma once

#include "platform/common/Export.h"

#include <optional>
#include <string_view>

namespace vrk {

/// What the numbers of a file count that names no unit itself. The model's own unit is the millimetre.
enum class LengthUnit { Millimetre, Centimetre, Metre, Inch };

/// Model units in one of these.
VRK_EXPORT double MillimetresIn(LengthUnit unit);
/// "mm", "cm", "m" or "in".
VRK_EXPORT std::string_view NameOf(LengthUnit unit);
/// None for another text than these four.
VRK_EXPORT std::optional<LengthUnit> LengthUnitNamed(std::string_view name);

} // namespace vrk
