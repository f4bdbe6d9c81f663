#pragma once

#include "platform/common/Export.h"

#include <OgreTexture.h>

#include <memory>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace vrk::visual {

/// The letters of the library's font at one size, in a texture that takes in what is asked for.
///
/// They are drawn by FreeType at the size at which they are shown, so that their stems are whole pixels.
///
/// Thread: render thread.
class VRK_EXPORT GlyphAtlas {
public:
    /// All in pixels: of the picture, and of the texture.
    struct Glyph {
        int left = 0;   ///< from the place on the line to its left edge
        int bottom = 0; ///< from the base line up to its lower edge
        int width = 0;
        int height = 0;
        int u = 0; ///< in the texture, of its upper left corner
        int v = 0;
        int advance = 0; ///< to the place of the next one
    };

    /// @param pixels  of the square on which letters are designed.
    /// @throws std::runtime_error  where the font is not in the resources, or cannot be read.
    explicit GlyphAtlas(int pixels);
    ~GlyphAtlas();
    GlyphAtlas(const GlyphAtlas&) = delete;
    GlyphAtlas& operator=(const GlyphAtlas&) = delete;

    int getSize() const { return pixels; }
    /// Letters that are kept get other places in the texture.
    void setSize(int pixels);
    /// What the font shows for it; for one that it does not have, its sign for that.
    const Glyph& get(char32_t letter);
    int ascent() const; ///< above the base line, of the highest letter
    int descent() const;
    int capHeight();
    /// Brings what is new to the GPU. A texture that was full is replaced by a larger one, where glyphs lie as before.
    const Ogre::TexturePtr& texture();

private:
    struct Font;

    void draw(char32_t letter, Glyph& glyph);
    void place(Glyph& glyph);
    void grow();

    std::unique_ptr<Font> font;
    int pixels;
    int textureSide;
    int x = 0; // where the next one goes
    int y = 0;
    int rowHeight = 0;
    std::vector<unsigned char> image; // coverage, of the whole texture
    std::unordered_map<char32_t, Glyph> glyphs;
    Ogre::TexturePtr onGpu;
    bool isDirty = true;
};

/// The letters of a text in UTF-8; of bytes that are none, a sign for that.
VRK_EXPORT std::u32string lettersOf(std::string_view text);

} // namespace vrk::visual
