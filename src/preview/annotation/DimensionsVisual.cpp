#include "preview/annotation/DimensionsVisual.h"

#include "scene/core/OgreCompat.h"
#include "view/Camera.h"
#include "visual/RenderGroups.h"
#include "visual/SlotBatch.h"
#include "visual/text/LabelBatch.h"

#include <Ogre.h>

#include <algorithm>
#include <cmath>

namespace vrk::visual {
namespace {

using Look = DimensionDrawing::Look;

struct LookColors {
    rob::Colorf line;
    LabelBatch::Colors label;
};

constexpr rob::Colorf blue(0.07f, 0.28f, 0.72f);
constexpr rob::Colorf grey(0.42f, 0.45f, 0.50f);
constexpr rob::Colorf orange(0.93f, 0.36f, 0.02f);
constexpr rob::Colorf ink(0.06f, 0.09f, 0.14f);
constexpr rob::Colorf paper(0.98f, 0.99f, 1.0f);

const LookColors& colorsOf(Look look)
{
    static const LookColors plain{blue, {ink, paper, blue}};
    static const LookColors hovered{{0.16f, 0.50f, 1.0f}, {ink, {1.0f, 0.93f, 0.55f}, blue}};
    static const LookColors selected{orange, {{1, 1, 1}, orange, {0.55f, 0.20f, 0.0f}}};
    static const LookColors outdated{grey, {grey, {0.90f, 0.91f, 0.92f}, grey}};
    switch (look) {
    case Look::Hovered:
        return hovered;
    case Look::Selected:
        return selected;
    case Look::Outdated:
        return outdated;
    default:
        return plain;
    }
}

/// A corner of the rectangle around a line.
struct LineCorner {
    std::array<float, 3> from;
    std::array<float, 3> to;
    float corner; // 0 and 1 at the first end, 2 and 3 at the second
    std::uint32_t color;
};

} // namespace

DimensionsVisual::DimensionsVisual(Visual* parent)
    : Visual("dimensions", parent),
      lines(std::make_unique<SlotBatch>(
          SlotBatch::Draws::Quads,
          std::initializer_list<SlotBatch::Element>{{Ogre::VET_FLOAT3, Ogre::VES_POSITION},
                                                    {Ogre::VET_FLOAT4, Ogre::VES_TEXTURE_COORDINATES},
                                                    {Ogre::VET_UBYTE4_NORM, Ogre::VES_DIFFUSE}})),
      labels(std::make_unique<LabelBatch>())
{
    lines->setMaterial(materialByName("DimensionLine"));
    labels->setRenderQueueGroup(renderGroup::texts);
    attachObject(lines.get());
    attachObject(labels.get());
}

DimensionsVisual::~DimensionsVisual() = default;

void DimensionsVisual::setCount(std::size_t count)
{
    drawings.resize(count);
    lines->setSlotCount(count);
    labels->setCount(count);
}

void DimensionsVisual::set(std::size_t index, DimensionDrawing drawing)
{
    drawings.at(index) = std::move(drawing);
    draw(index);
}

void DimensionsVisual::setLook(std::size_t index, Look look)
{
    if (drawings.at(index).look == look)
        return;
    drawings[index].look = look;
    draw(index);
}

void DimensionsVisual::draw(std::size_t index)
{
    const DimensionDrawing& drawing = drawings[index];
    const LookColors& colors = colorsOf(drawing.look);
    const std::uint32_t color = packedColor(colors.line);
    std::vector<LineCorner> corners;
    for (const auto& [from, to] : drawing.lines)
        if (fitsBox(from) && fitsBox(to))
            for (const float corner : {0.f, 1.f, 2.f, 3.f})
                corners.push_back({{from.x, from.y, from.z}, {to.x, to.y, to.z}, corner, color});
    lines->write(index, corners);
    LabelBatch::Label label{drawing.textPlace,
                            drawing.text,
                            {},
                            colors.label,
                            drawing.look == Look::Selected || drawing.look == Look::Hovered};
    if (!fitsBox(drawing.textPlace))
        label.text.clear();
    std::ranges::copy_if(drawing.marks, std::back_inserter(label.marks), fitsBox);
    labels->set(index, std::move(label));
}

std::optional<std::size_t> DimensionsVisual::textAt(double x, double y) const
{
    const Ogre::Camera* camera = Camera::Get() ? Camera::Get()->ogreCamera() : nullptr;
    const Ogre::Viewport* viewport = camera ? camera->getViewport() : nullptr;
    if (!viewport || !isVisible())
        return {};
    const Ogre::Matrix4 toClip =
        camera->getProjectionMatrix() * camera->getViewMatrix() * getSceneNode()->_getFullTransform();
    for (std::size_t i = drawings.size(); i-- > 0;) {
        if (!labels->isTextSeen(i))
            continue;
        const LabelBatch::Extent extent = labels->extentOf(i);
        const Ogre::Vector4 clip = toClip * Ogre::Vector4(toOgre(drawings[i].textPlace));
        if (clip.w <= 0 || clip.z < -clip.w)
            continue;
        const double column = (clip.x / clip.w + 1) / 2 * viewport->getActualWidth();
        const double row = (1 - clip.y / clip.w) / 2 * viewport->getActualHeight();
        if (std::abs(x - column) <= extent.width / 2 && std::abs(y - row) <= extent.height / 2)
            return i;
    }
    return {};
}

void DimensionsVisual::setPixelRatio(float ratio)
{
    labels->setPixelRatio(ratio);
}

std::size_t DimensionsVisual::getUploadedBytes() const
{
    return lines->getUploadedBytes() + labels->getUploadedBytes();
}

} // namespace vrk::visual
