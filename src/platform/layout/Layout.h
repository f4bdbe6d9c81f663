#pragma once

#include "platform/common/Export.h"

#include <memory>
#include <vector>

namespace vrk::layout {

class Part;
class PointCloud;

/// The station: what stands in it, in model order.
///
/// Thread: guarded by the lock of `sdf::SdfManager`, as the objects are. The operations that change it take that lock.
class VRK_EXPORT Layout {
public:
    static Layout& inst();

    /// Appends a part; it and its bodies enter the object table.
    void addPart(std::shared_ptr<Part> part);
    /// Removes a part and its bodies from the station and from the object table; an unknown id does nothing.
    void removePart(unsigned id);
    /// Appends a point cloud; it enters the object table.
    void addPointCloud(std::shared_ptr<PointCloud> cloud);
    /// Removes a point cloud from the station and from the object table; an unknown id does nothing. Its visual points to
    /// its points: remove that first.
    void removePointCloud(unsigned id);
    void clear();

    std::vector<std::shared_ptr<Part>> parts;
    std::vector<std::shared_ptr<PointCloud>> pointclouds;
};

} // namespace vrk::layout
