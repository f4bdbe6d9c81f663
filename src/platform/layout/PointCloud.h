#pragma once

#include "platform/geometry/LengthUnit.h"
#include "platform/geometry/PointColor.h"
#include "platform/layout/PointSet.h"
#include "platform/sdf/SdfObject.h"

#include <memory>
#include <vector>

namespace vrk::layout {

/// A scanned cloud of points, with or without normals and colours. Its element holds "pose" and, where it came from a file,
/// "geometry/uri", "geometry/file_type" ("ply", "pcd" or "xyz") and, where the file's numbers are no millimetres,
/// "geometry/unit".
///
/// The three vectors stay where they are as long as the cloud lives: visuals point to them. Points that are hidden stay
/// where they are in them.
///
/// Units: model units, relative to the pose.
class VRK_EXPORT PointCloud : public sdf::SdfNode {
public:
    using Points = std::vector<rob::PosTemplate<float>>;
    using Normals = std::vector<rob::Vec3Template<float>>;
    using Colors = std::vector<PointColor>;

    /// @param normals  one for each point, of length 1 or, where a point has none, 0; or none at all.
    /// @param colors   one for each point, or none at all.
    PointCloud(unsigned id, std::string name, Points points, Normals normals = {}, Colors colors = {});
    ~PointCloud() override;

    const Points& getPoints() const { return points; }
    const Normals& getNormals() const { return normals; }
    const Colors& getColors() const { return colors; }
    bool hasNormals() const { return !normals.empty() && normals.size() == points.size(); }
    bool hasColors() const { return !colors.empty() && colors.size() == points.size(); }

    /// Of the points those that are not shown; null where all are.
    const std::shared_ptr<const PointSet>& getHiddenPoints() const { return hidden; }
    /// Numbers that the cloud has not say nothing. What shows the cloud must be told, see `PointCloudVisual::hidePoints`.
    void setHiddenPoints(PointSet points);

    std::string getGeometryUri() const;
    std::string getFileType() const;
    void setGeometry(const std::string& uri, const std::string& fileType);
    /// The unit of the file's numbers; that of the points is always the model's.
    LengthUnit getFileUnit() const;
    void setFileUnit(LengthUnit unit);

    /// What is in a cloud, beside its name and its place.
    struct Content {
        Points points;
        Normals normals;
        Colors colors;
        std::shared_ptr<const PointSet> hidden;
        std::string uri; ///< empty where no file holds these points
        std::string fileType;
        LengthUnit unit = LengthUnit::Millimetre; ///< of the file
    };
    /// Takes this content and gives the one it had. Under the model's unique lock, on the render thread, and nobody may
    /// read the points meanwhile; what shows the cloud must be told at once, see `PointCloudVisual::takeOtherPoints`.
    void exchange(Content& content);

private:
    Points points;
    Normals normals;
    Colors colors;
    std::shared_ptr<const PointSet> hidden;
};

} // namespace vrk::layout
