#include "platform/geometry/LengthUnit.h"

#include <array>

namespace vrk {
namespace {

struct Known {
    LengthUnit unit;
    std::string_view name;
    double millimetres;
};

constexpr std::array<Known, 4> all{{{LengthUnit::Millimetre, "mm", 1},
                                    {LengthUnit::Centimetre, "cm", 10},
                                    {LengthUnit::Metre, "m", 1000},
                                    {LengthUnit::Inch, "in", 25.4}}};

const Known& of(LengthUnit unit)
{
    return all[static_cast<std::size_t>(unit)];
}

} // namespace

double MillimetresIn(LengthUnit unit)
{
    return of(unit).millimetres;
}

std::string_view NameOf(LengthUnit unit)
{
    return of(unit).name;
}

std::optional<LengthUnit> LengthUnitNamed(std::string_view name)
{
    for (const Known& known : all)
        if (known.name == name)
            return known.unit;
    return std::nullopt;
}

} // namespace vrk
