#include "visual/PointCloudVisual.h"

#include "platform/layout/PointCloud.h"
#include "scene/core/OgreCompat.h"
#include "scene/core/SceneCore.h"
#include "visual/ManualDrawing.h"
#include "visual/Picking.h"

#include <Ogre.h>

#include <algorithm>
#include <bit>
#include <cmath>

namespace vrk::visual {
namespace {

// Where the materials' shaders read what comes with each section.
constexpr std::size_t colorParameter = 0;
constexpr std::size_t minParameter = 1;
constexpr std::size_t maxParameter = 2;
constexpr std::size_t diameterParameter = 3;

constexpr rob::Colorf selectionColor(1.0f, 1.0f, 0.0f);

Ogre::Vector4 withOne(const Ogre::Vector3& v)
{
    return {v.x, v.y, v.z, 1.0f};
}

Box boxOf(const std::vector<rob::PosTemplate<float>>& points)
{
    Box box;
    for (const rob::PosTemplate<float>& point : points)
        if (fitsBox(point))
            box.addPoint(point);
    return box;
}

/// A little more than the distance between neighbours, so that a surface closes when it is looked at from near. A scan
/// covers surfaces: the number of points across it grows with the square root of their number.
float diameterOf(const Box& box, std::size_t points)
{
    if (!box.isValid())
        return 0;
    return 1.2f * (box.max - box.min).length() / std::sqrt(static_cast<float>(points));
}

/// The points' way into a manual object, with or without normals and colours. A bad coordinate would spoil the object's bounding box,
/// and with it the shading and the culling of all others.
class SectionWriter {
public:
    SectionWriter(Ogre::ManualObject& object, const std::vector<rob::PosTemplate<float>>& points,
                  const std::vector<rob::Vec3Template<float>>* normals, const std::vector<PointColor>* colors)
        : object(object), points(points), normals(normals), colors(colors)
    {
    }

    /// False where it is left out.
    bool add(std::size_t index)
    {
        const rob::PosTemplate<float>& point = points[index];
        if (!fitsBox(point))
            return false;
        object.position(point.x, point.y, point.z);
        if (normals) {
            const rob::Vec3Template<float>& normal = (*normals)[index];
            object.normal(normal.x, normal.y, normal.z);
        }
        if (colors) {
            const PointColor& color = (*colors)[index];
            object.colour(static_cast<float>(color.r) / 255, static_cast<float>(color.g) / 255,
                          static_cast<float>(color.b) / 255);
        }
        return true;
    }

private:
    Ogre::ManualObject& object;
    const std::vector<rob::PosTemplate<float>>& points;
    const std::vector<rob::Vec3Template<float>>* normals; // null: without
    const std::vector<PointColor>* colors;                // null: without
};

void setSelectedLook(Ogre::ManualObject::ManualObjectSection& section, float diameter)
{
    section.setCustomParameter(colorParameter,
                               Ogre::Vector4(selectionColor.r, selectionColor.g, selectionColor.b, 1.0f));
    section.setCustomParameter(diameterParameter, Ogre::Vector4(diameter, 0, 0, 0));
}

void beginSection(Ogre::ManualObject& object, const char* material, std::size_t points)
{
    object.estimateVertexCount(points);
    object.begin(material, Ogre::RenderOperation::OT_POINT_LIST,
                 Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME);
}

/// Which vertex a point is, where all points that can be drawn are one after the other. To be asked in ascending order,
/// and not for a point that has none.
class VertexOrder {
public:
    explicit VertexOrder(const layout::PointSet& undrawn) : undrawn(undrawn) {}

    std::uint32_t of(std::uint32_t point)
    {
        for (; word < point / 64; ++word)
            before += static_cast<std::uint32_t>(std::popcount(undrawn.word(word)));
        const std::uint64_t lower = undrawn.word(word) & ((std::uint64_t{1} << (point % 64)) - 1);
        return point - before - static_cast<std::uint32_t>(std::popcount(lower));
    }

private:
    const layout::PointSet& undrawn;
    std::size_t word = 0;
    std::uint32_t before = 0; // points without a vertex, up to that word
};

/// Has the section draw those of its vertices that `write` gives: it fills the memory and returns the end of what it wrote.
template <typename Write>
void drawByIndices(Ogre::ManualObject::ManualObjectSection& section, std::size_t most, Write write)
{
    Ogre::RenderOperation& operation = *section.getRenderOperation();
    if (!operation.indexData)
        operation.indexData = OGRE_NEW Ogre::IndexData; // the section deletes it
    operation.useIndexes = true;
    Ogre::IndexData& data = *operation.indexData;
    data.indexStart = data.indexCount = 0; // OGRE passes over a section that has none
    data.indexBuffer.reset();
    if (most == 0)
        return;
    data.indexBuffer = Ogre::HardwareBufferManager::getSingleton().createIndexBuffer(
        Ogre::HardwareIndexBuffer::IT_32BIT, most, Ogre::HardwareBuffer::HBU_STATIC_WRITE_ONLY);
    const Ogre::HardwareBufferLockGuard lock(data.indexBuffer, Ogre::HardwareBuffer::HBL_DISCARD);
    auto* const begin = static_cast<std::uint32_t*>(lock.pData);
    data.indexCount = static_cast<std::size_t>(write(begin) - begin);
}

} // namespace

bool PointCloudVisual::IndexSet::add(std::uint64_t index)
{
    if (!known.insert(index).second)
        return false;
    ordered.push_back(index);
    return true;
}

PointCloudVisual::PointCloudVisual(Visual* parent, sdf::SdfNode* node) : Visual(node, parent)
{
    type = VisualType::PointCloud;
    const auto& cloud = dynamic_cast<const layout::PointCloud&>(*node);
    points = &cloud.getPoints();
    normals = &cloud.getNormals();
    colors = &cloud.getColors();
    hidden = cloud.getHiddenPoints();
    updateRenderPrimitive();
}

PointCloudVisual::~PointCloudVisual() = default;

Visual* PointCloudVisual::Build(Visual* parent, sdf::SdfNode* node)
{
    auto* visual = new PointCloudVisual(parent, node);
    SceneCore::Get()->visuals.enter(visual);
    return visual;
}

void PointCloudVisual::resetAppearance()
{
    selectedIndices = {};
    updateRenderPrimitive();
}

bool PointCloudVisual::hasNormals() const
{
    return !normals->empty() && normals->size() == points->size();
}

bool PointCloudVisual::hasColors() const
{
    return !colors->empty() && colors->size() == points->size();
}

void PointCloudVisual::showHeights(bool wanted)
{
    byHeight = wanted;
    const bool isUnselectedDrawn = !hideUnselected || selectedIndices.empty();
    if (drawing && isUnselectedDrawn && !(*drawing)->getSections().empty())
        (*drawing)->getSections().front()->setMaterialName(unselectedMaterial());
}

const char* PointCloudVisual::unselectedMaterial() const
{
    if (areHeightsShown())
        return hasNormals() ? "PointCloudPhong" : "PointCloud";
    return hasNormals() ? "PointCloudPhongColored" : "PointCloudColored";
}

Box PointCloudVisual::getBoundingBox() const
{
    const Ogre::AxisAlignedBox& box = (*drawing)->getBoundingBox();
    if (!box.isFinite())
        return {};
    const Ogre::Vector3& min = box.getMinimum();
    const Ogre::Vector3& max = box.getMaximum();
    return {min.x, min.y, min.z, max.x, max.y, max.z};
}

void PointCloudVisual::setSelectedIndices(const std::vector<std::uint64_t>& indices)
{
    IndexSet wanted;
    for (const std::uint64_t index : indices)
        if (index < points->size())
            wanted.add(index);
    const auto isSelected = [this](std::uint64_t index) { return selectedIndices.contains(index); };
    if (wanted.size() == selectedIndices.size() && std::ranges::all_of(wanted.ordered, isSelected))
        return;
    selectedIndices = std::move(wanted);
    marked.clear();
    updateRenderPrimitive();
}

void PointCloudVisual::markPoints(std::vector<std::uint32_t> numbers)
{
    numbers.erase(std::ranges::lower_bound(numbers, points->size()), numbers.end());
    marked = std::move(numbers);
    if (selectedIndices.empty()) {
        drawMarked();
    } else {
        selectedIndices = {};
        updateRenderPrimitive();
    }
}

void PointCloudVisual::hidePoints(std::shared_ptr<const layout::PointSet> set)
{
    hidden = set && !set->empty() ? std::move(set) : nullptr;
    if (selectedIndices.empty()) {
        leaveOutHidden();
        drawMarked();
        picking::setHiddenPoints(this);
    } else {
        updateRenderPrimitive();
    }
}

void PointCloudVisual::takeOtherPoints(std::shared_ptr<const layout::PointSet> set)
{
    hidden = std::move(set);
    marked.clear();
    selectedIndices = {};
    updateRenderPrimitive();
}

void PointCloudVisual::updateRenderPrimitive()
{
    if (drawing)
        (*drawing)->clear();
    else
        drawing = makePointDrawing(*this);
    undrawn = {};
    boxOfAll = boxOf(*points);
    if (points->empty())
        return; // and not registered: there is nothing to pick

    const bool phong = hasNormals();
    pointDiameter = diameterOf(boxOfAll, points->size());
    if (!hideUnselected || selectedIndices.empty())
        drawUnselected(phong);
    if (!selectedIndices.empty())
        drawSelected(phong);
    if (hidden)
        leaveOutHidden();
    drawMarked();
    (*drawing)->setVisible(visible);
    registerForPicking();
}

void PointCloudVisual::drawUnselected(bool phong)
{
    beginSection(**drawing, unselectedMaterial(), points->size() - selectedIndices.size());
    SectionWriter writer(**drawing, *points, phong ? normals : nullptr, hasColors() ? colors : nullptr);
    if (selectedIndices.empty()) {
        for (std::size_t i = 0; i < points->size(); ++i)
            if (!writer.add(i))
                undrawn.addRange(static_cast<std::uint32_t>(i), static_cast<std::uint32_t>(i));
    } else {
        for (std::size_t i = 0; i < points->size(); ++i)
            if (!selectedIndices.contains(i) && !isHidden(i))
                writer.add(i);
    }
    Ogre::ManualObject::ManualObjectSection* section = (*drawing)->end();
    if (!section)
        return; // all points are selected or hidden, or none is finite
    const Ogre::AxisAlignedBox& box = (*drawing)->getBoundingBox();
    section->setCustomParameter(minParameter, withOne(box.getMinimum()));
    section->setCustomParameter(maxParameter, withOne(box.getMaximum()));
    section->setCustomParameter(diameterParameter, Ogre::Vector4(pointDiameter, 0, 0, 0));
}

void PointCloudVisual::drawSelected(bool phong)
{
    beginSection(**drawing, phong ? "PointCloudPhongSelected" : "PointCloudSelected", selectedIndices.size());
    SectionWriter writer(**drawing, *points, phong ? normals : nullptr, nullptr);
    for (const std::uint64_t index : selectedIndices.ordered)
        if (!isHidden(index))
            writer.add(index);
    Ogre::ManualObject::ManualObjectSection* section = (*drawing)->end();
    if (!section)
        return; // none of them is finite
    setSelectedLook(*section, pointDiameter);
}

/// Of the first section, which has a vertex for each point. While any are selected the hidden ones have no vertex.
void PointCloudVisual::leaveOutHidden()
{
    Ogre::ManualObject& object = **drawing;
    if (object.getSections().empty() || !selectedIndices.empty())
        return;
    Ogre::ManualObject::ManualObjectSection& section = *object.getSections().front();
    Box box = boxOfAll;
    if (hidden) {
        box = Box();
        drawByIndices(section, section.getRenderOperation()->vertexData->vertexCount, [&](std::uint32_t* out) {
            VertexOrder vertices(undrawn);
            for (std::size_t i = 0; i * 64 < points->size(); ++i) {
                std::uint64_t shown = ~(hidden->word(i) | undrawn.word(i));
                if (points->size() - i * 64 < 64)
                    shown &= (std::uint64_t{1} << (points->size() - i * 64)) - 1;
                for (; shown != 0; shown &= shown - 1) {
                    const auto number =
                        static_cast<std::uint32_t>(i * 64) + static_cast<std::uint32_t>(std::countr_zero(shown));
                    box.addPoint((*points)[number]);
                    *out++ = vertices.of(number);
                }
            }
            return out;
        });
    } else {
        section.getRenderOperation()->useIndexes = false;
    }
    object.setBoundingBox(toOgre(box));
    getSceneNode()->needUpdate();
}

/// As the section behind the first, over the same vertices. The look of selected points lies above that of the others, so
/// that these need not be left out there.
void PointCloudVisual::drawMarked()
{
    Ogre::ManualObject& object = **drawing;
    const auto& sections = object.getSections();
    if (sections.empty() || !selectedIndices.empty() || (marked.empty() && sections.size() == 1))
        return;
    if (sections.size() == 1) {
        // OGRE makes no section without a vertex, so that it is made with one and then given those of the first section.
        const Ogre::AxisAlignedBox box = object.getBoundingBox();
        const bool phong = hasNormals();
        beginSection(object, phong ? "PointCloudPhongSelected" : "PointCloudSelected", 1);
        object.position(0, 0, 0);
        if (phong)
            object.normal(0, 0, 1);
        Ogre::ManualObject::ManualObjectSection& section = *object.end();
        object.setBoundingBox(box);
        setSelectedLook(section, pointDiameter);
        Ogre::RenderOperation& operation = *section.getRenderOperation();
        OGRE_DELETE operation.vertexData;
        operation.vertexData = sections.front()->getRenderOperation()->vertexData->clone(false);
    }
    drawByIndices(*sections.back(), marked.size(), [this](std::uint32_t* out) {
        if (undrawn.empty() && !hidden)
            return std::ranges::copy(marked, out).out;
        VertexOrder vertices(undrawn);
        for (const std::uint32_t number : marked)
            if (!isHidden(number) && !undrawn.contains(number))
                *out++ = vertices.of(number);
        return out;
    });
}

void PointCloudVisual::registerForPicking()
{
    picking::removeObject(this);
    picking::addPointCloudVisual(this, false);
    picking::setObjectEnabled(this, visible);
}

void PointCloudVisual::useMaterial(const std::string& name)
{
    drawing->setMaterial(name);
}

} // namespace vrk::visual
