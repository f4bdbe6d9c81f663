#pragma once

#include "platform/station/file/StationGeometry.h"

namespace vrk::layout {
class Assembly;
class Part;
class PartContainer;
} // namespace vrk::layout

namespace vrk::station {

/// Writes what has geometry: parts and their bodies, assemblies of them, point clouds. Not installed.
class PartWriter {
public:
    explicit PartWriter(GeometryWriter& geometry) : geometry(geometry) {}

    Json jsonOf(const layout::Part& part);
    Json jsonOf(const layout::Assembly& assembly);
    Json jsonOf(const layout::PointCloud& cloud);
    Json membersOf(const layout::PartContainer& container);

    std::string path; ///< of the object that is being written, for failures

private:
    Json jsonOf(const layout::Body& body);

    GeometryWriter& geometry;
};

} // namespace vrk::station
