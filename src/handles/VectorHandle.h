#pragma once

#include "handles/FixedSizeHandle.h"
#include "handles/HandleMeshVisual.h"

#include <array>
#include <memory>

namespace vrk::visual {

class ManualDrawing;

/// A ring that stands for an angle of the vector handle, with a see-through fan from zero to the angle.
///
/// Owner: the parent visual. Thread: render thread.
class VRK_EXPORT AngleHandle : public HandleMeshVisual {
public:
    ~AngleHandle() override;

    void resetAppearance() override;
    void setHighlighted() override;
    /// Turns what is below by an angle in radians, and draws the fan of it; of less than a degree there is none.
    void setAngle(double radians);

protected:
    struct Kind {
        const char* name; ///< of the visual and of its mesh
        const char* color;
        rob::DirTemplate<double> axis;
        std::array<int, 3> fanColor; ///< red, green and blue, 0 to 255
    };

    AngleHandle(const Kind& kind, Visual* parent);

private:
    void drawFan(double radians);

    const Kind kind;
    std::unique_ptr<ManualDrawing> fan;
};

/// Turns about y: how far the vector leans over along its edge.
class VRK_EXPORT TiltHandle : public AngleHandle {
public:
    explicit TiltHandle(Visual* parent);
};

/// Turns about x, and carries the tilt.
class VRK_EXPORT TwistHandle : public AngleHandle {
public:
    explicit TwistHandle(Visual* parent);
};

/// Shows and edits one vector of a band: an arrow, and two rings for the angles by which it is turned.
///
/// The twist carries the tilt, and the tilt the arrow. The angles stand in the poses of the rings and nowhere else.
/// `Scene::attachGuiTo` hangs it where the vector begins, and `registerToSelection` lets it be picked.
///
/// Owner: the process. Thread: render thread.
class VRK_EXPORT VectorHandle : public FixedSizeHandle {
public:
    VectorHandle();
    ~VectorHandle() override;

    /// The first that was made, at start-up; null before that.
    static VectorHandle* Get();

    // Angles in radians
    void setTilt(double radians);
    void setTwist(double radians);
    // These do nothing; applications call them
    void selectTilt() {}
    void selectTwist() {}

    TiltHandle* getTilt() const { return tilt; }
    TwistHandle* getTwist() const { return twist; }
    HandleMeshVisual* getDirHandle() const { return dirHandle; }

private:
    TiltHandle* tilt = nullptr;
    TwistHandle* twist = nullptr;
    HandleMeshVisual* dirHandle = nullptr;
};

} // namespace vrk::visual
