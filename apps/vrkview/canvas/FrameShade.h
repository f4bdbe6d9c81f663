#pragma once

#include <QObject>
#include <QTimer>

#include <array>
#include <chrono>

namespace vrkview {

/// Whether pockets and gaps are shaded in the window, and in pictures of it. Render thread.
bool isDepthShaded();
void setDepthShaded(bool shaded);

/// Whether what is shown throws a soft shadow on the ground; off at start.
bool isGroundShadowed();
void setGroundShadowed(bool shadowed);

/// Shades the frames of a view that stands still, and those of one that moves where that is cheap; in the others the shadow
/// on the ground stays as it was.
///
/// Thread: the application's, which is the render thread.
class FrameShade : public QObject {
    Q_OBJECT

public:
    explicit FrameShade(QObject* parent = nullptr);

    /// Around each frame.
    void begin();
    void end();
    /// The camera, by whomever.
    void noteMove();
    /// What was drawn so far does not count: the next frame is of a view that stands still.
    void noteRest();

signals:
    /// The view stands still, and was not drawn with all of it last.
    void frameWanted();

private:
    using Clock = std::chrono::steady_clock;

    bool isMoving(Clock::time_point now) const;

    QTimer rest;
    Clock::time_point moved;                  // the camera, last
    std::array<Clock::time_point, 3> begun{}; // of the last frames, the latest first
    Clock::duration wholeFrame{};             // what the last frame with all of it took
    bool isWhole = false;
};

} // namespace vrkview
