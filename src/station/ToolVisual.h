#pragma once

#include "station/MechanismVisual.h"

namespace vrk::visual {

/// A tool with its tool frames.
class VRK_EXPORT ToolVisual : public MechanismVisual {
public:
    /// @throws std::bad_cast if the node is no tool.
    static void Build(Visual* parent, sdf::SdfNode* node, bool withChildren);

private:
    ToolVisual(sdf::SdfNode* node, Visual* parent, bool withChildren)
        : MechanismVisual(node, parent, withChildren, VisualType::Tool)
    {
    }
};

/// A device with frames on itself and on its links.
class VRK_EXPORT DeviceVisual : public MechanismVisual {
public:
    /// @throws std::bad_cast if the node is no device.
    /// @throws std::out_of_range "invalid unordered_map<K, T> key" if the parent of a frame has no visual.
    static void Build(Visual* parent, sdf::SdfNode* node, bool withChildren);

private:
    DeviceVisual(sdf::SdfNode* node, Visual* parent, bool withChildren)
        : MechanismVisual(node, parent, withChildren, VisualType::Device)
    {
    }
};

} // namespace vrk::visual
