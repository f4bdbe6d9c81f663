#include "platform/layout/PointCloud.h"

namespace vrk::layout {

PointCloud::PointCloud(unsigned id, std::string name, Points points, Normals normals)
    : SdfNode(sdf::ModelType::PointCloud, id, std::move(name)), points(std::move(points)), normals(std::move(normals))
{
    setPose({});
}

PointCloud::~PointCloud() = default;

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

} // namespace vrk::layout
