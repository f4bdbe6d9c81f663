#pragma once

#include "platform/common/Export.h"
#include "scene/math/Pose.h"

#include <TopoDS_Shape.hxx>

#include <limits>
#include <optional>

namespace vrk::visual {
class Visual;
}

namespace vrk::selection {

/// What a pick found. The default is the answer "nothing": no hit, at the largest distance.
///
/// Which fields are filled depends on what was hit; the others keep their defaults. Operations that take a `Result&`
/// assign all of it and read none of it.
struct VRK_EXPORT Result {
    /// An edge of the face that was hit.
    struct EdgeRes {
        TopoDS_Shape edge;
        int index = 0; ///< in the face's map of edges, from 1
        double param = 0;
    };

    bool valid = true; ///< false only where the question was refused because the hierarchies are out of date
    bool hit = false;
    /// For a ray its parameter, for a line the fraction of the line from its start, 0 to 1.
    float distance = std::numeric_limits<float>::max();
    TopoDS_Shape edge;                     ///< of the curve that was hit
    TopoDS_Shape face;                     ///< of the solid that was hit
    TopoDS_Shape shape;                    ///< the whole shape of the object
    visual::Visual* visual = nullptr;      ///< not owned
    rob::PosTemplate<float> position;      ///< in the world, once the object has answered
    rob::PosTemplate<float> localPosition; ///< in the object's shape coordinates
    rob::PoseTemplate<float> pose;         ///< of the object in the world
    int pointIndex = -1;                   ///< of a cloud

    Result() = default;
    Result(const Result&) = default;
    Result& operator=(const Result&) = default;
    /// Leaves null shapes behind.
    Result(Result&& o) noexcept;
    /// Exchanges the shapes, so that the old ones die with `o`; the rest is copied.
    Result& operator=(Result&& o) noexcept;
    ~Result() = default;

    /// The parameter of the hit on the edge of a curve. Empty without such a hit, or where the edge has no nearest point.
    std::optional<double> getEdgeParam() const;
    /// The edge of the face that was hit which is nearest to the hit, the first of equally near ones. Empty without a face
    /// and where the edge is more than 20 pixels away, seen by the main camera, or 25 units if it has no view. Thread:
    /// render thread, for the camera.
    std::optional<EdgeRes> getFaceEdge() const;
};

} // namespace vrk::selection

namespace vrk::visual {
using selection::Result;
}
