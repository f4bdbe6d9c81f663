#pragma once

#include "visual/LineVisual.h"

namespace vrk::visual {

class PartKeeper;
struct PathSegment;

/// The line of a run of moves in one work object, all of it solid or all of it dashed.
///
/// Owner: its path, though it hangs under the work object. Thread: render thread. Units: model units, in the frame of the
/// work object.
class VRK_EXPORT PathLineVisual : public LineVisual {
public:
    /// @param keeper  told when the line dies; null for none.
    PathLineVisual(Visual* parent, unsigned dashed, PartKeeper* keeper);
    ~PathLineVisual() override;

    bool isDashed() const { return dashed != 0; }
    /// Null before the first segment that is long enough.
    DynamicLines* getLine() const { return line; }
    /// A solid line goes on from where it ended. A via point counts for solid ones only.
    void addSegment(const PathSegment& segment);
    /// Brings the points to the GPU, also of a hidden line, and names the materials.
    void finish();
    void leaveKeeper() { keeper = nullptr; }

private:
    unsigned dashed; // non-zero for a dashed run
    DynamicLines* line = nullptr;
    PartKeeper* keeper;
};

} // namespace vrk::visual
