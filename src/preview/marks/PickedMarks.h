#pragma once

#include "visual/LineVisual.h"

namespace vrk::visual {

/// Three white lines along x, y and z.
class VRK_EXPORT WhiteAxesVisual : public LineVisual {
public:
    const DynamicLines& getLineX() const { return *lineX; }
    const DynamicLines& getLineY() const { return *lineY; }
    const DynamicLines& getLineZ() const { return *lineZ; }

protected:
    /// @param backwards, forwards  how far the lines go, each along its axis.
    WhiteAxesVisual(Visual* parent, const rob::Vec3Template<float>& backwards,
                    const rob::Vec3Template<float>& forwards);

private:
    // Owned by the lines of the base
    DynamicLines* lineX;
    DynamicLines* lineY;
    DynamicLines* lineZ;
};

/// A cross at a point that was picked: 15 units each way along x and y, 25 along z.
///
/// Owner: the one who made it. Thread: render thread.
class VRK_EXPORT SelectPointVisual : public WhiteAxesVisual {
public:
    explicit SelectPointVisual(Visual* parent);
};

/// A frame that would result from what was picked: three axes of 30 units.
///
/// Owner: the parent visual. Thread: render thread.
class VRK_EXPORT PreviewFrameVisual : public WhiteAxesVisual {
public:
    explicit PreviewFrameVisual(Visual* parent);
};

/// A line between two points that were picked; of no length at first.
///
/// Owner: the one who made it. Thread: render thread.
class VRK_EXPORT FromToLineVisual : public LineVisual {
public:
    /// @throws Ogre::ItemIdentityException (ERR_ITEM_NOT_FOUND) for an unknown material.
    FromToLineVisual(Visual* parent, const std::string& material);

    /// Draws it between two points of its frame, also while it is hidden.
    void set(const rob::PosTemplate<float>& from, const rob::PosTemplate<float>& to);
    const DynamicLines& getLine() const { return *line; }

private:
    DynamicLines* line; // owned by the lines of the base
};

} // namespace vrk::visual
