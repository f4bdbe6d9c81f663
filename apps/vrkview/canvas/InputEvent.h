#pragma once

#include <QPointF>
#include <Qt>

namespace vrkview {

/// What the mouse did over the view, in device pixels from its top left corner.
struct InputEvent {
    enum class Kind { Press, Release, DoubleClick, Move, Leave, Wheel };

    Kind kind = Kind::Move;
    QPointF place;
    Qt::MouseButton button = Qt::NoButton; // that was pressed or released
    Qt::MouseButtons held = Qt::NoButton;  // while the mouse moved
    Qt::KeyboardModifiers modifiers = Qt::NoModifier;
    double notches = 0; // of the wheel
};

} // namespace vrkview
