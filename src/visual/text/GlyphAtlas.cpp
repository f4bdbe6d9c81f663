#include "visual/text/GlyphAtlas.h"

#include "platform/common/ResourcePath.h"
#include "platform/common/ZipManager.h"

#include <Ogre.h>

#include <ft2build.h>
#include FT_FREETYPE_H

#include <fmt/format.h>

#include <algorithm>
#include <cstring>
#include <stdexcept>

namespace vrk::visual {
namespace {

constexpr const char* fontEntry = "font/DejaVuSans.ttf";
constexpr int firstSide = 256;
constexpr int gap = 1; // between glyphs, so that none takes of its neighbour

void check(FT_Error error, const char* what)
{
    if (error != 0)
        throw std::runtime_error(fmt::format("{}: FreeType {} (error {})", fontEntry, what, error));
}

std::string freeTextureName()
{
    static int count = 0;
    return fmt::format("Glyphs_{}", count++);
}

} // namespace

struct GlyphAtlas::Font {
    Font() : file(common::ZipManager::Read(common::GetResourcePath(), fontEntry))
    {
        check(FT_Init_FreeType(&library), "cannot be started");
        const FT_Error error = FT_New_Memory_Face(library, reinterpret_cast<const FT_Byte*>(file->data()),
                                                  static_cast<FT_Long>(file->size()), 0, &face);
        if (error != 0)
            FT_Done_FreeType(library);
        check(error, "cannot read the font");
    }
    ~Font() { FT_Done_FreeType(library); } // with its faces
    Font(const Font&) = delete;
    Font& operator=(const Font&) = delete;

    std::unique_ptr<common::ZipBuffer> file; // which the face reads from
    FT_Library library = nullptr;
    FT_Face face = nullptr;
};

GlyphAtlas::GlyphAtlas(int pixels) : font(std::make_unique<Font>()), pixels(0), textureSide(firstSide)
{
    setSize(pixels);
}

GlyphAtlas::~GlyphAtlas()
{
    if (onGpu)
        Ogre::TextureManager::getSingleton().remove(onGpu);
}

void GlyphAtlas::setSize(int wanted)
{
    if (wanted == pixels)
        return;
    pixels = wanted;
    check(FT_Set_Pixel_Sizes(font->face, 0, static_cast<FT_UInt>(pixels)), "cannot set the size");
    glyphs.clear();
    x = y = rowHeight = 0;
    image.assign(static_cast<std::size_t>(textureSide) * textureSide, 0);
    isDirty = true;
}

int GlyphAtlas::ascent() const
{
    return static_cast<int>(font->face->size->metrics.ascender + 63) >> 6;
}

int GlyphAtlas::descent() const
{
    return static_cast<int>(-font->face->size->metrics.descender + 63) >> 6;
}

int GlyphAtlas::capHeight()
{
    const Glyph& letter = get(U'H');
    return letter.bottom + letter.height;
}

const GlyphAtlas::Glyph& GlyphAtlas::get(char32_t letter)
{
    const auto [found, isNew] = glyphs.try_emplace(letter);
    if (isNew)
        draw(letter, found->second);
    return found->second;
}

void GlyphAtlas::draw(char32_t letter, Glyph& glyph)
{
    check(FT_Load_Char(font->face, letter, FT_LOAD_RENDER | FT_LOAD_TARGET_LIGHT), "cannot draw a letter");
    const FT_GlyphSlotRec& slot = *font->face->glyph;
    glyph.width = static_cast<int>(slot.bitmap.width);
    glyph.height = static_cast<int>(slot.bitmap.rows);
    glyph.left = slot.bitmap_left;
    glyph.bottom = slot.bitmap_top - glyph.height;
    glyph.advance = static_cast<int>(slot.advance.x + 32) >> 6;
    place(glyph);
    for (int row = 0; row < glyph.height; ++row)
        std::memcpy(&image[static_cast<std::size_t>(glyph.v + row) * textureSide + glyph.u],
                    slot.bitmap.buffer + row * slot.bitmap.pitch, static_cast<std::size_t>(glyph.width));
    isDirty = true;
}

/// Row by row: the letters of one size are about as high.
void GlyphAtlas::place(Glyph& glyph)
{
    for (;;) {
        if (x + glyph.width + gap > textureSide) {
            x = 0;
            y += rowHeight;
            rowHeight = 0;
        }
        if (x + glyph.width + gap <= textureSide && y + glyph.height + gap <= textureSide)
            break;
        grow();
    }
    glyph.u = x;
    glyph.v = y;
    x += glyph.width + gap;
    rowHeight = std::max(rowHeight, glyph.height + gap);
}

void GlyphAtlas::grow()
{
    std::vector<unsigned char> larger(static_cast<std::size_t>(2 * textureSide) * 2 * textureSide, 0);
    for (int row = 0; row < textureSide; ++row)
        std::memcpy(&larger[static_cast<std::size_t>(row) * 2 * textureSide],
                    &image[static_cast<std::size_t>(row) * textureSide], static_cast<std::size_t>(textureSide));
    image = std::move(larger);
    textureSide *= 2;
}

const Ogre::TexturePtr& GlyphAtlas::texture()
{
    auto& manager = Ogre::TextureManager::getSingleton();
    if (onGpu && static_cast<int>(onGpu->getWidth()) != textureSide) {
        manager.remove(onGpu);
        onGpu.reset();
    }
    if (!onGpu) {
        onGpu = manager.createManual(freeTextureName(), Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME,
                                     Ogre::TEX_TYPE_2D, static_cast<Ogre::uint>(textureSide),
                                     static_cast<Ogre::uint>(textureSide), 0, Ogre::PF_R8, Ogre::TU_STATIC_WRITE_ONLY);
        isDirty = true;
    }
    if (isDirty) {
        const auto side = static_cast<Ogre::uint32>(textureSide);
        onGpu->getBuffer()->blitFromMemory(Ogre::PixelBox(side, side, 1, Ogre::PF_R8, image.data()));
        isDirty = false;
    }
    return onGpu;
}

std::u32string lettersOf(std::string_view text)
{
    constexpr char32_t replacement = 0xFFFD;
    std::u32string letters;
    for (std::size_t i = 0; i < text.size();) {
        const auto first = static_cast<unsigned char>(text[i++]);
        const int more = first < 0x80         ? 0
                         : first >> 5 == 0x06 ? 1
                         : first >> 4 == 0x0E ? 2
                         : first >> 3 == 0x1E ? 3
                                              : -1;
        if (more < 0) {
            letters += replacement;
            continue;
        }
        char32_t letter = more == 0 ? first : first & (0x3F >> more);
        int taken = 0;
        while (taken < more && i < text.size() && (static_cast<unsigned char>(text[i]) & 0xC0) == 0x80) {
            letter = letter << 6 | (static_cast<unsigned char>(text[i++]) & 0x3F);
            ++taken;
        }
        letters += taken == more && letter <= 0x10FFFF ? letter : replacement;
    }
    return letters;
}

} // namespace vrk::visual
