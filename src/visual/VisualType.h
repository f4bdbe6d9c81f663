#pragma once

#include <cstdint>

namespace vrk {

/// The kinds of visuals. The values are fixed: they stand in the interface and in what applications store.
enum class VisualType : std::uint64_t {
    None = 0,
    World = 1,
    Manipulator = 2,
    Tool = 3,
    Device = 4,
    Link = 5,
    Assembly = 7,
    PointCloud = 8,
    Part = 9,
    Solid = 10,
    Curve = 11,
    Edge = 12,
    WireFrame = 13,
    Mesh = 14,
    Point = 15,
    Path = 16,
    MoveInstruction = 17,
    Gui = 19,
    Frame = 20,
    Tcp = 21,
    Robtarget = 22,
    JointTarget = 23,
    WObj = 24,
    UserFrame = 25,
    ObjectFrame = 26,
    Paint = 29,
    Wrist = 30,
    PreviewCurve = 31,
    GeneratedEdge = 32,
    UVIndicator = 33,
    WorkEnvelope = 34,
};

/// Kinds whose own and whose children's picking is switched together.
constexpr bool isCompound(VisualType type)
{
    switch (type) {
    case VisualType::Manipulator:
    case VisualType::Tool:
    case VisualType::Device:
    case VisualType::Link:
    case VisualType::Assembly:
    case VisualType::Part:
    case VisualType::Path:
    case VisualType::MoveInstruction:
    case VisualType::WObj:
        return true;
    default:
        return false;
    }
}

/// Kinds that a copy of a subtree takes along.
constexpr bool isCopyable(VisualType type)
{
    switch (type) {
    case VisualType::Manipulator:
    case VisualType::Tool:
    case VisualType::Link:
    case VisualType::Assembly:
    case VisualType::Part:
    case VisualType::Solid:
    case VisualType::Curve:
    case VisualType::Mesh:
    case VisualType::Frame:
        return true;
    default:
        return false;
    }
}

} // namespace vrk
