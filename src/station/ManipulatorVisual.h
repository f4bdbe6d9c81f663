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

    // How far it reaches: a curve, which hangs on a frame, and a surface, which hangs on the arm. Null without; null again
    // from the moment in which one of them dies. The curve dies with the arm, wherever it hangs.
    Visual* getEnvelope2D() const { return envelope2D; }
    Visual* getEnvelope3D() const { return envelope3D; }
    void setEnvelope2D(Visual* curve);
    void setEnvelope3D(Visual* surface);

private:
    struct EnvelopeOwners;

    ManipulatorVisual(sdf::SdfNode* node, Visual* parent, bool withChildren);
    void noteEnvelopes();

    Visual* envelope2D = nullptr;
    Visual* envelope3D = nullptr;
};

/// Where a robot's tools are fixed: a pose without anything to see.
class VRK_EXPORT WristVisual : public Visual {
public:
    static void Build(Visual* parent, sdf::SdfNode* wrist);

private:
    WristVisual(sdf::SdfNode* wrist, Visual* parent);
};

} // namespace vrk::visual
