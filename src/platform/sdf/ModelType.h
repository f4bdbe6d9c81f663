#pragma once

namespace sdf {

/// The kinds of model objects. The values stand in station files and in the view's code.
enum class ModelType : unsigned {
    Unknown = 0,
    Station = 1,
    Assembly = 2,
    Part = 4,
    Body = 5,
    Mechanism = 7,
    Link = 8,
    Manipulator = 9,
    Tool = 10,
    Device = 11,
    Frame = 12,
    PointCloud = 13,
    Wrist = 14,
    SmartComponent = 15,
    Task = 20,
    Operation = 21,
    ToolData = 22,
    WObjData = 23,
    ObjectFrame = 24,
    JointTargetData = 25,
    RobTargetData = 26,
    Path = 27,
    MfgShape = 28,
    // Instructions of programs. Circular and dashed moves are moves, too: ask with `SdfObject::asType`.
    MoveInst = 31,
    CircularMoveInst = 33,
    DashedMoveInst = 34,
    PlainInst = 36, ///< one that draws nothing
    // Objects that have no place of their own: they gather others.
    GroupFirst = 53,
    GroupLast = 57,
};

/// Whether objects of this kind are groups, whose members carry what is seen.
constexpr bool isGroup(ModelType type)
{
    return type >= ModelType::GroupFirst && type <= ModelType::GroupLast;
}

} // namespace sdf
