#pragma once

namespace vrk::rob {

/// A colour without alpha; components from 0 to 1.
template <typename T>
struct ColorTemplate {
    T r{};
    T g{};
    T b{};

    constexpr ColorTemplate() = default;
    constexpr ColorTemplate(T r, T g, T b) : r(r), g(g), b(b) {}
    constexpr bool operator==(const ColorTemplate&) const = default;
};

using Colorf = ColorTemplate<float>;

} // namespace vrk::rob

namespace vrk::visual {

/// An entry of the paint colour table: components and alpha from 0 to 1.
struct Color {
    float r = 0;
    float g = 0;
    float b = 0;
    float a = 0;
};

/// What a line's points are joined to.
enum class RenderOpType {
    Points = 0,    ///< each point by itself
    Lines = 1,     ///< separate segments, two points each
    LineStrip = 2, ///< one strip through all points
};

} // namespace vrk::visual
