#pragma once

#include "platform/station/file/StationGeometry.h"
#include "platform/station/file/StationIds.h"

namespace vrk::layout {
class Assembly;
class Body;
class Part;
class PartContainer;
class PointCloud;
} // namespace vrk::layout

namespace vrk::station {

inline constexpr int deepestNesting = 64; ///< of assemblies and components, which are read by calling oneself

/// Reads what has geometry: parts and their bodies, assemblies of them, point clouds. Not installed.
class PartReader {
public:
    PartReader(StationIds& ids, GeometryReader& geometry) : ids(ids), geometry(geometry) {}

    std::shared_ptr<layout::Part> readPart(const JsonPlace& at, bool isStandalone);
    std::shared_ptr<layout::Assembly> readAssembly(const JsonPlace& at, int depth, bool isStandalone);
    std::shared_ptr<layout::PointCloud> readCloud(const JsonPlace& at);
    /// Reads the "members" of an assembly or a link into it. @param depth  of assemblies around them
    void readMembers(const JsonPlace& at, layout::PartContainer& container, int depth);

    bool withHiddenPoints = false; ///< whether clouds may have them

    /// A body that was read; null for any other id.
    const layout::Body* findBody(unsigned id) const;
    /// Whether the shapes of bodies are there, as they are unless geometry is skipped.
    bool hasShapes() const { return geometry.isLoading(); }

private:
    void readHiddenPoints(const JsonPlace& at, layout::PointCloud& cloud) const;
    void readBody(const JsonPlace& at, layout::Part& part);

    StationIds& ids;
    GeometryReader& geometry;
    std::unordered_map<unsigned, std::shared_ptr<layout::Body>> bodies;
};

} // namespace vrk::station
