#pragma once

#include "scene/math/Pose.h"

#include <string>
#include <vector>

namespace vrk::layout {

/// What of a thing a dimension holds on to.
struct DimensionEnd {
    enum class Kind {
        Point,      ///< a place of the thing, wherever that is
        Vertex,     ///< of a shape
        Edge,       ///< likewise
        Face,       ///< likewise
        Body,       ///< as a whole
        MeshVertex, ///< of a body that is a mesh
        CloudPoint,
        Frame, ///< the origin of anything that has a pose
    };

    Kind kind = Kind::Point;
    unsigned object = 0; ///< id of a body, a cloud or a frame
    /// Of vertices, edges and faces from 1, in the order in which Open CASCADE's `TopExp::MapShapes` meets them in the shape;
    /// of mesh vertices and cloud points from 0; of others 0.
    unsigned number = 0;
    rob::Posd place; ///< where it was picked, in the coordinates of the object; of a Point, the point

    /// Whether a number goes with this kind.
    static bool IsNumbered(Kind kind) { return kind != Kind::Point && kind != Kind::Body && kind != Kind::Frame; }

    bool operator==(const DimensionEnd&) const = default;
};

/// Something of a station that is measured. The value is no part of it: that is what the things make it at the time.
///
/// Whether a shape has as many edges or faces as a number says is not looked at: files of shapes change.
struct Dimension {
    enum class Type {
        Distance, ///< of two
        Angle,    ///< of two
        Diameter, ///< of one that is round
        Length,   ///< of an edge
        Area,     ///< of a face
        Nearest,  ///< how near two bodies come to each other
    };

    std::string name;
    Type type = Type::Distance;
    std::vector<DimensionEnd> ends; ///< as many as `EndsOf`

    static std::size_t EndsOf(Type type)
    {
        return type == Type::Diameter || type == Type::Length || type == Type::Area ? 1 : 2;
    }

    bool operator==(const Dimension&) const = default;
};

} // namespace vrk::layout
