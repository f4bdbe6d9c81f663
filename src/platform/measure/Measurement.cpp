#include "platform/measure/Measurement.h"

#include <fmt/format.h>

#include <cmath>

namespace vrk::measure {
namespace {

constexpr double halfOfLastDigit = 0.005;

template <typename Triple>
std::string partsText(const Triple& triple)
{
    return fmt::format("x {}, y {}, z {}", fixedText(triple.x), fixedText(triple.y), fixedText(triple.z));
}

std::string degreesText(double angle)
{
    return fixedText(angle) + "°";
}

} // namespace

std::string fixedText(double value)
{
    return fmt::format("{:.2f}", std::abs(value) < halfOfLastDigit ? 0.0 : value);
}

std::string labelOf(const Measurement& measured)
{
    switch (measured.quantity) {
    case Quantity::Place:
        return partsText(measured.textPlace);
    case Quantity::Angle:
        return degreesText(measured.value);
    case Quantity::Diameter:
        return fmt::format("Ø {} mm", fixedText(measured.value));
    case Quantity::Area:
        return fixedText(measured.value) + " mm²";
    case Quantity::Distance:
    case Quantity::Length:
        break;
    }
    return fixedText(measured.value) + " mm";
}

std::string textOf(const Measurement& measured)
{
    std::string text;
    switch (measured.quantity) {
    case Quantity::Diameter:
        text = fmt::format("diameter {} mm, radius {} mm", fixedText(measured.value), fixedText(measured.value / 2));
        break;
    case Quantity::Length:
        text = "length " + labelOf(measured);
        break;
    case Quantity::Area:
        text = "area " + labelOf(measured);
        break;
    default:
        text = labelOf(measured);
    }
    if (measured.way)
        text += fmt::format(" ({})", partsText(*measured.way));
    if (measured.angle)
        text += ", " + degreesText(*measured.angle);
    if (!measured.note.empty())
        text += ", " + measured.note;
    return text;
}

} // namespace vrk::measure
