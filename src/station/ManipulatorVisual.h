#pragma once

#include "station/MechanismVisual.h"

namespace vrk::visual {

/// A robot arm, in its maker's colours.
///
/// Owner: the parent visual. Thread: render thread.
class VRK_EXPORT ManipulatorVisual : public MechanismVisual {
public:
    /// Makes and registers the arm with its wrist, which hangs on the link that the model names.
    /// @throws std::bad_cast if the node is no manipulator.
    /// @throws std::out_of_range "invalid unordered_map<K, T> key" if the wrist's parent has no visual.
    static void Build(Visual* parent, sdf::SdfNode* node, bool withChildren);

private:
    ManipulatorVisual(sdf::SdfNode* node, Visual* parent, bool withChildren);
};

/// Where a robot's tools are fixed: a pose without anything to see.
class VRK_EXPORT WristVisual : public Visual {
public:
    static void Build(Visual* parent, sdf::SdfNode* wrist);

private:
    WristVisual(sdf::SdfNode* wrist, Visual* parent);
};

} // namespace vrk::visual
