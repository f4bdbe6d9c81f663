#pragma once

#include "platform/sdf/SdfObject.h"

namespace vrk::layout {

/// A coordinate frame: a pose with a name, on the object that is its parent. Its element holds "pose".
class VRK_EXPORT Frame : public sdf::SdfNode {
public:
    Frame(unsigned id, std::string name, const rob::Posed& pose = {});
    ~Frame() override;

protected:
    Frame(sdf::ModelType type, unsigned id, std::string name);
};

/// Where a manipulator's tools are fixed: a pose on one of its links, which is the parent.
class VRK_EXPORT Wrist : public Frame {
public:
    Wrist(unsigned id, std::string name);
    ~Wrist() override;
};

} // namespace vrk::layout
