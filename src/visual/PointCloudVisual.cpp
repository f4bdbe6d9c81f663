#include "visual/PointCloudVisual.h"

#include "platform/layout/PointCloud.h"
#include "scene/core/OgreCompat.h"
#include "scene/core/SceneCore.h"
#include "visual/ManualDrawing.h"
#include "visual/Picking.h"

#include <Ogre.h>

#include <algorithm>
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

/// A little more than the distance between neighbours, so that a surface closes when it is looked at from near. A scan
/// covers surfaces: the number of points across it grows with the square root of their number.
float diameterOf(const std::vector<rob::PosTemplate<float>>& points)
{
    Box box;
    for (const rob::PosTemplate<float>& point : points)
        if (fitsBox(point))
            box.addPoint(point);
    if (!box.isValid())
        return 0;
    return 1.2f * (box.max - box.min).length() / std::sqrt(static_cast<float>(points.size()));
}

/// The points' way into a manual object, with or without normals. A bad coordinate would spoil the object's bounding box,
/// and with it the shading and the culling of all others.
class SectionWriter {
public:
    SectionWriter(Ogre::ManualObject& object, const std::vector<rob::PosTemplate<float>>& points,
                  const std::vector<rob::Vec3Template<float>>* normals)
        : object(object), points(points), normals(normals)
    {
    }

    void add(std::size_t index)
    {
        const rob::PosTemplate<float>& point = points[index];
        if (!fitsBox(point))
            return;
        object.position(point.x, point.y, point.z);
        if (normals) {
            const rob::Vec3Template<float>& normal = (*normals)[index];
            object.normal(normal.x, normal.y, normal.z);
        }
    }

private:
    Ogre::ManualObject& object;
    const std::vector<rob::PosTemplate<float>>& points;
    const std::vector<rob::Vec3Template<float>>* normals; // null: without
};

void beginSection(Ogre::ManualObject& object, const char* material, std::size_t points)
{
    object.estimateVertexCount(points);
    object.begin(material, Ogre::RenderOperation::OT_POINT_LIST,
                 Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME);
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
    updateRenderPrimitive();
}

void PointCloudVisual::updateRenderPrimitive()
{
    if (drawing)
        (*drawing)->clear();
    else
        drawing = makePointDrawing(*this);
    if (points->empty())
        return; // and not registered: there is nothing to pick

    const bool phong = hasNormals();
    pointDiameter = diameterOf(*points);
    if (!hideUnselected || selectedIndices.empty())
        drawUnselected(phong);
    if (!selectedIndices.empty())
        drawSelected(phong);
    (*drawing)->setVisible(visible);
    registerForPicking();
}

void PointCloudVisual::drawUnselected(bool phong)
{
    beginSection(**drawing, phong ? "PointCloudPhong" : "PointCloud", points->size() - selectedIndices.size());
    SectionWriter writer(**drawing, *points, phong ? normals : nullptr);
    const bool anySelected = !selectedIndices.empty();
    for (std::size_t i = 0; i < points->size(); ++i)
        if (!anySelected || !selectedIndices.contains(i))
            writer.add(i);
    Ogre::ManualObject::ManualObjectSection* section = (*drawing)->end();
    if (!section)
        return; // all points are selected, or none is finite
    const Ogre::AxisAlignedBox& box = (*drawing)->getBoundingBox();
    section->setCustomParameter(minParameter, withOne(box.getMinimum()));
    section->setCustomParameter(maxParameter, withOne(box.getMaximum()));
    section->setCustomParameter(diameterParameter, Ogre::Vector4(pointDiameter, 0, 0, 0));
}

void PointCloudVisual::drawSelected(bool phong)
{
    beginSection(**drawing, phong ? "PointCloudPhongSelected" : "PointCloudSelected", selectedIndices.size());
    SectionWriter writer(**drawing, *points, phong ? normals : nullptr);
    for (const std::uint64_t index : selectedIndices.ordered)
        writer.add(index);
    Ogre::ManualObject::ManualObjectSection* section = (*drawing)->end();
    if (!section)
        return; // none of them is finite
    section->setCustomParameter(colorParameter,
                                Ogre::Vector4(selectionColor.r, selectionColor.g, selectionColor.b, 1.0f));
    section->setCustomParameter(diameterParameter, Ogre::Vector4(pointDiameter, 0, 0, 0));
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
