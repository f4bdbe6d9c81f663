#pragma once

#include "platform/sdf/SdfObject.h"

#include <vector>

namespace vrk::layout {

/// A scanned cloud of points, with or without normals. Its element holds "pose" and, where it came from a file,
/// "geometry/uri" and "geometry/file_type" ("ply", "pcd" or "xyz").
///
/// The two vectors stay where they are as long as the cloud lives: visuals point to them.
///
/// Units: model units, relative to the pose.
class VRK_EXPORT PointCloud : public sdf::SdfNode {
public:
    using Points = std::vector<rob::PosTemplate<float>>;
    using Normals = std::vector<rob::Vec3Template<float>>;

    /// @param normals  one for each point, of length 1 or, where a point has none, 0; or none at all.
    PointCloud(unsigned id, std::string name, Points points, Normals normals = {});
    ~PointCloud() override;

    const Points& getPoints() const { return points; }
    const Normals& getNormals() const { return normals; }

    std::string getGeometryUri() const;
    std::string getFileType() const;
    void setGeometry(const std::string& uri, const std::string& fileType);

private:
    Points points;
    Normals normals;
};

} // namespace vrk::layout
