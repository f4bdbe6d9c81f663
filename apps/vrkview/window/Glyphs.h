#pragma once

#include "visual/VisualType.h"

#include <QIcon>

namespace vrkview {

enum class Glyph {
    EyeOpen,
    EyeHalf,
    EyeClosed,
    Open,
    Save,
    Screenshot,
    Fit,
    Focus,
    Isometric,
    Front,
    Back,
    Left,
    Right,
    Top,
    Bottom,
    Shaded,
    ShadedWithEdges,
    Edges,
    Wire,
    Lines,
    DashedLines,
    Grid,
    Move,
    Measure,
    DefineFrame,
    Lasso,
    Points,
    PickBodies,
    PickFaces,
    PickEdges,
    PickVertices,
    PickPoints,
    PickFrames,
    Warning,
    Close,
    Reset,
};

/// What a program is made of.
enum class StepIcon { Program, Path, Linear, Circular, Dashed, Other };

/// Icons drawn by code in the colours of the palette, at every size and number of pixels. Application thread.
QIcon glyph(Glyph which);
QIcon kindIcon(vrk::VisualType kind);
QIcon stepIcon(StepIcon which);

} // namespace vrkview
