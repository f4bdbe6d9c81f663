#pragma once

#include "handles/GuiVisual.h"
#include "scene/math/Color.h"

#include <memory>

namespace vrk::task {
class EdgeMfgShape;
}

namespace vrk::visual {

class HandleMeshVisual;
class LineVisual;
class TasksOfOwner;

/// A stem with a knob that stands where a run begins or ends.
///
/// Owner: its `PathEndsHandle`. Thread: render thread; what concerns picking is posted.
class VRK_EXPORT PathEndHandle : public Visual {
public:
    /// @param name  also the knob's, and that of its mesh.
    PathEndHandle(const std::string& name, Visual* parent, const rob::ColorTemplate<float>& color);
    ~PathEndHandle() override;

    void enableSelection();
    void disableSelection();
    LineVisual* getBoundary() const { return boundary; }
    HandleMeshVisual* getKnob() const { return knob; }

private:
    void postEnabled(bool enabled);

    std::unique_ptr<TasksOfOwner> posts;
    LineVisual* boundary;
    HandleMeshVisual* knob;
};

/// The two ends of a run, which the user takes hold of to shorten it. They have their size in the world.
///
/// `Scene::attachGuiTo` hangs it on what the run lies on. Owner: the process. Thread: render thread.
class VRK_EXPORT PathEndsHandle : public GuiVisual {
public:
    PathEndsHandle();
    ~PathEndsHandle() override;

    /// Makes the one of the process; once.
    static void Init();
    /// Null before `Init`.
    static PathEndsHandle* Get();

    /// Lets the ends be picked; that of a closed run not. Posted, as its opposite.
    void enableSelection();
    void disableSelection();
    rob::PosTemplate<float> startWorldPos() const;
    rob::PosTemplate<float> endWorldPos() const;
    /// Moves the ends to where a run begins and ends. A closed one has no end: it is hidden, and not picked. That of an open
    /// run is shown again, and picked after the next `enableSelection`. One without edges changes nothing.
    /// @throws what `EdgeMfgShape::getMfgVector` and `geometry::MfgVector::getPose` do.
    void updatePosition(const task::EdgeMfgShape& shape);

    PathEndHandle* getStartHandle() const { return startHandle; }
    PathEndHandle* getEndHandle() const { return endHandle; }

private:
    PathEndHandle* startHandle;
    PathEndHandle* endHandle;
    bool endShown = true;
};

} // namespace vrk::visual
