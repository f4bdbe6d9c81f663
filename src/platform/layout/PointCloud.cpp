#include "platform/layout/PointCloud.h"

#include <utility>

namespace vrk::layout {

PointCloud::PointCloud(unsigned id, std::string name, Points points, Normals normals, Colors colors)
    : SdfNode(sdf::ModelType::PointCloud, id, std::move(name)), points(std::move(points)), normals(std::move(normals)),
      colors(std::move(colors))
{
    setPose({});
}

PointCloud::~PointCloud() = default;

void PointCloud::setHiddenPoints(PointSet set)
{
    hidden = set.empty() ? nullptr : std::make_shared<const PointSet>(std::move(set));
}

void PointCloud::exchange(Content& content)
{
    std::swap(points, content.points);
    std::swap(normals, content.normals);
    std::swap(colors, content.colors);
    std::swap(hidden, content.hidden);
    std::string uri = getGeometryUri(), fileType = getFileType();
    const LengthUnit unit = getFileUnit();
    setGeometry(content.uri, content.fileType);
    setFileUnit(content.unit);
    content.uri = std::move(uri);
    content.fileType = std::move(fileType);
    content.unit = unit;
}

std::string PointCloud::getGeometryUri() const
{
    return sdf::textAt(*getElement(), "geometry/uri");
}

std::string PointCloud::getFileType() const
{
    return sdf::textAt(*getElement(), "geometry/file_type");
}

void PointCloud::setGeometry(const std::string& uri, const std::string& fileType)
{
    getElement()->touch("geometry/uri")->set(uri);
    getElement()->touch("geometry/file_type")->set(fileType);
}

LengthUnit PointCloud::getFileUnit() const
{
    return LengthUnitNamed(sdf::textAt(*getElement(), "geometry/unit")).value_or(LengthUnit::Millimetre);
}

void PointCloud::setFileUnit(LengthUnit unit)
{
    if (unit != getFileUnit())
        getElement()->touch("geometry/unit")->set(std::string(NameOf(unit)));
}

} // namespace vrk::layout
