#include "visual/text/LabelBatch.h"

#include "scene/core/OgreCompat.h"

#include <Ogre.h>

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <unordered_map>
#include <utility>

namespace vrk::visual {
namespace {

// Pixels of a picture of up to 1080 rows
constexpr float letterSize = 14;
constexpr float besideText = 6;
constexpr float aboveText = 4;
constexpr float markRadius = 3.5f;
constexpr float markStep = 2; // marks that are nearer than about this lie on each other
constexpr float rows = 1080;

constexpr std::size_t finenessParameter = 0;

std::string freeMaterialName()
{
    static int count = 0;
    return fmt::format("Label_{}", count++);
}

std::vector<std::u32string> linesOf(std::string_view text)
{
    std::vector<std::u32string> lines(1);
    for (const char32_t letter : lettersOf(text)) {
        if (letter == U'\n')
            lines.emplace_back();
        else
            lines.back() += letter;
    }
    return lines;
}

} // namespace

struct LabelBatch::Vertex {
    std::array<float, 3> place;
    std::array<float, 2> offset; // pixels from there, to the right and up
    std::array<float, 2> texel;  // of letters
    std::array<float, 2> inBox;  // of grounds and marks: pixels from the middle
    std::array<float, 2> half;   // their sizes; 0 for letters
    std::uint32_t color;
    std::uint32_t rim;
};

/// In pixels, as offsets are.
struct LabelBatch::Box {
    float left, bottom, right, top;

    /// A quad. `vertexAt` takes whether it is the right and whether it is the top side.
    template <typename VertexAt>
    static void add(std::vector<Vertex>& vertices, const VertexAt& vertexAt)
    {
        for (const auto& [right, top] : {std::pair(false, false), {true, false}, {true, true}, {false, true}})
            vertices.push_back(vertexAt(right, top));
    }
};

LabelBatch::LabelBatch()
    : SlotBatch(Draws::IndexedTriangles, {{Ogre::VET_FLOAT3, Ogre::VES_POSITION},
                                          {Ogre::VET_FLOAT4, Ogre::VES_TEXTURE_COORDINATES, 0},
                                          {Ogre::VET_FLOAT4, Ogre::VES_TEXTURE_COORDINATES, 1},
                                          {Ogre::VET_UBYTE4_NORM, Ogre::VES_DIFFUSE},
                                          {Ogre::VET_UBYTE4_NORM, Ogre::VES_SPECULAR}}),
      atlas(static_cast<int>(letterSize)), material(materialByName("Label")->clone(freeMaterialName()))
{
    setMaterial(material);
    setCustomParameter(finenessParameter, Ogre::Vector4(fineness));
}

LabelBatch::~LabelBatch()
{
    Ogre::MaterialManager::getSingleton().remove(material);
}

void LabelBatch::setCount(std::size_t count)
{
    labels.resize(count);
    layouts.resize(count);
    setSlotCount(count);
    hasChanged = true;
}

void LabelBatch::set(std::size_t index, Label label)
{
    labels.at(index) = std::move(label);
    build(index);
}

void LabelBatch::_notifyCurrentCamera(Ogre::Camera* camera)
{
    SlotBatch::_notifyCurrentCamera(camera);
    const Ogre::Viewport* viewport = camera->getViewport();
    if (!viewport)
        return;
    fit(std::max({1.f, pixelRatio, static_cast<float>(viewport->getActualHeight()) / rows}));
    const float width = 0.5f * static_cast<float>(viewport->getActualWidth());
    const float height = 0.5f * static_cast<float>(viewport->getActualHeight());
    toClip = camera->getProjectionMatrix() * camera->getViewMatrix() * getParentNode()->_getFullTransform();
    hasChanged = hasChanged || width != halfWidth || height != halfHeight || toClip != chosenFor;
    halfWidth = width;
    halfHeight = height;
}

void LabelBatch::_updateRenderQueue(Ogre::RenderQueue* queue)
{
    const Ogre::TexturePtr& texture = atlas.texture();
    if (texture.get() != shownTexture)
        material->getTechnique(0)->getPass(0)->getTextureUnitState(0)->setTexture(texture);
    shownTexture = texture.get();
    upload();
    if (hasChanged) {
        chooseTexts();
        chooseMarks();
        writeIndices();
        chosenFor = toClip;
        hasChanged = false;
    }
    SlotBatch::_updateRenderQueue(queue);
}

/// Those in the picture, in the order in which they take their room.
std::vector<LabelBatch::Placed> LabelBatch::placedTexts() const
{
    std::vector<Placed> placed;
    for (std::size_t i = 0; i < labels.size(); ++i) {
        const Extent extent = layouts[i].extent;
        if (extent.width == 0)
            continue;
        const Ogre::Vector4 clip = toClip * Ogre::Vector4(toOgre(labels[i].place));
        if (clip.w <= 0 || clip.z < -clip.w)
            continue;
        const Placed text{i, clip.x / clip.w * halfWidth, clip.y / clip.w * halfHeight, clip.w};
        if (std::abs(text.x) < halfWidth + extent.width / 2 && std::abs(text.y) < halfHeight + extent.height / 2)
            placed.push_back(text);
    }
    std::ranges::sort(placed, [this](const Placed& a, const Placed& b) {
        return std::pair(!labels[a.index].comesFirst, a.depth) < std::pair(!labels[b.index].comesFirst, b.depth);
    });
    return placed;
}

/// Each text asks those whose middles lie in cells around its own; a cell is as large as the largest text.
void LabelBatch::chooseTexts()
{
    float cellWidth = 1, cellHeight = 1;
    for (Layout& layout : layouts) {
        layout.isSeen = false;
        cellWidth = std::max(cellWidth, layout.extent.width);
        cellHeight = std::max(cellHeight, layout.extent.height);
    }
    const auto cellOf = [&](int column, int row) { return static_cast<std::int64_t>(column) << 32 ^ row; };
    std::unordered_multimap<std::int64_t, Placed> taken;
    const auto covers = [this](const Placed& a, const Placed& b) {
        const Extent of = layouts[a.index].extent, other = layouts[b.index].extent;
        return std::abs(a.x - b.x) < (of.width + other.width) / 2 &&
               std::abs(a.y - b.y) < (of.height + other.height) / 2;
    };
    for (const Placed& text : placedTexts()) {
        const int column = static_cast<int>(std::floor(text.x / cellWidth));
        const int row = static_cast<int>(std::floor(text.y / cellHeight));
        bool isFree = true;
        for (int c = column - 1; c <= column + 1 && isFree; ++c)
            for (int r = row - 1; r <= row + 1 && isFree; ++r) {
                const auto [first, last] = taken.equal_range(cellOf(c, r));
                isFree = std::none_of(first, last, [&](const auto& entry) { return covers(entry.second, text); });
            }
        if (!isFree)
            continue;
        layouts[text.index].isSeen = true;
        taken.emplace(cellOf(column, row), text);
    }
}

/// Of those in one cell of the picture the last is seen, as if all were drawn; what comes first is later than the others.
void LabelBatch::chooseMarks()
{
    const float step = markStep * fineness;
    const float beyond = markRadius * fineness + 1;
    const auto columns = static_cast<std::size_t>(2 * (halfWidth + beyond) / step) + 1;
    const auto rowsOfCells = static_cast<std::size_t>(2 * (halfHeight + beyond) / step) + 1;
    std::vector<bool> isTaken(columns * rowsOfCells);
    shownMarks.clear();
    for (const bool first : {true, false})
        for (std::size_t i = labels.size(); i-- > 0;) {
            if (labels[i].comesFirst != first)
                continue;
            for (std::size_t mark = labels[i].marks.size(); mark-- > 0;) {
                const Ogre::Vector4 clip = toClip * Ogre::Vector4(toOgre(labels[i].marks[mark]));
                if (clip.w <= 0 || clip.z < -clip.w)
                    continue;
                const float x = clip.x / clip.w * halfWidth + halfWidth + beyond;
                const float y = clip.y / clip.w * halfHeight + halfHeight + beyond;
                if (!(x >= 0 && x < 2 * (halfWidth + beyond) && y >= 0 && y < 2 * (halfHeight + beyond)))
                    continue;
                const auto cell = static_cast<std::size_t>(y / step) * columns + static_cast<std::size_t>(x / step);
                if (!isTaken[cell])
                    shownMarks.push_back(static_cast<std::uint32_t>(firstVertexOf(i) + 4 * mark));
                isTaken[cell] = true;
            }
        }
    std::ranges::reverse(shownMarks);
}

void LabelBatch::writeIndices()
{
    std::vector<std::uint32_t> indices;
    const auto addQuads = [&indices](std::size_t first, std::size_t count) {
        for (std::size_t quad = 0; quad < count; ++quad)
            for (const std::uint32_t corner : {0u, 1u, 2u, 0u, 2u, 3u})
                indices.push_back(static_cast<std::uint32_t>(first + 4 * quad) + corner);
    };
    for (const std::uint32_t mark : shownMarks)
        addQuads(mark, 1);
    for (std::size_t i = 0; i < labels.size(); ++i)
        if (layouts[i].isSeen)
            addQuads(firstVertexOf(i) + 4 * labels[i].marks.size(), layouts[i].textQuads);
    Ogre::IndexData& data = *mRenderOp.indexData;
    data.indexCount = indices.size();
    if (indices.empty())
        return;
    if (indices.size() > indexCapacity) {
        indexCapacity = 2 * indices.size();
        data.indexBuffer = Ogre::HardwareBufferManager::getSingleton().createIndexBuffer(
            Ogre::HardwareIndexBuffer::IT_32BIT, indexCapacity, Ogre::HardwareBuffer::HBU_DYNAMIC_WRITE_ONLY);
    }
    data.indexBuffer->writeData(0, indices.size() * sizeof(indices.front()), indices.data(), true);
}

void LabelBatch::fit(float finer)
{
    if (finer == fineness)
        return;
    fineness = finer;
    setCustomParameter(finenessParameter, Ogre::Vector4(fineness));
    atlas.setSize(static_cast<int>(std::lround(letterSize * fineness)));
    for (std::size_t i = 0; i < labels.size(); ++i)
        build(i);
}

void LabelBatch::build(std::size_t index)
{
    const Label& label = labels[index];
    std::vector<Vertex> vertices;
    for (const rob::Posf& place : label.marks)
        addMark(label, place, vertices);
    layouts[index] = {};
    hasChanged = true;
    if (!label.text.empty()) {
        const std::vector<std::u32string> lines = linesOf(label.text);
        int width = 0;
        for (const std::u32string& line : lines)
            width = std::max(width, widthOf(line));
        const auto height = static_cast<float>((lines.size() - 1) * (atlas.ascent() + atlas.descent()));
        layouts[index].extent = {static_cast<float>(width) + 2 * std::round(besideText * fineness),
                                 height + static_cast<float>(atlas.capHeight()) +
                                     2 * std::round((aboveText + 1) * fineness)};
        addText(label, lines, vertices);
        layouts[index].textQuads = static_cast<std::uint32_t>(vertices.size() / 4 - label.marks.size());
    }
    write(index, vertices);
}

void LabelBatch::addMark(const Label& label, const rob::Posf& place, std::vector<Vertex>& vertices) const
{
    const float radius = markRadius * fineness;
    const float reach = std::ceil(radius) + 1;
    Box::add(vertices, [&](bool right, bool top) -> Vertex {
        const std::array<float, 2> at{right ? reach : -reach, top ? reach : -reach};
        return {{place.x, place.y, place.z},     at, {0, 0}, at, {radius, radius}, packedColor(label.colors.rim),
                packedColor(label.colors.ground)};
    });
}

void LabelBatch::addText(const Label& label, const std::vector<std::u32string>& lines, std::vector<Vertex>& vertices)
{
    const Extent& extent = layouts[&label - labels.data()].extent;
    // Whole pixels, so that no letter lies between two
    const float halfWidth = std::ceil(extent.width / 2);
    const float halfHeight = std::ceil(extent.height / 2);
    const std::array<float, 3> place{label.place.x, label.place.y, label.place.z};
    Box::add(vertices, [&](bool right, bool top) -> Vertex {
        const std::array<float, 2> at{right ? halfWidth + 1 : -halfWidth - 1, top ? halfHeight + 1 : -halfHeight - 1};
        return {place,
                at,
                {0, 0},
                at,
                {halfWidth, halfHeight},
                packedColor(label.colors.ground),
                packedColor(label.colors.rim)};
    });
    const int lineHeight = atlas.ascent() + atlas.descent();
    const int block = static_cast<int>(lines.size() - 1) * lineHeight + atlas.capHeight();
    int base = block / 2 - atlas.capHeight() + (block % 2);
    for (const std::u32string& line : lines) {
        int x = -widthOf(line) / 2;
        for (const char32_t letter : line) {
            const GlyphAtlas::Glyph& glyph = atlas.get(letter);
            const Box box{static_cast<float>(x + glyph.left), static_cast<float>(base + glyph.bottom),
                          static_cast<float>(x + glyph.left + glyph.width),
                          static_cast<float>(base + glyph.bottom + glyph.height)};
            if (glyph.width > 0)
                Box::add(vertices, [&](bool right, bool top) -> Vertex {
                    return {place,
                            {right ? box.right : box.left, top ? box.top : box.bottom},
                            {static_cast<float>(glyph.u + (right ? glyph.width : 0)),
                             static_cast<float>(glyph.v + (top ? 0 : glyph.height))},
                            {0, 0},
                            {0, 0},
                            packedColor(label.colors.text),
                            packedColor(label.colors.text)};
                });
            x += glyph.advance;
        }
        base -= lineHeight;
    }
}

int LabelBatch::widthOf(const std::u32string& line)
{
    int width = 0;
    for (const char32_t letter : line)
        width += atlas.get(letter).advance;
    return width;
}

} // namespace vrk::visual
