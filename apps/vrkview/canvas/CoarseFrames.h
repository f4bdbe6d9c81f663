#pragma once

#include "scene/CoarseWhileMoving.h"

#include <QObject>
#include <QTimer>

namespace vrkview {

/// Whether frames get coarser while the camera moves, where they take long. On at start, never in pictures. Render thread.
bool isCoarserWhileMoving();
void setCoarserWhileMoving(bool coarser);

/// What the picture is drawn without, for the status line; empty for a whole one.
QString textOf(vrk::visual::Coarseness coarseness);

/// Draws the frames of a camera that moves coarser where they take long, and has a whole one drawn once it rests.
///
/// Thread: the application's, which is the render thread.
class CoarseFrames : public QObject {
    Q_OBJECT

public:
    explicit CoarseFrames(QObject* parent = nullptr);

    /// Around each frame.
    void begin();
    void end();
    /// The camera, by whomever.
    void noteMove();

signals:
    /// The camera rests, and was not drawn whole last.
    void rested();
    /// @param coarseness  of the frame that is drawn next.
    void changed(vrk::visual::Coarseness coarseness);

private:
    void look();
    void apply(vrk::visual::Coarseness coarseness);

    vrk::visual::CoarseWhileMoving levels;
    vrk::visual::Coarseness applied = vrk::visual::Coarseness::Whole;
    QTimer rest;
};

} // namespace vrkview
