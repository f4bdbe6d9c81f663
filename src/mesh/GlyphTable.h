#pragma once

namespace vrk::visual {

/// The outline of one character as triangles in the plane, counter-clockwise. A capital stands about 1 high.
struct Glyph {
    const float (*vertices)[2];
    const unsigned (*triangles)[3]; ///< indices into `vertices`
    float advance;                  ///< from this glyph's origin to the next one's
    int vertexCount;
    int triangleCount;
};

inline constexpr char firstGlyph = '!';
inline constexpr char lastGlyph = '~';
inline constexpr int glyphCount = lastGlyph - firstGlyph + 1;

/// The characters "!" to "~", in their order.
extern const Glyph glyphTable[glyphCount];

} // namespace vrk::visual
